#include "OrdovanApp/screens/TrayItem.h"

#include "tests/support/WidgetTestMain.h"

#include <QAction>
#include <QSignalSpy>

namespace {

using namespace Qt::StringLiterals;

TEST(TrayItem, HasItsTitleAndItsMenu) {
    const ThemeEnvironment theme(AppTheme::lagoon);
    const TrayItem item(theme);
    EXPECT_EQ(item.title(), u"ordovan+ — preview first"_s);
    EXPECT_EQ(item.menu().accessibleName(), item.title());
    QStringList lines;
    for (const QAction* action : item.menu().actions()) {
        if (action->isSeparator()) continue;
        lines += action->text() + u" | "_s + action->shortcut().toString(QKeySequence::PortableText) +
                 (action->isEnabled() ? QString() : u" | only said"_s);
    }
    EXPECT_EQ(lines,
              (QStringList{u"No files can be changed by this version without your confirmation. |  | only said"_s,
                           u"Open ordovan+ | Ctrl+0"_s, u"Quit ordovan+ | Ctrl+Q"_s}));
}

TEST(TrayItem, AsksToOpenAndToQuit) {
    const ThemeEnvironment theme(AppTheme::lagoon);
    const TrayItem item(theme);
    QSignalSpy open(&item, &TrayItem::openRequested);
    QSignalSpy quit(&item, &TrayItem::quitRequested);
    item.menu().actions()[2]->trigger();
    EXPECT_EQ(open.count(), 1);
    item.menu().actions()[3]->trigger();
    EXPECT_EQ(quit.count(), 1);
}

TEST(TrayItem, DoesNotBringAWindowBackWhereThereIsNoTray) {
    const ThemeEnvironment theme(AppTheme::lagoon);
    const TrayItem item(theme);
    EXPECT_FALSE(item.isThere());
}

}  // namespace
