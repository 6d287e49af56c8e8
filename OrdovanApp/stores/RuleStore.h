#pragma once

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
/// Every change is made to the rules as they are stored at that moment, and stored at once; the store keeps other
/// processes' changes apart. What is stored but can not be read is kept under other keys before it is replaced.
class RuleStore : public QObject {
    Q_OBJECT

public:
    static constexpr std::string_view defaultsKey = "ordovan.rules.v1";

    /// Where a document that could not be used whole is kept; with ".2", ".3" and so on for further ones.
    static constexpr std::string_view unreadableKey = "ordovan.rules.v1.unreadable";

    /// Reads the rules; none where they are missing or can not be read, and the first 50 of a longer list.
    explicit RuleStore(ordovan::KeyValueStore& store, QObject* parent = nullptr);

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
    bool change(const std::function<void(OrdovanRuleSet&)>& edit);

    ordovan::KeyValueStore& store_;
    OrdovanRuleSet ruleSet_;
};
