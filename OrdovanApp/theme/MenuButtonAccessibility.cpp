#include "OrdovanApp/theme/MenuButtonAccessibility.h"

#include <QAccessibleWidget>
#include <QMenu>
#include <QPushButton>
#include <QTimer>

namespace {

/// What a button is called: by a name of its own, else by what it shows.
QString nameOf(const QPushButton& button) {
    if (!button.accessibleName().isEmpty()) return button.accessibleName();
    QString shown = button.text();
    return shown.replace(QStringLiteral("&&"), QStringLiteral("&"));
}

class MenuButton : public QAccessibleWidget {
public:
    explicit MenuButton(QPushButton* button) : QAccessibleWidget(button, QAccessible::ButtonMenu) {}

    [[nodiscard]] int childCount() const override { return openMenu() == nullptr ? 0 : 1; }
    [[nodiscard]] QAccessibleInterface* child(int index) const override {
        return index == 0 && openMenu() != nullptr ? QAccessible::queryAccessibleInterface(openMenu()) : nullptr;
    }
    [[nodiscard]] int indexOfChild(const QAccessibleInterface* child) const override {
        return child != nullptr && child->object() != nullptr && child->object() == openMenu() ? 0 : -1;
    }
    [[nodiscard]] QString text(QAccessible::Text which) const override {
        const QString given = QAccessibleWidget::text(which);
        return which != QAccessible::Name || !given.isEmpty() || !isValid() ? given : nameOf(*button());
    }
    [[nodiscard]] QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.hasPopup = true;
        state.expandable = true;
        state.expanded = openMenu() != nullptr;
        state.collapsed = !state.expanded;
        return state;
    }
    [[nodiscard]] QStringList actionNames() const override {
        QStringList names;
        if (isValid() && button()->isEnabled()) names.append({pressAction(), showMenuAction()});
        return names + QAccessibleWidget::actionNames();
    }
    void doAction(const QString& name) override {
        if (name != pressAction() && name != showMenuAction()) return QAccessibleWidget::doAction(name);
        if (isValid() && button()->isEnabled()) QTimer::singleShot(0, button(), &QPushButton::showMenu);
    }

private:
    [[nodiscard]] QPushButton* button() const { return static_cast<QPushButton*>(widget()); }
    [[nodiscard]] QMenu* openMenu() const {
        QMenu* menu = isValid() ? button()->menu() : nullptr;
        return menu != nullptr && menu->isVisible() ? menu : nullptr;
    }
};

QAccessibleInterface* make(const QString&, QObject* object) {
    auto* button = qobject_cast<QPushButton*>(object);
    return button != nullptr && button->menu() != nullptr ? new MenuButton(button) : nullptr;
}

}  // namespace

void MenuButtonAccessibility::use(QPushButton* button) {
    static const bool installed = [] {
        QAccessible::installFactory(make);
        return true;
    }();
    Q_UNUSED(installed)
    // What is chosen through an assistive technology leaves the menu open.
    QMenu* menu = button->menu();
    QObject::connect(menu, &QMenu::triggered, menu, &QMenu::close);
    // The menu is called as its button is, and that may have got another name when it opens.
    const auto follow = [button, menu] { menu->setAccessibleName(nameOf(*button)); };
    QObject::connect(menu, &QMenu::aboutToShow, button, follow);
    follow();
    // A button tells its text while it is made, and is taken for one without a menu then.
    if (!QAccessible::isActive()) return;
    QAccessibleInterface* known = QAccessible::queryAccessibleInterface(button);
    if (known != nullptr) QAccessible::deleteAccessibleInterface(QAccessible::uniqueId(known));
}
