#include "OrdovanApp/stores/RuleStore.h"

#include <QByteArray>

#include <algorithm>
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

RuleStore::RuleStore(ordovan::KeyValueStore& store, QObject* parent)
    : QObject(parent), store_(store), ruleSet_(decoded(store.value(key())).set) {}

std::optional<std::string> RuleStore::add(std::string_view extensions, std::string_view folderName) {
    std::optional<std::string> refusal;
    const bool stored = change([&](OrdovanRuleSet& set) {
        if (set.rules.size() >= OrdovanRuleSet::maxRules) {
            refusal = "You can have up to " + std::to_string(OrdovanRuleSet::maxRules) + " rules.";
            return;
        }
        auto rule = OrdovanRuleSet::make(extensions, folderName, ordovan::Uuid::random());
        if (rule) {
            set.rules.push_back(std::move(*rule));
        } else {
            refusal = rule.error().message();
        }
    });
    if (!stored) return std::string(notAdded);
    return refusal;
}

bool RuleStore::remove(const std::set<std::size_t>& positions) {
    return change([&](OrdovanRuleSet& set) { takeOut(set.rules, positionsIn(set, ruleSet_, positions)); });
}

bool RuleStore::move(const std::set<std::size_t>& positions, std::size_t target) {
    return change([&](OrdovanRuleSet& set) {
        const std::set<std::size_t> moving = positionsIn(set, ruleSet_, positions);
        const std::set<std::size_t> before = positionsIn(set, ruleSet_, {target});
        const std::size_t end = before.empty() ? set.rules.size() : *before.begin();
        const auto movingFromBefore = std::distance(moving.begin(), moving.lower_bound(end));
        std::vector<OrdovanRule> taken = takeOut(set.rules, moving);
        set.rules.insert(set.rules.begin() + (static_cast<std::ptrdiff_t>(end) - movingFromBefore),
                         std::make_move_iterator(taken.begin()), std::make_move_iterator(taken.end()));
    });
}

/// Makes one change to the stored rules and adopts the outcome. False when it could not be stored.
bool RuleStore::change(const std::function<void(OrdovanRuleSet&)>& edit) {
    OrdovanRuleSet after;
    const bool stored = store_.update([&](ordovan::KeyValueStore::Values& values) {
        const auto document = values.find(key());
        const bool isThere = document != values.end();
        const Decoded before = isThere ? decoded(document->second) : Decoded();
        after = before.set;
        edit(after);
        if (after == before.set) return;
        if (!before.isWhole) keepAside(values, document->second);
        const std::string encoded = after.encoded();
        values.insert_or_assign(key(), QByteArray(encoded.data(), static_cast<qsizetype>(encoded.size())));
    });
    if (!stored) return false;
    if (after != ruleSet_) {
        ruleSet_ = std::move(after);
        Q_EMIT ruleSetChanged();
    }
    return true;
}
