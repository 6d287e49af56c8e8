#include "OrdovanApp/stores/HistoryStore.h"

#include "OrdovanApp/stores/RecordErrors.h"
#include "OrdovanApp/stores/SetAside.h"

#include <algorithm>
#include <string>
#include <utility>

namespace ordovan {

namespace {

/// Two hundred records take some 60 KiB; a document far beyond that is not one of ours and is not read to its end.
constexpr std::size_t maxDocumentBytes = 16 * 1024 * 1024;

constexpr const char* notAdded = "This run couldn't be added to the history on disk. It is listed until you quit.";
constexpr const char* notCleared = "The history couldn't be cleared.";
constexpr const char* heldElsewhere = "Another ordovan+ is saving its records. Try again in a moment.";

}  // namespace

struct HistoryStore::Stored {
    bool readable = false;
    OrdovanRunHistory history;
};

HistoryStore::HistoryStore(RecordStorage& storage, StorageLocations locations, LockFunction lockRecords)
    : storage_(storage), locations_(std::move(locations)), lockRecords_(std::move(lockRecords)) {}

OrdovanRunHistory HistoryStore::load() const {
    return read().history;
}

std::optional<OrdovanRunHistory> HistoryStore::loadReadable() const {
    Stored stored = read();
    if (!stored.readable) return std::nullopt;
    return std::move(stored.history);
}

HistoryStore::Result HistoryStore::add(const OrdovanRunRecord& run, std::span<const OrdovanRunRecord> unsaved,
                                       double nowEpoch) {
    const std::lock_guard order(order_);
    const auto lock = lockRecords_(locations_.recordsFolder);
    if (!lock) return refused(notAdded);
    Stored stored = read();
    const auto nameAt = [this](double epoch) { return locations_.unreadableHistory(epoch); };
    if (!stored.readable && !setAside(storage_, locations_.history(), nameAt, nowEpoch)) {
        return refused(notAdded);
    }
    const auto add = [&](const OrdovanRunRecord& each) {
        const bool isThere =
            std::ranges::find(stored.history.records, each.id, &OrdovanRunRecord::id) != stored.history.records.end();
        if (!isThere) stored.history = stored.history.adding(each);
    };
    for (std::size_t i = unsaved.size(); i > 0; --i) add(unsaved[i - 1]);
    add(run);
    return written(std::move(stored.history), notAdded);
}

HistoryStore::Result HistoryStore::clear() {
    const std::lock_guard order(order_);
    const auto lock = lockRecords_(locations_.recordsFolder);
    if (!lock) return refused(isHeldElsewhere(lock) ? heldElsewhere : notCleared);
    return written({}, notCleared);
}

/// The stored list; an absent one is readable and empty.
HistoryStore::Stored HistoryStore::read() const {
    std::string document;
    const auto result = storage_.read(locations_.history(), [&](std::string_view piece) {
        document += piece;
        return document.size() <= maxDocumentBytes;
    });
    if (!result) return {.readable = isAbsent(result.error()), .history = {}};
    auto decoded = OrdovanRunHistory::decoded(document);
    if (!decoded) return {};
    return {.readable = true, .history = std::move(*decoded)};
}

HistoryStore::Result HistoryStore::written(OrdovanRunHistory history, const char* failure) {
    const auto result = storage_.write(
        locations_.history(), [encoded = history.encoded()](const RecordStorage::Sink& sink) { return sink(encoded); });
    if (!result) return refused(failure);
    return {.saved = true, .warning = std::nullopt, .history = std::move(history), .revision = ++revision_};
}

HistoryStore::Result HistoryStore::refused(const char* warning) {
    return {.saved = false, .warning = warning, .history = {}, .revision = ++revision_};
}

}  // namespace ordovan
