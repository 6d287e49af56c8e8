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
    bool standsThere = false;  ///< a record is still in the place where the next run's would go
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
    run,  ///< another run is about to begin; it goes without a record of its own where this one has to stay
};

/// Reconciles the run whose record stands for the folder, if there is one; stores what it did where runs store that;
/// and then removes the record. It stays while it can not be read, or something not be looked at or stored: doing all
/// this again comes to the same. One that is damaged is set aside. `memory` is brought up to date.
///
/// Once the flag of `control` is set, no other file is begun, and the hash of one is given up in its middle: then the
/// record stays and nothing is stored or told, as if this had not been called.
[[nodiscard]] RecoveredRun settle(const TidyPorts& ports, const Url& root, RecordsInMemory& memory, double nowEpoch,
                                  Occasion occasion, const RecoveryControl& control);

/// The entries as they are to be stored: without the identities of files on volumes that do not keep them.
void dropPassingIdentities(const TidyPorts& ports, OrdovanJournal& journal);

}  // namespace RunRecovery
