#include "OrdovanApp/models/BigFilesModel.h"

#include "OrdovanApp/controller/TidyViewModel.h"
#include "OrdovanApp/models/Formats.h"
#include "OrdovanApp/theme/ThemeEnvironment.h"

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

OrdovanFileCategory kindOf(const OrdovanInventoryEntry& entry) {
    return OrdovanFileCategories::forExtension(entry.url.pathExtension());
}

}  // namespace

BigFilesModel::BigFilesModel(TidyViewModel& model, const ThemeEnvironment& theme, QObject* parent)
    : RowsModel(parent), model_(model), theme_(theme) {
    reload();
}

void BigFilesModel::reload() {
    beginResetModel();
    const Url root = model_.planRoot().value_or(Url());
    if (std::exchange(root_, root) != root) ticks_.clear();
    all_ = model_.largeFiles(limit, 0);
    std::erase_if(ticks_, [this](const std::string& path) {
        return std::ranges::none_of(all_, [&](const OrdovanInventoryEntry& entry) { return entry.url.path() == path; });
    });
    collect();
    narrow();
    endResetModel();
    Q_EMIT tickedChanged();
}

/// The largest files of the chosen size: those at the beginning of the largest of any size.
void BigFilesModel::collect() {
    const auto smaller =
        std::ranges::find_if(all_, [this](const OrdovanInventoryEntry& entry) { return entry.byteSize < minimum_; });
    largest_.assign(all_.begin(), smaller);
    const std::size_t rootLength = root_.path() == "/" ? 0 : root_.path().size();
    names_.reset(largest_.size());
    for (const OrdovanInventoryEntry& entry : largest_) {
        std::string_view path = entry.url.path();
        path.remove_prefix(std::min(path.size(), rootLength + 1));
        names_.add(path);
    }
}

void BigFilesModel::narrow() {
    shown_ = names_.rowsMatching(query_);
    if (kind_) std::erase_if(shown_, [this](std::uint32_t file) { return kindOf(largest_[file]) != *kind_; });
    heads_.assign(shown_.empty() ? 0 : 1, 0);
}

template <class Change>
void BigFilesModel::refilter(Change change) {
    beginResetModel();
    change();
    narrow();
    endResetModel();
    Q_EMIT tickedChanged();
}

void BigFilesModel::setMinimumBytes(std::int64_t bytes) {
    if (bytes == minimum_) return;
    refilter([&] {
        minimum_ = bytes;
        collect();
    });
}

void BigFilesModel::setKind(std::optional<OrdovanFileCategory> kind) {
    if (kind != kind_) refilter([&] { kind_ = kind; });
}

void BigFilesModel::setQuery(const QString& query) {
    if (query != query_) refilter([&] { query_ = query; });
}

void BigFilesModel::setLocked(const QString& reason) {
    if (reason == locked_) return;
    locked_ = reason;
    allChanged();
}

void BigFilesModel::allChanged() {
    if (rowCount() > 0) Q_EMIT dataChanged(index(0), index(rowCount() - 1));
}

int BigFilesModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(heads_.size() + shown_.size());
}

const OrdovanInventoryEntry& BigFilesModel::entry(int row) const {
    return largest_[shown_[static_cast<std::size_t>(row) - 1]];
}

Url BigFilesModel::url(int row) const {
    return row > 0 ? entry(row).url : Url();
}

QString BigFilesModel::title(int row) const {
    return row > 0 ? Formats::fileName(entry(row).url) : tr("Largest files, biggest first");
}

RowContent BigFilesModel::content(int row) const {
    RowContent content;
    content.title = title(row);
    if (row == 0) {
        content.count = Formats::count(static_cast<qint64>(shown_.size()));
        return content;
    }
    const OrdovanInventoryEntry& file = entry(row);
    const OrdovanFileCategory kind = kindOf(file);
    const double largest = std::max(1.0, static_cast<double>(largest_.front().byteSize));
    content.mark = RowContent::Mark::tick;
    content.marked = ticks_.contains(std::string(file.url.path()));
    content.enabled = locked_.isEmpty();
    content.glyph = Glyphs::forCategory(kind);
    content.glyphColor = theme_.colors().kind(kind);
    content.detail = Formats::folderOf(file.url, root_);
    content.columns = {Formats::byteSize(file.byteSize),
                       file.modifiedEpoch ? Formats::day(*file.modifiedEpoch) : QString()};
    content.share = static_cast<double>(file.byteSize) / largest;
    content.toolTip = locked_.isEmpty() ? Formats::path(file.url) : locked_;
    content.description = content.marked ? tr("Leave Out of Trash") : tr("Select for Trash");
    content.markHelp = locked_.isEmpty() ? content.description : locked_;
    content.actions = {RowAction{.id = quickLook,
                                 .text = tr("Quick Look"),
                                 .help = tr("Quick Look"),
                                 .glyph = Glyph::eye,
                                 .glyphOnly = true},
                       RowAction{.id = reveal,
                                 .text = tr("Reveal in Finder"),
                                 .help = tr("Reveal in Finder"),
                                 .glyph = Glyph::reveal,
                                 .glyphOnly = true},
                       RowAction{.id = selectForTrash,
                                 .text = content.description,
                                 .help = locked_,
                                 .enabled = locked_.isEmpty(),
                                 .menuOnly = true,
                                 .activates = false}};
    return content;
}

void BigFilesModel::toggle(int row) {
    if (row <= 0 || !locked_.isEmpty()) return;
    std::string path(entry(row).url.path());
    if (ticks_.erase(path) == 0) ticks_.insert(std::move(path));
    Q_EMIT dataChanged(index(row), index(row), {Qt::CheckStateRole});
    Q_EMIT tickedChanged();
}

std::vector<OrdovanFileCategory> BigFilesModel::kinds() const {
    std::vector<OrdovanFileCategory> result;
    for (const OrdovanFileCategory kind : OrdovanFileCategories::allCases) {
        if (std::ranges::find(largest_, kind, kindOf) != largest_.end()) result.push_back(kind);
    }
    return result;
}

BigFilesModel::Total BigFilesModel::total() const {
    Total result = {.files = static_cast<int>(all_.size())};
    for (const OrdovanInventoryEntry& file : all_) result.bytes += file.byteSize;
    return result;
}

bool BigFilesModel::hasInstallers() const {
    return std::ranges::find(all_, OrdovanFileCategory::installers, kindOf) != all_.end();
}

BigFilesModel::Ticked BigFilesModel::ticked() const {
    Ticked result;
    for (const OrdovanInventoryEntry& file : all_) {
        if (!ticks_.contains(std::string(file.url.path()))) continue;
        ++result.files;
        result.bytes += file.byteSize;
    }
    result.hidden = result.files;
    for (int row = 1; row < rowCount(); ++row) result.hidden -= ticks_.contains(std::string(url(row).path())) ? 1 : 0;
    return result;
}

std::vector<OrdovanFileTrasher::Item> BigFilesModel::tickedItems() const {
    std::vector<OrdovanFileTrasher::Item> items;
    for (const OrdovanInventoryEntry& file : all_) {
        if (ticks_.contains(std::string(file.url.path()))) items.push_back({file.url, file.byteSize});
    }
    return items;
}
