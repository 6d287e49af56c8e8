#pragma once

#include "OrdovanApp/controller/RecoverySurvey.h"
#include "OrdovanCore/Duplicates.h"
#include "OrdovanCore/Executor.h"
#include "OrdovanCore/Inventory.h"
#include "OrdovanCore/Journal.h"
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

/// The end of a run of any kind.
struct RunReport {
    OrdovanRunRecord::Kind kind = OrdovanRunRecord::Kind::organize;
    Url folder;
    std::shared_ptr<const OrdovanExecutionReport> report;  ///< null when nothing was to be done
    std::optional<std::string> warning;
    std::int64_t trashedBytes = 0;  ///< of the files that a run of kind `trash` moved
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
};

/// The largest files of a folder.
struct LargeFilesResult {
    Url folder;
    std::vector<OrdovanInventoryEntry> files;
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
