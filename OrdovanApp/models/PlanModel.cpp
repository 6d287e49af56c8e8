#include "OrdovanApp/models/PlanModel.h"

#include "OrdovanApp/controller/TidyViewModel.h"

#include <algorithm>
#include <functional>
#include <numeric>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace {

/// The folder directly below the output folder that a destination lies in.
std::string_view topFolder(const Url& destination, std::string_view outputRoot) {
    std::string_view path = destination.path();
    path.remove_prefix(std::min(path.size(), outputRoot.size() + 1));
    return path.substr(0, path.find('/'));
}

}  // namespace

PlanModel::PlanModel(TidyViewModel& model, const ThemeEnvironment& theme, QObject* parent)
    : RowsModel(parent), model_(model), theme_(theme) {
    connect(&model_, &TidyViewModel::excludedChanged, this, &PlanModel::followExclusions);
    reload();
}

// What the rows are of.

bool PlanModel::reload() {
    if (plan_ == model_.plan() && inventory_ == model_.inventory() && model_.planRoot().value_or(Url()) == root_) {
        return false;
    }
    const std::optional<std::string> folder = this->folder();
    beginResetModel();
    plan_ = model_.plan();
    inventory_ = model_.inventory();
    root_ = model_.planRoot().value_or(Url());
    index_ = model_.planIndex();
    if (!index_) {
        index_ = std::make_shared<const PlanIndex>(plan_ && inventory_ ? PlanIndex::of(*plan_, *inventory_, root_)
                                                                       : PlanIndex());
    }
    indexFolders();
    readTicks();
    const auto same = std::ranges::find(folders_, folder, &Folder::name);
    folder_.reset();
    if (folder && same != folders_.end()) folder_ = static_cast<std::uint32_t>(same - folders_.begin());
    narrow();
    endResetModel();
    countTicks();
    return true;
}

void PlanModel::indexFolders() {
    folders_.clear();
    folderOf_.clear();
    if (!plan_) return;
    std::unordered_map<std::string, std::uint32_t> found;
    for (const OrdovanFileProposal& proposal : plan_->proposals) {
        const std::string_view name = proposal.folderName();
        if (folderOf_.empty() || folders_[folderOf_.back()].name != name) {
            const auto place = static_cast<std::uint32_t>(folders_.size());
            const auto [known, isNew] = found.emplace(name, place);
            if (isNew) folders_.push_back({known->first, 0});
            folderOf_.push_back(known->second);
        } else {
            folderOf_.push_back(folderOf_.back());
        }
        ++folders_[folderOf_.back()].files;
    }
    sortFolders();
    std::unordered_map<std::string_view, std::uint32_t> places;
    for (std::uint32_t place = 0; place < folders_.size(); ++place) places.emplace(folders_[place].name, place);
    const std::string output(root_.appending(OrdovanOutput::folderName).path());
    for (const OrdovanPlanConflict& conflict : plan_->conflicts) {
        const auto known = places.find(topFolder(conflict.destination, output));
        folderOf_.push_back(known == places.end() ? nowhere : known->second);
    }
}

/// The fullest first; among folders of one size the plan's order.
void PlanModel::sortFolders() {
    std::vector<std::uint32_t> order(folders_.size());
    std::iota(order.begin(), order.end(), std::uint32_t{0});
    std::ranges::stable_sort(order, std::ranges::greater(),
                             [this](std::uint32_t place) { return folders_[place].files; });
    std::vector<Folder> sorted;
    std::vector<std::uint32_t> placeNow(order.size());
    for (const std::uint32_t place : order) {
        placeNow[place] = static_cast<std::uint32_t>(sorted.size());
        sorted.push_back(std::move(folders_[place]));
    }
    folders_ = std::move(sorted);
    for (std::uint32_t& place : folderOf_) place = placeNow[place];
}

int PlanModel::proposals() const {
    return plan_ ? static_cast<int>(plan_->proposals.size()) : 0;
}

int PlanModel::conflicts() const {
    return plan_ ? static_cast<int>(plan_->conflicts.size()) : 0;
}

int PlanModel::skipped() const {
    return static_cast<int>(index_->skips.size());
}

PlanModel::Group PlanModel::groupOf(std::uint32_t item) const {
    const auto place = static_cast<int>(item);
    if (place < proposals()) return Group::proposed;
    return place < proposals() + conflicts() ? Group::review : Group::skipped;
}

const Url& PlanModel::source(std::uint32_t item) const {
    return index_->source(*plan_, item);
}

// What of it is shown.

void PlanModel::setQuery(const QString& query) {
    if (query == query_) return;
    query_ = query;
    beginResetModel();
    narrow();
    endResetModel();
    countShown();
}

void PlanModel::setFolder(const std::optional<std::string>& name) {
    if (name == folder()) return;
    const auto found = std::ranges::find(folders_, name, &Folder::name);
    folder_.reset();
    if (found != folders_.end()) folder_ = static_cast<std::uint32_t>(found - folders_.begin());
    beginResetModel();
    narrow();
    endResetModel();
    countShown();
}

std::optional<std::string> PlanModel::folder() const {
    if (!folder_) return std::nullopt;
    return folders_[*folder_].name;
}

/// Lays the rows out anew, under a head for each group of which something is shown.
void PlanModel::narrow() {
    shown_ = index_->names.rowsMatching(query_);
    if (folder_) {
        std::erase_if(shown_,
                      [this](std::uint32_t item) { return item >= folderOf_.size() || folderOf_[item] != *folder_; });
    }
    heads_.clear();
    headGroups_.clear();
    for (const Group group : {Group::proposed, Group::review, Group::skipped}) {
        const auto first =
            std::ranges::partition_point(shown_, [&](std::uint32_t item) { return groupOf(item) < group; });
        if (first == shown_.end() || groupOf(*first) != group) continue;
        heads_.push_back(static_cast<int>(first - shown_.begin()) + static_cast<int>(heads_.size()));
        headGroups_.push_back(group);
    }
}

int PlanModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(shown_.size() + heads_.size());
}

std::optional<std::uint32_t> PlanModel::itemAt(int row) const {
    const auto head = std::ranges::lower_bound(heads_, row);
    if (head != heads_.end() && *head == row) return std::nullopt;
    const auto headsBefore = static_cast<std::size_t>(head - heads_.begin());
    return shown_[static_cast<std::size_t>(row) - headsBefore];
}

Url PlanModel::url(int row) const {
    const auto item = itemAt(row);
    return item ? source(*item) : Url();
}

std::vector<int> PlanModel::rowsOf(std::span<const std::string> paths) const {
    const std::unordered_set<std::string_view> wanted(paths.begin(), paths.end());
    std::vector<int> rows;
    if (wanted.empty()) return rows;
    for (int row = 0; row < rowCount() && rows.size() < wanted.size(); ++row) {
        const auto item = itemAt(row);
        if (item && wanted.contains(source(*item).path())) rows.push_back(row);
    }
    return rows;
}

// What is ticked.

void PlanModel::readTicks() {
    ticks_ = model_.exclusion().proposals();
    ticks_.resize(static_cast<std::size_t>(proposals()), false);
    ticks_.flip();
}

void PlanModel::countTicks() {
    ticked_ = {};
    for (std::size_t i = 0; i < ticks_.size(); ++i) {
        if (!ticks_[i]) continue;
        ++ticked_.files;
        ticked_.bytes += index_->byteSizes[i];
    }
    countShown();
}

/// The part of the counts that search and folder change.
void PlanModel::countShown() {
    shownProposals_ = 0;
    shownTicked_ = 0;
    for (const std::uint32_t item : shown_) {
        if (item >= ticks_.size()) break;
        ++shownProposals_;
        shownTicked_ += ticks_[item] ? 1 : 0;
    }
    ticked_.hidden = ticked_.files - shownTicked_;
    Q_EMIT tickedChanged();
}

/// Takes over the controller's selection where something else than a row has changed it.
void PlanModel::followExclusions() {
    // While a plan is on its way, the selection may already be that of the next one.
    if (ownChange_ || plan_ != model_.plan()) return;
    readTicks();
    countTicks();
    if (rowCount() > 0) Q_EMIT dataChanged(index(0), index(rowCount() - 1), {Qt::CheckStateRole});
}

void PlanModel::toggle(int row) {
    const auto item = itemAt(row);
    if (!item || *item >= ticks_.size() || !locked_.isEmpty() || plan_ != model_.plan()) return;
    ownChange_ = true;
    model_.toggle(std::size_t{*item});
    ownChange_ = false;
    const bool ticked = !ticks_[*item];
    const int step = ticked ? 1 : -1;
    ticks_[*item] = ticked;
    ticked_.files += step;
    shownTicked_ += step;
    ticked_.bytes += step * index_->byteSizes[*item];
    Q_EMIT dataChanged(index(row), index(row), {Qt::CheckStateRole});
    Q_EMIT tickedChanged();
}

void PlanModel::toggleRows(std::span<const int> rows) {
    std::vector<std::uint32_t> items;
    bool allTicked = true;
    for (const int row : rows) {
        const auto item = itemAt(row);
        if (!item || *item >= ticks_.size()) continue;
        items.push_back(*item);
        allTicked = allTicked && ticks_[*item];
    }
    setTicks(items, !allTicked);
}

void PlanModel::tickShown(bool ticked) {
    setTicks(shown_, ticked);
}

void PlanModel::setTicks(std::span<const std::uint32_t> items, bool ticked) {
    if (!locked_.isEmpty() || plan_ != model_.plan()) return;
    std::vector<bool> excluded = model_.exclusion().proposals();
    for (const std::uint32_t item : items) {
        if (item < excluded.size()) excluded[item] = !ticked;
    }
    model_.setExcludedProposals(std::move(excluded));
}

void PlanModel::setLocked(const QString& reason) {
    if (reason == locked_) return;
    locked_ = reason;
    if (rowCount() > 0) Q_EMIT dataChanged(index(0), index(rowCount() - 1));
}
