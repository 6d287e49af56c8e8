#pragma once

#include "OrdovanApp/theme/ThemeEnvironment.h"

#include <QMenu>
#include <QObject>
#include <QSystemTrayIcon>

/// The item in the desktop's tray.
class TrayItem : public QObject {
    Q_OBJECT

public:
    explicit TrayItem(const ThemeEnvironment& theme, QObject* parent = nullptr);

    /// Whether there is a tray to be in. Asks the desktop.
    [[nodiscard]] static bool isPossible();
    /// Whether the item is there and can bring the window back. Asks the desktop.
    [[nodiscard]] bool isThere() const;

    [[nodiscard]] const QMenu& menu() const { return menu_; }
    [[nodiscard]] QString title() const { return icon_.toolTip(); }

Q_SIGNALS:
    void openRequested();
    void quitRequested();

private:
    QMenu menu_;
    QSystemTrayIcon icon_;
};
