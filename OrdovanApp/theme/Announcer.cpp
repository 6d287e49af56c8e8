#include "OrdovanApp/theme/Announcer.h"

#include "OrdovanApp/theme/AccessibleRole.h"

#include <QTimer>

Announcer::Announcer(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("announcer"));
    setFocusPolicy(Qt::NoFocus);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFixedSize(1, 1);
    setAccessibleRole(this, QAccessible::Notification);
}

void Announcer::say(const QString& text) {
    // Several views may have the same to say of one event.
    if (text.isEmpty() || (text == lastSaid_ && isSaying_)) return;
    lastSaid_ = text;
    isSaying_ = true;
    QTimer::singleShot(0, this, [this] { isSaying_ = false; });
    setAccessibleName(text);
    // Screen readers speak a notification when it comes into sight, and an alert when they are told of one.
    for (const QAccessible::Event event : {QAccessible::NameChanged, QAccessible::ObjectShow, QAccessible::Alert}) {
        QAccessibleEvent told(this, event);
        QAccessible::updateAccessibility(&told);
    }
    Q_EMIT said(text);
}
