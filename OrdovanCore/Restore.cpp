#include "OrdovanCore/DuplicateTrasher.h"
#include "OrdovanCore/RunProgress.h"
#include "OrdovanCore/TrashMove.h"
#include "OrdovanCore/TrashPlace.h"

#include <algorithm>
#include <expected>
#include <utility>

using ordovan::Fingerprint;
using ordovan::Relocation;
using ordovan::Relocator;
using ordovan::TrashScope;
using Status = OrdovanExecutionStatus;

namespace {

/// What became of one entry.
struct Verdict {
    Status status;
    std::string_view message;
};

constexpr Verdict stopped{Status::skippedRevalidation, OrdovanExecutor::stoppedMessage};
constexpr Verdict notPutBack{Status::failed, "Couldn't put this file back; it is still in the Trash."};

/// Proves that the item is what was trashed and that its original place is free: what it is now, or the first check
/// that refuses. Changes nothing.
std::expected<Fingerprint, Verdict> proven(const OrdovanTrashEntry& entry, const Url& trashed, const Url& original,
                                           const TrashScope& scope, OrdovanFileSystem& fs) {
    const auto refused = [](std::string_view message) {
        return std::unexpected(Verdict{Status::skippedRevalidation, message});
    };
    // What lies behind a ".." may be anywhere.
    const bool isTrashItem = ordovan::namesOnePlace(trashed) && ordovan::isInTrash(trashed.path());
    if (!isTrashItem || !scope.holds(original, fs)) {
        return refused("Not a Trash item for this folder; restore refused.");
    }
    if (!fs.isRegularFile(trashed)) return refused("No longer in the Trash (emptied or moved).");
    const auto identity = fs.fileIdentity(trashed);
    const auto size = fs.fileSize(trashed);
    const bool sizeMatches = size && *size == entry.byteSize();
    const auto hash = sizeMatches ? fs.contentHash(trashed) : std::unexpected(OrdovanSystemError{});
    if (!hash && ordovan::isStop(hash.error())) return std::unexpected(stopped);
    if (!hash || *hash != entry.contentHash()) return refused("The trashed file changed; restore skipped.");
    if (fs.exists(original) || fs.isSymlink(original)) {
        return refused("Something now occupies the original location; restore skipped.");
    }
    if (!identity) return std::unexpected(notPutBack);
    return Fingerprint{*size, *hash, *identity};
}

Verdict verdict(const Relocation& relocation) {
    switch (relocation.end) {
        case Relocation::End::done:
            return {Status::moved, "Put back."};
        case Relocation::End::verificationFailed:
            return {Status::failed, "Restore verification failed; the file is still in the Trash."};
        case Relocation::End::originalStays:
            return {Status::failed, "Couldn't finish restoring; the file is still in the Trash."};
        case Relocation::End::folderFailed:
        case Relocation::End::moveFailed:
        case Relocation::End::didNotLand:
        case Relocation::End::copyFailed:
        case Relocation::End::publishFailed:
            break;
    }
    return notPutBack;
}

}  // namespace

OrdovanTrashReport OrdovanDuplicateTrasher::restore(const OrdovanTrashRecord& record, const Url& authorizedRoot,
                                                    OrdovanFileSystem& fs, const OrdovanRunControl& control) {
    OrdovanTrashReport report;
    report.record.version = record.version;
    report.outcomes.reserve(record.entries.size());
    const TrashScope scope(authorizedRoot);
    Relocator relocator(fs);
    ordovan::RunProgress progress(control, record.entries.size());
    for (auto entry = record.entries.rbegin(); entry != record.entries.rend(); ++entry) {
        const Url trashed = Url::file(entry->trashed());
        const Url original = Url::file(entry->original());
        Verdict result = stopped;
        if (progress.mayContinue()) {
            const auto was = proven(*entry, trashed, original, scope, fs);
            result = was ? verdict(relocator.relocate(trashed, original, *was)) : was.error();
        }
        if (result.message != OrdovanExecutor::stoppedMessage) progress.fileDone();
        if (result.status != Status::moved) report.record.entries.push_back(*entry);
        report.outcomes.push_back({trashed, original, result.status, std::string(result.message)});
    }
    std::ranges::reverse(report.record.entries);
    return report;
}
