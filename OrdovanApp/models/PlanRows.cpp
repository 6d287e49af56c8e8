#include "OrdovanApp/models/EngineTexts.h"
#include "OrdovanApp/models/Formats.h"
#include "OrdovanApp/models/PlanModel.h"
#include "OrdovanApp/theme/ThemeEnvironment.h"
#include "OrdovanCore/PartialDownloads.h"

using namespace Qt::StringLiterals;

namespace {

using EngineTexts::sentence;

constexpr std::string_view previewOnly = " Preview only.";

/// "Your rule: .dmg → Apps": the explanation of a proposal made by a rule without what is true of every proposal.
QString ruleText(const OrdovanFileProposal& proposal) {
    std::string_view text = proposal.explanation;
    if (text.ends_with(previewOnly)) text.remove_suffix(previewOnly.size());
    if (text.ends_with('.')) text.remove_suffix(1);
    return sentence(text);
}

/// Something in a row's context menu alone.
RowAction menuAction(int id, const QString& text) {
    RowAction action;
    action.id = id;
    action.text = text;
    action.menuOnly = true;
    action.activates = false;
    return action;
}

}  // namespace

RowContent PlanModel::content(int row) const {
    const auto item = itemAt(row);
    if (!item) return head(row);
    RowContent content;
    switch (groupOf(*item)) {
        case Group::proposed:
            content = proposal(*item);
            break;
        case Group::review:
            content = conflict(*item);
            break;
        case Group::skipped:
            content = skip(*item);
            break;
    }
    content.title = Formats::fileName(source(*item));
    if (!locked_.isEmpty()) content.toolTip = locked_;
    content.actions.append(menuAction(reveal, tr("Reveal in Finder")));
    return content;
}

QString PlanModel::title(int row) const {
    const auto item = itemAt(row);
    return item ? Formats::fileName(source(*item)) : head(row).title;
}

RowContent PlanModel::head(int row) const {
    const auto place = static_cast<std::size_t>(std::ranges::lower_bound(heads_, row) - heads_.begin());
    const int end = place + 1 < heads_.size() ? heads_[place + 1] : rowCount();
    RowContent content;
    content.glyphColor = theme_.colors().secondText;
    content.count = Formats::count(end - row - 1);
    switch (headGroups_[place]) {
        case Group::proposed:
            content.glyph = Glyph::check;
            content.title = tr("Proposed — safe, no conflict");
            break;
        case Group::review:
            content.glyph = Glyph::warning;
            content.title = tr("Needs your review — left untouched");
            break;
        case Group::skipped:
            content.glyph = Glyph::info;
            content.title = tr("Skipped — left untouched");
            break;
    }
    return content;
}

RowContent PlanModel::proposal(std::uint32_t item) const {
    const OrdovanFileProposal& proposal = plan_->proposals[item];
    const QString where = Formats::folderOf(proposal.source, root_);
    RowContent content;
    content.mark = RowContent::Mark::tick;
    content.marked = ticks_[item];
    content.enabled = locked_.isEmpty();
    content.glyph = Glyphs::forCategory(proposal.category);
    content.glyphColor = theme_.colors().kind(proposal.category);
    content.detail = proposal.ruleFolder ? where + u" · "_s + ruleText(proposal) : where;
    const bool isPartial = OrdovanPartialDownloads::isPartialDownload(proposal.source.lastPathComponent());
    // Beside where it is, the reason would not fit into a small window.
    if (isPartial) content.detail = sentence(OrdovanPartialDownloads::reason);
    content.chip = RowContent::Chip{goal(proposal.destination), content.glyphColor};
    content.description = sentence(proposal.explanation);
    if (isPartial) content.description = sentence(OrdovanPartialDownloads::sentence) + u' ' + content.description;
    content.toolTip = Formats::path(proposal.source) + u'\n' + content.description + u'\n' +
                      tr("Goes to %1").arg(Formats::folderOf(proposal.destination, root_));
    content.actions.append(
        menuAction(includeOrLeaveOut, content.marked ? tr("Leave This File Out") : tr("Include This File")));
    content.actions.back().help = locked_;
    content.actions.back().enabled = locked_.isEmpty();
    addFacts(content, item);
    return content;
}

RowContent PlanModel::conflict(std::uint32_t item) const {
    const OrdovanPlanConflict& conflict = plan_->conflicts[item - static_cast<std::uint32_t>(proposals())];
    const QString where = Formats::folderOf(conflict.source, root_);
    RowContent content;
    content.mark = RowContent::Mark::warning;
    content.glyph = Glyphs::forCategory(OrdovanFileCategories::forExtension(conflict.source.pathExtension()));
    content.glyphColor = theme_.colors().warning;
    content.detail = sentence(message(conflict.kind)) + u" · "_s + where;
    content.chip = RowContent::Chip{goal(conflict.destination), content.glyphColor};
    content.description = where;
    // Size and date would leave the sentence no room.
    content.toolTip = Formats::path(conflict.source) + u'\n' + sentence(message(conflict.kind)) + u'\n' +
                      tr("Would go to %1").arg(Formats::folderOf(conflict.destination, root_));
    addFacts(content, item);
    content.toolTip += u'\n' + content.columns.join(u", "_s);
    content.columns.clear();
    return content;
}

RowContent PlanModel::skip(std::uint32_t item) const {
    const PlanIndex::Skip& skip = index_->skips[item - static_cast<std::uint32_t>(proposals() + conflicts())];
    const QString where = Formats::folderOf(skip.url, root_);
    RowContent content;
    content.dimmed = true;
    content.glyph = Glyph::info;
    content.glyphColor = theme_.colors().secondText;
    content.detail = sentence(skip.reason) + u" · "_s + where;
    content.description = where;
    content.toolTip = Formats::path(skip.url) + u'\n' + sentence(skip.reason);
    return content;
}

/// Size and date, on the right.
void PlanModel::addFacts(RowContent& content, std::uint32_t item) const {
    const OrdovanInventoryEntry* its = entry(item);
    if (its == nullptr) return;
    content.columns = {Formats::byteSize(its->byteSize),
                       its->modifiedEpoch ? Formats::day(*its->modifiedEpoch) : QString()};
}

const OrdovanInventoryEntry* PlanModel::entry(std::uint32_t item) const {
    const std::uint32_t place = index_->entries[item];
    return place == nowhere ? nullptr : &inventory_->files[place];
}

/// Where a file would go, below the output folder: "Documents", "Documents / 2026-11".
QString PlanModel::goal(const Url& destination) const {
    const std::string output(root_.appending(OrdovanOutput::folderName).path());
    std::string_view path = ordovan::parentPath(destination.path());
    path.remove_prefix(std::min(path.size(), output.size() + 1));
    return Formats::text(path).replace(u'/', u" / "_s);
}
