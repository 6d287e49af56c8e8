#include "OrdovanApp/theme/RowsAccessibility.h"
#include "OrdovanApp/theme/RowsView.h"
#include "OrdovanApp/theme/ToolTips.h"

#include <QApplication>
#include <QHelpEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QToolTip>

#include <algorithm>
#include <cstdlib>

namespace {

const RowAction* actionToActivate(const RowContent& content) {
    const auto action = std::ranges::find_if(
        content.actions, [](const RowAction& candidate) { return candidate.enabled && candidate.activates; });
    return action == content.actions.end() ? nullptr : &*action;
}

}  // namespace

// The pointer.

RowsView::Spot RowsView::spotAt(const QPoint& point) const {
    const QModelIndex index = viewport()->rect().contains(point) ? indexAt(point) : QModelIndex();
    if (!index.isValid()) return {};
    const int row = index.row();
    const RowContent content = rows()->content(row);
    const QRect rect = rectOf(row);
    const RowsPainter::Layout layout = painter_.layout(content, rect, headStyle(row));
    Spot spot{.row = row};
    for (const auto& button : layout.buttons) {
        if (button.rect.contains(point)) spot.action = content.actions[button.action].id;
    }
    spot.mark =
        spot.action < 0 && ((content.mark == RowContent::Mark::tick && layout.markTarget(rect).contains(point)) ||
                            content.mark == RowContent::Mark::radio);
    return spot;
}

void RowsView::setHover(const Spot& spot) {
    if (spot == hover_) return;
    const int before = hover_.row;
    hover_ = spot;
    updateRow(before);
    updateRow(spot.row);
}

void RowsView::updateRow(int row) {
    if (row >= 0 && row < geometry_.rowCount()) viewport()->update(rectOf(row));
}

void RowsView::mousePressEvent(QMouseEvent* event) {
    keyboard_ = false;
    const QPoint point = event->position().toPoint();
    const Spot spot = spotAt(point);
    if (spot.row < 0) return;
    if (event->button() == Qt::LeftButton && (spot.action >= 0 || spot.mark)) {
        pressed_ = spot;
        setHover(spot);
        updateRow(spot.row);
    }
    if (rows()->isHead(spot.row)) return;
    const bool onMark = spot.action >= 0 || (spot.mark && markRect(spot.row).isValid() &&
                                             rows()->content(spot.row).mark == RowContent::Mark::tick);
    if (onMark) {
        // Ticking many rows one after the other leaves what is selected alone.
        selectionModel()->setCurrentIndex(model()->index(spot.row, 0), QItemSelectionModel::NoUpdate);
        return;
    }
    if (reorderable_ && event->button() == Qt::LeftButton) drag_ = {.row = spot.row, .start = point};
    QAbstractItemView::mousePressEvent(event);
}

void RowsView::mouseMoveEvent(QMouseEvent* event) {
    const QPoint point = event->position().toPoint();
    setHover(spotAt(point));
    if (!event->buttons().testFlag(Qt::LeftButton) || drag_.row < 0) return;
    if (!drag_.moving && (point - drag_.start).manhattanLength() < QApplication::startDragDistance()) return;
    drag_.moving = true;
    drag_.before = insertionRow(point);
    if (!autoScroll_.isActive()) autoScroll_.start(16, this);
    viewport()->setCursor(Qt::ClosedHandCursor);
    viewport()->update();
}

void RowsView::mouseReleaseEvent(QMouseEvent* event) {
    const Spot spot = spotAt(event->position().toPoint());
    const Spot pressed = pressed_;
    const Drag drag = drag_;
    pressed_ = {};
    endDrag();
    updateRow(pressed.row);
    if (event->button() != Qt::LeftButton) return;
    if (drag.moving) {
        if (drag.before >= 0 && drag.before != drag.row && drag.before != drag.row + 1) {
            Q_EMIT moveRequested(drag.row, drag.before);
        }
        return;
    }
    QAbstractItemView::mouseReleaseEvent(event);
    if (pressed.row < 0 || spot != pressed) return;
    const RowContent content = rows()->content(spot.row);
    if (spot.mark) {
        if (content.mark == RowContent::Mark::tick || !content.marked) rows()->toggle(spot.row);
        return;
    }
    const auto action = std::ranges::find(content.actions, spot.action, &RowAction::id);
    if (action != content.actions.end() && action->enabled) Q_EMIT actionTriggered(spot.row, spot.action);
}

void RowsView::mouseDoubleClickEvent(QMouseEvent* event) {
    const Spot spot = spotAt(event->position().toPoint());
    if (spot.row < 0 || event->button() != Qt::LeftButton) return;
    if (spot.action >= 0 || spot.mark) {
        mousePressEvent(event);
    } else if (!rows()->isHead(spot.row)) {
        const RowContent content = rows()->content(spot.row);
        const RowAction* action = actionToActivate(content);
        if (action == nullptr || !action->returnOnly) activate(spot.row);
    }
}

bool RowsView::viewportEvent(QEvent* event) {
    if (event->type() == QEvent::ToolTip) {
        const auto* help = static_cast<QHelpEvent*>(event);
        const QString text = toolTipAt(help->pos());
        if (text.isEmpty()) {
            QToolTip::hideText();
        } else {
            QToolTip::showText(help->globalPos(), ToolTips::plain(text), viewport(), rectOf(spotAt(help->pos()).row));
        }
        return true;
    }
    if (event->type() == QEvent::Leave) setHover({});
    return QAbstractItemView::viewportEvent(event);
}

QString RowsView::toolTipAt(const QPoint& point) const {
    const Spot spot = spotAt(point);
    if (spot.row < 0) return {};
    const RowContent content = rows()->content(spot.row);
    const auto action = std::ranges::find(content.actions, spot.action, &RowAction::id);
    if (spot.action >= 0 && action != content.actions.end()) {
        return action->help.isEmpty() && action->glyphOnly ? action->text : action->help;
    }
    if (spot.mark && content.mark == RowContent::Mark::tick && !content.markHelp.isEmpty()) return content.markHelp;
    if (!content.toolTip.isEmpty()) return content.toolTip;
    if (!painter_.isElided(content, painter_.layout(content, rectOf(spot.row), headStyle(spot.row)))) return {};
    QStringList lines{content.title, content.detail};
    if (content.chip) lines.append(content.chip->text);
    lines += content.columns;
    lines.removeAll(QString());
    return lines.join(u'\n');
}

// Actions.

void RowsView::activate(int row) {
    if (row < 0 || row >= geometry_.rowCount() || rows()->isHead(row)) return;
    const RowContent content = rows()->content(row);
    if (const RowAction* action = actionToActivate(content)) Q_EMIT actionTriggered(row, action->id);
}

bool RowsView::canActivate(int row) const {
    return !rows()->isHead(row) && actionToActivate(rows()->content(row)) != nullptr;
}

void RowsView::contextMenuEvent(QContextMenuEvent* event) {
    if (event->reason() == QContextMenuEvent::Keyboard) {
        openMenuOfCurrentRow();
    } else {
        openMenu(indexAt(event->pos()).row(), event->pos());
    }
}

void RowsView::openMenuOfCurrentRow() {
    if (!currentIndex().isValid()) return;
    scrollTo(currentIndex());
    const QRect rect = rectOf(currentIndex().row());
    openMenu(currentIndex().row(), {rect.left() + rect.width() / 3, rect.center().y()});
}

void RowsView::openMenu(int row, const QPoint& point) {
    if (row < 0 || row >= geometry_.rowCount()) return;
    const RowContent content = rows()->content(row);
    if (content.actions.isEmpty()) return;
    auto* menu = new QMenu(this);
    menu_ = menu;
    menuIndex_ = model()->index(row, 0);
    menu->setObjectName(u"rowMenu");
    menu->setAccessibleName(rows()->title(row));
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->setToolTipsVisible(true);
    for (const RowAction& action : content.actions) {
        QAction* item = menu->addAction(QString(action.text).replace(u'&', QStringLiteral("&&")));
        if (action.glyph) item->setIcon(Glyphs::icon(*action.glyph, theme_.colors().secondText));
        item->setToolTip(ToolTips::plain(action.help));
        item->setEnabled(action.enabled);
        connect(item, &QAction::triggered, this, [this, id = action.id, index = menuIndex_] {
            if (index.isValid()) Q_EMIT actionTriggered(index.row(), id);
        });
    }
    // What is chosen through an assistive technology leaves the menu open.
    connect(menu, &QMenu::triggered, menu, &QMenu::close);
    menu->popup(viewport()->mapToGlobal(point));
}

QMenu* RowsView::menuOf(int row) const {
    return menu_ && menu_->isVisible() && menuIndex_.isValid() && menuIndex_.row() == row ? menu_.data() : nullptr;
}

// The keyboard.

void RowsView::focusInEvent(QFocusEvent* event) {
    if (event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason) keyboard_ = true;
    QAbstractItemView::focusInEvent(event);
    sendFocus();
    updateRow(currentIndex().row());
}

void RowsView::keyPressEvent(QKeyEvent* event) {
    keyboard_ = true;
    const int row = currentIndex().row();
    updateRow(row);
    if (event->key() == Qt::Key_Escape && drag_.moving) {
        endDrag();
        return;
    }
    if (event->key() == Qt::Key_F10 && event->modifiers() == Qt::ShiftModifier) {
        openMenuOfCurrentRow();
        return;
    }
    if (row >= 0 && event->modifiers().testFlag(Qt::AltModifier) &&
        (event->key() == Qt::Key_Up || event->key() == Qt::Key_Down)) {
        if (!moveCurrentRow(event->key() == Qt::Key_Up ? -1 : 1)) event->ignore();
        return;
    }
    if (!(event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier))) {
        if (event->key() == Qt::Key_Space && toggleSelection()) return;
        if (row >= 0 && (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)) {
            activate(row);
            return;
        }
    }
    QAbstractItemView::keyPressEvent(event);
}

bool RowsView::toggleSelection() {
    const QModelIndexList selected =
        selectionModel() != nullptr ? selectionModel()->selectedIndexes() : QModelIndexList();
    if (selected.size() > 1) {
        std::vector<int> together;
        for (const QModelIndex& index : selected) together.push_back(index.row());
        rows()->toggleRows(together);
        return true;
    }
    const int row = currentIndex().row();
    if (row < 0) return false;
    const RowContent::Mark mark = rows()->content(row).mark;
    if (mark != RowContent::Mark::tick && mark != RowContent::Mark::radio) return false;
    rows()->toggle(row);
    return true;
}

int RowsView::nextRow(int row, int step) const {
    int next = row + step;
    while (next >= 0 && next < geometry_.rowCount() && rows()->isHead(next)) next += step;
    return next >= 0 && next < geometry_.rowCount() ? next : -1;
}

int RowsView::besides(int row, int step) const {
    const int group = geometry_.groupOf(row);
    const int other = group + step;
    if (geometry_.columns() == 1 || other < 0 || other >= geometry_.groupCount() ||
        other / geometry_.columns() != group / geometry_.columns()) {
        return row;
    }
    const RowsGeometry::Range here = geometry_.rowsOf(group);
    const RowsGeometry::Range there = geometry_.rowsOf(other);
    return std::min(there.begin + (row - here.begin), there.end - 1);
}

int RowsView::rowPageAway(int row, int direction) const {
    const QRect from = geometry_.rowRect(row);
    const int step = std::max(rowHeight(), viewport()->height() - headHeight() - rowHeight());
    const int x = from.center().x();
    int y = std::clamp(from.center().y() + direction * step, 0, std::max(0, geometry_.height() - 1));
    // Between two cards, or below the end of a short one, there is no row.
    int found = geometry_.rowAt({x, y});
    while (found < 0 && y != from.center().y()) {
        y -= direction * std::min(rowHeight() / 2, std::abs(y - from.center().y()));
        found = geometry_.rowAt({x, y});
    }
    if (found >= 0 && rows()->isHead(found)) {
        const int after = nextRow(found, direction);
        found = after >= 0 ? after : nextRow(found, -direction);
    }
    return found >= 0 ? found : row;
}

QModelIndex RowsView::moveCursor(CursorAction action, Qt::KeyboardModifiers) {
    const int count = geometry_.rowCount();
    if (count == 0) return {};
    const int row = currentIndex().row();
    const int first = nextRow(-1, 1);
    if (row < 0) return first >= 0 ? model()->index(first, 0) : QModelIndex();
    int target = row;
    switch (action) {
        case MoveUp:
        case MovePrevious:
            target = nextRow(row, -1);
            break;
        case MoveDown:
        case MoveNext:
            target = nextRow(row, 1);
            break;
        case MoveHome:
            target = first;
            break;
        case MoveEnd:
            target = nextRow(count, -1);
            break;
        case MovePageUp:
            target = rowPageAway(row, -1);
            break;
        case MovePageDown:
            target = rowPageAway(row, 1);
            break;
        case MoveLeft:
            target = besides(row, -1);
            break;
        case MoveRight:
            target = besides(row, 1);
            break;
    }
    if (target < 0) {
        // The head above the first row comes into sight with it.
        if (action == MoveUp) verticalScrollBar()->setValue(0);
        target = row;
    }
    return model()->index(target, 0);
}

// Reordering.

bool RowsView::moveCurrentRow(int step) {
    const int row = currentIndex().row();
    const RowsGeometry::Range group = geometry_.rowsOf(geometry_.groupOf(row));
    const int target = row + step;
    if (!reorderable_ || target < group.begin || target >= group.end || rows()->isHead(target)) return false;
    Q_EMIT moveRequested(row, step < 0 ? target : target + 1);
    return true;
}

int RowsView::insertionRow(const QPoint& point) const {
    const int group = geometry_.groupOf(drag_.row);
    const RowsGeometry::Range rows = geometry_.rowsOf(group);
    const int first = rows.begin + (geometry_.hasHead(group) ? 1 : 0);
    const int top = geometry_.rowRect(first).top();
    const int nearest = (point.y() + verticalOffset() - top + rowHeight() / 2) / rowHeight();
    return std::clamp(first + nearest, first, rows.end);
}

void RowsView::timerEvent(QTimerEvent* event) {
    if (event->timerId() != autoScroll_.timerId()) {
        QAbstractItemView::timerEvent(event);
        return;
    }
    const QPoint point = viewport()->mapFromGlobal(QCursor::pos());
    const int edge = rowHeight() / 2;
    const int over = point.y() < edge ? point.y() - edge : std::max(0, point.y() - (viewport()->height() - edge));
    if (over == 0) return;
    verticalScrollBar()->setValue(verticalOffset() + std::clamp(over / 3, -rowHeight(), rowHeight()));
    drag_.before = insertionRow(point);
    viewport()->update();
}

void RowsView::endDrag() {
    if (drag_.moving) viewport()->unsetCursor();
    drag_ = {};
    autoScroll_.stop();
    viewport()->update();
}

void RowsView::paintInsertionLine(QPainter& painter) {
    if (!drag_.moving || drag_.before < 0) return;
    const QRect above = rectOf(drag_.before - 1);
    const QRect below = rectOf(drag_.before);
    const int y = drag_.before < geometry_.rowCount() && !below.isEmpty() ? below.top() : above.bottom() + 1;
    painter.setPen(Qt::NoPen);
    painter.setBrush(theme_.colors().accent);
    painter.drawRoundedRect(QRectF(8, y - 1.5, viewport()->width() - 16, 3), 1.5, 1.5);
}

// What assistive technologies are told.

void RowsView::sendFocus() {
    if (hasFocus() && currentIndex().isValid()) RowsAccessibility::focusMoved(*this, currentIndex().row());
}

void RowsView::currentChanged(const QModelIndex& current, const QModelIndex& previous) {
    QAbstractItemView::currentChanged(current, previous);
    updateRow(previous.row());
    updateRow(current.row());
    sendFocus();
}

void RowsView::selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) {
    QAbstractItemView::selectionChanged(selected, deselected);
    RowsAccessibility::selectionChanged(*this, selected, deselected);
}

void RowsView::dataChanged(const QModelIndex& first, const QModelIndex& last, const QList<int>& roles) {
    QAbstractItemView::dataChanged(first, last, roles);
    RowsAccessibility::rowsChanged(*this, first.row(), last.row(), roles);
}
