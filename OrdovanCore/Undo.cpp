#include "OrdovanCore/ExecutionScope.h"
#include "OrdovanCore/Executor.h"
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

Verdict skipped(const char* message) {
    return {Status::skippedRevalidation, message};
}

Verdict couldNotRestore(const OrdovanSystemError& error) {
    return {Status::failed, "Could not restore this file. " + OrdovanExecutor::failureReason(error)};
}

/// Proves that the organized file is the one that was moved and that its old place is free: what it is now, or the
/// first check that refuses. Changes nothing.
std::expected<Fingerprint, Verdict> proven(const OrdovanJournalEntry& entry, const Url& original, const Url& organized,
                                           const ExecutionScope& scope, OrdovanFileSystem& fs) {
    const auto refused = [](const char* message) { return std::unexpected(skipped(message)); };
    if (!scope.holds(original, organized, fs)) {
        return refused("Journal entry is outside the authorized scope; undo refused.");
    }
    // A regular file exists and is no link.
    const bool isThere = fs.isRegularFile(organized);
    const auto size = isThere ? fs.fileSize(organized) : std::unexpected(OrdovanSystemError{});
    if (!size) {
        return refused("The organized file is missing or was changed since, so it was left as it is.");
    }
    if (scope.crossesLink(original, organized, fs)) {
        return refused("A parent folder is a symlink; undo skipped to stay in scope.");
    }
    if (fs.exists(original) || fs.isSymlink(original)) {
        return refused("Original location is occupied; undo skipped.");
    }
    const auto hash = *size == entry.byteSize() ? fs.contentHash(organized) : std::unexpected(OrdovanSystemError{});
    if (!hash || *hash != entry.contentHash()) {
        return refused("File was modified after organizing; undo skipped to avoid data loss.");
    }
    // A copy made across volumes has another identity than its original had.
    const auto identity = fs.fileIdentity(organized);
    const bool keptIdentity = entry.sameVolume() && !entry.fileID().empty();
    if (keptIdentity && (!identity || *identity != entry.fileID())) {
        return refused("A different file now occupies that location; undo skipped.");
    }
    if (!identity) return std::unexpected(couldNotRestore(identity.error()));
    return Fingerprint{*size, *hash, *identity};
}

Verdict verdict(const Relocation& relocation) {
    switch (relocation.end) {
        case Relocation::End::done:
            return {Status::moved, "Restored."};
        case Relocation::End::folderFailed:
        case Relocation::End::moveFailed:
        case Relocation::End::copyFailed:
            return couldNotRestore(relocation.error);
        case Relocation::End::verificationFailed:
            return {Status::failed, "Restore verification failed; organized copy kept."};
        case Relocation::End::didNotLand:
        case Relocation::End::publishFailed:
        case Relocation::End::originalStays:
            break;
    }
    return {Status::failed, "Could not finish restoring; organized copy kept."};
}

}  // namespace

OrdovanExecutionReport OrdovanExecutor::undo(const OrdovanJournal& journal, const Url& authorizedRoot,
                                             const Url& outputRoot, OrdovanFileSystem& fs,
                                             const OrdovanRunControl& control) {
    OrdovanExecutionReport report;
    report.journal.version = journal.version;
    report.journal.createdAtEpoch = journal.createdAtEpoch;
    report.outcomes.reserve(journal.entries.size());
    const ExecutionScope scope(authorizedRoot, outputRoot);
    Relocator relocator(fs);
    ordovan::RunProgress progress(control, journal.entries.size());
    for (auto entry = journal.entries.rbegin(); entry != journal.entries.rend(); ++entry) {
        const Url original = Url::file(entry->source());
        const Url organized = Url::file(entry->destination());
        Verdict result{Status::skippedRevalidation, std::string(stoppedMessage)};
        if (progress.mayContinue()) {
            const auto was = proven(*entry, original, organized, scope, fs);
            const auto mayTryAgain = [&] { return !scope.crossesLink(original, organized, fs); };
            result = was ? verdict(relocator.relocate(organized, original, *was, mayTryAgain)) : was.error();
            progress.fileDone();
        }
        if (result.status != Status::moved) report.journal.entries.push_back(*entry);
        report.outcomes.push_back({original, organized, result.status, std::move(result.message)});
    }
    std::ranges::reverse(report.journal.entries);
    return report;
}
