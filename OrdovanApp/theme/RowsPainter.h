#pragma once

#include "OrdovanApp/theme/RowsModel.h"
#include "OrdovanApp/theme/ThemeEnvironment.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QRect>

#include <optional>
#include <vector>

/// Lays out and draws one row of a `RowsView`: what is drawn is where the mouse finds it.
class RowsPainter {
public:
    /// How a head looks: the band of a section, the top of a card, or a line above a card.
    enum class Head { none, band, card, outside };
    struct Button {
        int action = 0;  ///< which of the content's actions
        QRect rect;
    };
    /// Where the parts of a row are; empty rectangles for those it does not have.
    struct Layout {
        QRect mark;
        QRect glyph;
        std::vector<QRect> tags;  ///< fewer than the row has where they would leave its title no room
        QRect moreTags;           ///< says how many there are besides; empty where all are shown
        QRect title;
        QRect detail;
        QRect count;
        QRect chip;
        std::vector<QRect> columns;  ///< fewer than the row has where it is narrow
        std::vector<Button> buttons;
        /// What of the row is clicked to tick it: more than the mark itself.
        [[nodiscard]] QRect markTarget(const QRect& row) const;
    };
    struct State {
        bool selected = false;
        bool hovered = false;
        bool focused = false;  ///< draws the focus ring
        bool lined = false;    ///< a hairline below
        QRect card{};          ///< the card that the row must not be drawn over the corners of
        int hoveredAction = -1;
        int pressedAction = -1;  ///< ids
    };

    explicit RowsPainter(const ThemeEnvironment& theme);

    /// Takes the type anew, after the theme changed.
    void refresh();
    void setColumnWidths(QList<int> widths) { columnWidths_ = std::move(widths); }

    /// The least height at which nothing of a row or head is cut off.
    [[nodiscard]] int leastRowHeight() const;
    [[nodiscard]] int leastHeadHeight() const;

    [[nodiscard]] Layout layout(const RowContent& content, const QRect& row, Head head) const;
    void paint(QPainter& painter, const RowContent& content, const QRect& row, Head head, const State& state) const;

    /// Whether a text of the row does not fit.
    [[nodiscard]] bool isElided(const RowContent& content, const Layout& layout) const;

private:
    struct Type {
        QFont font;
        QFontMetricsF metrics{font};
    };
    struct Edges {
        int left;
        int right;
    };
    void placeButtons(const RowContent& content, const QRect& row, Layout& layout, Edges& edges) const;
    void placeTags(const RowContent& content, const QRect& row, Layout& layout, Edges& edges) const;
    void placeColumns(const RowContent& content, const QRect& row, Layout& layout, Edges& edges) const;
    void placeTexts(const RowContent& content, const QRect& row, Head head, Layout& layout, Edges edges) const;
    [[nodiscard]] int pillWidth(const RowContent::Chip& chip) const;
    /// The pill in place of so many tags.
    [[nodiscard]] static RowContent::Chip moreTags(qsizetype count);
    [[nodiscard]] int buttonWidth(const RowAction& action) const;
    [[nodiscard]] int columnWidth(int column) const { return theme_.scaled(columnWidths_[column]); }
    [[nodiscard]] const Type& titleType(Head head) const {
        return head == Head::none || head == Head::card ? title_ : strong_;
    }
    [[nodiscard]] int titleHeight(const Type& type) const;

    void fill(QPainter& painter, const QRect& rect, const QColor& color, const QRect& card) const;
    void paintSurface(QPainter& painter, const RowContent& content, const QRect& row, Head head,
                      const State& state) const;
    void paintMark(QPainter& painter, const RowContent& content, const QRect& rect) const;
    /// What a chip or a kind icon of this color lies on.
    [[nodiscard]] QColor surfaceOf(const QColor& color, bool tinted) const;
    void paintGlyph(QPainter& painter, const RowContent& content, const QRect& rect, Head head, bool tinted) const;
    void paintPill(QPainter& painter, const RowContent::Chip& chip, const QRect& rect, bool tinted) const;
    void paintColumns(QPainter& painter, const RowContent& content, const Layout& layout) const;
    void paintButton(QPainter& painter, const RowAction& action, const QRect& rect, const State& state) const;
    void paintText(QPainter& painter, const Type& type, const QColor& color, const QRect& rect, const QString& text,
                   Qt::Alignment alignment = Qt::AlignLeft) const;

    const ThemeEnvironment& theme_;
    Type title_;
    Type detail_;
    Type strong_;
    QList<int> columnWidths_;
};
