#pragma once

#include "OrdovanApp/theme/RowsGeometry.h"
#include "OrdovanApp/theme/RowsModel.h"
#include "OrdovanApp/theme/RowsPainter.h"
#include "OrdovanApp/theme/ThemeEnvironment.h"

#include <QAbstractItemView>
#include <QBasicTimer>
#include <QPersistentModelIndex>
#include <QPointer>

#include <functional>
#include <vector>

class QMenu;

/// Shows a `RowsModel`: rows of one height under heads of another, 100,000 of them without a wait, since nothing is
/// kept for a row that is not in sight.
///
/// Sections: one card; the head of the group in sight stays at the top. Cards: each group is a card of its own, in as
/// many columns as fit. Space toggles the marks of the selected rows, Return triggers the first enabled action of the
/// current one, the Menu key and the right button open its menu. To assistive technologies it is a list whose children
/// are the rows (a tick row is a check box with a "toggle" action, a head a heading), and theirs their texts and
/// buttons.
class RowsView : public QAbstractItemView {
    Q_OBJECT

public:
    enum class Style { sections, cards };

    RowsView(const ThemeEnvironment& theme, Style style, QWidget* parent = nullptr);

    /// Takes only a `RowsModel`.
    void setModel(QAbstractItemModel* model) override;
    [[nodiscard]] RowsModel* rows() const;

    /// Logical pixels at the normal size of type. Defaults: rows 54, heads 36 (of cards 52).
    void setRowHeight(int height);
    void setHeadHeight(int height);
    /// The widths of the right-hand columns; they grow with the type. Default: none.
    void setColumnWidths(QList<int> widths);
    /// Whether rows can be dragged to another place in their group; `moveRequested` tells where. Alt+Up and Alt+Down do
    /// the same.
    void setReorderable(bool reorderable);
    /// How many columns of cards at most. Default: 4.
    void setMaximumColumns(int columns);
    /// Whether the heads of cards stand above them, as plain lines.
    void setHeadsOutside(bool outside);
    /// Whether the view is no higher than its rows.
    void setHeightFollowsRows(bool follows);

    [[nodiscard]] QRect visualRect(const QModelIndex& index) const override;
    void scrollTo(const QModelIndex& index, ScrollHint hint = EnsureVisible) override;
    [[nodiscard]] QModelIndex indexAt(const QPoint& point) const override;

    /// Where a row's mark and the buttons of its actions are drawn, in viewport coordinates; empty where there is none.
    [[nodiscard]] QRect markRect(int row) const;
    [[nodiscard]] QRect actionRect(int row, int actionId) const;

    /// The rows of which something is in sight, ascending; heads as well.
    [[nodiscard]] std::vector<int> rowsInSight() const;
    /// What Return does: the row's first enabled action that may be triggered so.
    void activate(int row);
    /// Whether `activate` would do anything.
    [[nodiscard]] bool canActivate(int row) const;
    /// Opens the menu of a row's actions at a point of the viewport; nothing for a row without any.
    void openMenu(int row, const QPoint& point);
    /// The open menu of a row, or null.
    [[nodiscard]] QMenu* menuOf(int row) const;
    /// Grows whenever rows may have other numbers than before.
    [[nodiscard]] quint64 generation() const { return generation_; }

    [[nodiscard]] QSize sizeHint() const override;

Q_SIGNALS:
    void actionTriggered(int row, int actionId);
    /// Row `from` is to stand before row `before` (as it is numbered now).
    void moveRequested(int from, int before);

protected:
    bool event(QEvent* event) override;
    bool viewportEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void timerEvent(QTimerEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;

    [[nodiscard]] int horizontalOffset() const override { return 0; }
    [[nodiscard]] int verticalOffset() const override;
    [[nodiscard]] bool isIndexHidden(const QModelIndex&) const override { return false; }
    void setSelection(const QRect& rect, QItemSelectionModel::SelectionFlags flags) override;
    [[nodiscard]] QRegion visualRegionForSelection(const QItemSelection& selection) const override;
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
    void updateGeometries() override;
    void reset() override;
    void rowsInserted(const QModelIndex& parent, int first, int last) override;
    void dataChanged(const QModelIndex& first, const QModelIndex& last, const QList<int>& roles) override;
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;
    void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;

private:
    /// Something on a row: the row alone, its mark, or one of its buttons.
    struct Spot {
        int row = -1;
        bool mark = false;
        int action = -1;  // id
        friend bool operator==(const Spot&, const Spot&) = default;
    };
    struct Drag {
        int row = -1;
        QPoint start;
        bool moving = false;
        int before = -1;
    };

    void rowsChanged();
    /// Moves on from a head that became current when the rows above it went.
    void leaveHead();
    void layOut();
    void layOutScrollBar();
    void refreshTheme();
    [[nodiscard]] int rowHeight() const;
    [[nodiscard]] int headHeight() const;
    [[nodiscard]] RowsPainter::Head headStyle(int row) const;
    /// A row's rectangle in viewport coordinates, the head that stays at the top where it is drawn.
    [[nodiscard]] QRect rectOf(int row) const;
    [[nodiscard]] int stickyHead() const;
    [[nodiscard]] int nextRow(int row, int step) const;
    [[nodiscard]] int besides(int row, int step) const;
    [[nodiscard]] int rowPageAway(int row, int direction) const;

    void paintFrame();
    void paintCards(QPainter& painter, const RowsGeometry::Range& groups);
    void paintRow(QPainter& painter, int row, const QRect& rect);
    void paintCorners(QPainter& painter);
    void paintInsertionLine(QPainter& painter);

    [[nodiscard]] Spot spotAt(const QPoint& point) const;
    void setHover(const Spot& spot);
    void updateRow(int row);
    void openMenuOfCurrentRow();
    [[nodiscard]] QString toolTipAt(const QPoint& point) const;
    [[nodiscard]] int insertionRow(const QPoint& point) const;
    /// What Space does; false where there is nothing to do it to.
    bool toggleSelection();
    void endDrag();
    bool moveCurrentRow(int step);
    void sendFocus();

    const ThemeEnvironment& theme_;
    const Style style_;
    RowsPainter painter_;
    RowsGeometry geometry_;
    int rowHeight_ = 54;
    int headHeight_;
    int maximumColumns_ = 4;
    bool headsOutside_ = false;
    bool heightFollowsRows_ = false;
    bool reorderable_ = false;
    bool keyboard_ = false;  // what was used last: the ring is drawn for it alone
    quint64 generation_ = 0;
    Spot hover_;
    Spot pressed_;
    Drag drag_;
    QPointer<QMenu> menu_;
    QPersistentModelIndex menuIndex_;
    QBasicTimer autoScroll_;
    std::vector<QMetaObject::Connection> modelConnections_;
};
