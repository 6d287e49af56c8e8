#pragma once

#include <QList>

class QItemSelection;
class RowsView;

/// What assistive technologies see of a `RowsView`: a list, its rows, and of those in sight their texts and buttons.
namespace RowsAccessibility {

/// Makes every view of rows known to them; once is enough, more does not harm.
void install();

/// These tell them what happened; where none listens they do nothing.
void focusMoved(RowsView& view, int row);
void selectionChanged(RowsView& view, const QItemSelection& selected, const QItemSelection& deselected);
/// What rows show has changed: where no roles are named, their marks perhaps and what can be done with them.
void rowsChanged(RowsView& view, int first, int last, const QList<int>& roles);

}  // namespace RowsAccessibility
