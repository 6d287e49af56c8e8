#pragma once

#include <QAccessible>

class QWidget;

/// Gives a widget a role of its own for assistive technologies, before they first ask. Its name is its accessible name.
void setAccessibleRole(QWidget* widget, QAccessible::Role role);
