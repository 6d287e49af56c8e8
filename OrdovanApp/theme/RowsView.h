#pragma once

#include "OrdovanApp/theme/RowsModel.h"
#include "OrdovanApp/theme/ThemeEnvironment.h"

#include <QAbstractItemView>

#include <vector>

/// Shows a `RowsModel`: rows of one height under heads of another, 100,000 of them without a wait, since nothing is
/// kept for a row that is not in sight.
///
/// Sections: one card; the head of the group in sight stays at the top. Cards: each group is a card of its own, in as
/// many columns as fit. Space toggles the current row's mark, Return triggers its first enabled action, the Menu key
/// and the right button open its menu. To assistive technologies it is a list whose children are the rows (a tick row
/// is a check box with a "toggle" action, a head a heading), and theirs their texts and buttons.
class RowsView : public QAbstractItemView {
    Q_OBJECT

public:
    enum class Style { sections, cards };

    RowsView(const ThemeEnvironment& theme, Style style, QWidget* parent = nullptr);

    /// Takes only a `RowsModel`.
    void setModel(QAbstractItemModel* model) override;
    [[nodiscard]] RowsModel* rows() const;

    /// Logical pixels. Defaults: rows 54, heads 36.
    void setRowHeight(int height);
    void setHeadHeight(int height);
    /// The widths of the right-hand columns. Default: none.
    void setColumnWidths(QList<int> widths);
    /// Whether rows can be dragged to another place; `moveRequested` tells where. Alt+Up and Alt+Down do the same.
    void setReorderable(bool reorderable);

    [[nodiscard]] QRect visualRect(const QModelIndex& index) const override;
    void scrollTo(const QModelIndex& index, ScrollHint hint = EnsureVisible) override;
    [[nodiscard]] QModelIndex indexAt(const QPoint& point) const override;

    /// Where a row's mark and the buttons of its actions are drawn, in viewport coordinates; empty where there is none.
    [[nodiscard]] QRect markRect(int row) const;
    [[nodiscard]] QRect actionRect(int row, int actionId) const;

Q_SIGNALS:
    void actionTriggered(int row, int actionId);
    /// A row (no head) was activated where it has no action: double click or Return.
    void rowActivated(int row);
    /// Space on a row without a mark: quick look.
    void quickLookRequested(int row);
    /// Row `from` is to stand before row `before` (as it is numbered now).
    void moveRequested(int from, int before);
};
