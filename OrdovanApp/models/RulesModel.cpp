#include "OrdovanApp/models/RulesModel.h"

#include "OrdovanApp/controller/TidyViewModel.h"
#include "OrdovanApp/models/Formats.h"
#include "OrdovanApp/stores/RuleStore.h"
#include "OrdovanApp/theme/ThemeEnvironment.h"
#include "OrdovanCore/Text.h"

#include <algorithm>
#include <string>
#include <unordered_map>

using namespace Qt::StringLiterals;

namespace {

/// Where the one rule stands that was moved to make `before` from `after`'s order; nothing when that is not all.
struct Move {
    std::size_t from;
    std::size_t to;
};
std::optional<Move> oneMove(const std::vector<OrdovanRule>& before, const std::vector<OrdovanRule>& after) {
    if (before.size() != after.size()) return std::nullopt;
    const auto first = static_cast<std::size_t>(std::ranges::mismatch(before, after).in1 - before.begin());
    if (first == before.size()) return std::nullopt;
    std::size_t last = before.size() - 1;
    while (before[last] == after[last]) --last;
    for (const Move& move : {Move{first, last}, Move{last, first}}) {
        std::vector<OrdovanRule> moved = before;
        const OrdovanRule rule = moved[move.from];
        moved.erase(moved.begin() + static_cast<std::ptrdiff_t>(move.from));
        moved.insert(moved.begin() + static_cast<std::ptrdiff_t>(move.to), rule);
        if (moved == after) return move;
    }
    return std::nullopt;
}

}  // namespace

RulesModel::RulesModel(TidyViewModel& model, RuleStore& store, const ThemeEnvironment& theme, QObject* parent)
    : RowsModel(parent), model_(model), store_(store), theme_(theme) {
    connect(&store_, &RuleStore::ruleSetChanged, this, &RulesModel::followRules);
    for (const auto signal : {&TidyViewModel::planChanged, &TidyViewModel::rootURLChanged}) {
        connect(&model_, signal, this, &RulesModel::followPlan);
    }
    followRules();
}

bool RulesModel::isBuiltIn(std::string_view extension) {
    return OrdovanFileCategories::forExtension(extension) != OrdovanFileCategory::other;
}

void RulesModel::followRules() {
    const std::vector<OrdovanRule>& now = store_.ruleSet().rules;
    // A rule that was only moved keeps the focus.
    if (const auto move = oneMove(rules_, now)) {
        const int from = static_cast<int>(move->from) + 1;
        const int to = static_cast<int>(move->to) + 1;
        beginMoveRows({}, from, from, {}, to > from ? to + 1 : to);
        rules_ = now;
        countMatches();
        endMoveRows();
        Q_EMIT dataChanged(index(0), index(RulesModel::rowCount() - 1));
        return;
    }
    beginResetModel();
    rules_ = now;
    heads_.assign(rules_.empty() ? 0 : 1, 0);
    countMatches();
    endResetModel();
}

void RulesModel::followPlan() {
    countMatches();
    if (rowCount() > 0) Q_EMIT dataChanged(index(0), index(RulesModel::rowCount() - 1));
}

void RulesModel::countMatches() {
    matches_.reset();
    // While another folder is scanned, or could not be read, the plan is the last folder's.
    if (!model_.plan() || model_.planRoot() != model_.rootURL()) return;
    matches_.emplace(rules_.size(), 0);
    if (rules_.empty()) return;
    std::unordered_map<std::string_view, std::size_t> takenBy;
    for (std::size_t rule = 0; rule < rules_.size(); ++rule) {
        for (const std::string& extension : rules_[rule].extensions) takenBy.emplace(extension, rule);
    }
    for (const OrdovanFileProposal& proposal : model_.plan()->proposals) {
        const auto rule = takenBy.find(ordovan::text::lowercased(proposal.source.pathExtension()));
        if (rule != takenBy.end()) ++(*matches_)[rule->second];
    }
}

std::optional<int> RulesModel::matches(int row) const {
    return matches_ ? std::optional((*matches_)[position(row)]) : std::nullopt;
}

int RulesModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(rules_.size() + heads_.size());
}

QString RulesModel::title(int row) const {
    if (row == 0) return tr("Your rules, in order");
    return u"→ "_s + Formats::text(rules_[position(row)].folderName);
}

RowContent RulesModel::content(int row) const {
    RowContent content;
    content.title = title(row);
    if (row == 0) return content;
    const OrdovanRule& rule = rules_[position(row)];
    const QString folder = Formats::text(rule.folderName);
    content.mark = RowContent::Mark::grip;
    QStringList extensions;
    QStringList unknown;
    for (const std::string& extension : rule.extensions) {
        const QString text = u"."_s + Formats::text(extension);
        const bool known = isBuiltIn(extension);
        content.tags.append({text, known ? theme_.colors().secondText : theme_.colors().warning});
        extensions.append(text);
        if (!known) unknown.append(text);
    }
    const auto count = matches(row);
    content.detail = count ? tr("Files in the folder you're previewing that this rule would send to %1: %2")
                                 .arg(folder, Formats::count(*count))
                           : tr("Files in the folder you're previewing that this rule would send to %1").arg(folder);
    if (!unknown.isEmpty()) content.chip = {tr("not a built-in type"), theme_.colors().warning};
    QStringList lines{extensions.join(u", "_s), content.detail};
    if (!unknown.isEmpty()) lines.append(tr("%1: not a built-in type").arg(unknown.join(u", "_s)));
    content.toolTip = lines.join(u'\n');
    content.description = content.toolTip;
    content.actions = {RowAction{.id = deleteRule,
                                 .text = tr("Delete rule for %1").arg(folder),
                                 .help = tr("Delete this rule (your files are not affected)"),
                                 .glyph = Glyph::trash,
                                 .glyphOnly = true,
                                 .activates = false}};
    return content;
}

void RulesModel::move(int row, int before, std::function<void(bool isDone)> done) {
    store_.move({position(row)}, position(before), std::move(done));
}

void RulesModel::remove(int row, std::function<void(bool isDone)> done) {
    store_.remove({position(row)}, std::move(done));
}
