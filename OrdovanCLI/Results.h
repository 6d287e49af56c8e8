#pragma once

#include "OrdovanCore/Executor.h"
#include "OrdovanCore/Journal.h"
#include "OrdovanCore/Rules.h"
#include "OrdovanCore/RunHistory.h"

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// What the commands find out, ready to be shown as text or as JSON. The forms differ, the facts do not.
namespace ordovan::cli {

/// The end of an organize or an undo.
struct RunReport {
    OrdovanRunRecord::Kind kind = OrdovanRunRecord::Kind::organize;
    Url folder;
    std::shared_ptr<const OrdovanExecutionReport> report;  ///< null when nothing was to be done
    std::optional<std::string> warning;
};

/// What could be undone in a folder, in the order in which it happened.
struct RecoveryResult {
    Url folder;
    std::shared_ptr<const OrdovanJournal> journal;  ///< null when there is nothing
    std::vector<bool> isPresent;  ///< for each entry: whether the organized file is still where it was put
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
