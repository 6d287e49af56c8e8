#pragma once

#include "OrdovanApp/controller/RunRecovery.h"
#include "OrdovanApp/controller/TidyPorts.h"
#include "OrdovanCore/Executor.h"
#include "OrdovanCore/Journal.h"
#include "OrdovanCore/Proposals.h"
#include "OrdovanCore/RunHistory.h"

#include <memory>
#include <optional>
#include <span>

/// What every run works from; nothing else is looked at while it runs.
struct RunInputs {
    Url root;
    Url outputRoot;
    double nowEpoch = 0;
    RecordsInMemory memory;
    RecoveryControl recovery;  ///< its flag stops the run as well
    OrdovanRunControl control;
};

/// What a run did.
struct RunResult {
    bool refused = false;  ///< another run holds the folder: nothing was done, and nothing below has a meaning
    std::vector<RecoveredRun> recovered;  ///< earlier ones, that were found interrupted
    bool keepsRecord = false;             ///< the record of this run still stands
    std::shared_ptr<const OrdovanExecutionReport> report;
    std::optional<ordovan::JournalStore::Saved> record;  ///< nothing where there was nothing to record
    OrdovanRunRecord run{};
    ordovan::HistoryStore::Result history;
};

/// The runs that change a folder, from the lock on it to the record of what was done. They run on a background thread.
namespace RunFlow {

/// Moves the files of these proposals.
[[nodiscard]] RunResult organize(const TidyPorts& ports, RunInputs inputs,
                                 std::span<const OrdovanFileProposal> proposals);

/// Puts back the files of these entries of the journal, and removes the folders that this empties.
[[nodiscard]] RunResult undo(const TidyPorts& ports, RunInputs inputs, const OrdovanJournal& entries);

}  // namespace RunFlow
