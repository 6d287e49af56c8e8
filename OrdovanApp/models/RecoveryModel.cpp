#include "OrdovanApp/models/RecoveryModel.h"

#include "OrdovanApp/controller/TidyViewModel.h"
#include "OrdovanApp/models/Formats.h"
#include "OrdovanApp/theme/ThemeEnvironment.h"

#include <QPointer>

#include <algorithm>
#include <numeric>
#include <utility>

using namespace Qt::StringLiterals;

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
    journal_ = model_.recoverableJournal();
    trash_ = model_.trashRecord();
    root_ = model_.rootURL().value_or(Url());
    organizedStates_.clear();
    trashedStates_.clear();
    names_.reset(0);
    narrow();
    endResetModel();
    count();
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
    organizedStates_ = std::move(survey.organized);
    trashedStates_ = std::move(survey.trashed);
    names_ = std::move(survey.names);
    count();
    if (rowCount() > 0) Q_EMIT dataChanged(index(0), index(rowCount() - 1));
}

void RecoveryModel::count() {
    recoverableOrganized_ = 0;
    recoverableTrashed_ = 0;
    elsewhere_ = 0;
    for (std::uint32_t item = 0; item < organized() + trashed(); ++item) {
        const State state = stateOf(item);
        if (state == State::present) ++(item < organized() ? recoverableOrganized_ : recoverableTrashed_);
        if (state == State::elsewhere && item >= organized()) ++elsewhere_;
    }
    Q_EMIT countsChanged();
}

void RecoveryModel::narrow() {
    const std::uint32_t items = organized() + trashed();
    if (query_.trimmed().isEmpty()) {
        shown_.resize(items);
        std::iota(shown_.begin(), shown_.end(), std::uint32_t{0});
    } else {
        // Only who searches before the survey is there waits for the names.
        if (names_.size() != items) {
            names_ = ordovan::RecoverySurvey::namesOf(model_.rootURL(), journal_.get(), *trash_);
        }
        shown_ = names_.rowsMatching(query_);
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

RecoveryModel::State RecoveryModel::stateOf(std::uint32_t item) const {
    if (item < organized()) return organizedStates_.empty() ? State::present : organizedStates_[organized() - 1 - item];
    return trashedStates_.empty() ? State::present : trashedStates_[trashed() - 1 - (item - organized())];
}

std::string RecoveryModel::entryID(int row) const {
    if (isHead(row)) return {};
    const std::uint32_t item = itemAt(row);
    return std::string(item < organized() ? organizedEntry(item).id() : trashedEntry(item).id());
}

Url RecoveryModel::url(int row) const {
    if (isHead(row)) return {};
    const std::uint32_t item = itemAt(row);
    return Url::file(item < organized() ? organizedEntry(item).destination() : trashedEntry(item).trashed());
}

// What they show.

QString RecoveryModel::headTitle(int row) const {
    if (isOrganizedHead(row)) {
        return Formats::counted(recoverableOrganized_, u"organized file") + u" can go back to where they came from."_s;
    }
    return Formats::files(recoverableTrashed_) + u" in the Trash can be put back (from Duplicates or Big Files)."_s;
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

RowContent RecoveryModel::row(std::string_view path, std::int64_t bytes, State state) const {
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

QString RecoveryModel::folderBelowRoot(std::string_view file) const {
    const QString folder = Formats::folderOf(file, root_.path());
    const QString root = Formats::fileName(root_) + u" / "_s;
    return folder.startsWith(root) ? folder.sliced(root.size()) : folder;
}

RowContent RecoveryModel::organizedRow(std::uint32_t item) const {
    const OrdovanJournalEntry& entry = organizedEntry(item);
    const State state = stateOf(item);
    RowContent content = row(entry.destination(), entry.byteSize(), state);
    switch (state) {
        case State::present:
        case State::elsewhere:
            content.detail = folderBelowRoot(entry.destination()) + u" · Undo returns it to "_s +
                             Formats::folderOf(entry.source(), root_.path());
            break;
        case State::missing:
            content.detail =
                u"This file is no longer there. Missing: deleted or moved since organizing. Undo will "
                "skip it."_s;
            break;
        case State::refused:
            content.detail = u"The record names a place outside this folder or behind a link. Undo will refuse it."_s;
            break;
    }
    content.description = content.detail;
    content.actions = {RowAction{.id = putBack,
                                 .text = u"Put Just This File Back"_s,
                                 .help = locked_.isEmpty() ? u"Put just this file back"_s : locked_,
                                 .glyph = Glyph::undo,
                                 .enabled = state == State::present && locked_.isEmpty(),
                                 .glyphOnly = compact_},
                       RowAction{.id = reveal,
                                 .text = u"Reveal in Finder"_s,
                                 .help = u"Reveal in Finder"_s,
                                 .glyph = Glyph::reveal,
                                 .enabled = state == State::present,
                                 .glyphOnly = true,
                                 .activates = false}};
    return content;
}

RowContent RecoveryModel::trashedRow(std::uint32_t item) const {
    const OrdovanTrashEntry& entry = trashedEntry(item);
    const State state = stateOf(item);
    RowContent content = row(entry.original(), entry.byteSize(), state);
    QString help = u"Put just this file back"_s;
    switch (state) {
        case State::elsewhere:
            help = u"Choose the folder that it came from first."_s;
            [[fallthrough]];
        case State::present:
            content.detail = u"In the Trash · "_s + Formats::byteSize(entry.byteSize()) +
                             u" · Put Back returns it to "_s + Formats::folderOf(entry.original(), root_.path());
            break;
        case State::missing:
            content.detail = u"No longer in the Trash (emptied or moved), so it can't be put back from here."_s;
            break;
        case State::refused:
            content.detail =
                u"The record names a place that is in no Trash or behind a link. Restore will refuse it."_s;
            break;
    }
    content.columns = {QString()};
    content.description = content.detail;
    content.actions = {RowAction{.id = putBackFromTrash,
                                 .text = u"Put Back from Trash"_s,
                                 .help = locked_.isEmpty() ? help : locked_,
                                 .glyph = Glyph::undo,
                                 .enabled = state == State::present && locked_.isEmpty(),
                                 .glyphOnly = compact_},
                       RowAction{.id = showInTrash,
                                 .text = u"Show in the Trash"_s,
                                 .help = u"Show in the Trash"_s,
                                 .glyph = Glyph::reveal,
                                 .enabled = state == State::present || state == State::elsewhere,
                                 .glyphOnly = true,
                                 .activates = false}};
    return content;
}
