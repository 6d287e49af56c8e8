#include "OrdovanApp/screens/OrdovanWindow.h"

#include "OrdovanApp/screens/AboutPanel.h"
#include "OrdovanApp/screens/ContentView.h"
#include "OrdovanApp/screens/SettingsView.h"
#include "OrdovanApp/theme/Sheet.h"
#include "tests/support/WidgetTestMain.h"
#include "tests/support/WindowWorld.h"

#include <QAction>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>

namespace {

using namespace ordovan::test;
using namespace Qt::StringLiterals;

class OrdovanWindows : public WindowWorld {
protected:
    OrdovanWindow& window() {
        if (!window_) {
            window_ = std::make_unique<OrdovanWindow>(
                OrdovanWindow::Parts{*model, settings, rules, theme, commands, desktop, values, u"https://help"_s},
                screens());
        }
        return *window_;
    }
    void reopen() { window_.reset(); }
    QAction* item(const char* text) {
        const auto menus = window().menuBar()->actions();
        for (const QAction* menu : menus) {
            for (QAction* each : menu->menu()->actions()) {
                if (each->text() == QString::fromUtf8(text)) return each;
            }
        }
        return nullptr;
    }
    /// A run that has not moved anything yet.
    void startRun() {
        tree({"a.pdf", "b.pdf"});
        window().previewFolder(Url::file("/r"));
        tasks.finish();
        ASSERT_TRUE(model->organize());
    }
    Sheet* question() { return window().findChild<Sheet*>(u"stop-question"_s); }

private:
    std::unique_ptr<OrdovanWindow> window_;
};

TEST_F(OrdovanWindows, HasItsNameAndItsTitle) {
    EXPECT_EQ(window().objectName(), u"main"_s);
    EXPECT_EQ(window().windowTitle(), u"ordovan+"_s);
}

TEST_F(OrdovanWindows, HasTheMenuOrganizeWithItsShortcuts) {
    QStringList lines;
    for (const QAction* each : window().findChild<QMenu*>(u"menu-organize"_s)->actions()) {
        lines += each->text() + u" | "_s + each->shortcut().toString(QKeySequence::PortableText);
    }
    EXPECT_EQ(lines, (QStringList{u"Choose Folder… | Ctrl+O"_s, u"Preview Downloads | Ctrl+D"_s,
                                  u"Organize Selected Files… | Ctrl+S"_s, u"Undo Organize | Ctrl+Alt+Z"_s,
                                  u"Find Duplicates | Ctrl+Shift+D"_s, u"Export Plan… | Ctrl+Shift+E"_s}));
}

TEST_F(OrdovanWindows, PostsTheNotificationOfEachCommand) {
    tree({"a.pdf"});
    window().previewFolder(Url::file("/r"));
    tasks.finish();
    desktop.downloadsFolder = Url::file("/r");
    QStringList posted;
    QObject::connect(&commands, &CommandCenter::posted, &window(), [&](const QString& name) { posted += name; });
    for (const char* text :
         {"Choose Folder…", "Preview Downloads", "Organize Selected Files…", "Find Duplicates", "Export Plan…"}) {
        if (!item(text)->isEnabled()) tasks.finish();
        item(text)->trigger();
    }
    EXPECT_EQ(posted, (QStringList{u"ordovanChooseFolder"_s, u"ordovanPreviewFolder"_s, u"ordovanOrganize"_s,
                                   u"ordovanFindDuplicates"_s, u"ordovanExportPlan"_s}));
}

TEST_F(OrdovanWindows, SaysWhyACommandCanNotAct) {
    EXPECT_FALSE(item("Organize Selected Files…")->isEnabled());
    EXPECT_EQ(item("Organize Selected Files…")->toolTip(), u"Preview a folder first."_s);
    EXPECT_EQ(item("Undo Organize")->toolTip(), u"Nothing was organized in this folder that could be undone."_s);
    tree({"a.pdf"});
    window().previewFolder(Url::file("/r"));
    EXPECT_EQ(item("Export Plan…")->toolTip(), u"The preview is not ready yet."_s);
    tasks.finish();
    EXPECT_TRUE(item("Organize Selected Files…")->isEnabled());
    model->toggle(model->plan()->proposals[0].id());
    EXPECT_EQ(item("Organize Selected Files…")->toolTip(), u"Tick at least one file first."_s);
}

TEST_F(OrdovanWindows, DisablesEveryCommandDuringARun) {
    startRun();
    for (const QAction* each : window().findChild<QMenu*>(u"menu-organize"_s)->actions()) {
        EXPECT_FALSE(each->isEnabled()) << each->text().toStdString();
        EXPECT_EQ(each->toolTip(), u"Files are being moved right now."_s) << each->text().toStdString();
    }
    tasks.finish();
    EXPECT_TRUE(item("Choose Folder…")->isEnabled());
    EXPECT_TRUE(item("Undo Organize")->isEnabled());
}

TEST_F(OrdovanWindows, DisablesEveryCommandWhileItAsksAQuestion) {
    desktop.opens = false;
    window().show();
    item("ordovan+ Help")->trigger();
    for (const QAction* each : window().findChild<QMenu*>(u"menu-organize"_s)->actions()) {
        EXPECT_FALSE(each->isEnabled()) << each->text().toStdString();
        EXPECT_EQ(each->toolTip(), u"Answer the question first."_s) << each->text().toStdString();
    }
    window().findChild<Sheet*>()->confirmButton()->click();
    EXPECT_TRUE(item("Choose Folder…")->isEnabled());
}

TEST_F(OrdovanWindows, PreviewsTheFolderAgainFromItsFileMenu) {
    QAction* again = item("Preview Again");
    EXPECT_EQ(again->shortcuts(), (QList<QKeySequence>{Qt::Key_F5, Qt::CTRL | Qt::Key_R}));
    EXPECT_FALSE(again->isEnabled());
    EXPECT_EQ(again->toolTip(), u"Preview a folder first."_s);
    tree({"a.pdf"});
    window().previewFolder(Url::file("/r"));
    EXPECT_EQ(again->toolTip(), u"The preview is not ready yet."_s);
    tasks.finish();
    memory.write("/r/b.pdf", "new");
    again->trigger();
    tasks.finish();
    EXPECT_EQ(proposed(*model).size(), 2U);
}

TEST_F(OrdovanWindows, PreviewsNothingAgainDuringARun) {
    startRun();
    EXPECT_FALSE(item("Preview Again")->isEnabled());
    EXPECT_EQ(item("Preview Again")->toolTip(), u"Files are being moved right now."_s);
    tasks.finish();
    EXPECT_TRUE(item("Preview Again")->isEnabled());
}

TEST_F(OrdovanWindows, OffersTheRecentFoldersInItsFileMenu) {
    EXPECT_FALSE(item("Recent Folders")->isEnabled());
    EXPECT_EQ(item("Recent Folders")->toolTip(), u"No folder was previewed yet."_s);
    for (const char* folder : {"/r/R&D", "/r/new"}) {
        memory.makeDirectory(folder);
        window().previewFolder(Url::file(folder));
        tasks.finish();
    }
    EXPECT_TRUE(item("Recent Folders")->isEnabled());
    const auto folders = item("Recent Folders")->menu()->actions();
    ASSERT_EQ(folders.size(), 2);
    EXPECT_EQ(folders[0]->text(), u"new"_s);
    EXPECT_EQ(folders[1]->text(), u"R&&D"_s);
    EXPECT_EQ(folders[1]->toolTip(), u"/r/R&D"_s);
    folders[1]->trigger();
    EXPECT_EQ(model->rootURL(), Url::file("/r/R&D"));
}

TEST_F(OrdovanWindows, OffersNoRecentFolderDuringARun) {
    startRun();
    EXPECT_FALSE(item("Recent Folders")->isEnabled());
    EXPECT_EQ(item("Recent Folders")->toolTip(), u"Files are being moved right now."_s);
    tasks.finish();
    EXPECT_TRUE(item("Recent Folders")->isEnabled());
}

TEST_F(OrdovanWindows, ComesForwardByItsShortcutFromAnyWindowOfTheProgram) {
    const auto* open = window().findChild<QAction*>(u"open"_s);
    EXPECT_EQ(open->text(), u"Open ordovan+"_s);
    window().show();
    item("Settings…")->trigger();
    auto* panel = window().findChild<SettingsView*>();
    panel->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(panel));
    window().showMinimized();
    QTest::keyClick(panel, Qt::Key_0, Qt::ControlModifier);
    EXPECT_TRUE(QTest::qWaitForWindowActive(&window()));
    EXPECT_FALSE(window().isMinimized());
}

TEST_F(OrdovanWindows, OpensItsMenusWithTheKeyboard) {
    QStringList titles;
    for (const QAction* menu : window().menuBar()->actions()) titles += menu->text();
    EXPECT_EQ(titles, (QStringList{u"&File"_s, u"&Organize"_s, u"&Help"_s}));
    window().show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window()));
    QTest::keyClick(&window(), Qt::Key_F10);
    auto* file = window().findChild<QMenu*>(u"menu-file"_s);
    EXPECT_TRUE(file->isVisible());
    file->close();
}

TEST_F(OrdovanWindows, ShowsItsPanelsInItsMiddle) {
    window().setGeometry(100, 50, 800, 600);
    window().show();
    item("Settings…")->trigger();
    const auto* panel = window().findChild<SettingsView*>();
    const QPoint off = panel->frameGeometry().center() - window().frameGeometry().center();
    EXPECT_LE(off.manhattanLength(), 8) << off.x() << ' ' << off.y();  // the frames differ
}

TEST_F(OrdovanWindows, HasOneHelpItemThatOpensTheDocumentation) {
    const auto actions = window().findChild<QMenu*>(u"menu-help"_s)->actions();
    ASSERT_EQ(actions.size(), 1);
    actions[0]->trigger();
    EXPECT_EQ(desktop.opened, QStringList{u"https://help"_s});
}

TEST_F(OrdovanWindows, ShowsTheAddressWhereNoBrowserOpens) {
    desktop.opens = false;
    window().show();
    item("ordovan+ Help")->trigger();
    const auto labels = window().findChild<Sheet*>()->findChildren<QLabel*>();
    EXPECT_TRUE(std::any_of(labels.begin(), labels.end(), [](const QLabel* label) {
        return label->text() == u"The documentation is at https://help"_s;
    }));
}

TEST_F(OrdovanWindows, OpensTheAboutPanelWithItsCredits) {
    item("About ordovan+")->trigger();
    QStringList texts;
    for (const QLabel* label : window().findChild<AboutPanel*>()->findChildren<QLabel*>()) texts += label->text();
    EXPECT_TRUE(texts.contains(u"ordovan+"_s));
    EXPECT_TRUE(texts.contains(u"Careful folder organizing for macOS."_s));
}

TEST_F(OrdovanWindows, OpensTheSettingsOnce) {
    EXPECT_EQ(item("Settings…")->shortcut().toString(QKeySequence::PortableText), u"Ctrl+,"_s);
    item("Settings…")->trigger();
    item("Settings…")->trigger();
    EXPECT_EQ(window().findChildren<SettingsView*>().size(), 1);
}

TEST_F(OrdovanWindows, RemembersSectionAndGeometry) {
    window().appear();
    window().resize(810, 620);
    window().content().showSection(Section::rules);
    const QSize size = window().size();
    window().close();
    reopen();
    EXPECT_EQ(window().content().section(), Section::rules);
    EXPECT_EQ(window().size(), size);
    EXPECT_EQ(values.value(u"ordovan.window.section"_s)->toString(), u"rules"_s);
}

TEST_F(OrdovanWindows, StartsInTheInboxWithAnUnknownSectionAndBadGeometry) {
    ASSERT_TRUE(values.setValue(u"ordovan.window.section"_s, u"attic"_s));
    ASSERT_TRUE(values.setValue(u"ordovan.window.geometry"_s, QByteArray("nonsense")));
    EXPECT_EQ(window().content().section(), Section::inbox);
    EXPECT_GE(window().width(), window().minimumWidth());
}

TEST_F(OrdovanWindows, ComesBackToTheScreenFromBeyondIt) {
    window().move(5000, 5000);
    window().show();
    window().close();
    reopen();
    window().show();
    EXPECT_TRUE(window().screen()->availableGeometry().intersects(window().frameGeometry()));
}

TEST_F(OrdovanWindows, EndsTheProgramWhenItIsClosed) {
    QSignalSpy finished(&window(), &OrdovanWindow::finished);
    window().appear();
    window().close();
    EXPECT_EQ(finished.count(), 1);
    EXPECT_FALSE(window().isVisible());
}

TEST_F(OrdovanWindows, OnlyHidesWhereItCanComeBack) {
    window().setCanComeBack([] { return true; });
    QSignalSpy finished(&window(), &OrdovanWindow::finished);
    window().appear();
    window().close();
    EXPECT_EQ(finished.count(), 0);
    EXPECT_FALSE(window().isVisible());
    window().bringForward({});
    EXPECT_TRUE(window().isVisible());
    window().quit();
    EXPECT_EQ(finished.count(), 1);
}

TEST_F(OrdovanWindows, AsksBeforeItEndsDuringARun) {
    window().appear();
    startRun();
    QSignalSpy finished(&window(), &OrdovanWindow::finished);
    window().close();
    ASSERT_NE(question(), nullptr);
    EXPECT_TRUE(question()->isVisible());
    EXPECT_TRUE(window().isVisible());
    question()->cancelButton()->click();
    tasks.finish();
    EXPECT_EQ(finished.count(), 0);
    EXPECT_TRUE(memory.item("/r/ordovan+/Documents/a.pdf"));
}

TEST_F(OrdovanWindows, EndsOnceTheRunHasStoppedAndIsRecorded) {
    window().appear();
    startRun();
    QSignalSpy finished(&window(), &OrdovanWindow::finished);
    window().close();
    question()->confirmButton()->click();
    EXPECT_EQ(finished.count(), 0);
    tasks.finish();
    EXPECT_EQ(finished.count(), 1);
    EXPECT_TRUE(memory.item("/r/a.pdf"));
    EXPECT_FALSE(model->isApplying());
}

TEST_F(OrdovanWindows, EndsWithoutAQuestionWhenTheSessionEnds) {
    window().appear();
    startRun();
    QSignalSpy finished(&window(), &OrdovanWindow::finished);
    window().stopAndQuit();
    EXPECT_EQ(question(), nullptr);
    EXPECT_EQ(finished.count(), 0);
    tasks.finish();
    EXPECT_EQ(finished.count(), 1);
}

TEST_F(OrdovanWindows, TakesTheQuestionBackWhenTheRunEnds) {
    window().appear();
    startRun();
    window().close();
    tasks.finish();
    EXPECT_FALSE(question()->isVisible());
    EXPECT_TRUE(window().isVisible());
}

}  // namespace
