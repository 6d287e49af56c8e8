#include "OrdovanApp/stores/RunRecordStore.h"

#include "OrdovanApp/stores/RecordErrors.h"
#include "OrdovanApp/stores/SetAside.h"

#include <cerrno>
#include <utility>

namespace ordovan {

RunRecordStore::RunRecordStore(RecordStorage& storage, StorageLocations locations)
    : storage_(storage), locations_(std::move(locations)) {}

/// True when certainly nothing stands there.
bool RunRecordStore::isFree(const Url& file) const {
    const auto looked = storage_.read(file, [](std::string_view) { return false; });
    return !looked && isAbsent(looked.error());
}

OrdovanResult<RunRecordStore::Begun> RunRecordStore::begin(const OrdovanRunIntent& intent) const {
    if (intent.items.size() > OrdovanRunIntent::maxItems) return std::unexpected(OrdovanSystemError::posix(EFBIG));
    std::size_t place = 1;
    while (place <= places && !isFree(locations_.runRecord(intent.root, place))) ++place;
    if (place > places) return std::unexpected(OrdovanSystemError::posix(EEXIST));
    const Url file = locations_.runRecord(intent.root, place);
    const auto written = storage_.write(file, [&](const RecordStorage::Sink& sink) { return intent.encode(sink); });
    if (!written) {
        static_cast<void>(storage_.remove(file));  // it stands there when only the flush of its folder failed
        return std::unexpected(written.error());
    }
    auto notes = storage_.openNotes(file);
    if (!notes) {
        static_cast<void>(storage_.remove(file));
        return std::unexpected(notes.error());
    }
    return Begun{place, std::move(*notes)};
}

bool RunRecordStore::mayStand(const Url& root) const {
    for (std::size_t place = 1; place <= places; ++place) {
        if (!isFree(locations_.runRecord(root, place))) return true;
    }
    return false;
}

RunRecordStore::Found RunRecordStore::read(const Url& root, std::size_t place) const {
    const Url file = locations_.runRecord(root, place);
    // A record that may be read and not written can not be held; it is read all the same.
    auto holder = storage_.openNotes(file);
    if (!holder && isAbsent(holder.error())) return {};
    if (!holder && holder.error() == OrdovanSystemError::posix(EWOULDBLOCK)) return {.state = Found::State::inUse};
    Found found;
    if (holder) found.holder = std::move(*holder);
    OrdovanRunRecordDecoder decoder;
    const auto result = storage_.read(file, [&](std::string_view piece) { return decoder.feed(piece); });
    if (!result && isAbsent(result.error())) return {};
    // Only that it is refused, or no regular file, is due to the record itself.
    const auto isError = [&](int error) { return result.error() == OrdovanSystemError::posix(error); };
    if (!result && !isError(ECANCELED) && !isError(EINVAL)) {
        found.state = Found::State::unknown;
        return found;
    }
    auto run = decoder.finish();
    found.state = result && run ? Found::State::readable : Found::State::unreadable;
    if (found.state == Found::State::readable) found.run = std::move(*run);
    return found;
}

OrdovanResult<std::unique_ptr<RunNotes>> RunRecordStore::replace(const Url& root, std::size_t place,
                                                                 const OrdovanUnfinishedRun& run) const {
    const Url file = locations_.runRecord(root, place);
    const auto written = storage_.write(file, [&](const RecordStorage::Sink& sink) { return run.encode(sink); });
    if (!written) return std::unexpected(written.error());
    auto holder = storage_.openNotes(file);
    return holder ? std::move(*holder) : nullptr;
}

bool RunRecordStore::remove(const Url& root, std::size_t place) const {
    return storage_.remove(locations_.runRecord(root, place)).has_value();
}

bool RunRecordStore::setAside(const Url& root, std::size_t place, double nowEpoch) const {
    const auto nameAt = [&](double epoch) { return locations_.unusableRunRecord(root, epoch); };
    return ordovan::setAside(storage_, locations_.runRecord(root, place), nameAt, nowEpoch);
}

}  // namespace ordovan
