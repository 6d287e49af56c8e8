#pragma once

#include "OrdovanCore/Executor.h"
#include "OrdovanCore/FileFacts.h"
#include "OrdovanCore/FileSystem.h"
#include "OrdovanCore/Journal.h"
#include "OrdovanCore/RunRecord.h"
#include "OrdovanCore/TrashRecord.h"

#include <cstddef>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace ordovan {

/// An info file of the user's Trash that tells of a file's place.
struct TrashedFile {
    Url original;  ///< the place it tells of, as it was asked for
    Url info;      ///< the info file
    Url item;      ///< where the item lies or would lie
};

/// What reconciling uses of the world, one thread's.
struct ReconcilePorts {
    OrdovanFileSystem& fs;
    FactsFunction facts;
    /// All info files of the user's Trash that tell of one of these places. An error means that it can not be told.
    std::function<OrdovanResult<std::vector<TrashedFile>>(std::span<const Url> originals)> findInTrash;
    /// Removes an info file that has no item; ENOTEMPTY when it has one.
    std::function<OrdovanResult<void>(const TrashedFile& orphan)> removeTrashInfo;
    /// Removes what a Trash knows about an item that has been put back, as `forgetTrashInfo` does.
    std::function<void(const Url& item, const Url& putBackTo)> forgetTrashInfo;
    /// Whether a journal tells that the file at an item's destination, which has this content and identity, came from
    /// elsewhere: then it is not what the run has left there. May be empty.
    std::function<bool(const OrdovanRunItem& item, std::string_view contentHash, std::string_view identity)>
        isAnothers = {};
};

}  // namespace ordovan

/// What the user is told about a run that was interrupted.
struct OrdovanInterruptedRun {
    ordovan::Uuid id;  ///< the run's
    OrdovanRunRecord::Kind kind = OrdovanRunRecord::Kind::organize;
    double startedAtEpoch = 0;  ///< seconds since 1970-01-01 UTC
    Url root;                   ///< the folder it worked in
    bool isUnreadable = false;  ///< its record could not be read and was set aside; nothing else is known of it
    std::size_t finished = 0;   ///< files that had been moved, or were now
    std::size_t untouched = 0;  ///< files that are where they were
    std::size_t putRight = 0;   ///< files of which something half done was completed or taken away again
    std::size_t unsettled = 0;  ///< files of which it can not be told, and that the user has to look at
    bool isRecorded = true;     ///< what it did is in the records; else it is looked at again at the next preview
    /// One for each file that was not simply untouched, in the order of the run. `source` and `destination` are the
    /// run's; for a trashed file `destination` is its place in the Trash.
    std::vector<OrdovanExecutionOutcome> outcomes;

    /// "An earlier run was interrupted. 3 files were finished, 5 were left untouched and 1 was put right."
    [[nodiscard]] std::string summary() const;
    friend bool operator==(const OrdovanInterruptedRun&, const OrdovanInterruptedRun&) = default;
};

/// What is true after a run was interrupted, and what the records of it must say. A value; any thread.
struct OrdovanReconciliation {
    OrdovanInterruptedRun run;
    OrdovanJournal journal;             ///< entries that must be there; of the run's time
    std::vector<std::string> restored;  ///< destinations of journal entries that must go: their files are back
    OrdovanTrashRecord trashed;         ///< entries that must be there
    std::vector<std::string> putBack;   ///< places in the Trash whose entries must go: their files are back
    /// Of the entries that must be there, those of files that are only known to have come to their new places: by the
    /// destination, or by the original place of what was trashed. Where a later run's entry stands, that is nearer the
    /// truth.
    std::unordered_set<std::string> unseen;
    /// The items, by their numbers, of which the run, or this, has changed something or may have.
    std::vector<std::size_t> touched;
    /// Everything could be looked at, and what was to be changed was. When false, what is told here holds, and
    /// reconciling once more may tell more: the run's record is still needed.
    bool isComplete = true;
    /// The items, by their numbers, for which it is needed.
    std::vector<std::size_t> uncertain;
    /// The folder is not the one in which the run worked, and nothing of the run is in sight: its volume is probably
    /// not there. Nothing was decided, and nothing else here has a meaning.
    bool isElsewhere = false;
    /// It was stopped before its end. Each file is settled or as it was, and nothing else here has a meaning:
    /// reconciling once more settles them all.
    bool isStopped = false;

    /// The run for the history: what lies at its destination counts as moved, what is not settled as failed.
    [[nodiscard]] OrdovanRunRecord historyRecord(const OrdovanRunIntent& intent) const;
};

/// Finds out what an interrupted run has done, and completes or takes back what it left half done.
///
/// Fail-closed: it looks at every file of the run anew, acts inside the run's folders and where no link is on the way,
/// never overwrites, and removes only what the run is proved to have made, while the file itself is seen to be whole.
/// It may itself be interrupted at any moment and run again: that comes to the same end. Never fails as a whole.
/// Synchronous, on the one thread that its ports belong to; without state.
namespace OrdovanReconciler {

/// `run` is the stored record of the run, as `OrdovanUnfinishedRun` reads it. `control` is asked before each file and
/// once behind the last, and told after each; while it is looked for the folder (`isElsewhere`) it is only asked.
[[nodiscard]] OrdovanReconciliation reconcile(const OrdovanUnfinishedRun& run, const ordovan::ReconcilePorts& ports,
                                              const OrdovanRunControl& control = {});

}  // namespace OrdovanReconciler
