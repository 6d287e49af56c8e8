#include "OrdovanApp/screens/TrayItem.h"

#include "OrdovanApp/theme/Glyph.h"

#include <QAction>

using namespace Qt::StringLiterals;

TrayItem::TrayItem(const ThemeEnvironment& theme, QObject* parent) : QObject(parent) {
    menu_.setObjectName(u"menu-tray"_s);
    menu_.addAction(tr("No files can be changed by this version without your confirmation."))->setEnabled(false);
    menu_.addSeparator();
    QAction* open = menu_.addAction(tr("Open ordovan+"));
    open->setShortcut(Qt::CTRL | Qt::Key_0);
    QAction* quit = menu_.addAction(tr("Quit ordovan+"));
    quit->setShortcut(Qt::CTRL | Qt::Key_Q);
    connect(open, &QAction::triggered, this, &TrayItem::openRequested);
    connect(quit, &QAction::triggered, this, &TrayItem::quitRequested);

    const auto recolor = [this, &theme] { icon_.setIcon(Glyphs::icon(Glyph::folderGear, theme.colors().accent)); };
    connect(&theme, &ThemeEnvironment::changed, this, recolor);
    recolor();
    icon_.setToolTip(tr("ordovan+ — preview first"));
    menu_.setAccessibleName(icon_.toolTip());
    icon_.setContextMenu(&menu_);
    connect(&icon_, &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason reason) {
        if (reason == QSystemTrayIcon::Trigger) Q_EMIT openRequested();
    });
    icon_.show();
}

bool TrayItem::isPossible() {
    return QSystemTrayIcon::isSystemTrayAvailable();
}

bool TrayItem::isThere() const {
    return icon_.isVisible() && isPossible();
}
