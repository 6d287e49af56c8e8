#include "OrdovanApp/stores/JournalStore.h"

#include "OrdovanApp/stores/RecordErrors.h"

#include <algorithm>
#include <utility>
#include <vector>

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
    const Stored stored = read(root);
    if (stored.state != Stored::State::none) return {joined(stored.journal, unsaved), unsaved};
    Loaded loaded = {unsaved, unsaved};
    for (const Url& file : StorageLocations::olderJournals(root)) {
        if (fs.isSymlink(file.deletingLastPathComponent())) continue;
        const Journal older = readDocument(file).journal;
        if (!older) continue;
        const Saved saved = append(root, *older, loaded.journal, loaded.unsaved, nowEpoch);
        loaded = {saved.journal, saved.unsaved};
        // A removal that fails leaves a copy that is not asked for again.
        if (!saved.warning) static_cast<void>(storage_.remove(file));
    }
    return loaded;
}

JournalStore::Saved JournalStore::append(const Url& root, const OrdovanJournal& run, const Journal& known,
                                         const Journal& unsaved, double nowEpoch) const {
    const auto lock = lockRecords_(locations_.recordsFolder);
    const Url file = locations_.journal(root);
    const Journal pending = joined(unsaved, shared(run));
    Stored stored = readDocument(file);
    Journal combined = joined(stored.journal, pending);
    Journal notStored = pending;
    const bool readable = stored.state != Stored::State::unreadable;
    if (!readable) combined = notStored = joined(known, pending);
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
                                                 OrdovanFileSystem& fs) const {
    const auto lock = lockRecords_(locations_.recordsFolder);
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
    const Saved failure = {.journal = remaining, .unsaved = memoryLeft, .warning = notUpdated};
    const auto nameAt = [this](double epoch) { return locations_.unreadableJournal(epoch); };
    if (!readable && !setAside(storage_, file, nameAt, nowEpoch)) return failure;
    if (remaining) {
        if (!write(file, *remaining)) return failure;
    } else if (stored.state == Stored::State::readable && !storage_.remove(file)) {
        return failure;
    }
    return {.journal = remaining, .unsaved = nullptr, .warning = std::nullopt};
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
