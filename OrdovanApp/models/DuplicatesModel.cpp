#include "OrdovanApp/models/DuplicatesModel.h"

#include "OrdovanApp/controller/TidyViewModel.h"
#include "OrdovanApp/models/Formats.h"
#include "OrdovanApp/models/Language.h"
#include "OrdovanApp/theme/ThemeEnvironment.h"

#include <algorithm>

using namespace Qt::StringLiterals;

DuplicatesModel::DuplicatesModel(TidyViewModel& model, const ThemeEnvironment& theme, QObject* parent)
    : RowsModel(parent), model_(model), theme_(theme) {
    connect(&model_, &TidyViewModel::duplicateKeepersChanged, this, &DuplicatesModel::followKeepers);
    reload();
}

void DuplicatesModel::reload() {
    beginResetModel();
    report_ = model_.duplicateReport();
    inventory_ = model_.inventory();
    root_ = model_.planRoot().value_or(Url());
    indexNames();
    narrow();
    endResetModel();
}

void DuplicatesModel::indexNames() {
    modified_.clear();
    groupOf_.clear();
    names_.reset(report_ ? static_cast<std::size_t>(report_->duplicateFileCount()) : 0);
    if (!report_) return;
    if (inventory_) {
        modified_.reserve(inventory_->files.size());
        for (const OrdovanInventoryEntry& entry : inventory_->files) {
            if (entry.modifiedEpoch) modified_.emplace(entry.url.path(), *entry.modifiedEpoch);
        }
    }
    const std::size_t rootLength = root_.path() == "/" ? 0 : root_.path().size();
    for (std::uint32_t group = 0; group < report_->groups.size(); ++group) {
        for (const Url& file : report_->groups[group].files) {
            std::string_view path = file.path();
            path.remove_prefix(std::min(path.size(), rootLength + 1));
            names_.add(path);
            groupOf_.push_back(group);
        }
    }
}

void DuplicatesModel::narrow() {
    shown_.clear();
    heads_.clear();
    rows_ = 0;
    for (const std::uint32_t file : names_.rowsMatching(query_)) {
        const std::uint32_t group = groupOf_[file];
        if (!shown_.empty() && shown_.back() == group) continue;
        shown_.push_back(group);
        heads_.push_back(rows_);
        rows_ += 1 + static_cast<int>(report_->groups[group].files.size());
    }
}

void DuplicatesModel::setQuery(const QString& query) {
    if (query == query_) return;
    beginResetModel();
    query_ = query;
    narrow();
    endResetModel();
}

void DuplicatesModel::setLocked(const QString& reason) {
    if (reason == locked_) return;
    locked_ = reason;
    followKeepers();
}

void DuplicatesModel::followKeepers() {
    if (rows_ > 0) Q_EMIT dataChanged(index(0), index(rows_ - 1));
}

int DuplicatesModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : rows_;
}

int DuplicatesModel::groups() const {
    return report_ ? static_cast<int>(report_->groups.size()) : 0;
}

qint64 DuplicatesModel::extras() const {
    return report_ ? report_->duplicateFileCount() - groups() : 0;
}

qint64 DuplicatesModel::hiddenExtras() const {
    return extras() - (rows_ - 2 * static_cast<qint64>(shown_.size()));  // a shown group has a head and a kept copy
}

qint64 DuplicatesModel::reclaimableBytes() const {
    return report_ ? report_->reclaimableBytes() : 0;
}

DuplicatesModel::Place DuplicatesModel::placeOf(int row) const {
    const auto card = static_cast<std::size_t>(std::ranges::upper_bound(heads_, row) - heads_.begin()) - 1;
    const OrdovanDuplicateGroup& group = report_->groups[shown_[card]];
    if (row == heads_[card]) return {group, std::nullopt};
    return {group, static_cast<std::size_t>(row - heads_[card] - 1)};
}

Url DuplicatesModel::url(int row) const {
    const Place place = placeOf(row);
    return place.file ? place.group.files[*place.file] : Url();
}

QString DuplicatesModel::headTitle(const OrdovanDuplicateGroup& group) const {
    const auto copies = static_cast<qint64>(group.files.size());
    return tr("%1 identical copies · %2", nullptr, pluralOf(copies))
        .arg(Formats::count(copies), Formats::byteSize(group.byteSize));
}

QString DuplicatesModel::title(int row) const {
    const Place place = placeOf(row);
    return place.file ? Formats::fileName(place.group.files[*place.file]) : headTitle(place.group);
}

RowContent DuplicatesModel::head(const OrdovanDuplicateGroup& group) const {
    const auto category = OrdovanFileCategories::forExtension(group.files.front().pathExtension());
    RowContent content;
    content.glyph = Glyphs::forCategory(category);
    content.glyphColor = theme_.colors().kind(category);
    content.title = headTitle(group);
    content.detail = tr("frees %1").arg(Formats::byteSize(group.reclaimableBytes()));
    return content;
}

RowContent DuplicatesModel::content(int row) const {
    const Place place = placeOf(row);
    if (!place.file) return head(place.group);
    const Url& file = place.group.files[*place.file];
    RowContent content;
    content.mark = RowContent::Mark::radio;
    content.marked = model_.keeper(place.group) == file;
    content.enabled = locked_.isEmpty();
    content.dimmed = !content.marked || !locked_.isEmpty();
    content.title = Formats::fileName(file);
    content.detail = Formats::folderOf(file, root_);
    const auto modified = modified_.find(file.path());
    if (modified != modified_.end()) content.detail += u" · "_s + Formats::day(modified->second);
    content.chip = content.marked ? RowContent::Chip{tr("kept"), theme_.colors().accentText}
                                  : RowContent::Chip{tr("extra"), QColor()};
    content.toolTip = locked_.isEmpty() ? Formats::path(file) : locked_;
    content.description = content.marked ? tr("This copy is kept.") : tr("Extra: goes to the Trash when you say so.");
    content.actions = {RowAction{.id = keepInstead,
                                 .text = tr("Keep this copy instead"),
                                 .help = locked_.isEmpty() && content.marked ? content.description : locked_,
                                 .glyph = Glyph::check,
                                 .enabled = !content.marked && locked_.isEmpty(),
                                 .menuOnly = true},
                       RowAction{.id = reveal,
                                 .text = tr("Reveal in Finder"),
                                 .glyph = Glyph::reveal,
                                 .menuOnly = true,
                                 .activates = false}};
    return content;
}

void DuplicatesModel::toggle(int row) {
    const Place place = placeOf(row);
    if (place.file && locked_.isEmpty()) model_.keep(place.group.files[*place.file].path(), place.group.id());
}
