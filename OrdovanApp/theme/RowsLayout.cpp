#include "OrdovanApp/theme/RowsPainter.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int margin = 16;
constexpr int rightMargin = 22;  // the scroll bar lies over a part of it
constexpr int gap = 12;
constexpr int markSize = 16;
constexpr int markColumn = 20;
constexpr int glyphSize = 34;
constexpr int cardGlyphSize = 28;
constexpr int smallGlyphSize = 16;
constexpr int pillHeight = 24;
constexpr int pillPadding = 10;
constexpr int longestPill = 180;
constexpr int buttonHeight = 28;
constexpr int buttonPadding = 12;
constexpr int buttonGap = 8;
constexpr int shortestTitle = 140;
constexpr int shortestChip = 64;
constexpr int leading = 2 * margin + markColumn + glyphSize + 2 * gap;

int ceilWidth(const QFontMetricsF& metrics, const QString& text) {
    return static_cast<int>(std::ceil(metrics.horizontalAdvance(text)));
}

QRect centred(const QRect& row, int left, int width, int height) {
    return {left, row.top() + (row.height() - height) / 2, width, height};
}

}  // namespace

QRect RowsPainter::Layout::markTarget(const QRect& row) const {
    if (mark.isEmpty()) return {};
    return {row.left(), row.top(), mark.right() + gap - row.left(), row.height()};
}

RowsPainter::RowsPainter(const ThemeEnvironment& theme) : theme_(theme) {
    refresh();
}

void RowsPainter::refresh() {
    const auto type = [this](ThemeEnvironment::Type size) {
        const QFont font = theme_.font(size);
        return Type{font, QFontMetricsF(font)};
    };
    title_ = type(ThemeEnvironment::Type::bodyStrong);
    detail_ = type(ThemeEnvironment::Type::caption);
    strong_ = type(ThemeEnvironment::Type::captionStrong);
}

int RowsPainter::titleHeight(const Type& type) const {
    return static_cast<int>(std::ceil(type.metrics.height())) + 1;
}

int RowsPainter::leastRowHeight() const {
    return titleHeight(title_) + titleHeight(detail_) + gap;
}

int RowsPainter::leastHeadHeight() const {
    return titleHeight(title_) + gap;
}

int RowsPainter::pillWidth(const RowContent::Chip& chip) const {
    return std::min(theme_.scaled(longestPill), ceilWidth(strong_.metrics, chip.text) + 2 * pillPadding);
}

RowsPainter::Layout RowsPainter::layout(const RowContent& content, const QRect& row, Head head) const {
    Layout layout;
    Edges edges{row.left() + (head == Head::outside ? 4 : margin), row.right() + 1 - rightMargin};
    if (head == Head::none && content.mark != RowContent::Mark::none) {
        const int side = theme_.scaled(markSize);
        layout.mark = centred(row, edges.left, side, side);
        edges.left += side + (content.glyph ? markColumn - markSize : 0) + gap;
    }
    if (content.glyph) {
        const int size = theme_.scaled(head == Head::none   ? glyphSize
                                       : head == Head::card ? cardGlyphSize
                                                            : smallGlyphSize);
        layout.glyph = centred(row, edges.left, size, size);
        edges.left += size + (head == Head::none ? gap : gap - 2);
    }
    placeButtons(content, row, layout, edges);
    placeTags(content, row, layout, edges);
    placeColumns(content, row, layout, edges);
    placeTexts(content, row, head, layout, edges);
    return layout;
}

int RowsPainter::buttonWidth(const RowAction& action) const {
    if (action.glyphOnly && action.glyph) return theme_.scaled(buttonHeight);
    const int glyph = action.glyph ? theme_.scaled(smallGlyphSize) + buttonGap : 0;
    return ceilWidth(strong_.metrics, action.text) + glyph + 2 * buttonPadding;
}

void RowsPainter::placeButtons(const RowContent& content, const QRect& row, Layout& layout, Edges& edges) const {
    for (int i = static_cast<int>(content.actions.size()) - 1; i >= 0; --i) {
        const RowAction& action = content.actions[i];
        if (action.menuOnly) continue;
        const int width = buttonWidth(action);
        layout.buttons.insert(layout.buttons.begin(),
                              Button{i, centred(row, edges.right - width, width, theme_.scaled(buttonHeight))});
        edges.right -= width + buttonGap;
    }
    if (!layout.buttons.empty()) edges.right -= gap - buttonGap;
}

RowContent::Chip RowsPainter::moreTags(qsizetype count) {
    return {u'+' + QString::number(count), QColor()};
}

void RowsPainter::placeTags(const RowContent& content, const QRect& row, Layout& layout, Edges& edges) const {
    const auto place = [&](int width) {
        const QRect pill = centred(row, edges.left, width, theme_.scaled(pillHeight));
        edges.left += width + buttonGap;
        return pill;
    };
    const int end = edges.right - gap - theme_.scaled(shortestTitle);
    for (qsizetype shown = 0; shown < content.tags.size(); ++shown) {
        const int width = pillWidth(content.tags[shown]);
        const qsizetype behind = content.tags.size() - shown - 1;
        const int rest = behind > 0 ? buttonGap + pillWidth(moreTags(behind)) : 0;
        if (edges.left + width + rest > end) {
            layout.moreTags = place(pillWidth(moreTags(behind + 1)));
            return;
        }
        layout.tags.push_back(place(width));
    }
}

void RowsPainter::placeColumns(const RowContent& content, const QRect& row, Layout& layout, Edges& edges) const {
    const auto width = [&](int columns) {
        int sum = 0;
        for (int i = 0; i < columns; ++i) sum += columnWidth(i) + gap;
        return sum;
    };
    // By the width of the row alone, so that every row of a view has the same columns.
    int room = static_cast<int>(columnWidths_.size());
    while (room > 0 && row.width() - leading - width(room) < theme_.scaled(shortestTitle)) --room;
    const int shown = std::min(room, static_cast<int>(content.columns.size()));
    int left = edges.right - width(shown) + gap;
    edges.right -= width(shown);
    for (int i = 0; i < shown; ++i) {
        layout.columns.emplace_back(left, row.top(), columnWidth(i), row.height());
        left += columnWidth(i) + gap;
    }
    if (!content.chip) return;
    const int whole = pillWidth(*content.chip);
    const int chip = std::min(whole, edges.right - edges.left - gap - theme_.scaled(shortestTitle));
    if (chip < std::min(whole, theme_.scaled(shortestChip))) return;
    layout.chip = centred(row, edges.right - chip, chip, theme_.scaled(pillHeight));
    edges.right -= chip + gap;
}

void RowsPainter::placeTexts(const RowContent& content, const QRect& row, Head head, Layout& layout,
                             Edges edges) const {
    const int width = std::max(0, edges.right - edges.left);
    if (head == Head::none) {
        const int first = titleHeight(title_);
        const int second = content.detail.isEmpty() ? 0 : titleHeight(detail_);
        const int top = row.top() + (row.height() - first - second) / 2;
        layout.title = QRect(edges.left, top, width, first);
        if (second > 0) layout.detail = QRect(edges.left, top + first, width, second);
        return;
    }
    int titleRoom = width;
    if (!content.detail.isEmpty()) {
        const int room = std::min(width / 2, ceilWidth(detail_.metrics, content.detail) + 1);
        layout.detail = QRect(edges.right - room, row.top(), room, row.height());
        titleRoom -= room + gap;
    }
    const int count = content.count.isEmpty() ? 0 : ceilWidth(strong_.metrics, content.count) + 1;
    const int title = std::clamp(ceilWidth(titleType(head).metrics, content.title) + 1, 0,
                                 std::max(0, titleRoom - (count > 0 ? count + gap : 0)));
    layout.title = QRect(edges.left, row.top(), title, row.height());
    if (count > 0) layout.count = QRect(edges.left + title + gap - 2, row.top(), count, row.height());
}

bool RowsPainter::isElided(const RowContent& content, const Layout& layout) const {
    const auto exceeds = [](const QFontMetricsF& metrics, const QString& text, const QRect& rect) {
        return !rect.isEmpty() && metrics.horizontalAdvance(text) > rect.width();
    };
    return exceeds(title_.metrics, content.title, layout.title) ||
           exceeds(detail_.metrics, content.detail, layout.detail) ||
           (content.chip && pillPadding * 2 + ceilWidth(strong_.metrics, content.chip->text) > layout.chip.width()) ||
           !layout.moreTags.isEmpty() || static_cast<qsizetype>(layout.columns.size()) < content.columns.size();
}
