#include "OrdovanApp/theme/RowsAccessibility.h"

#include "OrdovanApp/theme/RowsView.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QItemSelection>
#include <QMenu>
#include <QWindow>

#include <algorithm>
#include <unordered_map>
#include <vector>

namespace {

/// What stands for a row or a part of it while the view's rows keep their numbers.
class RowPiece : public QAccessibleInterface {
public:
    RowPiece(RowsView* view, int row) : view_(view), row_(row), generation_(view->generation()) {}

    [[nodiscard]] bool isValid() const override { return rowExists(); }
    [[nodiscard]] QObject* object() const override { return nullptr; }
    [[nodiscard]] QWindow* window() const override { return view_ ? view_->window()->windowHandle() : nullptr; }
    void setText(QAccessible::Text, const QString&) override {}

protected:
    [[nodiscard]] bool rowExists() const {
        return view_ && view_->rows() && view_->generation() == generation_ && row_ < view_->rows()->rowCount();
    }
    [[nodiscard]] RowContent content() const { return rowExists() ? view_->rows()->content(row_) : RowContent(); }
    [[nodiscard]] QRect onScreen(const QRect& rect) const {
        return {view_->viewport()->mapToGlobal(rect.topLeft()), rect.size()};
    }
    [[nodiscard]] QRect rowRect() const {
        return rowExists() ? view_->visualRect(view_->rows()->index(row_, 0)) : QRect();
    }
    [[nodiscard]] bool inSight() const {
        return rowExists() && view_->isVisible() && rowRect().intersects(view_->viewport()->rect());
    }

    QPointer<RowsView> view_;
    const int row_;

private:
    const quint64 generation_;
};

/// The texts of a row besides its title.
QStringList texts(const RowContent& content) {
    QStringList result{content.detail, content.count};
    if (content.chip) result.append(content.chip->text);
    for (const RowContent::Chip& tag : content.tags) result.append(tag.text);
    result += content.columns;
    result.removeAll(QString());
    return result;
}

QList<RowAction> buttons(const RowContent& content) {
    QList<RowAction> result = content.actions;
    result.removeIf([](const RowAction& action) { return action.menuOnly; });
    return result;
}

QAccessible::Id idOfRow(const RowsView* view, int row) {
    QAccessibleInterface* list = QAccessible::queryAccessibleInterface(const_cast<RowsView*>(view));
    QAccessibleInterface* child = list ? list->child(row) : nullptr;
    return child ? QAccessible::uniqueId(child) : 0;
}

/// One text or button on a row.
class RowPart : public RowPiece, public QAccessibleActionInterface {
public:
    RowPart(RowsView* view, int row, int part) : RowPiece(view, row), part_(part) {}

    [[nodiscard]] bool isValid() const override {
        if (!rowExists()) return false;
        const RowContent shown = content();
        return part_ < texts(shown).size() + buttons(shown).size();
    }
    [[nodiscard]] QAccessibleInterface* parent() const override {
        return view_ ? QAccessible::accessibleInterface(idOfRow(view_, row_)) : nullptr;
    }
    [[nodiscard]] QAccessibleInterface* child(int) const override { return nullptr; }
    [[nodiscard]] QAccessibleInterface* childAt(int, int) const override { return nullptr; }
    [[nodiscard]] int childCount() const override { return 0; }
    [[nodiscard]] int indexOfChild(const QAccessibleInterface*) const override { return -1; }

    [[nodiscard]] QString text(QAccessible::Text which) const override {
        const RowContent shown = content();
        const auto action = actionOf(shown);
        if (which == QAccessible::Name) return action ? action->text : texts(shown).value(part_);
        return which == QAccessible::Description && action ? action->help : QString();
    }
    [[nodiscard]] QAccessible::Role role() const override {
        return actionOf(content()) ? QAccessible::Button : QAccessible::StaticText;
    }
    [[nodiscard]] QAccessible::State state() const override {
        QAccessible::State state;
        const RowContent shown = content();
        const auto action = actionOf(shown);
        state.invalid = !isValid();
        state.invisible = !inSight();
        state.offscreen = state.invisible;
        state.disabled = action && !action->enabled;
        state.readOnly = !action;
        return state;
    }
    [[nodiscard]] QRect rect() const override {
        if (!isValid()) return {};
        const auto action = actionOf(content());
        const QRect place = action ? view_->actionRect(row_, action->id) : QRect();
        return onScreen(place.isEmpty() ? rowRect() : place);
    }

    void* interface_cast(QAccessible::InterfaceType type) override {
        if (type == QAccessible::ActionInterface && actionOf(content())) {
            return static_cast<QAccessibleActionInterface*>(this);
        }
        return nullptr;
    }
    [[nodiscard]] QStringList actionNames() const override { return {pressAction()}; }
    void doAction(const QString& name) override {
        const auto action = actionOf(content());
        if (name == pressAction() && action && action->enabled) Q_EMIT view_->actionTriggered(row_, action->id);
    }
    [[nodiscard]] QStringList keyBindingsForAction(const QString&) const override { return {}; }

private:
    [[nodiscard]] std::optional<RowAction> actionOf(const RowContent& shown) const {
        const auto index = part_ - texts(shown).size();
        const QList<RowAction> actions = buttons(shown);
        return index >= 0 && index < actions.size() ? std::optional(actions[index]) : std::nullopt;
    }

    const int part_;
};

class Row : public RowPiece, public QAccessibleActionInterface {
public:
    using RowPiece::RowPiece;
    ~Row() override {
        for (const QAccessible::Id id : parts_) QAccessible::deleteAccessibleInterface(id);
    }
    Row(const Row&) = delete;
    Row& operator=(const Row&) = delete;

    [[nodiscard]] int row() const { return row_; }

    [[nodiscard]] QAccessibleInterface* parent() const override {
        return view_ ? QAccessible::queryAccessibleInterface(view_) : nullptr;
    }
    [[nodiscard]] int childCount() const override {
        if (!inSight()) return 0;
        return partCount() + (view_->menuOf(row_) ? 1 : 0);
    }
    [[nodiscard]] QAccessibleInterface* child(int index) const override {
        if (index < 0 || index >= childCount()) return nullptr;
        if (index >= partCount()) return QAccessible::queryAccessibleInterface(view_->menuOf(row_));
        while (static_cast<int>(parts_.size()) <= index) {
            const int part = static_cast<int>(parts_.size());
            parts_.push_back(QAccessible::registerAccessibleInterface(new RowPart(view_, row_, part)));
        }
        return QAccessible::accessibleInterface(parts_[static_cast<std::size_t>(index)]);
    }
    [[nodiscard]] QAccessibleInterface* childAt(int x, int y) const override {
        for (int i = 0; i < childCount(); ++i) {
            QAccessibleInterface* part = child(i);
            if (part->role() == QAccessible::Button && part->rect().contains(x, y)) return part;
        }
        return nullptr;
    }
    [[nodiscard]] int indexOfChild(const QAccessibleInterface* child) const override {
        const auto same = [&](QAccessible::Id id) { return QAccessible::accessibleInterface(id) == child; };
        const auto found = std::ranges::find_if(parts_, same);
        if (found == parts_.end() && child && isValid() && child->object() && child->object() == view_->menuOf(row_)) {
            return partCount();
        }
        return found == parts_.end() ? -1 : static_cast<int>(found - parts_.begin());
    }

    [[nodiscard]] QString text(QAccessible::Text which) const override {
        if (which == QAccessible::Name) return isValid() ? view_->rows()->title(row_) : QString();
        return which == QAccessible::Description ? content().description : QString();
    }
    [[nodiscard]] QAccessible::Role role() const override {
        if (!isValid()) return QAccessible::NoRole;
        if (view_->rows()->isHead(row_)) return QAccessible::Heading;
        switch (content().mark) {
            case RowContent::Mark::tick:
                return QAccessible::CheckBox;
            case RowContent::Mark::radio:
                return QAccessible::RadioButton;
            default:
                return QAccessible::ListItem;
        }
    }
    [[nodiscard]] QAccessible::State state() const override {
        QAccessible::State state;
        if (!isValid()) {
            state.invalid = true;
            return state;
        }
        const RowContent shown = content();
        const QModelIndex index = view_->rows()->index(row_, 0);
        const bool head = view_->rows()->isHead(row_);
        state.checkable = shown.mark == RowContent::Mark::tick || shown.mark == RowContent::Mark::radio;
        state.checked = state.checkable && shown.marked;
        state.selectable = !head;
        state.focusable = !head;
        state.selected = view_->selectionModel()->isSelected(index);
        state.focused = view_->hasFocus() && view_->currentIndex() == index;
        state.disabled = !view_->isEnabled() || !shown.enabled;
        state.invisible = !view_->isVisible();
        state.offscreen = !inSight();
        return state;
    }
    [[nodiscard]] QRect rect() const override { return isValid() ? onScreen(rowRect()) : QRect(); }

    void* interface_cast(QAccessible::InterfaceType type) override {
        return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface*>(this) : nullptr;
    }
    [[nodiscard]] QStringList actionNames() const override {
        if (!isValid() || view_->rows()->isHead(row_)) return {};
        QStringList names;
        const RowContent shown = content();
        if (shown.mark == RowContent::Mark::tick) {
            if (shown.enabled) names.append(toggleAction());
        } else if (shown.mark == RowContent::Mark::radio) {
            if (shown.enabled) names.append(pressAction());
        } else if (shown.actions.isEmpty() && view_->canActivate(row_)) {
            names.append(pressAction());
        }
        if (!shown.actions.isEmpty()) names.append(showMenuAction());
        names.append(setFocusAction());
        // What is in the menu alone can be done without it too.
        for (const RowAction& action : shown.actions) {
            if (action.menuOnly && action.enabled) names.append(action.text);
        }
        return names;
    }
    void doAction(const QString& name) override {
        if (!isValid() || !actionNames().contains(name)) return;
        const QModelIndex index = view_->rows()->index(row_, 0);
        if (name == toggleAction() || (name == pressAction() && content().mark == RowContent::Mark::radio)) {
            view_->rows()->toggle(row_);
        } else if (name == pressAction()) {
            view_->activate(row_);
        } else if (name == showMenuAction()) {
            view_->scrollTo(index);
            view_->openMenu(row_, rowRect().center());
        } else if (name == setFocusAction()) {
            view_->setFocus(Qt::OtherFocusReason);
            view_->setCurrentIndex(index);
        } else {
            const QList<RowAction> actions = content().actions;
            const auto action = std::ranges::find(actions, name, &RowAction::text);
            if (action != actions.end()) Q_EMIT view_->actionTriggered(row_, action->id);
        }
    }
    [[nodiscard]] QStringList keyBindingsForAction(const QString&) const override { return {}; }

private:
    [[nodiscard]] int partCount() const {
        const RowContent shown = content();
        return static_cast<int>(texts(shown).size() + buttons(shown).size());
    }

    mutable std::vector<QAccessible::Id> parts_;
};

class List : public QAccessibleWidget {
public:
    explicit List(RowsView* view) : QAccessibleWidget(view, QAccessible::List), view_(view) {}
    ~List() override { forget(); }
    List(const List&) = delete;
    List& operator=(const List&) = delete;

    [[nodiscard]] int childCount() const override { return view_ && view_->rows() ? view_->rows()->rowCount() : 0; }
    [[nodiscard]] QAccessibleInterface* child(int index) const override {
        if (index < 0 || index >= childCount()) return nullptr;
        if (generation_ != view_->generation()) {
            forget();
            generation_ = view_->generation();
        }
        const auto known = rows_.find(index);
        if (known != rows_.end()) return QAccessible::accessibleInterface(known->second);
        auto* row = new Row(view_, index);
        rows_.emplace(index, QAccessible::registerAccessibleInterface(row));
        return row;
    }
    [[nodiscard]] int indexOfChild(const QAccessibleInterface* child) const override {
        const auto* row = dynamic_cast<const Row*>(child);
        return row && row->isValid() ? row->row() : -1;
    }
    [[nodiscard]] QAccessibleInterface* childAt(int x, int y) const override {
        if (!view_) return nullptr;
        const QModelIndex index = view_->indexAt(view_->viewport()->mapFromGlobal(QPoint(x, y)));
        return index.isValid() ? child(index.row()) : nullptr;
    }
    [[nodiscard]] QAccessibleInterface* focusChild() const override {
        return view_ && view_->hasFocus() ? child(view_->currentIndex().row()) : nullptr;
    }
    [[nodiscard]] QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.multiSelectable = view_ && view_->selectionMode() == QAbstractItemView::ExtendedSelection;
        return state;
    }

private:
    void forget() const {
        for (const auto& [row, id] : rows_) QAccessible::deleteAccessibleInterface(id);
        rows_.clear();
    }

    QPointer<RowsView> view_;
    mutable std::unordered_map<int, QAccessible::Id> rows_;
    mutable quint64 generation_ = 0;
};

QAccessibleInterface* make(const QString& className, QObject* object) {
    if (className != QLatin1String(RowsView::staticMetaObject.className())) return nullptr;
    return new List(qobject_cast<RowsView*>(object));
}

void send(RowsView& view, QAccessible::Event type, int row) {
    QAccessibleEvent event(&view, type);
    event.setChild(row);
    QAccessible::updateAccessibility(&event);
}

void sendState(QAccessibleInterface* of, QAccessible::State changed) {
    QAccessibleStateChangeEvent event(of, changed);
    QAccessible::updateAccessibility(&event);
}

}  // namespace

namespace RowsAccessibility {

void install() {
    static const bool installed = [] {
        QAccessible::installFactory(make);
        return true;
    }();
    Q_UNUSED(installed)
}

void focusMoved(RowsView& view, int row) {
    if (QAccessible::isActive()) send(view, QAccessible::Focus, row);
}

void selectionChanged(RowsView& view, const QItemSelection& selected, const QItemSelection& deselected) {
    if (!QAccessible::isActive()) return;
    for (const int row : view.rowsInSight()) {
        const QModelIndex index = view.rows()->index(row, 0);
        if (deselected.contains(index)) send(view, QAccessible::SelectionRemove, row);
        if (selected.contains(index)) send(view, QAccessible::SelectionAdd, row);
    }
}

void rowsChanged(RowsView& view, int first, int last, const QList<int>& roles) {
    if (!QAccessible::isActive()) return;
    QAccessible::State checked, disabled;
    checked.checked = true;
    disabled.disabled = true;
    for (const int row : view.rowsInSight()) {
        if (row < first || row > last || view.rows()->isHead(row)) continue;
        QAccessibleInterface* shown = QAccessible::accessibleInterface(idOfRow(&view, row));
        if (shown == nullptr) continue;
        const RowContent::Mark mark = view.rows()->content(row).mark;
        const bool hasState = mark == RowContent::Mark::tick || mark == RowContent::Mark::radio;
        if (hasState && (roles.isEmpty() || roles.contains(Qt::CheckStateRole))) sendState(shown, checked);
        if (!roles.isEmpty()) continue;
        if (hasState) sendState(shown, disabled);
        for (int part = 0; part < shown->childCount(); ++part) {
            if (shown->child(part)->role() == QAccessible::Button) sendState(shown->child(part), disabled);
        }
    }
}

}  // namespace RowsAccessibility
