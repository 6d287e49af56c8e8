#include "OrdovanApp/stores/RunRecordStore.h"

#include "OrdovanApp/stores/RecordErrors.h"

#include <cerrno>
#include <utility>

namespace ordovan {

RunRecordStore::RunRecordStore(RecordStorage& storage, StorageLocations locations)
    : storage_(storage), locations_(std::move(locations)) {}

OrdovanResult<std::unique_ptr<RunNotes>> RunRecordStore::begin(const OrdovanRunIntent& intent) const {
    if (intent.items.size() > OrdovanRunIntent::maxItems) return std::unexpected(OrdovanSystemError::posix(EFBIG));
    const Url file = locations_.runRecord(intent.root);
    const auto written = storage_.write(file, [&](const RecordStorage::Sink& sink) { return intent.encode(sink); });
    if (!written) {
        static_cast<void>(storage_.remove(file));  // it stands there when only the flush of its folder failed
        return std::unexpected(written.error());
    }
    auto notes = storage_.openNotes(file);
    if (!notes) static_cast<void>(storage_.remove(file));
    return notes;
}

bool RunRecordStore::mayStand(const Url& root) const {
    const auto looked = storage_.read(locations_.runRecord(root), [](std::string_view) { return false; });
    return looked || !isAbsent(looked.error());
}

RunRecordStore::Found RunRecordStore::read(const Url& root) const {
    OrdovanRunRecordDecoder decoder;
    const auto result =
        storage_.read(locations_.runRecord(root), [&](std::string_view piece) { return decoder.feed(piece); });
    if (!result && isAbsent(result.error())) return {};
    // Only that it is refused, or no regular file, is due to the record itself.
    const auto isError = [&](int error) { return result.error() == OrdovanSystemError::posix(error); };
    if (!result && !isError(ECANCELED) && !isError(EINVAL)) return {.state = Found::State::unknown};
    auto run = decoder.finish();
    if (!result || !run) return {.state = Found::State::unreadable};
    return {.state = Found::State::readable, .run = std::move(*run)};
}

bool RunRecordStore::remove(const Url& root) const {
    return storage_.remove(locations_.runRecord(root)).has_value();
}

bool RunRecordStore::setAside(const Url& root, double nowEpoch) const {
    const auto nameAt = [&](double epoch) { return locations_.unusableRunRecord(root, epoch); };
    return ordovan::setAside(storage_, locations_.runRecord(root), nameAt, nowEpoch);
}

}  // namespace ordovan
