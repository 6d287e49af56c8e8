#include "OrdovanApp/theme/RowsView.h"

#include "OrdovanApp/theme/Card.h"
#include "OrdovanApp/theme/RowsAccessibility.h"

#include <QAccessible>
#include <QPaintEvent>
#include <QPainter>
#include <QPainterPath>
#include <QScrollBar>

#include <algorithm>

RowsView::RowsView(const ThemeEnvironment& theme, Style style, QWidget* parent)
    : QAbstractItemView(parent),
      theme_(theme),
      style_(style),
      painter_(theme),
      headHeight_(style == Style::cards ? 52 : 36) {
    RowsAccessibility::install();
    setSelectionMode(SingleSelection);
    setSelectionBehavior(SelectRows);
    setEditTriggers(NoEditTriggers);
    setTabKeyNavigation(false);
    setVerticalScrollMode(ScrollPerPixel);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setFrameStyle(style == Style::sections ? static_cast<int>(QFrame::Box) | static_cast<int>(QFrame::Plain)
                                           : static_cast<int>(QFrame::NoFrame));
    setLineWidth(1);
    setMouseTracking(true);
    viewport()->setMouseTracking(true);
    viewport()->setAttribute(Qt::WA_Hover);
    viewport()->setAutoFillBackground(false);
    setProperty("ownFocus", true);
    connect(&theme_, &ThemeEnvironment::changed, this, &RowsView::refreshTheme);
}

void RowsView::setModel(QAbstractItemModel* model) {
    Q_ASSERT(!model || qobject_cast<RowsModel*>(model));
    for (const auto& connection : modelConnections_) disconnect(connection);
    modelConnections_.clear();
    geometry_ = {};
    QAbstractItemView::setModel(model);
    if (model) {
        const auto changed = [this] { rowsChanged(); };
        const auto removed = [this] {
            rowsChanged();
            leaveHead();
        };
        modelConnections_ = {connect(model, &QAbstractItemModel::rowsRemoved, this, removed),
                             connect(model, &QAbstractItemModel::rowsMoved, this, changed),
                             connect(model, &QAbstractItemModel::layoutChanged, this, changed)};
    }
    rowsChanged();
}

RowsModel* RowsView::rows() const {
    return qobject_cast<RowsModel*>(model());
}

void RowsView::setRowHeight(int height) {
    rowHeight_ = height;
    layOut();
}

void RowsView::setHeadHeight(int height) {
    headHeight_ = height;
    layOut();
}

void RowsView::setColumnWidths(QList<int> widths) {
    painter_.setColumnWidths(std::move(widths));
    viewport()->update();
}

void RowsView::setReorderable(bool reorderable) {
    reorderable_ = reorderable;
}

void RowsView::setMaximumColumns(int columns) {
    maximumColumns_ = columns;
    layOut();
}

void RowsView::setHeadsOutside(bool outside) {
    headsOutside_ = outside;
    layOut();
}

void RowsView::setHeightFollowsRows(bool follows) {
    heightFollowsRows_ = follows;
    layOut();
}

void RowsView::refreshTheme() {
    painter_.refresh();
    layOut();
    update();
}

int RowsView::rowHeight() const {
    return std::max(theme_.scaled(rowHeight_), painter_.leastRowHeight());
}
int RowsView::headHeight() const {
    return std::max(theme_.scaled(headHeight_), painter_.leastHeadHeight());
}
int RowsView::verticalOffset() const {
    return verticalScrollBar()->value();
}

// Rows and where they are.

void RowsView::rowsChanged() {
    ++generation_;
    hover_ = {};
    pressed_ = {};
    endDrag();
    layOut();
}

void RowsView::reset() {
    QAbstractItemView::reset();
    rowsChanged();
}

void RowsView::rowsInserted(const QModelIndex& parent, int first, int last) {
    rowsChanged();
    QAbstractItemView::rowsInserted(parent, first, last);
}

void RowsView::leaveHead() {
    const int row = currentIndex().row();
    if (row < 0 || !rows()->isHead(row)) return;
    const int next = nextRow(row, 1) >= 0 ? nextRow(row, 1) : nextRow(row, -1);
    if (next >= 0) setCurrentIndex(model()->index(next, 0));
}

void RowsView::updateGeometries() {
    layOut();
    QAbstractItemView::updateGeometries();
}

void RowsView::layOut() {
    const RowsModel* model = rows();
    geometry_.set(model ? model->heads() : std::span<const int>(), model ? model->rowCount() : 0,
                  {.width = style_ == Style::cards ? viewport()->width() : width() - 2 * frameWidth(),
                   .rowHeight = rowHeight(),
                   .headHeight = headHeight(),
                   .cards = style_ == Style::cards,
                   .maximumColumns = maximumColumns_,
                   .headsOutside = headsOutside_});
    QScrollBar* bar = verticalScrollBar();
    bar->setRange(0, std::max(0, geometry_.height() - viewport()->height()));
    bar->setPageStep(viewport()->height());
    bar->setSingleStep(rowHeight() / 2);
    layOutScrollBar();
    if (heightFollowsRows_) setMaximumHeight(sizeHint().height());
    viewport()->update();
}

void RowsView::layOutScrollBar() {
    // The bar lies over the rows' margin, so that they stay where they are when it comes.
    const QScrollBar* bar = verticalScrollBar();
    const QMargins margins(0, 0, bar->maximum() > 0 ? -bar->sizeHint().width() : 0, 0);
    if (style_ == Style::sections && viewportMargins() != margins) setViewportMargins(margins);
    bar->parentWidget()->raise();
}

QSize RowsView::sizeHint() const {
    const int height = geometry_.height() + 2 * frameWidth();
    return {QAbstractItemView::sizeHint().width(), heightFollowsRows_ ? height : std::min(height, 400)};
}

int RowsView::stickyHead() const {
    if (style_ == Style::cards || verticalOffset() <= 0) return -1;
    const int group = geometry_.groupsIn(verticalOffset(), verticalOffset() + 1).begin;
    if (group >= geometry_.groupCount() || !geometry_.hasHead(group)) return -1;
    return geometry_.rowsOf(group).begin;
}

QRect RowsView::rectOf(int row) const {
    QRect rect = geometry_.rowRect(row).translated(0, -verticalOffset());
    if (row >= 0 && row == stickyHead()) {
        // The next head pushes it out.
        const int end = geometry_.rowsOf(geometry_.groupOf(row)).end;
        const int limit = end < geometry_.rowCount() ? geometry_.rowRect(end).top() - verticalOffset() : rect.height();
        rect.moveTop(std::min(0, limit - rect.height()));
    }
    return rect;
}

QRect RowsView::visualRect(const QModelIndex& index) const {
    return index.isValid() && index.model() == model() ? rectOf(index.row()) : QRect();
}

QModelIndex RowsView::indexAt(const QPoint& point) const {
    if (!rows()) return {};
    const int sticky = stickyHead();
    if (sticky >= 0 && rectOf(sticky).contains(point)) return model()->index(sticky, 0);
    const int row = geometry_.rowAt(point + QPoint(0, verticalOffset()));
    return row >= 0 ? model()->index(row, 0) : QModelIndex();
}

void RowsView::scrollTo(const QModelIndex& index, ScrollHint hint) {
    if (!index.isValid() || index.model() != model()) return;
    const int row = index.row();
    const QRect rect = geometry_.rowRect(row);
    const int group = geometry_.groupOf(row);
    const bool covered = style_ == Style::sections && geometry_.hasHead(group) && !rows()->isHead(row);
    const int above = covered ? headHeight() : 0;
    const int height = viewport()->height();
    const int offset = verticalOffset();
    const int atTop = rect.top() - above;
    const int atBottom = rect.bottom() + 1 - height;
    int target = offset;
    if (hint == PositionAtTop || (hint == EnsureVisible && offset > atTop)) target = atTop;
    if (hint == PositionAtBottom || (hint == EnsureVisible && offset < atBottom)) target = atBottom;
    if (hint == PositionAtCenter) target = rect.center().y() - height / 2;
    verticalScrollBar()->setValue(target);
}

void RowsView::scrollContentsBy(int dx, int dy) {
    QAbstractItemView::scrollContentsBy(dx, dy);
    if (viewport()->underMouse()) setHover(spotAt(viewport()->mapFromGlobal(QCursor::pos())));
    viewport()->update();
}

std::vector<int> RowsView::rowsInSight() const {
    std::vector<int> result;
    if (!rows()) return result;
    const int top = verticalOffset();
    const int bottom = top + viewport()->height();
    const int sticky = stickyHead();
    const RowsGeometry::Range groups = geometry_.groupsIn(top, bottom);
    for (int group = groups.begin; group < groups.end; ++group) {
        const RowsGeometry::Range rows = geometry_.rowsIn(group, top, bottom);
        if (sticky >= 0 && sticky == geometry_.rowsOf(group).begin && rows.begin > sticky) result.push_back(sticky);
        for (int row = rows.begin; row < rows.end; ++row) result.push_back(row);
    }
    return result;
}

RowsPainter::Head RowsView::headStyle(int row) const {
    if (!rows()->isHead(row)) return RowsPainter::Head::none;
    if (style_ == Style::sections) return RowsPainter::Head::band;
    return headsOutside_ ? RowsPainter::Head::outside : RowsPainter::Head::card;
}

QRect RowsView::markRect(int row) const {
    if (row < 0 || row >= geometry_.rowCount()) return {};
    return painter_.layout(rows()->content(row), rectOf(row), headStyle(row)).mark;
}

QRect RowsView::actionRect(int row, int actionId) const {
    if (row < 0 || row >= geometry_.rowCount()) return {};
    const RowContent content = rows()->content(row);
    for (const auto& button : painter_.layout(content, rectOf(row), headStyle(row)).buttons) {
        if (content.actions[button.action].id == actionId) return button.rect;
    }
    return {};
}

// Selection.

void RowsView::setSelection(const QRect& rect, QItemSelectionModel::SelectionFlags flags) {
    const QRect area = rect.normalized().translated(0, verticalOffset());
    QItemSelection selection;
    const RowsGeometry::Range groups = geometry_.groupsIn(area.top(), area.bottom() + 1);
    for (int group = groups.begin; group < groups.end; ++group) {
        if (!geometry_.cardRect(group).intersects(area)) continue;
        const RowsGeometry::Range rows = geometry_.rowsIn(group, area.top(), area.bottom() + 1);
        if (rows.begin < rows.end) selection.select(model()->index(rows.begin, 0), model()->index(rows.end - 1, 0));
    }
    selectionModel()->select(selection, flags);
}

QRegion RowsView::visualRegionForSelection(const QItemSelection& selection) const {
    QRegion region;
    for (const int row : rowsInSight()) {
        if (selection.contains(model()->index(row, 0))) region += rectOf(row);
    }
    return region;
}

// Drawing.

bool RowsView::event(QEvent* event) {
    if (event->type() == QEvent::Paint) {
        paintFrame();
        return true;
    }
    return QAbstractItemView::event(event);
}

void RowsView::paintFrame() {
    if (style_ == Style::cards) return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(theme_.colors().hairline, 1));
    painter.setBrush(theme_.colors().card);
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), Surfaces::cardRadius, Surfaces::cardRadius);
}

void RowsView::paintEvent(QPaintEvent* event) {
    if (!rows()) return;
    QPainter painter(viewport());
    const QRect dirty = event->rect();
    const int top = dirty.top() + verticalOffset();
    const int bottom = dirty.bottom() + 1 + verticalOffset();
    const RowsGeometry::Range groups = geometry_.groupsIn(top, bottom);
    if (style_ == Style::cards) paintCards(painter, groups);
    const int sticky = stickyHead();
    for (int group = groups.begin; group < groups.end; ++group) {
        const RowsGeometry::Range range = geometry_.rowsIn(group, top, bottom);
        for (int row = range.begin; row < range.end; ++row) {
            if (row != sticky) paintRow(painter, row, rectOf(row));
        }
    }
    if (sticky >= 0 && rectOf(sticky).intersects(dirty)) paintRow(painter, sticky, rectOf(sticky));
    if (style_ == Style::sections) paintCorners(painter);
    paintInsertionLine(painter);
}

void RowsView::paintCards(QPainter& painter, const RowsGeometry::Range& groups) {
    painter.setRenderHint(QPainter::Antialiasing);
    for (int group = groups.begin; group < groups.end; ++group) {
        const QRect card = geometry_.cardRect(group).translated(0, -verticalOffset());
        Surfaces::paintCard(painter, card, theme_.colors());
    }
}

void RowsView::paintRow(QPainter& painter, int row, const QRect& rect) {
    const RowContent content = rows()->content(row);
    const QModelIndex index = model()->index(row, 0);
    const RowsPainter::Head head = headStyle(row);
    const bool last = row + 1 == geometry_.rowCount() ||
                      (style_ == Style::cards && row + 1 == geometry_.rowsOf(geometry_.groupOf(row)).end);
    const QRect card =
        style_ == Style::cards ? geometry_.cardRect(geometry_.groupOf(row)).translated(0, -verticalOffset()) : QRect();
    painter_.paint(painter, content, rect, head,
                   {.selected = selectionModel()->isSelected(index),
                    .hovered = hover_.row == row && head == RowsPainter::Head::none,
                    .focused = hasFocus() && keyboard_ && currentIndex() == index,
                    .lined = !last && head != RowsPainter::Head::outside,
                    .card = card,
                    .hoveredAction = hover_.row == row ? hover_.action : -1,
                    .pressedAction = pressed_.row == row && pressed_ == hover_ ? pressed_.action : -1});
}

void RowsView::paintCorners(QPainter& painter) {
    // What is scrolled is cut by the view's edge, which is round. Clipping would leave jagged corners.
    const QRect card(-frameWidth(), -frameWidth(), width(), height());
    constexpr int radius = Surfaces::cardRadius;
    QPainterPath corners;
    corners.addRect(card);
    corners.addRoundedRect(QRectF(card).adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
    corners.setFillRule(Qt::OddEvenFill);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillPath(corners, theme_.colors().window);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(theme_.colors().hairline, 1));
    painter.drawRoundedRect(QRectF(card).adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
}
