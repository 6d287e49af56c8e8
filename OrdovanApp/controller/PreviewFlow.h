#pragma once

#include "OrdovanApp/controller/CancelFlag.h"
#include "OrdovanApp/controller/PlanIndex.h"
#include "OrdovanApp/controller/PreviewDepth.h"
#include "OrdovanApp/controller/RunRecovery.h"
#include "OrdovanApp/controller/TidyPorts.h"
#include "OrdovanCore/Inventory.h"
#include "OrdovanCore/Journal.h"
#include "OrdovanCore/Planner.h"
#include "OrdovanCore/Rules.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

/// A folder as it was found: all of it or, but for `root`, nothing.
struct PreviewedFolder {
    Url root;
    std::shared_ptr<const OrdovanInventory> inventory;
    std::shared_ptr<const OrdovanPlanResult> plan;
    std::shared_ptr<const PlanIndex> index;  ///< null where none was asked for
};

/// What a preview works from; nothing else is looked at while it runs.
struct PreviewInputs {
    PreviewDepth depth = PreviewDepth::plan;
    Url root;
    bool isResolved = true;  ///< `root` is a path without links
    /// Told on the running thread what the path of a root that was not resolved is without links.
    std::function<void(const Url& root)> resolved;
    bool includeHidden = false;
    bool groupByMonth = false;
    OrdovanRuleSet rules;
    /// By the folder's path.
    std::unordered_map<std::string, ordovan::JournalStore::Journal> unsavedJournals;
    ordovan::TrashRecordStore::Known knownTrash;
    std::vector<OrdovanRunRecord> unsavedRuns;
    std::vector<ordovan::Uuid> ownRuns;  ///< as in `RecordsInMemory`
    /// Told on the running thread what became of a run that was found interrupted in this folder.
    std::function<void(const Url& root, RecoveredRun run)> recovered;
    /// Stops that, also when a later preview of the folder has taken the place of this one.
    RecoveryControl recovery;
    /// Taken while an interrupted run is brought to its end: a later preview waits for an earlier one's.
    std::shared_ptr<std::mutex> recoveryTurn = std::make_shared<std::mutex>();
    PreviewedFolder known;  ///< what was found last
    bool indexesPlan = false;
    std::shared_ptr<const CancelFlag> flag;
    /// Told of the files and folders met so far, after each folder and at the end, on the running thread; may be empty.
    std::function<void(std::uint64_t files, std::uint64_t folders, bool isLast)> progressed;
};

/// What a preview found. Of no meaning once its flag is set.
struct PreviewResult {
    /// Only the root when that was not or could not be read. What is equal to what was known is the known object.
    PreviewedFolder found;
    bool partial = false;
    bool caseInsensitive = true;
    ordovan::JournalStore::Loaded journal;
    ordovan::JournalStore::Journal unsavedBefore;  ///< what the journal was loaded with
    ordovan::TrashRecordStore::Known trash;
};

namespace PreviewFlow {

/// Resolves the folder's path, brings a run that was interrupted in it to an end, loads its journal and the trash
/// record, scans the folder and its output folder and plans, as far as the depth goes. Runs on a background thread.
[[nodiscard]] PreviewResult run(const TidyPorts& ports, PreviewInputs inputs);

/// The folders directly inside `root` that a journal's files were organized into: the output folder, and the one of
/// an older version, each where an entry lies in it.
[[nodiscard]] std::vector<Url> outputRoots(const OrdovanJournal& journal, const Url& root);

}  // namespace PreviewFlow
