#include "OrdovanApp/stores/RuleStore.h"

#include <QByteArray>
#include <QPointer>

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

namespace {

QString text(std::string_view latin1) {
    return QString::fromLatin1(latin1.data(), static_cast<qsizetype>(latin1.size()));
}

QString key() {
    return text(RuleStore::defaultsKey);
}

/// The rules of a stored document.
struct Decoded {
    OrdovanRuleSet set;
    bool isWhole = true;  ///< nothing of the document is missing in them
};

Decoded decoded(const std::optional<QVariant>& stored) {
    if (!stored) return {};
    const QByteArray bytes = stored->toByteArray();
    auto set = OrdovanRuleSet::decoded({bytes.constData(), static_cast<std::size_t>(bytes.size())});
    if (!set) return {.set = {}, .isWhole = false};
    const bool isWhole = set->rules.size() <= OrdovanRuleSet::maxRules;
    if (!isWhole) set->rules.erase(set->rules.begin() + OrdovanRuleSet::maxRules, set->rules.end());
    return {std::move(*set), isWhole};
}

/// Copies a document to the first key for those that could not be used which is free.
void keepAside(ordovan::KeyValueStore::Values& values, const QVariant& document) {
    QString name = text(RuleStore::unreadableKey);
    for (int i = 2; values.contains(name); ++i) {
        name = text(RuleStore::unreadableKey) + QStringLiteral(".") + QString::number(i);
    }
    values.emplace(name, document);
}

/// The positions in `now` of the rules that stand at `positions` in `seen`: the same ones where the lists are equal,
/// else those of the rules with the same ids.
std::set<std::size_t> positionsIn(const OrdovanRuleSet& now, const OrdovanRuleSet& seen,
                                  const std::set<std::size_t>& positions) {
    std::set<std::size_t> result;
    for (const std::size_t position : positions) {
        if (position >= seen.rules.size()) continue;
        if (now == seen) {
            result.insert(position);
            continue;
        }
        const auto same = std::ranges::find(now.rules, seen.rules[position].id, &OrdovanRule::id);
        if (same != now.rules.end()) result.insert(static_cast<std::size_t>(same - now.rules.begin()));
    }
    return result;
}

/// Takes the rules at these positions out of the list and returns them.
std::vector<OrdovanRule> takeOut(std::vector<OrdovanRule>& rules, const std::set<std::size_t>& positions) {
    std::vector<OrdovanRule> taken, left;
    for (std::size_t i = 0; i < rules.size(); ++i)
        (positions.contains(i) ? taken : left).push_back(std::move(rules[i]));
    rules = std::move(left);
    return taken;
}

}  // namespace

RuleStore::RuleStore(ordovan::KeyValueStore& store, QObject* parent) : QObject(parent), store_(store) {
    Decoded stored = decoded(store.value(key()));
    wasWhole_ = stored.isWhole;
    ruleSet_ = std::move(stored.set);
}

void RuleStore::storeThrough(ordovan::BackgroundWork work) {
    background_ = std::move(work);
}

// The changes. They are made where and when the rules are stored, so they hold all that they need.

namespace {

std::optional<std::string> append(OrdovanRuleSet& set, std::string_view extensions, std::string_view folderName) {
    if (set.rules.size() >= OrdovanRuleSet::maxRules) {
        return "You can have up to " + std::to_string(OrdovanRuleSet::maxRules) + " rules.";
    }
    auto rule = OrdovanRuleSet::make(extensions, folderName, ordovan::Uuid::random());
    if (!rule) return rule.error().message();
    set.rules.push_back(std::move(*rule));
    return std::nullopt;
}

}  // namespace

RuleStore::Edit RuleStore::removal(const std::set<std::size_t>& positions) const {
    return [seen = ruleSet_, positions](OrdovanRuleSet& set) {
        takeOut(set.rules, positionsIn(set, seen, positions));
        return std::nullopt;
    };
}

RuleStore::Edit RuleStore::relocation(const std::set<std::size_t>& positions, std::size_t target) const {
    return [seen = ruleSet_, positions, target](OrdovanRuleSet& set) {
        const std::set<std::size_t> moving = positionsIn(set, seen, positions);
        const std::set<std::size_t> before = positionsIn(set, seen, {target});
        const std::size_t end = before.empty() ? set.rules.size() : *before.begin();
        const auto movingFromBefore = std::distance(moving.begin(), moving.lower_bound(end));
        std::vector<OrdovanRule> taken = takeOut(set.rules, moving);
        set.rules.insert(set.rules.begin() + (static_cast<std::ptrdiff_t>(end) - movingFromBefore),
                         std::make_move_iterator(taken.begin()), std::make_move_iterator(taken.end()));
        return std::nullopt;
    };
}

std::optional<std::string> RuleStore::add(std::string_view extensions, std::string_view folderName) {
    const Outcome outcome = change([&](OrdovanRuleSet& set) { return append(set, extensions, folderName); });
    return outcome.isStored ? outcome.refusal : std::string(notAdded);
}

void RuleStore::add(std::string_view extensions, std::string_view folderName,
                    std::function<void(std::optional<std::string> refusal)> done) {
    change([extensions = std::string(extensions),
            folderName = std::string(folderName)](OrdovanRuleSet& set) { return append(set, extensions, folderName); },
           [done = std::move(done)](const Outcome& outcome) {
               done(outcome.isStored ? outcome.refusal : std::string(notAdded));
           });
}

bool RuleStore::remove(const std::set<std::size_t>& positions) {
    return change(removal(positions)).isStored;
}

void RuleStore::remove(const std::set<std::size_t>& positions, std::function<void(bool isDone)> done) {
    change(removal(positions), [done = std::move(done)](const Outcome& outcome) { done(outcome.isStored); });
}

bool RuleStore::move(const std::set<std::size_t>& positions, std::size_t target) {
    return change(relocation(positions, target)).isStored;
}

void RuleStore::move(const std::set<std::size_t>& positions, std::size_t target,
                     std::function<void(bool isDone)> done) {
    change(relocation(positions, target), [done = std::move(done)](const Outcome& outcome) { done(outcome.isStored); });
}

// Storing them.

/// Makes one change to the stored rules. As thread-safe as the store.
RuleStore::Outcome RuleStore::change(ordovan::KeyValueStore& store, const Edit& edit) {
    Outcome outcome;
    outcome.isStored = store.update([&](ordovan::KeyValueStore::Values& values) {
        const auto document = values.find(key());
        const bool isThere = document != values.end();
        const Decoded before = isThere ? decoded(document->second) : Decoded();
        outcome.rules = before.set;
        outcome.refusal = edit(outcome.rules);
        if (outcome.rules == before.set) return;
        if (!before.isWhole) keepAside(values, document->second);
        const std::string encoded = outcome.rules.encoded();
        values.insert_or_assign(key(), QByteArray(encoded.data(), static_cast<qsizetype>(encoded.size())));
    });
    return outcome;
}

RuleStore::Outcome RuleStore::change(const Edit& edit) {
    Outcome outcome = change(store_, edit);
    adopt(outcome);
    return outcome;
}

void RuleStore::change(Edit edit, std::function<void(const Outcome&)> done) {
    if (!background_) return done(change(edit));
    auto outcome = std::make_shared<Outcome>();
    background_([&store = store_, edit = std::move(edit), outcome] { *outcome = change(store, edit); },
                [self = QPointer(this), done = std::move(done), outcome] {
                    if (!self) return;
                    self->adopt(*outcome);
                    done(*outcome);
                });
}

void RuleStore::adopt(const Outcome& outcome) {
    if (!outcome.isStored || outcome.rules == ruleSet_) return;
    ruleSet_ = outcome.rules;
    Q_EMIT ruleSetChanged();
}
