#pragma once

#include "OrdovanApp/controller/CancelFlag.h"
#include "OrdovanApp/controller/TidyPorts.h"
#include "OrdovanCore/Journal.h"
#include "OrdovanCore/Reconcile.h"
#include "OrdovanCore/RunHistory.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

/// What the program holds in memory of the records that concern one folder.
struct RecordsInMemory {
    ordovan::JournalStore::Journal journal;         ///< the folder's, or null
    ordovan::JournalStore::Journal unsavedJournal;  ///< the part of it that is not stored, or null
    ordovan::TrashRecordStore::Known trash;
    std::vector<OrdovanRunRecord> unsavedRuns;  ///< that the history on disk lacks, newest first
    /// Runs of this program that came to their end while their record could not be saved elsewhere.
    std::vector<ordovan::Uuid> ownRuns;
};

/// What was made of a run that had been interrupted.
struct RecoveredRun {
    std::shared_ptr<const OrdovanInterruptedRun> told;  ///< what the user is to be told, or null
    std::optional<ordovan::JournalStore::Saved> journal;
    std::optional<ordovan::TrashRecordStore::Saved> trash;
    std::optional<OrdovanRunRecord> run;  ///< what was added to the history
    ordovan::HistoryStore::Result history;
};

/// What was made of the records that stood for a folder.
struct Recovery {
    std::vector<RecoveredRun> runs;  ///< one for each that was settled, the oldest first
    bool isHeld = false;  ///< a run goes on in the folder, though the folder's lock did not tell; nothing was settled
};

/// How bringing an interrupted run to its end is followed and stopped.
struct RecoveryControl {
    std::shared_ptr<const CancelFlag> flag = std::make_shared<const CancelFlag>();  ///< never null
    /// Told before the first file of that run and after each, on the running thread: how many are done, and of how
    /// many. May be empty.
    std::function<void(std::size_t done, std::size_t total)> progressed = {};
};

/// Brings a folder in which a run was interrupted, and the records of it, to an end. On background threads, under the
/// folder's lock.
namespace RunRecovery {

enum class Occasion {
    preview,
    run,  ///< another run is about to begin
};

/// Reconciles the runs whose records stand for the folder; stores what they did where runs store that; and then removes
/// the records. One stays while it can not be read or stored elsewhere; nothing is stored while what was done is not
/// certain to be on the disk. Where some files can not be looked at, the others are settled and the record is cut down
/// to these: doing all this again comes to the same. What later runs have recorded meanwhile stays. One that is damaged
/// is set aside. `memory` is brought up to date.
///
/// Once the flag of `control` is set, no other file is begun, and the hash of one is given up in its middle: then the
/// record in work stays and nothing is stored or told of it, as if this had not come to it.
[[nodiscard]] Recovery settle(const TidyPorts& ports, const Url& root, RecordsInMemory& memory, double nowEpoch,
                              Occasion occasion, const RecoveryControl& control);

/// The entries as they are to be stored: without the identities of files on volumes that do not keep them.
void dropPassingIdentities(const TidyPorts& ports, OrdovanJournal& journal);

}  // namespace RunRecovery
