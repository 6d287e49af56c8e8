#include "OrdovanApp/models/RecoveryModel.h"

#include "OrdovanApp/controller/TidyViewModel.h"
#include "OrdovanApp/models/Formats.h"
#include "OrdovanApp/models/Language.h"
#include "OrdovanApp/theme/ThemeEnvironment.h"

#include <QPointer>

#include <algorithm>
#include <numeric>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

/// Values of the entries of an earlier record for those that are still there, in their new places; those of new entries
/// are empty. Records lose entries anywhere and get new ones at their end.
template <class Entry, class Value>
std::vector<Value> carriedOver(const std::vector<Value>& values, const std::vector<Entry>& earlier,
                               const std::vector<Entry>& entries) {
    std::vector<Value> result(entries.size());
    std::size_t next = 0;
    for (std::size_t place = 0; place < earlier.size() && next < entries.size(); ++place) {
        if (entries[next] == earlier[place]) result[next++] = values[place];
    }
    return result;
}

const std::vector<OrdovanJournalEntry>& entriesOf(const OrdovanJournal* journal) {
    static const std::vector<OrdovanJournalEntry> none;
    return journal != nullptr ? journal->entries : none;
}

}  // namespace

RecoveryModel::RecoveryModel(TidyViewModel& model, const ThemeEnvironment& theme, QObject* parent)
    : RowsModel(parent), model_(model), theme_(theme) {
    for (const auto signal : {&TidyViewModel::recoverableJournalChanged, &TidyViewModel::trashRecordChanged,
                              &TidyViewModel::rootURLChanged}) {
        connect(&model_, signal, this, &RecoveryModel::reload);
    }
    reload();
}

// What the rows are of.

void RecoveryModel::reload() {
    beginResetModel();
    std::vector<char> shownOrganized(organized());
    std::vector<char> shownTrashed(trashed());
    for (const std::uint32_t item : shown_) {
        if (item < organized())
            shownOrganized[organized() - 1 - item] = 1;
        else
            shownTrashed[trashed() - 1 - (item - organized())] = 1;
    }
    const auto journal = std::exchange(journal_, model_.recoverableJournal());
    const auto trash = std::exchange(trash_, model_.trashRecord());
    const Url root = std::exchange(root_, model_.rootURL().value_or(Url()));
    // In another folder, other files can be put back.
    if (root != root_) {
        organizedStates_.assign(organizedStates_.size(), std::nullopt);
        trashedStates_.assign(trashedStates_.size(), std::nullopt);
    }
    organizedStates_ = carriedOver(organizedStates_, entriesOf(journal.get()), entriesOf(journal_.get()));
    trashedStates_ = carriedOver(trashedStates_, trash->entries, trash_->entries);
    shownOrganized = carriedOver(shownOrganized, entriesOf(journal.get()), entriesOf(journal_.get()));
    shownTrashed = carriedOver(shownTrashed, trash->entries, trash_->entries);
    shown_.clear();
    for (std::uint32_t item = 0; item < organized() + trashed(); ++item) {
        const bool isShown = item < organized() ? shownOrganized[organized() - 1 - item] != 0
                                                : shownTrashed[trashed() - 1 - (item - organized())] != 0;
        if (isShown) shown_.push_back(item);
    }
    names_.reset();
    narrow();
    count();
    endResetModel();
    Q_EMIT countsChanged();
    survey();
}

void RecoveryModel::survey() {
    const std::uint64_t number = ++surveys_;
    model_.surveyRecovery([self = QPointer(this), number](ordovan::RecoverySurvey found) {
        if (self && number == self->surveys_) self->adopt(std::move(found));
    });
}

void RecoveryModel::adopt(ordovan::RecoverySurvey survey) {
    // Records that changed meanwhile are being surveyed again.
    if (survey.journal != journal_ || survey.trash != trash_) return;
    organizedStates_.assign(survey.organized.begin(), survey.organized.end());
    trashedStates_.assign(survey.trashed.begin(), survey.trashed.end());
    const bool awaitedNames = !names_ && isNarrowed();
    names_ = std::move(survey.names);
    count();
    if (awaitedNames) {
        beginResetModel();
        narrow();
        endResetModel();
    } else if (rowCount() > 0) {
        Q_EMIT dataChanged(index(0), index(rowCount() - 1));
    }
    Q_EMIT countsChanged();
}

void RecoveryModel::count() {
    recoverableOrganized_ = 0;
    recoverableTrashed_ = 0;
    elsewhere_ = 0;
    unknown_ = 0;
    for (std::uint32_t item = 0; item < organized() + trashed(); ++item) {
        const std::optional<State> state = stateOf(item);
        if (!state) ++unknown_;
        if (!state || state == State::present) ++(item < organized() ? recoverableOrganized_ : recoverableTrashed_);
        if (state == State::elsewhere && item >= organized()) ++elsewhere_;
    }
}

void RecoveryModel::narrow() {
    if (!isNarrowed()) {
        shown_.resize(organized() + trashed());
        std::iota(shown_.begin(), shown_.end(), std::uint32_t{0});
    } else if (names_) {
        shown_ = names_->rowsMatching(query_);
    }
    shownOrganized_ = static_cast<int>(std::ranges::lower_bound(shown_, organized()) - shown_.begin());
    heads_.clear();
    if (shownOrganized_ > 0) heads_.push_back(0);
    if (shownOrganized_ < static_cast<int>(shown_.size())) {
        heads_.push_back(shownOrganized_ > 0 ? shownOrganized_ + 1 : 0);
    }
}

void RecoveryModel::setQuery(const QString& query) {
    if (query == query_) return;
    beginResetModel();
    query_ = query;
    narrow();
    endResetModel();
}

void RecoveryModel::setLocked(const QString& reason) {
    if (reason == locked_) return;
    locked_ = reason;
    if (rowCount() > 0) Q_EMIT dataChanged(index(0), index(rowCount() - 1));
}

void RecoveryModel::setCompact(bool compact) {
    if (compact == compact_) return;
    compact_ = compact;
    if (rowCount() > 0) Q_EMIT dataChanged(index(0), index(rowCount() - 1));
}

int RecoveryModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(shown_.size() + heads_.size());
}

std::uint32_t RecoveryModel::organized() const {
    return journal_ ? static_cast<std::uint32_t>(journal_->entries.size()) : 0;
}

std::uint32_t RecoveryModel::trashed() const {
    return static_cast<std::uint32_t>(trash_->entries.size());
}

std::uint32_t RecoveryModel::itemAt(int row) const {
    const auto headsAbove = std::ranges::lower_bound(heads_, row) - heads_.begin();
    return shown_[static_cast<std::size_t>(row - headsAbove)];
}

const OrdovanJournalEntry& RecoveryModel::organizedEntry(std::uint32_t item) const {
    return journal_->entries[organized() - 1 - item];
}

const OrdovanTrashEntry& RecoveryModel::trashedEntry(std::uint32_t item) const {
    return trash_->entries[trashed() - 1 - (item - organized())];
}

std::optional<RecoveryModel::State> RecoveryModel::stateOf(std::uint32_t item) const {
    return item < organized() ? organizedStates_[organized() - 1 - item]
                              : trashedStates_[trashed() - 1 - (item - organized())];
}

std::string RecoveryModel::entryID(int row) const {
    if (isHead(row)) return {};
    const std::uint32_t item = itemAt(row);
    return std::string(item < organized() ? organizedEntry(item).id() : trashedEntry(item).id());
}

bool RecoveryModel::holds(std::string_view entryID) const {
    const auto isIt = [&](const auto& entry) { return entry.id() == entryID; };
    return std::ranges::any_of(entriesOf(journal_.get()), isIt) || std::ranges::any_of(trash_->entries, isIt);
}

Url RecoveryModel::url(int row) const {
    if (isHead(row)) return {};
    const std::uint32_t item = itemAt(row);
    return Url::file(item < organized() ? organizedEntry(item).destination() : trashedEntry(item).trashed());
}

// What they show.

QString RecoveryModel::headTitle(int row) const {
    if (isOrganizedHead(row)) {
        return tr("%1 organized files can go back to where they came from.", nullptr, pluralOf(recoverableOrganized_))
            .arg(Formats::count(recoverableOrganized_));
    }
    return tr("%1 files in the Trash can be put back (from Duplicates or Big Files).", nullptr,
              pluralOf(recoverableTrashed_))
        .arg(Formats::count(recoverableTrashed_));
}

QString RecoveryModel::title(int row) const {
    if (isHead(row)) return headTitle(row);
    const std::uint32_t item = itemAt(row);
    const std::string_view path =
        item < organized() ? organizedEntry(item).destination() : trashedEntry(item).original();
    return Formats::text(ordovan::lastPathComponent(path));
}

RowContent RecoveryModel::content(int row) const {
    if (isHead(row)) {
        RowContent content;
        content.glyph = isOrganizedHead(row) ? Glyph::undo : Glyph::trash;
        content.title = headTitle(row);
        return content;
    }
    const std::uint32_t item = itemAt(row);
    RowContent content = item < organized() ? organizedRow(item) : trashedRow(item);
    content.title = title(row);
    return content;
}

RowContent RecoveryModel::row(std::string_view path, std::int64_t bytes, std::optional<State> state) const {
    const auto kind = OrdovanFileCategories::forExtension(ordovan::pathExtension(path));
    const bool isLost = state == State::missing || state == State::refused;
    RowContent content;
    content.dimmed = isLost;
    content.glyph = isLost ? Glyph::warning : Glyphs::forCategory(kind);
    content.glyphColor = isLost ? theme_.colors().secondText : theme_.colors().kind(kind);
    content.columns = {Formats::byteSize(bytes)};
    content.toolTip = Formats::text(path);
    return content;
}

QString RecoveryModel::reasonAgainst(std::optional<State> state, const QString& detail) {
    if (!state) return tr("Looking whether it is still there…");
    if (state == State::elsewhere) return tr("Choose the folder that it came from first.");
    return state == State::present ? QString() : detail;
}

QString RecoveryModel::putBackHelp(const QString& reason) const {
    if (!locked_.isEmpty()) return locked_;
    return reason.isEmpty() ? tr("Put just this file back") : reason;
}

QString RecoveryModel::folderBelowRoot(std::string_view file) const {
    const QString folder = Formats::folderOf(file, root_.path());
    const QString root = Formats::fileName(root_) + u" / "_s;
    return folder.startsWith(root) ? folder.sliced(root.size()) : folder;
}

RowContent RecoveryModel::organizedRow(std::uint32_t item) const {
    const OrdovanJournalEntry& entry = organizedEntry(item);
    const std::optional<State> state = stateOf(item);
    RowContent content = row(entry.destination(), entry.byteSize(), state);
    if (state == State::missing) {
        content.detail =
            tr("This file is no longer there. Missing: deleted or moved since organizing. Undo will skip it.");
        content.toolTip += u'\n' + content.detail;
    } else if (state == State::refused) {
        content.detail = tr("The record names a place outside this folder or behind a link. Undo will refuse it.");
        content.toolTip += u'\n' + content.detail;
    } else {
        //: Where an organized file lies, and the folder that it came from
        const QString way = tr("%1 · Undo returns it to %2");
        content.detail = way.arg(folderBelowRoot(entry.destination()), Formats::folderOf(entry.source(), root_.path()));
        content.toolTip = way.arg(content.toolTip, Formats::text(entry.source()));
    }
    content.description = content.detail;
    const QString reason = reasonAgainst(state, content.detail);
    content.actions = {RowAction{.id = putBack,
                                 .text = tr("Put Just This File Back"),
                                 .help = putBackHelp(reason),
                                 .glyph = Glyph::undo,
                                 .enabled = reason.isEmpty() && locked_.isEmpty(),
                                 .glyphOnly = compact_,
                                 .returnOnly = true},
                       RowAction{.id = reveal,
                                 .text = tr("Reveal in Finder"),
                                 .help = reason.isEmpty() ? tr("Reveal in Finder") : reason,
                                 .glyph = Glyph::reveal,
                                 .enabled = reason.isEmpty(),
                                 .glyphOnly = true,
                                 .activates = false}};
    return content;
}

RowContent RecoveryModel::trashedRow(std::uint32_t item) const {
    const OrdovanTrashEntry& entry = trashedEntry(item);
    const std::optional<State> state = stateOf(item);
    RowContent content = row(entry.original(), entry.byteSize(), state);
    if (state == State::missing) {
        content.detail = tr("No longer in the Trash (emptied or moved), so it can't be put back from here.");
        content.toolTip += u'\n' + content.detail;
    } else if (state == State::refused) {
        content.detail = tr("The record names a place that is in no Trash or behind a link. Restore will refuse it.");
        content.toolTip += u'\n' + content.detail;
    } else {
        //: The size of a file, and the folder that it came from
        const QString way = tr("In the Trash · %1 · Put Back returns it to %2");
        const QString size = Formats::byteSize(entry.byteSize());
        content.detail = way.arg(size, Formats::folderOf(entry.original(), root_.path()));
        content.toolTip = way.arg(size, Formats::text(entry.original()));
    }
    content.columns = {QString()};
    content.description = content.detail;
    const QString reason = reasonAgainst(state, content.detail);
    const bool isInTrash = state == State::present || state == State::elsewhere;
    content.actions = {RowAction{.id = putBackFromTrash,
                                 .text = tr("Put Back from Trash"),
                                 .help = putBackHelp(reason),
                                 .glyph = Glyph::undo,
                                 .enabled = reason.isEmpty() && locked_.isEmpty(),
                                 .glyphOnly = compact_,
                                 .returnOnly = true},
                       RowAction{.id = showInTrash,
                                 .text = tr("Show in the Trash"),
                                 .help = isInTrash ? tr("Show in the Trash") : reason,
                                 .glyph = Glyph::reveal,
                                 .enabled = isInTrash,
                                 .glyphOnly = true,
                                 .activates = false}};
    return content;
}
