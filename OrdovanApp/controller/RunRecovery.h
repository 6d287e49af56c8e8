#pragma once

#include "OrdovanApp/controller/TidyPorts.h"
#include "OrdovanCore/Journal.h"
#include "OrdovanCore/Reconcile.h"
#include "OrdovanCore/RunHistory.h"

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
[[nodiscard]] RecoveredRun settle(const TidyPorts& ports, const Url& root, RecordsInMemory& memory, double nowEpoch,
                                  Occasion occasion);

/// The entries as they are to be stored: without the identities of files on volumes that do not keep them.
void dropPassingIdentities(const TidyPorts& ports, OrdovanJournal& journal);

}  // namespace RunRecovery
