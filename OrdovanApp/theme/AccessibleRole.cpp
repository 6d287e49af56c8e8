#include "OrdovanApp/theme/AccessibleRole.h"

#include <QAccessibleWidget>
#include <QWidget>

namespace {

constexpr auto roleProperty = "accessibleRole";

QAccessibleInterface* make(const QString&, QObject* object) {
    if (object == nullptr || !object->isWidgetType()) return nullptr;
    const QVariant role = object->property(roleProperty);
    if (!role.isValid()) return nullptr;
    return new QAccessibleWidget(static_cast<QWidget*>(object), static_cast<QAccessible::Role>(role.toInt()));
}

}  // namespace

void setAccessibleRole(QWidget* widget, QAccessible::Role role) {
    static const bool installed = [] {
        QAccessible::installFactory(make);
        return true;
    }();
    Q_UNUSED(installed)
    widget->setProperty(roleProperty, static_cast<int>(role));
}
