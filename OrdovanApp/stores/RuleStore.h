#pragma once

#include "OrdovanApp/stores/BackgroundWork.h"
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
///
/// Storing may wait for another process. Each change can be made at once, on the calling thread, or with a `done` that
/// hears how it went: that goes through the background where there is one, and is over before `done` is called. It is
/// not called once the store is gone.
class RuleStore : public QObject {
    Q_OBJECT

public:
    /// The key that the rules are stored under.
    static constexpr std::string_view defaultsKey = "ordovan.rules.v1";

    /// Where a document that could not be used whole is kept; with ".2", ".3" and so on for further ones.
    static constexpr std::string_view unreadableKey = "ordovan.rules.v1.unreadable";

    /// Reads the rules; none where they are missing or can not be read, and the first 50 of a longer list.
    explicit RuleStore(ordovan::KeyValueStore& store, QObject* parent = nullptr);

    /// From now on changes with a `done` are stored through `work`; until then they are stored at once.
    void storeThrough(ordovan::BackgroundWork work);

    [[nodiscard]] const OrdovanRuleSet& ruleSet() const { return ruleSet_; }
    /// False when what was stored at the beginning could not be read, or was cut.
    [[nodiscard]] bool wasWhole() const { return wasWhole_; }

    /// What `add` says when the text was right but the rule could not be stored.
    static constexpr std::string_view notAdded = "That rule couldn't be added.";

    /// Adds a rule at the end, made from typed text. Returns why not, as a sentence for the user.
    std::optional<std::string> add(std::string_view extensions, std::string_view folderName);
    void add(std::string_view extensions, std::string_view folderName,
             std::function<void(std::optional<std::string> refusal)> done);

    /// Deletes the rules at these positions; positions beyond the end are ignored. False when that could not be
    /// stored; nothing is deleted then.
    bool remove(const std::set<std::size_t>& positions);
    void remove(const std::set<std::size_t>& positions, std::function<void(bool isDone)> done);

    /// Moves the rules at these positions, their order kept, in front of the rule at position `target` (the number of
    /// rules for the end). False when that could not be stored; nothing is moved then.
    bool move(const std::set<std::size_t>& positions, std::size_t target);
    void move(const std::set<std::size_t>& positions, std::size_t target, std::function<void(bool isDone)> done);

Q_SIGNALS:
    void ruleSetChanged();

private:
    /// Changes the rules, or leaves them and says why.
    using Edit = std::function<std::optional<std::string>(OrdovanRuleSet&)>;
    /// What became of a change.
    struct Outcome {
        bool isStored = false;
        std::optional<std::string> refusal;
        OrdovanRuleSet rules;
    };

    [[nodiscard]] Edit removal(const std::set<std::size_t>& positions) const;
    [[nodiscard]] Edit relocation(const std::set<std::size_t>& positions, std::size_t target) const;
    [[nodiscard]] static Outcome change(ordovan::KeyValueStore& store, const Edit& edit);
    [[nodiscard]] Outcome change(const Edit& edit);
    void change(Edit edit, std::function<void(const Outcome&)> done);
    void adopt(const Outcome& outcome);

    ordovan::KeyValueStore& store_;
    ordovan::BackgroundWork background_;
    bool wasWhole_ = true;
    OrdovanRuleSet ruleSet_;
};
