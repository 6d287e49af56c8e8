#pragma once

#include "OrdovanApp/stores/HeldLock.h"
#include "OrdovanApp/stores/KeyValueStore.h"
#include "OrdovanCore/Rules.h"

#include <QObject>

#include <cstddef>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>

/// The user's rules in the order of matching; one for the application, on the controller's thread.
///
/// Every change is made to the rules as they are stored at that moment, under the lock of the shared records (it waits
/// for another process's change), and stored at once.
class RuleStore : public QObject {
    Q_OBJECT

public:
    static constexpr std::string_view defaultsKey = "ordovan.rules.v1";

    /// Reads the rules; none where they are missing or can not be read, and the first 50 of a longer list.
    /// `lockRecords` takes the lock of the shared records.
    RuleStore(ordovan::KeyValueStore& store, std::function<OrdovanResult<ordovan::HeldLock>()> lockRecords,
              QObject* parent = nullptr);

    [[nodiscard]] const OrdovanRuleSet& ruleSet() const { return ruleSet_; }

    /// What `add` says when the text was right but the rule could not be stored.
    static constexpr std::string_view notAdded = "That rule couldn't be added.";

    /// Adds a rule at the end, made from typed text. Returns why not, as a sentence for the user.
    std::optional<std::string> add(std::string_view extensions, std::string_view folderName);

    /// Deletes the rules at these positions; positions beyond the end are ignored. False when that could not be
    /// stored; nothing is deleted then.
    bool remove(const std::set<std::size_t>& positions);

    /// Moves the rules at these positions, their order kept, in front of the rule at position `target` (the number of
    /// rules for the end). False when that could not be stored; nothing is moved then.
    bool move(const std::set<std::size_t>& positions, std::size_t target);

Q_SIGNALS:
    void ruleSetChanged();

private:
    [[nodiscard]] OrdovanRuleSet stored() const;
    bool change(const std::function<void(OrdovanRuleSet&)>& edit);

    ordovan::KeyValueStore& store_;
    std::function<OrdovanResult<ordovan::HeldLock>()> lockRecords_;
    OrdovanRuleSet ruleSet_;
};
