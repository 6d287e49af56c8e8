#pragma once

#include "OrdovanApp/controller/RecoverySurvey.h"
#include "OrdovanCore/Duplicates.h"
#include "OrdovanCore/Executor.h"
#include "OrdovanCore/Inventory.h"
#include "OrdovanCore/Journal.h"
#include "OrdovanCore/Planner.h"
#include "OrdovanCore/Rules.h"
#include "OrdovanCore/RunHistory.h"
#include "OrdovanCore/TrashRecord.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// What the commands find out, ready to be shown as text or as JSON. The forms differ, the facts do not.
namespace ordovan::cli {

/// What a command was to look at and could not. What holds for the rest of the folder may not hold for this.
struct Unseen {
    bool isPartialScan = false;                      ///< the scan stopped at one of its limits
    std::vector<OrdovanInventorySkip> folders = {};  ///< that could not be read, or lie too deep
    std::vector<Url> files = {};                     ///< that could not be read, where contents are compared

    [[nodiscard]] bool isAnything() const { return isPartialScan || !folders.empty() || !files.empty(); }
};

/// The end of a run of any kind.
struct RunReport {
    OrdovanRunRecord::Kind kind = OrdovanRunRecord::Kind::organize;
    Url folder;
    std::shared_ptr<const OrdovanExecutionReport> report = nullptr;  ///< null when nothing was to be done
    std::optional<std::string> warning = std::nullopt;
    std::int64_t trashedBytes = 0;  ///< of the files that a run of kind `trash` moved
    /// What the run was chosen from; only for a run of kind `organize`.
    std::shared_ptr<const OrdovanPlanResult> plan = nullptr;
    std::optional<Unseen> unseen = std::nullopt;  ///< only where the files of the run were found by a scan

    /// Files that could not even be proposed.
    [[nodiscard]] std::size_t notEvaluated() const { return plan ? plan->skipped.size() : 0; }
    [[nodiscard]] std::size_t needReview() const { return plan ? plan->conflicts.size() : 0; }
    /// Whether something that the run was meant for stayed where it is, or was not even seen.
    [[nodiscard]] bool isFlawed() const {
        const bool someStayed = report && report->movedCount() < report->outcomes.size();
        return someStayed || warning || notEvaluated() > 0 || (unseen && unseen->isAnything());
    }
};

/// What could be taken back in a folder, in the order in which it happened.
struct RecoveryResult {
    Url folder;
    RecoverySurvey found;  ///< the journal is null when nothing was organized
};

/// The files of equal content in a folder, and which copy of each stays.
struct DuplicatesResult {
    Url folder;
    std::shared_ptr<const OrdovanInventory> inventory;
    std::shared_ptr<const OrdovanDuplicateReport> report;
    std::vector<std::size_t> keep;  ///< for each group: the position of the file to keep
    Unseen unseen;
};

/// The largest files of a folder.
struct LargeFilesResult {
    Url folder;
    std::shared_ptr<const OrdovanInventory> inventory;
    std::vector<OrdovanInventoryEntry> files;
    Unseen unseen;
};

/// Settings as key and raw value, in the order of the help.
struct SettingsResult {
    struct Value {
        std::string_view key;
        std::string text;
        bool isBoolean;
    };
    std::vector<Value> values;
};

}  // namespace ordovan::cli
