#include "OrdovanCore/DuplicateTrasher.h"

#include "OrdovanCore/Proposals.h"
#include "OrdovanCore/RunProgress.h"
#include "OrdovanCore/TrashMove.h"
#include "OrdovanCore/TrashPlace.h"

#include <algorithm>
#include <expected>
#include <utility>

using ordovan::Fingerprint;
using ordovan::TrashMove;
using ordovan::TrashScope;
using OrdovanProposalPlanner::canonicalPath;
using Status = OrdovanExecutionStatus;

namespace {

constexpr const char* keeperChanged = "The copy you chose to keep changed or is missing; nothing was moved.";
constexpr const char* outside = "Outside the folder you chose; left untouched.";
constexpr const char* missing = "Missing or no longer a regular file; left untouched.";
constexpr const char* sameFile = "This is the same file as the one you're keeping; left untouched.";
constexpr const char* different = "No longer identical to the copy you're keeping; left untouched.";
constexpr const char* notMoved = "Couldn't move this file to the Trash; it was left in place.";

/// Why an extra is not moved.
struct Refusal {
    Status status;
    std::string_view message;
};

std::unexpected<Refusal> skipped(std::string_view message) {
    return std::unexpected(Refusal{Status::skippedRevalidation, message});
}

/// The copy that stays.
struct Keeper {
    const Url& url;
    Fingerprint was;

    /// Cheap enough to be asked before and after each move.
    [[nodiscard]] bool isStillThere(OrdovanFileSystem& fs) const {
        if (!fs.isRegularFile(url)) return false;
        const auto size = fs.fileSize(url);
        const auto identity = fs.fileIdentity(url);
        return size && *size == was.byteSize && identity && *identity == was.identity;
    }
};

/// True when the file lies in a Trash, also by way of links.
bool liesInTrash(const Url& url) {
    return ordovan::isInTrash(url.path()) || ordovan::isInTrash(OrdovanProposalPlanner::resolveExisting(url).path());
}

std::expected<Keeper, Refusal> provenKeeper(const OrdovanDuplicateGroup& group, const Url& keeping,
                                            const TrashScope& scope, OrdovanFileSystem& fs) {
    const std::string path = canonicalPath(keeping);
    const bool isMember =
        std::ranges::any_of(group.files, [&](const Url& file) { return canonicalPath(file) == path; });
    if (!isMember || scope.isTooBroad() || liesInTrash(keeping)) return skipped(keeperChanged);
    if (!fs.isRegularFile(keeping)) return skipped(keeperChanged);
    const auto size = fs.fileSize(keeping);
    if (!size || *size != group.byteSize) return skipped(keeperChanged);
    // The identity before and after tells that what was hashed is what stands there.
    const auto before = fs.fileIdentity(keeping);
    if (!before) return skipped(keeperChanged);
    const auto hash = fs.contentHash(keeping);
    if (!hash && ordovan::isStop(hash.error())) return skipped(OrdovanExecutor::stoppedMessage);
    if (!hash || *hash != group.contentHash) return skipped(keeperChanged);
    const auto identity = fs.fileIdentity(keeping);
    if (!identity || *identity != *before) return skipped(keeperChanged);
    return Keeper{keeping, {*size, *hash, *identity}};
}

/// Proves that an extra is a separate file of the kept content, or tells the first check that refuses it.
std::expected<Fingerprint, Refusal> provenExtra(const Url& extra, const Keeper& keeper, const TrashScope& scope,
                                                OrdovanFileSystem& fs) {
    if (!ordovan::isRecordable(extra)) return std::unexpected(Refusal{Status::failed, notMoved});
    if (!scope.holds(extra, fs)) return skipped(outside);
    if (!fs.isRegularFile(extra)) return skipped(missing);
    const auto identity = fs.fileIdentity(extra);
    if (identity && *identity == keeper.was.identity) return skipped(sameFile);
    const auto size = fs.fileSize(extra);
    if (!size || *size != keeper.was.byteSize) return skipped(different);
    const auto hash = fs.contentHash(extra);
    if (!hash && ordovan::isStop(hash.error())) return skipped(OrdovanExecutor::stoppedMessage);
    if (!hash || *hash != keeper.was.contentHash) return skipped(different);
    // What was looked at is what was hashed.
    if (identity && fs.fileIdentity(extra) != identity) return skipped(different);
    if (!keeper.isStillThere(fs)) return skipped(different);
    return Fingerprint{*size, *hash, identity.value_or(std::string())};
}

/// Trashes one extra; one that lies in the Trash afterwards gets its entry.
OrdovanExecutionOutcome trashOne(const Url& extra, const Keeper& keeper, const TrashScope& scope, OrdovanFileSystem& fs,
                                 std::vector<OrdovanTrashEntry>& entries) {
    const auto stays = [&](const Refusal& why) {
        return OrdovanExecutionOutcome{extra, extra, why.status, std::string(why.message)};
    };
    const auto was = provenExtra(extra, keeper, scope, fs);
    if (!was) return stays(was.error());
    const TrashMove move = ordovan::sendToTrash(extra, *was, fs, [&] { return keeper.isStillThere(fs); });
    if (move.end == TrashMove::End::gone) return stays({Status::skippedRevalidation, missing});
    if (move.end == TrashMove::End::inPlace) return stays({Status::failed, notMoved});
    entries.emplace_back(ordovan::recordedPath(extra), move.trashed.path(), move.what.byteSize, move.what.contentHash);
    return {extra, move.trashed, Status::moved, "Moved to the Trash."};
}

std::vector<Url> extrasOf(const OrdovanDuplicateGroup& group, const Url& keeping) {
    const std::string path = canonicalPath(keeping);
    std::vector<Url> extras;
    for (const Url& file : group.files) {
        if (canonicalPath(file) != path) extras.push_back(file);
    }
    return extras;
}

}  // namespace

OrdovanTrashReport OrdovanDuplicateTrasher::trashExtras(const OrdovanDuplicateGroup& group, const Url& keeping,
                                                        const Url& authorizedRoot, OrdovanFileSystem& fs,
                                                        const OrdovanRunControl& control) {
    OrdovanTrashReport report;
    const std::vector<Url> extras = extrasOf(group, keeping);
    if (extras.empty()) return report;
    report.outcomes.reserve(extras.size());
    ordovan::RunProgress progress(control, extras.size());
    const TrashScope scope(authorizedRoot);
    const Refusal stopped{Status::skippedRevalidation, OrdovanExecutor::stoppedMessage};
    // A stop that is known already spares the reading of the kept copy.
    const std::expected<Keeper, Refusal> keeper =
        progress.mayContinue() ? provenKeeper(group, keeping, scope, fs) : std::unexpected(stopped);
    for (const Url& extra : extras) {
        const bool goesOn = report.outcomes.empty() || progress.mayContinue();
        if (keeper && goesOn) {
            report.outcomes.push_back(trashOne(extra, *keeper, scope, fs, report.record.entries));
        } else {
            const Refusal& why = keeper ? stopped : keeper.error();
            report.outcomes.push_back({extra, extra, why.status, std::string(why.message)});
        }
        if (report.outcomes.back().message != OrdovanExecutor::stoppedMessage) progress.fileDone();
    }
    return report;
}
