#include "OrdovanCore/Executor.h"

#include "OrdovanCore/ExecutionScope.h"
#include "OrdovanCore/Relocator.h"
#include "OrdovanCore/RunProgress.h"
#include "OrdovanCore/Verdict.h"

#include <algorithm>
#include <expected>
#include <utility>

using ordovan::ExecutionScope;
using ordovan::Fingerprint;
using ordovan::Relocation;
using ordovan::Relocator;
using ordovan::Verdict;
using Status = OrdovanExecutionStatus;

namespace {

Verdict couldNotMove(const OrdovanSystemError& error) {
    return {Status::failed, "Could not move this file; it was left in place. " + OrdovanExecutor::failureReason(error)};
}

/// The first check that refuses a proposal, or nothing. Changes nothing.
std::optional<Verdict> refusal(const OrdovanFileProposal& proposal, const ExecutionScope& scope,
                               OrdovanFileSystem& fs) {
    const auto skipped = [](const char* message) { return Verdict{Status::skippedRevalidation, message}; };
    // A regular file exists and is no link, so this one question settles all three.
    if (!fs.isRegularFile(proposal.source)) return skipped("Source changed since preview; left untouched.");
    if (!scope.holds(proposal.source, proposal.destination, fs)) {
        return skipped("Path no longer within the authorized scope.");
    }
    if (scope.crossesLink(proposal.source, proposal.destination, fs)) {
        return skipped("A parent folder is a symlink; skipped to stay in scope.");
    }
    if (fs.exists(proposal.destination) || fs.isSymlink(proposal.destination)) {
        return skipped("A file already exists at the destination; left untouched.");
    }
    return std::nullopt;
}

OrdovanResult<Fingerprint> fingerprint(const Url& file, OrdovanFileSystem& fs) {
    auto hash = fs.contentHash(file);
    if (!hash) return std::unexpected(hash.error());
    const auto size = fs.fileSize(file);
    if (!size) return std::unexpected(size.error());
    auto identity = fs.fileIdentity(file);
    if (!identity) return std::unexpected(identity.error());
    return Fingerprint{*size, std::move(*hash), std::move(*identity)};
}

Verdict verdict(const Relocation& relocation) {
    switch (relocation.end) {
        case Relocation::End::done:
            return {Status::moved, relocation.sameVolume ? "Moved." : "Copied, verified and moved."};
        case Relocation::End::folderFailed:
        case Relocation::End::moveFailed:
        case Relocation::End::copyFailed:
        case Relocation::End::publishFailed:
            return couldNotMove(relocation.error);
        case Relocation::End::didNotLand:
            return {Status::failed, "Move did not land at the destination."};
        case Relocation::End::verificationFailed:
            return {Status::failed, "Copy verification failed; source kept, copy removed."};
        case Relocation::End::originalStays:
            break;
    }
    return {Status::failed,
            "Copied and verified, but the original could not be removed; copy discarded to avoid a duplicate."};
}

/// Carries out one proposal; a file that was moved gets its journal entry.
Verdict applyOne(const OrdovanFileProposal& proposal, const ExecutionScope& scope, Relocator& relocator,
                 OrdovanFileSystem& fs, std::vector<OrdovanJournalEntry>& entries) {
    if (auto refused = refusal(proposal, scope, fs)) return std::move(*refused);
    const auto was = fingerprint(proposal.source, fs);
    if (!was) return couldNotMove(was.error());
    const Relocation relocation = relocator.relocate(proposal.source, proposal.destination, *was,
                                                     [&] { return !refusal(proposal, scope, fs).has_value(); });
    if (relocation.end == Relocation::End::done) {
        entries.emplace_back(proposal.source.path(), proposal.destination.path(), relocation.sameVolume, was->byteSize,
                             was->contentHash, was->identity);
    }
    return verdict(relocation);
}

std::size_t count(const std::vector<OrdovanExecutionOutcome>& outcomes, Status status) {
    return static_cast<std::size_t>(std::ranges::count(outcomes, status, &OrdovanExecutionOutcome::status));
}

}  // namespace

std::string_view rawValue(OrdovanExecutionStatus status) {
    switch (status) {
        case Status::moved:
            return "moved";
        case Status::skippedRevalidation:
            return "skippedRevalidation";
        case Status::failed:
            break;
    }
    return "failed";
}

std::string OrdovanExecutionOutcome::id() const {
    return std::string(source.path()).append("->").append(destination.path());
}

std::size_t OrdovanExecutionReport::movedCount() const {
    return count(outcomes, Status::moved);
}

std::size_t OrdovanExecutionReport::skippedCount() const {
    return count(outcomes, Status::skippedRevalidation);
}

std::size_t OrdovanExecutionReport::failedCount() const {
    return count(outcomes, Status::failed);
}

OrdovanExecutionReport OrdovanExecutor::apply(std::span<const OrdovanFileProposal> proposals, const Url& authorizedRoot,
                                              const Url& outputRoot, OrdovanFileSystem& fs, double nowEpoch,
                                              const OrdovanRunControl& control) {
    OrdovanExecutionReport report;
    report.journal.createdAtEpoch = nowEpoch;
    report.outcomes.reserve(proposals.size());
    const ExecutionScope scope(authorizedRoot, outputRoot);
    Relocator relocator(fs);
    ordovan::RunProgress progress(control, proposals.size());
    for (const OrdovanFileProposal& proposal : proposals) {
        Verdict verdict{Status::skippedRevalidation, std::string(stoppedMessage)};
        if (progress.mayContinue()) {
            verdict = applyOne(proposal, scope, relocator, fs, report.journal.entries);
            progress.fileDone();
        }
        report.outcomes.push_back({proposal.source, proposal.destination, verdict.status, std::move(verdict.message)});
    }
    return report;
}
