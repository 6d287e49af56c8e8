#include "OrdovanApp/stores/JournalStore.h"

#include "OrdovanApp/stores/RecordErrors.h"
#include "OrdovanApp/stores/SetAside.h"

#include <algorithm>
#include <string>
#include <utility>

namespace ordovan {

namespace {

using Journal = JournalStore::Journal;

constexpr const char* notWritten =
    "Files were organized, but the undo record could not be saved to disk. Undo is available until you quit.";
constexpr const char* notSetAside =
    "Files were organized, but the existing undo record could not be read or set aside, so this run's undo record was "
    "not saved. Undo is available until you quit.";
constexpr const char* notUpdated =
    "The undo record could not be updated. Files that were restored may be listed again; restoring them again is "
    "refused safely.";

Journal shared(OrdovanJournal journal) {
    return std::make_shared<const OrdovanJournal>(std::move(journal));
}

Journal joined(const Journal& earlier, const Journal& later) {
    if (!earlier || earlier->entries.empty()) return later;
    if (!later || later->entries.empty()) return earlier;
    return shared(earlier->appending(*later));
}

std::unordered_set<std::string_view> destinations(const Journal& journal) {
    std::unordered_set<std::string_view> result;
    if (!journal) return result;
    result.reserve(journal->entries.size());
    for (const OrdovanJournalEntry& entry : journal->entries) result.insert(entry.destination());
    return result;
}

/// The entries for which `keep` says true; null where there are none.
template <class Keep>
Journal filtered(const Journal& journal, Keep keep) {
    if (!journal) return nullptr;
    OrdovanJournal result;
    result.version = journal->version;
    result.createdAtEpoch = journal->createdAtEpoch;
    std::ranges::copy_if(journal->entries, std::back_inserter(result.entries), keep);
    return result.entries.empty() ? nullptr : shared(std::move(result));
}

}  // namespace

JournalStore::JournalStore(RecordStorage& storage, StorageLocations locations, LockFunction lockRecords,
                           std::size_t maxEntries)
    : storage_(storage),
      locations_(std::move(locations)),
      lockRecords_(std::move(lockRecords)),
      maxEntries_(maxEntries) {}

JournalStore::Stored JournalStore::read(const Url& root) const {
    return readDocument(locations_.journal(root));
}

JournalStore::Loaded JournalStore::load(const Url& root, const Journal& unsaved, double nowEpoch,
                                        OrdovanFileSystem& fs) const {
    const std::uint64_t revision = ++revision_;  // a change that ends from now on may not be seen
    const Stored stored = read(root);
    if (stored.state != Stored::State::none) return {joined(stored.journal, unsaved), unsaved, revision};
    Loaded loaded = {unsaved, unsaved, revision};
    for (const Older& older : readOlder(root, fs)) {
        const Saved saved = append(root, *older.journal, loaded.journal, loaded.unsaved, nowEpoch);
        loaded = {saved.journal, saved.unsaved, saved.revision};
        // A removal that fails leaves a copy that is not asked for while there is another journal.
        if (!saved.warning) static_cast<void>(storage_.remove(older.file));
    }
    return loaded;
}

/// The readable journals of older versions; nothing is read through a linked folder.
std::vector<JournalStore::Older> JournalStore::readOlder(const Url& root, OrdovanFileSystem& fs) const {
    std::vector<Older> result;
    for (const Url& file : StorageLocations::olderJournals(root)) {
        if (fs.isSymlink(file.deletingLastPathComponent())) continue;
        if (Journal journal = readDocument(file).journal) result.push_back({file, std::move(journal)});
    }
    return result;
}

/// Takes restored entries out of the journals of older versions. False when one of them still lists some.
bool JournalStore::takeOutOfOlder(const Url& root, const std::unordered_set<std::string_view>& restored,
                                  OrdovanFileSystem& fs) const {
    bool done = true;
    for (const Older& older : readOlder(root, fs)) {
        const Journal left = filtered(
            older.journal, [&](const OrdovanJournalEntry& entry) { return !restored.contains(entry.destination()); });
        if (left && left->entries.size() == older.journal->entries.size()) continue;
        if (!(left ? write(older.file, *left) : storage_.remove(older.file).has_value())) done = false;
    }
    return done;
}

JournalStore::Saved JournalStore::append(const Url& root, const OrdovanJournal& run, const Journal& known,
                                         const Journal& unsaved, double nowEpoch) const {
    const auto lock = lockRecords_(locations_.recordsFolder);
    Saved saved = appended(lock, root, run, known, unsaved, nowEpoch);
    saved.revision = ++revision_;
    return saved;
}

JournalStore::Saved JournalStore::appended(const OrdovanResult<HeldLock>& lock, const Url& root,
                                           const OrdovanJournal& run, const Journal& known, const Journal& unsaved,
                                           double nowEpoch) const {
    const Url file = locations_.journal(root);
    const Journal pending = joined(unsaved, shared(run));
    const Stored stored = readDocument(file);
    Journal combined = joined(stored.journal, pending);
    Journal notStored = pending;
    const bool readable = stored.state != Stored::State::unreadable;
    if (!readable) combined = notStored = joined(known, pending);
    if (isHeldElsewhere(lock)) return {.journal = combined, .unsaved = notStored, .warning = notWritten};
    const auto nameAt = [this](double epoch) { return locations_.unreadableJournal(epoch); };
    if (!readable && !setAside(storage_, file, nameAt, nowEpoch)) {
        return {.journal = combined, .unsaved = notStored, .warning = notSetAside};
    }
    // A record beyond the limit would be refused when it is read again; the one there is must not be lost for it.
    const bool fits = combined->entries.size() <= maxEntries_;
    if (!fits || !write(file, *combined)) {
        return {.journal = combined, .unsaved = notStored, .warning = notWritten};
    }
    return {.journal = combined, .unsaved = nullptr, .warning = std::nullopt};
}

JournalStore::Saved JournalStore::removeRestored(const Url& root, const std::unordered_set<std::string_view>& restored,
                                                 const Journal& known, const Journal& unsaved, double nowEpoch,
                                                 OrdovanFileSystem& fs, bool isOnDisk) const {
    const auto lock = lockRecords_(locations_.recordsFolder);
    const bool areLeft = !isOnDisk && !restored.empty();
    const std::unordered_set<std::string_view> none;
    Saved saved = withoutRestored(lock, root, areLeft ? none : restored, known, unsaved, nowEpoch, fs);
    if (areLeft) saved.warning = notUpdated;
    saved.revision = ++revision_;
    return saved;
}

JournalStore::Saved JournalStore::withoutRestored(const OrdovanResult<HeldLock>& lock, const Url& root,
                                                  const std::unordered_set<std::string_view>& restored,
                                                  const Journal& known, const Journal& unsaved, double nowEpoch,
                                                  OrdovanFileSystem& fs) const {
    const Url file = locations_.journal(root);
    const Stored stored = readDocument(file);
    const auto isLeft = [&](const OrdovanJournalEntry& entry) { return !restored.contains(entry.destination()); };
    const Journal storedLeft = filtered(stored.journal, isLeft);
    const auto inDocument = destinations(stored.journal);
    const auto neverStored = destinations(unsaved);
    const bool readable = stored.state != Stored::State::unreadable;
    const Journal memoryLeft = filtered(known, [&](const OrdovanJournalEntry& entry) {
        if (!isLeft(entry) || inDocument.contains(entry.destination())) return false;
        if (!readable || neverStored.contains(entry.destination())) return true;
        const Url organized = Url::file(entry.destination());
        return fs.exists(organized) || fs.isSymlink(organized);
    });
    const Journal remaining = joined(storedLeft, memoryLeft);
    Saved failure = {.journal = remaining, .unsaved = memoryLeft, .warning = notUpdated};
    if (isHeldElsewhere(lock)) return failure;
    const auto nameAt = [this](double epoch) { return locations_.unreadableJournal(epoch); };
    if (!readable && !setAside(storage_, file, nameAt, nowEpoch)) return failure;
    const bool fits = !remaining || remaining->entries.size() <= maxEntries_;
    const Journal& document = fits ? remaining : storedLeft;
    if (document) {
        if (!write(file, *document)) return failure;
    } else if (stored.state == Stored::State::readable && !storage_.remove(file)) {
        return failure;
    }
    if (!fits) return failure;
    Saved saved = {.journal = remaining, .unsaved = nullptr, .warning = std::nullopt};
    if (!takeOutOfOlder(root, restored, fs)) saved.warning = notUpdated;
    return saved;
}

bool JournalStore::canSave() const {
    const std::string content(4096, ' ');
    return std::ranges::all_of(locations_.probes(), [&](const Url& probe) {
        return storage_.write(probe, [&](const RecordStorage::Sink& sink) { return sink(content); }) &&
               storage_.remove(probe);
    });
}

JournalStore::Stored JournalStore::readDocument(const Url& file) const {
    OrdovanJournalDecoder decoder;
    const auto result = storage_.read(file, [&](std::string_view piece) { return decoder.feed(piece); });
    if (!result) {
        return {.state = isAbsent(result.error()) ? Stored::State::none : Stored::State::unreadable,
                .journal = nullptr};
    }
    auto journal = decoder.finish();
    if (!journal) return {.state = Stored::State::unreadable, .journal = nullptr};
    return {.state = Stored::State::readable, .journal = shared(std::move(*journal))};
}

bool JournalStore::write(const Url& file, const OrdovanJournal& journal) const {
    return storage_.write(file, [&](const RecordStorage::Sink& sink) { return journal.encode(sink); }).has_value();
}

}  // namespace ordovan
