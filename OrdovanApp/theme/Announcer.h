#pragma once

#include <QWidget>

/// Says things to assistive technologies without taking the focus: a notification of one pixel that can not be tabbed
/// to. Put it into the main window, so that it is in sight of them.
class Announcer : public QWidget {
    Q_OBJECT

public:
    explicit Announcer(QWidget* parent = nullptr);

    /// Says a sentence, an empty one not. The same one again is said again, but not twice in a row before the event
    /// loop has turned.
    void say(const QString& text);
    [[nodiscard]] QString lastSaid() const { return lastSaid_; }

Q_SIGNALS:
    void said(const QString& text);

private:
    QString lastSaid_;
    bool isSaying_ = false;
};
