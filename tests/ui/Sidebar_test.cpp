#include "OrdovanApp/screens/Sidebar.h"

#include "OrdovanApp/screens/SidebarItem.h"
#include "tests/support/WidgetTestMain.h"

#include <QAccessible>
#include <QLabel>
#include <QSignalSpy>
#include <QTest>

namespace {

class Sidebars : public ::testing::Test {
protected:
    SidebarItem* item(const char* name) {
        return sidebar.findChild<SidebarItem*>(QStringLiteral("section-") + QString::fromLatin1(name));
    }
    void show() {
        sidebar.show();
        sidebar.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&sidebar));
        sidebar.focusCurrent();
    }

    ThemeEnvironment theme{AppTheme::lagoon};
    Sidebar sidebar{theme};
};

TEST_F(Sidebars, ListsTheSectionsFromTopToBottom) {
    sidebar.resize(216, 600);
    sidebar.show();
    QStringList names;
    QMap<int, QString> byPlace;
    for (const SidebarItem* each : sidebar.findChildren<SidebarItem*>()) byPlace[each->y()] = each->text();
    EXPECT_EQ(byPlace.values(),
              (QStringList{QStringLiteral("Smart Inbox"), QStringLiteral("Duplicates"), QStringLiteral("Big Files"),
                           QStringLiteral("Recovery Center"), QStringLiteral("Rules"), QStringLiteral("History")}));
    EXPECT_EQ(sidebar.width(), 216);
}

TEST_F(Sidebars, ChangesSectionAtAClick) {
    QSignalSpy changes(&sidebar, &Sidebar::currentChanged);
    QTest::mouseClick(item("rules"), Qt::LeftButton);
    EXPECT_EQ(sidebar.current(), Section::rules);
    QTest::mouseClick(item("rules"), Qt::LeftButton);
    EXPECT_EQ(changes.count(), 1);
}

TEST_F(Sidebars, MovesWithTheArrowKeysAndStopsAtBothEnds) {
    show();
    QTest::keyClick(sidebar.focusWidget(), Qt::Key_Up);
    EXPECT_EQ(sidebar.current(), Section::inbox);
    QTest::keyClick(sidebar.focusWidget(), Qt::Key_Down);
    EXPECT_EQ(sidebar.current(), Section::duplicates);
    QTest::keyClick(sidebar.focusWidget(), Qt::Key_End);
    EXPECT_EQ(sidebar.current(), Section::history);
    QTest::keyClick(sidebar.focusWidget(), Qt::Key_Down);
    EXPECT_EQ(sidebar.current(), Section::history);
    QTest::keyClick(sidebar.focusWidget(), Qt::Key_Home);
    EXPECT_EQ(sidebar.current(), Section::inbox);
}

TEST_F(Sidebars, TakesTheKeyboardWithItToTheNextSection) {
    show();
    QTest::keyClick(sidebar.focusWidget(), Qt::Key_Down);
    EXPECT_TRUE(item("duplicates")->hasFocus());
    EXPECT_EQ(item("inbox")->focusPolicy(), Qt::NoFocus);
    EXPECT_EQ(item("duplicates")->focusPolicy(), Qt::TabFocus);
}

TEST_F(Sidebars, ShowsCountsThatAreNotZero) {
    sidebar.setCount(Section::inbox, 1204, QStringLiteral("1,204 proposed"));
    EXPECT_EQ(item("inbox")->count(), QStringLiteral("1,204"));
    EXPECT_EQ(item("inbox")->accessibleDescription(), QStringLiteral("1,204 proposed"));
    sidebar.setCount(Section::inbox, 0, QStringLiteral("0 proposed"));
    EXPECT_EQ(item("inbox")->count(), QString());
    EXPECT_EQ(item("inbox")->accessibleDescription(), QString());
}

TEST_F(Sidebars, ShowsTheStatusLineAtItsFoot) {
    sidebar.setStatus(QStringLiteral("No folder selected"));
    EXPECT_EQ(sidebar.findChild<QLabel*>(QStringLiteral("status"))->text(), QStringLiteral("No folder selected"));
}

TEST_F(Sidebars, IsAListOfNamedItemsThatCanBePressed) {
    QAccessibleInterface* list =
        QAccessible::queryAccessibleInterface(sidebar.findChild<QWidget*>(QStringLiteral("sections")));
    EXPECT_EQ(list->role(), QAccessible::List);
    QAccessibleInterface* history = QAccessible::queryAccessibleInterface(item("history"));
    EXPECT_EQ(history->role(), QAccessible::ListItem);
    EXPECT_EQ(history->text(QAccessible::Name), QStringLiteral("History"));
    EXPECT_FALSE(history->state().selected);
    history->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_TRUE(history->state().selected);
    EXPECT_EQ(sidebar.current(), Section::history);
}

}  // namespace
