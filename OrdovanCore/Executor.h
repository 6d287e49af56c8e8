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

/// How one file fared. Outcomes and reports are values; any thread.
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
/// ever overwritten, and every step that can not be completed is rolled back. No call fails as a whole: each file has
/// an outcome, and the run goes on; nothing ends it but its control. Without state; synchronous, on the calling thread,
/// which may be any that may call `fs`.
namespace OrdovanExecutor {

/// Carries out proposals, each completely before the next. A move across volumes is copied under a partial name,
/// verified by content hash, renamed and only then removed at the source. `authorizedRoot` is the folder that files are
/// taken from, `outputRoot` the one that they go to; `nowEpoch` (seconds since 1970-01-01 UTC) is the journal's time.
[[nodiscard]] OrdovanExecutionReport apply(std::span<const OrdovanFileProposal> proposals, const Url& authorizedRoot,
                                           const Url& outputRoot, OrdovanFileSystem& fs, double nowEpoch,
                                           const OrdovanRunControl& control = {});

/// Puts back what a journal says was moved, newest first: only a file that is provably the one that was moved, and
/// only to a free place inside the authorized root. In each outcome, `source` is the place it returns to and
/// `destination` the organized location. The report's journal holds the entries that were not restored, in order.
[[nodiscard]] OrdovanExecutionReport undo(const OrdovanJournal& journal, const Url& authorizedRoot,
                                          const Url& outputRoot, OrdovanFileSystem& fs,
                                          const OrdovanRunControl& control = {});

/// One sentence for a system's refusal. Any thread.
[[nodiscard]] std::string failureReason(const OrdovanSystemError& error);

/// The sentence for files that a stopped run did not come to.
inline constexpr std::string_view stoppedMessage = "The run was stopped before this file; left untouched.";

}  // namespace OrdovanExecutor
