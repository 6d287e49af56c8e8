#include "OrdovanApp/stores/TrashRecordStore.h"

#include "OrdovanApp/stores/RecordErrors.h"
#include "OrdovanApp/stores/SetAside.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace ordovan {

namespace {

using Known = TrashRecordStore::Known;
using Record = TrashRecordStore::Record;

constexpr const char* notWritten =
    "Files were moved to the Trash, but the restore record couldn't be saved. Restore works until you quit; after "
    "that, use Put Back in the Finder Trash.";
constexpr const char* notUpdated =
    "The restore record couldn't be updated on disk. Files already put back may be listed again; putting them back "
    "again is refused safely.";

Record shared(OrdovanTrashRecord record) {
    return std::make_shared<const OrdovanTrashRecord>(std::move(record));
}

Record none() {
    return shared({});
}

Record joined(const Record& earlier, const Record& later) {
    if (earlier->entries.empty()) return later;
    if (later->entries.empty()) return earlier;
    return shared(earlier->appending(*later));
}

using Paths = std::unordered_set<std::string_view>;

/// One path of every entry: which one, `path` says.
Paths paths(const OrdovanTrashRecord& record, std::string_view (OrdovanTrashEntry::*path)() const noexcept) {
    Paths result;
    result.reserve(record.entries.size());
    for (const OrdovanTrashEntry& entry : record.entries) result.insert((entry.*path)());
    return result;
}

template <class Keep>
Record filtered(const Record& record, Keep keep) {
    OrdovanTrashRecord result;
    result.version = record->version;
    std::ranges::copy_if(record->entries, std::back_inserter(result.entries), keep);
    return shared(std::move(result));
}

}  // namespace

/// The document as it was found.
struct TrashRecordStore::Stored {
    enum class State { none, readable, unreadable };
    State state = State::none;
    Record record = none();
};

TrashRecordStore::TrashRecordStore(RecordStorage& storage, StorageLocations locations, LockFunction lockRecords,
                                   std::size_t maxEntries)
    : storage_(storage),
      locations_(std::move(locations)),
      lockRecords_(std::move(lockRecords)),
      maxEntries_(maxEntries) {}

TrashRecordStore::Known TrashRecordStore::load(const Known& known) const {
    const std::uint64_t revision = ++revision_;  // a change that ends from now on may not be seen
    const Stored stored = read();
    if (stored.state == Stored::State::unreadable) return {known.record, known.unsaved};
    return {joined(stored.record, known.unsaved), known.unsaved, revision};
}

TrashRecordStore::Saved TrashRecordStore::append(const OrdovanTrashRecord& run, const Known& known,
                                                 double nowEpoch) const {
    const auto lock = lockRecords_(locations_.recordsFolder);
    Saved saved = appended(lock, run, known, nowEpoch);
    saved.known.revision = ++revision_;
    return saved;
}

TrashRecordStore::Saved TrashRecordStore::appended(const OrdovanResult<HeldLock>& lock, const OrdovanTrashRecord& run,
                                                   const Known& known, double nowEpoch) const {
    const Record pending = joined(known.unsaved, shared(run));
    const Stored stored = read();
    const bool readable = stored.state != Stored::State::unreadable;
    const Record combined = joined(readable ? stored.record : known.record, pending);
    const Saved failure = {.known = {combined, readable ? pending : combined}, .warning = notWritten};
    // A record beyond the limit would be refused when it is read again; the one there must not be lost for it.
    if (isHeldElsewhere(lock) || combined->entries.size() > maxEntries_) return failure;
    if (!readable && !setAside(nowEpoch)) return failure;
    if (!write(*combined)) return failure;
    return {.known = {combined, none()}, .warning = std::nullopt};
}

TrashRecordStore::Saved TrashRecordStore::removePutBack(const std::unordered_set<std::string_view>& putBack,
                                                        const Known& known, double nowEpoch, OrdovanFileSystem& fs,
                                                        bool isOnDisk) const {
    const auto lock = lockRecords_(locations_.recordsFolder);
    const bool areLeft = !isOnDisk && !putBack.empty();
    Saved saved = withoutPutBack(lock, areLeft ? Paths() : putBack, known, nowEpoch, fs);
    if (areLeft) saved.warning = notUpdated;
    saved.known.revision = ++revision_;
    return saved;
}

TrashRecordStore::Saved TrashRecordStore::withoutPutBack(const OrdovanResult<HeldLock>& lock,
                                                         const std::unordered_set<std::string_view>& putBack,
                                                         const Known& known, double nowEpoch,
                                                         OrdovanFileSystem& fs) const {
    const Stored stored = read();
    const bool readable = stored.state != Stored::State::unreadable;
    const auto isLeft = [&](const OrdovanTrashEntry& entry) { return !putBack.contains(entry.trashed()); };
    const Record storedLeft = filtered(stored.record, isLeft);
    const Paths inDocument = paths(*stored.record, &OrdovanTrashEntry::trashed);
    const Paths originalsInDocument = paths(*stored.record, &OrdovanTrashEntry::original);
    const Paths neverStored = paths(*known.unsaved, &OrdovanTrashEntry::trashed);
    const Record memoryLeft = filtered(known.record, [&](const OrdovanTrashEntry& entry) {
        if (!isLeft(entry) || inDocument.contains(entry.trashed())) return false;
        if (!readable || neverStored.contains(entry.trashed())) return true;
        const Url trashed = Url::file(entry.trashed());
        return !originalsInDocument.contains(entry.original()) && (fs.exists(trashed) || fs.isSymlink(trashed));
    });
    const Record remaining = joined(storedLeft, memoryLeft);
    const Saved failure = {.known = {remaining, memoryLeft}, .warning = notUpdated};
    if (isHeldElsewhere(lock)) return failure;
    if (!readable && !setAside(nowEpoch)) return failure;
    const bool fits = remaining->entries.size() <= maxEntries_;
    if (!write(fits ? *remaining : *storedLeft) || !fits) return failure;
    return {.known = {remaining, none()}, .warning = std::nullopt};
}

TrashRecordStore::Stored TrashRecordStore::read() const {
    OrdovanTrashRecordDecoder decoder;
    const auto result =
        storage_.read(locations_.trashRecord(), [&](std::string_view piece) { return decoder.feed(piece); });
    if (!result) return {.state = isAbsent(result.error()) ? Stored::State::none : Stored::State::unreadable};
    auto record = decoder.finish();
    if (!record) return {.state = Stored::State::unreadable};
    return {.state = Stored::State::readable, .record = shared(std::move(*record))};
}

bool TrashRecordStore::write(const OrdovanTrashRecord& record) const {
    return storage_
        .write(locations_.trashRecord(), [&](const RecordStorage::Sink& sink) { return record.encode(sink); })
        .has_value();
}

bool TrashRecordStore::setAside(double nowEpoch) const {
    const auto nameAt = [this](double epoch) { return locations_.unreadableTrashRecord(epoch); };
    return ordovan::setAside(storage_, locations_.trashRecord(), nameAt, nowEpoch);
}

}  // namespace ordovan
