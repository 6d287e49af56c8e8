#include "OrdovanApp/theme/RowsGeometry.h"

#include <algorithm>
#include <ranges>

void RowsGeometry::set(std::span<const int> heads, int rowCount, const Metrics& metrics) {
    heads_ = heads;
    rowCount_ = rowCount;
    metrics_ = metrics;
    leading_ = rowCount > 0 && (heads.empty() || heads.front() != 0);
    columns_ = 1;
    lineTops_.clear();
    if (!metrics.cards) return;
    columns_ = std::clamp((metrics.width + metrics.gap) / (metrics.minimumCardWidth + metrics.gap), 1,
                          std::max(1, metrics.maximumColumns));
    lineTops_.push_back(0);
    for (int group = 0; group < groupCount(); group += columns_) {
        int tallest = 0;
        for (int i = group; i < std::min(group + columns_, groupCount()); ++i) tallest = std::max(tallest, heightOf(i));
        lineTops_.push_back(lineTops_.back() + tallest + metrics.gap);
    }
}

int RowsGeometry::height() const {
    if (metrics_.cards) return std::max(0, lineTops_.back() - metrics_.gap);
    return topOf(groupCount());
}

int RowsGeometry::groupCount() const {
    return static_cast<int>(heads_.size()) + (leading_ ? 1 : 0);
}

int RowsGeometry::groupOf(int row) const {
    const auto after = std::ranges::upper_bound(heads_, row) - heads_.begin();
    return static_cast<int>(after) - (leading_ ? 0 : 1);
}

RowsGeometry::Range RowsGeometry::rowsOf(int group) const {
    const auto begin = [&](int which) {
        const int head = which - (leading_ ? 1 : 0);
        if (head < 0) return 0;
        return head < static_cast<int>(heads_.size()) ? heads_[static_cast<std::size_t>(head)] : rowCount_;
    };
    return {begin(group), begin(group + 1)};
}

int RowsGeometry::topOf(int group) const {
    if (metrics_.cards) return lineTops_[static_cast<std::size_t>(group / columns_)];
    const int heads = std::max(0, group - (leading_ ? 1 : 0));
    return heads * metrics_.headHeight + (rowsOf(group).begin - heads) * metrics_.rowHeight;
}

int RowsGeometry::heightOf(int group) const {
    const Range rows = rowsOf(group);
    const int heads = hasHead(group) ? 1 : 0;
    return heads * metrics_.headHeight + (rows.end - rows.begin - heads) * metrics_.rowHeight + 2 * edge();
}

QRect RowsGeometry::cardRect(int group) const {
    const int column = group % columns_;
    const int wide = metrics_.width - (columns_ - 1) * metrics_.gap;
    const int left = column * (wide / columns_ + metrics_.gap);
    const int width = column == columns_ - 1 ? metrics_.width - left : wide / columns_;
    const int top = topOf(group);
    int bottom = top + heightOf(group);
    // The cards of one line end together.
    if (metrics_.cards) bottom = lineTops_[static_cast<std::size_t>(group / columns_) + 1] - metrics_.gap;
    const int outside = metrics_.headsOutside && hasHead(group) ? metrics_.headHeight : 0;
    return {left, top + outside, width, bottom - top - outside};
}

QRect RowsGeometry::rowRect(int row) const {
    if (row < 0 || row >= rowCount_) return {};
    const int group = groupOf(row);
    const int first = rowsOf(group).begin;
    const QRect card = cardRect(group);
    const QRect inside(card.left() + edge(), 0, card.width() - 2 * edge(), 0);
    const int top = topOf(group) + edge();
    if (row == first && hasHead(group)) return {inside.left(), top, inside.width(), metrics_.headHeight};
    const int above = hasHead(group) ? metrics_.headHeight + (row - first - 1) * metrics_.rowHeight
                                     : (row - first) * metrics_.rowHeight;
    return {inside.left(), top + above, inside.width(), metrics_.rowHeight};
}

int RowsGeometry::rowAt(const QPoint& point) const {
    if (point.x() < 0 || point.x() >= metrics_.width) return -1;
    const Range groups = groupsIn(point.y(), point.y() + 1);
    for (int group = groups.begin; group < groups.end; ++group) {
        const Range rows = rowsIn(group, point.y(), point.y() + 1);
        for (int row = rows.begin; row < rows.end; ++row) {
            if (rowRect(row).contains(point)) return row;
        }
    }
    return -1;
}

RowsGeometry::Range RowsGeometry::groupsIn(int top, int bottom) const {
    if (rowCount_ == 0 || bottom <= top) return {};
    const int lines = (groupCount() + columns_ - 1) / columns_;
    const auto all = std::views::iota(0, lines);
    // Lines that begin at or above `top` but for the last of them lie above it; those that begin below `bottom`, below.
    const auto firstTop = [&](int line) { return topOf(line * columns_); };
    const int after = static_cast<int>(std::ranges::upper_bound(all, top, {}, firstTop) - all.begin());
    const int end = static_cast<int>(std::ranges::lower_bound(all, bottom, {}, firstTop) - all.begin());
    return {std::max(0, after - 1) * columns_, std::min(end * columns_, groupCount())};
}

RowsGeometry::Range RowsGeometry::rowsIn(int group, int top, int bottom) const {
    const Range rows = rowsOf(group);
    const int start = topOf(group) + edge();
    const int heads = hasHead(group) ? 1 : 0;
    const int rowsTop = start + heads * metrics_.headHeight;
    const auto clampRow = [&](int row) { return std::clamp(row, rows.begin + heads, rows.end); };
    // Rounded towards minus infinity, so that what lies above the rows is none of them.
    const auto floorDiv = [&](int value) {
        return value >= 0 ? value / metrics_.rowHeight : -((-value + metrics_.rowHeight - 1) / metrics_.rowHeight);
    };
    const int end = clampRow(rows.begin + heads + floorDiv(bottom - rowsTop - 1) + 1);
    int begin = clampRow(rows.begin + heads + floorDiv(top - rowsTop));
    if (heads == 1 && top < rowsTop && bottom > start) begin = rows.begin;
    return {begin, std::max(begin, end)};
}
