#include "OrdovanCore/FileTrasher.h"

#include "OrdovanCore/RunProgress.h"
#include "OrdovanCore/TrashMove.h"

#include <expected>
#include <string_view>
#include <utility>

using ordovan::Fingerprint;
using ordovan::TrashMove;
using ordovan::TrashScope;
using Status = OrdovanExecutionStatus;

namespace {

constexpr std::string_view missing = "Missing or no longer a regular file; left untouched.";
constexpr std::string_view changed = "The file changed since you looked at it; left untouched.";
constexpr std::string_view unrecordable = "Couldn't read the file to record it for Put Back; left untouched.";

/// Proves that an item is the file the user chose, or tells why not.
std::expected<Fingerprint, std::string_view> proven(const OrdovanFileTrasher::Item& item, const TrashScope& scope,
                                                    OrdovanFileSystem& fs) {
    if (!ordovan::isRecordable(item.url)) return std::unexpected(unrecordable);
    if (!scope.holds(item.url, fs)) return std::unexpected("Outside the folder you chose; left untouched.");
    if (!fs.isRegularFile(item.url)) return std::unexpected(missing);
    const auto size = fs.fileSize(item.url);
    if (!size || *size != item.expectedSize) return std::unexpected(changed);
    const auto identity = fs.fileIdentity(item.url);
    auto hash = fs.contentHash(item.url);
    if (!hash) return std::unexpected(ordovan::isStop(hash.error()) ? OrdovanExecutor::stoppedMessage : unrecordable);
    // The identity before and after tells that what was looked at is what was hashed.
    if (identity && fs.fileIdentity(item.url) != identity) return std::unexpected(changed);
    return Fingerprint{*size, std::move(*hash), identity.value_or(std::string())};
}

/// Trashes one item; one that lies in the Trash afterwards gets its entry.
OrdovanExecutionOutcome trashOne(const OrdovanFileTrasher::Item& item, const TrashScope& scope, OrdovanFileSystem& fs,
                                 std::vector<OrdovanTrashEntry>& entries) {
    const auto stays = [&](Status status, std::string_view message) {
        return OrdovanExecutionOutcome{item.url, item.url, status, std::string(message)};
    };
    const auto was = proven(item, scope, fs);
    if (!was) return stays(Status::skippedRevalidation, was.error());
    const TrashMove move = ordovan::sendToTrash(item.url, *was, fs);
    if (move.end == TrashMove::End::gone) return stays(Status::skippedRevalidation, missing);
    if (move.end == TrashMove::End::inPlace) {
        return stays(Status::failed, "Couldn't move this file to the Trash; it was left in place. " +
                                         OrdovanExecutor::failureReason(move.error));
    }
    entries.emplace_back(ordovan::recordedPath(item.url), move.trashed.path(), move.what.byteSize,
                         move.what.contentHash);
    return {item.url, move.trashed, Status::moved, "Moved to the Trash."};
}

}  // namespace

OrdovanTrashReport OrdovanFileTrasher::trash(std::span<const Item> items, const Url& authorizedRoot,
                                             OrdovanFileSystem& fs, const OrdovanRunControl& control) {
    OrdovanTrashReport report;
    report.outcomes.reserve(items.size());
    const TrashScope scope(authorizedRoot);
    ordovan::RunProgress progress(control, items.size());
    for (const Item& item : items) {
        if (progress.mayContinue()) {
            report.outcomes.push_back(trashOne(item, scope, fs, report.record.entries));
        } else {
            report.outcomes.push_back(
                {item.url, item.url, Status::skippedRevalidation, std::string(OrdovanExecutor::stoppedMessage)});
        }
        if (report.outcomes.back().message != OrdovanExecutor::stoppedMessage) progress.fileDone();
    }
    return report;
}
