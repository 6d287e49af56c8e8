#include "OrdovanApp/stores/RuleStore.h"

#include <QByteArray>

#include <algorithm>
#include <utility>
#include <vector>

namespace {

QString key() {
    return QString::fromLatin1(RuleStore::defaultsKey.data(), RuleStore::defaultsKey.size());
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

RuleStore::RuleStore(ordovan::KeyValueStore& store, std::function<OrdovanResult<ordovan::HeldLock>()> lockRecords,
                     QObject* parent)
    : QObject(parent), store_(store), lockRecords_(std::move(lockRecords)), ruleSet_(stored()) {}

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
        set.rules.insert(set.rules.begin() + static_cast<std::ptrdiff_t>(end) - movingFromBefore,
                         std::make_move_iterator(taken.begin()), std::make_move_iterator(taken.end()));
    });
}

OrdovanRuleSet RuleStore::stored() const {
    const std::optional<QVariant> value = store_.value(key());
    if (!value) return {};
    const QByteArray bytes = value->toByteArray();
    auto decoded = OrdovanRuleSet::decoded({bytes.constData(), static_cast<std::size_t>(bytes.size())});
    if (!decoded) return {};
    if (decoded->rules.size() > OrdovanRuleSet::maxRules) {
        decoded->rules.erase(decoded->rules.begin() + OrdovanRuleSet::maxRules, decoded->rules.end());
    }
    return std::move(*decoded);
}

/// Makes one change to the stored rules and adopts the outcome. False when it could not be stored.
bool RuleStore::change(const std::function<void(OrdovanRuleSet&)>& edit) {
    const auto lock = lockRecords_();
    store_.refresh();
    const OrdovanRuleSet before = stored();
    OrdovanRuleSet after = before;
    edit(after);
    if (after != before) {
        const std::string encoded = after.encoded();
        if (!store_.setValue(key(), QByteArray(encoded.data(), static_cast<qsizetype>(encoded.size())))) return false;
    }
    if (after != ruleSet_) {
        ruleSet_ = std::move(after);
        Q_EMIT ruleSetChanged();
    }
    return true;
}
