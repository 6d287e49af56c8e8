#pragma once

#include "OrdovanCore/FileSystem.h"
#include "OrdovanCore/Journal.h"
#include "OrdovanCore/Proposals.h"

#include <cstddef>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// How one file fared.
enum class OrdovanExecutionStatus {
    moved,                ///< the file lies at its destination
    skippedRevalidation,  ///< a check refused it before anything was changed
    failed,               ///< an operation failed; the file is, or was put back, where it was
};

/// The case name.
[[nodiscard]] std::string_view rawValue(OrdovanExecutionStatus status);

struct OrdovanExecutionOutcome {
    Url source;
    Url destination;
    OrdovanExecutionStatus status;
    std::string message;  ///< a sentence for the user

    /// The source path, "->", the destination path.
    [[nodiscard]] std::string id() const;
    friend bool operator==(const OrdovanExecutionOutcome&, const OrdovanExecutionOutcome&) = default;
};

/// What a run did: one outcome for each file it was given, in order.
struct OrdovanExecutionReport {
    std::vector<OrdovanExecutionOutcome> outcomes;
    OrdovanJournal journal;  ///< after `apply`: one entry for each moved file; after `undo`: the entries not restored

    [[nodiscard]] std::size_t movedCount() const;
    [[nodiscard]] std::size_t skippedCount() const;
    [[nodiscard]] std::size_t failedCount() const;
    friend bool operator==(const OrdovanExecutionReport&, const OrdovanExecutionReport&) = default;
};

/// How a caller follows and stops a run. Both are called on the running thread; either may be empty.
struct OrdovanRunControl {
    /// Asked before each file. Once it says false, the files that remain are reported as skipped, untouched.
    std::function<bool()> shouldContinue;
    /// Told after each file: how many are done, and of how many.
    std::function<void(std::size_t done, std::size_t total)> progressed;
};

/// Moves files and takes moves back. Fail-closed: each file is examined again right before it is touched, nothing is
/// ever overwritten, and every step that can not be completed is rolled back. Synchronous, single-threaded, without
/// state; nothing here ends a run but its control.
namespace OrdovanExecutor {

/// Carries out proposals, each completely before the next. A move across volumes is copied under a partial name,
/// verified by content hash, renamed and only then removed at the source.
[[nodiscard]] OrdovanExecutionReport apply(std::span<const OrdovanFileProposal> proposals, const Url& authorizedRoot,
                                           const Url& outputRoot, OrdovanFileSystem& fs, double nowEpoch,
                                           const OrdovanRunControl& control = {});

/// Puts back what a journal says was moved, newest first: only a file that is provably the one that was moved, and
/// only to a free place inside the authorized root. In each outcome, `source` is the place it returns to and
/// `destination` the organized location. The report's journal holds the entries that were not restored, in order.
[[nodiscard]] OrdovanExecutionReport undo(const OrdovanJournal& journal, const Url& authorizedRoot,
                                          const Url& outputRoot, OrdovanFileSystem& fs,
                                          const OrdovanRunControl& control = {});

/// One sentence for a system's refusal.
[[nodiscard]] std::string failureReason(const OrdovanSystemError& error);

/// The sentence for files that a stopped run did not come to.
inline constexpr std::string_view stoppedMessage = "The run was stopped before this file; left untouched.";

}  // namespace OrdovanExecutor

/// The walk that keeps a run inside its scope: true when a folder between the item and its root (the folder holding
/// the item included, the root not) is a symbolic link. The root is given as a canonical path; for an item outside it
/// the walk goes on to the top. True as well for a path with a ".." piece, which its text can not settle. Asks `fs`
/// about each folder at the moment of the call. Any thread.
[[nodiscard]] bool OrdovanHasSymlinkedParent(const Url& item, std::string_view canonicalRoot, OrdovanFileSystem& fs);
