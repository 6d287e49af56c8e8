#include "tests/ui/SmartInboxWorld.h"

#include "OrdovanApp/models/PlanModel.h"
#include "OrdovanApp/theme/ProgressStrip.h"
#include "OrdovanApp/theme/Segments.h"
#include "tests/support/WidgetTestMain.h"

#include <gmock/gmock.h>

#include <QLineEdit>
#include <QMenu>
#include <QScrollBar>
#include <QSignalSpy>

using namespace ordovan::test;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::IsSupersetOf;

namespace {

// States.

TEST_F(SmartInbox, WelcomesWithoutAFolder) {
    EXPECT_THAT(
        shown(),
        IsSupersetOf({u"Start with your Downloads folder"_s,
                      u"ordovan+ reads file names and types only, shows you a plan, and moves nothing until you "
                      "say so."_s,
                      u"See where every file would go. Read-only."_s, u"Untick anything you want left alone."_s,
                      u"Every run is journaled and reversible."_s, u"Choose Folder…"_s, u"or drag a folder here"_s}));
    EXPECT_EQ(widget(u"recentFolder"), nullptr);
}

TEST_F(SmartInbox, PostsTheCommandThatChoosesAFolder) {
    QSignalSpy posted(&commands, &CommandCenter::posted);
    view();
    click(u"welcomeChooseFolder");
    preview({"a.pdf = 1"});
    click(u"chooseFolder");
    ASSERT_EQ(posted.size(), 2);
    EXPECT_EQ(posted[0][0].toString(), Commands::chooseFolder);
    EXPECT_EQ(posted[1][0].toString(), Commands::chooseFolder);
}

TEST_F(SmartInbox, OffersTheRecentFoldersNewestFirst) {
    tree({"old & tired/a.pdf = 1", "new/b.pdf = 1"});
    remember({Url::file("/r/new"), Url::file("/r/old & tired")});
    model = make();
    view();
    const auto pills = view().findChildren<QPushButton*>(u"recentFolder"_s);
    ASSERT_EQ(pills.size(), 2);
    EXPECT_EQ(pills[0]->accessibleName(), u"new"_s);
    EXPECT_EQ(pills[1]->accessibleName(), u"old & tired"_s);
    EXPECT_EQ(pills[1]->toolTip(), u"/r/old & tired"_s);
    QTest::mouseClick(pills[1], Qt::LeftButton);
    EXPECT_EQ(model->rootURL(), Url::file("/r/old & tired"));
}

TEST_F(SmartInbox, OffersNoFolderWhileFilesAreBeingPutBack) {
    tree({"a.mov = 1", "other/b.pdf = 1"});
    remember({Url::file("/r/other")});
    model = make();
    preview({});
    model->trashBigFiles({{Url::file("/r/a.mov"), 1}});
    tasks.finish();
    model->chooseFolder(Url::file("/r/other"));
    model->chooseFolder(Url::file("/r"));
    tasks.deliver();
    model->cancelPreview();
    tasks.finish();
    ASSERT_TRUE(model->restore());
    const QString reason = u"Files are being moved right now."_s;
    for (const auto* name : {u"recentFolder", u"welcomeChooseFolder", u"tryAnotherFolder", u"chooseFolder"}) {
        EXPECT_FALSE(widget(name)->isEnabled()) << QString::fromUtf16(name).toStdString();
        EXPECT_EQ(widget(name)->toolTip(), reason) << QString::fromUtf16(name).toStdString();
    }
    tasks.finish();
    EXPECT_TRUE(widget(u"recentFolder")->isEnabled());
    EXPECT_EQ(widget(u"welcomeChooseFolder")->toolTip(), QString());
}

TEST_F(SmartInbox, LeavesOutRecentFoldersThatFindNoRoom) {
    std::vector<Url> folders;
    for (int i = 0; i < 5; ++i) {
        folders.push_back(Url::file("/r/a folder with quite a long name " + std::to_string(i)));
        memory.makeDirectory(folders.back().path());
    }
    remember(folders);
    model = make();
    view().resize(600, 600);
    QCoreApplication::sendPostedEvents();
    const auto pills = view().findChildren<QPushButton*>(u"recentFolder"_s);
    ASSERT_EQ(pills.size(), 5);
    EXPECT_TRUE(pills[0]->isVisible());
    EXPECT_FALSE(pills[4]->isVisible());
}

TEST_F(SmartInbox, TellsThatItIsScanningAndHowFarItIs) {
    tree({"a.pdf = 1"});
    view();
    model->chooseFolder(Url::file("/r"));
    EXPECT_THAT(shown(), IsSupersetOf({u"Previewing — reading metadata only…"_s}));
    EXPECT_EQ(widget<QWidget>(u"scanningPage")->accessibleName(), u"Previewing folder, reading metadata only."_s);
    Q_EMIT model->previewProgressed(1204, 17);
    EXPECT_THAT(shown(), IsSupersetOf({u"1,204 files in 17 folders"_s}));
}

TEST_F(SmartInbox, TellsHowFarPuttingAnInterruptedRunInOrderIs) {
    tree({"a.pdf = 1"});
    view();
    model->chooseFolder(Url::file("/r"));
    Q_EMIT model->recoveryProgressed(3, 1204);
    EXPECT_THAT(shown(), IsSupersetOf({u"Putting an interrupted run in order…"_s, u"3 of 1,204 files"_s, u"Cancel"_s}));
    Q_EMIT model->previewProgressed(1, 0);
    EXPECT_THAT(shown(), IsSupersetOf({u"Previewing — reading metadata only…"_s}));
    Q_EMIT model->recoveryProgressed(3, 1204);
    model->cancelPreview();
    model->preview();
    EXPECT_THAT(shown(), IsSupersetOf({u"Previewing — reading metadata only…"_s}));
}

TEST_F(SmartInbox, GoesBackToTheWelcomeWhenTheScanIsCancelled) {
    tree({"a.pdf = 1"});
    view();
    model->chooseFolder(Url::file("/r"));
    QTest::mouseClick(widget<ProgressStrip>(u"scanProgress")->findChild<QPushButton*>(u"progressCancel"_s),
                      Qt::LeftButton);
    tasks.finish();
    EXPECT_THAT(shown(), IsSupersetOf({u"Start with your Downloads folder"_s}));
    EXPECT_EQ(model->plan(), nullptr);
}

TEST_F(SmartInbox, TellsWhyAFolderCouldNotBePreviewed) {
    unreadable = {"/r"};
    preview({"a.pdf = 1"});
    EXPECT_THAT(shown(), IsSupersetOf({u"Couldn't preview this folder"_s,
                                       u"We couldn't read that folder. Check permissions and try again."_s,
                                       u"Try Another Folder"_s, u"“/r” is gone, is no folder, or may not be read."_s}));
    QSignalSpy posted(&commands, &CommandCenter::posted);
    click(u"tryAnotherFolder");
    EXPECT_EQ(posted.size(), 1);
    EXPECT_EQ(widget(u"previewAgain")->text(), u"Preview Again"_s);
    click(u"previewAgain");
    EXPECT_EQ(posted.last().first().toString(), u"ordovanPreviewAgain"_s);
}

TEST_F(SmartInbox, TellsThatThereIsNothingToOrganize) {
    preview({"folder/"});
    EXPECT_THAT(shown(),
                IsSupersetOf({u"Nothing to organize"_s, u"This folder already looks tidy, or has no supported files."_s,
                              u"ordovan+ previews this folder read-only. Nothing changes until you apply."_s}));
    EXPECT_FALSE(list().isVisible());
}

TEST_F(SmartInbox, ShowsWhatNeedsReviewAlsoWhereNothingIsProposed) {
    preview({"a/x.pdf = 1", "b/x.pdf = 2"});
    EXPECT_THAT(shown(), IsSupersetOf({u"Nothing to organize"_s, u"Proposed file changes"_s}));
    EXPECT_EQ(rows(), QStringList({u"x.pdf"_s, u"x.pdf"_s}));
    EXPECT_FALSE(widget(u"organize")->isEnabled());
}

TEST_F(SmartInbox, ShowsThePlan) {
    preview({"a.pdf = 123", "pic.jpg = 1", "taken.pdf = 1", "ordovan+/Documents/taken.pdf = 0"});
    EXPECT_THAT(shown(),
                IsSupersetOf({u"Smart Inbox"_s, u"r"_s,
                              u"ordovan+ previews this folder read-only. Nothing changes until you apply."_s, u"2"_s,
                              u"proposed, 2 ticked"_s, u"1"_s, u"need review"_s, u"folders to sort into"_s,
                              u"4 bytes"_s, u"in ticked files"_s, u"Search proposed files"_s, u"All folders"_s,
                              u"Documents"_s, u"Images"_s, u"Export Plan…"_s, u"Proposed file changes"_s,
                              u"2 files · 4 bytes"_s, u"Tick None"_s, u"Organize 2 Files…"_s}));
    EXPECT_EQ(rows(), QStringList({u"a.pdf"_s, u"pic.jpg"_s, u"taken.pdf"_s}));
    EXPECT_EQ(widget(u"organize")->toolTip(),
              u"Move the selected files. You will be asked to confirm, and can undo afterward."_s);
    EXPECT_EQ(widget(u"exportPlan")->toolTip(), u"Save this preview as a Markdown or CSV report"_s);
}

TEST_F(SmartInbox, SaysThatTheScanWasPartial) {
    view();
    for (int i = 0; i <= 50'000; ++i) memory.write("/r/" + std::to_string(i) + ".pdf", "");
    model->chooseFolder(Url::file("/r"));
    tasks.finish();
    EXPECT_THAT(shown(),
                IsSupersetOf({u"ordovan+ previews this folder read-only. Nothing changes until you apply. Scan "
                              "reached its limit; results are partial."_s,
                              u"Organize 50,000 Files…"_s}));
}

TEST_F(SmartInbox, ShowsOnlyTheSecondFolderWhenItWasChosenWhileTheFirstWasScanned) {
    view();
    tree({"first/a.pdf = 1", "second/b.pdf = 1"});
    model->chooseFolder(Url::file("/r/first"));
    model->chooseFolder(Url::file("/r/second"));
    tasks.work();
    tasks.deliver();
    EXPECT_THAT(shown(), IsSupersetOf({u"Previewing — reading metadata only…"_s}));
    tasks.finish();
    EXPECT_EQ(rows(), QStringList({u"b.pdf"_s}));
}

TEST_F(SmartInbox, ShowsTheScanAndNotTheOldPlanWhenAnotherFolderIsChosen) {
    preview({"a.pdf = 1", "sub/b.pdf = 1"});
    widget<QLineEdit>(u"search")->setText(u"a.pdf"_s);
    model->chooseFolder(Url::file("/r/sub"));
    EXPECT_FALSE(list().isVisible());
    tasks.finish();
    EXPECT_EQ(rows(), QStringList({u"b.pdf"_s}));
    EXPECT_EQ(widget<QLineEdit>(u"search")->text(), QString());
}

// Previewing again.

TEST_F(SmartInbox, KeepsTheListWhileItsFolderIsPreviewedAgain) {
    preview({"a.pdf = 1", "b.pdf = 1"});
    model->preview();
    EXPECT_TRUE(list().isVisible());
    EXPECT_THAT(shown(), IsSupersetOf({u"Previewing — reading metadata only…"_s}));
    EXPECT_FALSE(widget(u"organize")->isEnabled());
    EXPECT_EQ(widget(u"organize")->toolTip(), u"The preview is not ready yet."_s);
    tasks.finish();
    EXPECT_TRUE(widget(u"organize")->isEnabled());
}

TEST_F(SmartInbox, TellsHowFarANewPreviewOfItsFolderIsAndCancelsIt) {
    preview({"a.pdf = 1", "b.pdf = 1"});
    model->preview();
    EXPECT_FALSE(widget<QWidget>(u"rescanning")->isVisible()) << "what is over at once is not shown";
    auto* delay = view().findChild<QTimer*>(u"rescanDelay"_s);
    ASSERT_TRUE(delay->isActive());
    delay->start(0);
    QCoreApplication::processEvents();
    Q_EMIT model->previewProgressed(1204, 17);
    EXPECT_TRUE(list().isVisible());
    EXPECT_THAT(shown(), IsSupersetOf({u"Previewing folder, reading metadata only."_s, u"1,204 files in 17 folders"_s,
                                       u"Cancel"_s}));
    click(widget<ProgressStrip>(u"rescanProgress")->findChild<QPushButton*>(u"progressCancel"_s));
    tasks.finish();
    EXPECT_FALSE(widget<QWidget>(u"rescanning")->isVisible());
    EXPECT_FALSE(delay->isActive());
    EXPECT_TRUE(widget(u"tickAll")->isVisible());
    EXPECT_EQ(rows().size(), 2);
}

TEST_F(SmartInbox, KeepsScrollSelectionAndCurrentRowAcrossANewPreview) {
    view();
    for (int i = 100; i < 200; ++i) memory.write("/r/" + std::to_string(i) + ".pdf", "");
    preview({});
    list().verticalScrollBar()->setValue(54 * 20 + 7);
    list().setCurrentIndex(list().rows()->index(30));
    list().verticalScrollBar()->setValue(54 * 20 + 7);
    const int top = list().visualRect(list().rows()->index(25)).top();
    memory.removeTree("/r/101.pdf");
    memory.removeTree("/r/102.pdf");
    model->preview();
    tasks.finish();
    EXPECT_EQ(list().rows()->title(23), u"124.pdf"_s);
    EXPECT_EQ(list().visualRect(list().rows()->index(23)).top(), top);
    EXPECT_EQ(list().currentIndex().row(), 28);
    EXPECT_TRUE(list().selectionModel()->isSelected(list().rows()->index(28)));
}

// Ticking and filtering.

TEST_F(SmartInbox, TicksWithTheMouseAndWithSpace) {
    preview({"a.pdf = 1", "b.pdf = 1"});
    QTest::mouseClick(list().viewport(), Qt::LeftButton, {}, list().markRect(1).center());
    EXPECT_THAT(ticked(), ElementsAre("b.pdf -> ordovan+/Documents/b.pdf"));
    EXPECT_EQ(widget(u"organize")->text(), u"Organize 1 File…"_s);
    EXPECT_EQ(summary(), u"1 file · 1 byte"_s);
    list().setCurrentIndex(list().rows()->index(2));
    QTest::keyClick(&list(), Qt::Key_Space);
    EXPECT_THAT(ticked(), IsEmpty());
    EXPECT_EQ(summary(), u"No files ticked"_s);
    EXPECT_FALSE(widget(u"organize")->isEnabled());
    EXPECT_EQ(widget(u"organize")->toolTip(), u"Tick at least one file first."_s);
}

TEST_F(SmartInbox, TicksAllSelectedRowsWithSpace) {
    preview({"a.pdf = 1", "b.pdf = 1", "c.pdf = 1"});
    model->toggle(model->plan()->proposals[0].id());
    list().selectAll();
    QTest::keyClick(&list(), Qt::Key_Space);
    EXPECT_EQ(ticked().size(), 3U);
    QTest::keyClick(&list(), Qt::Key_Space);
    EXPECT_THAT(ticked(), IsEmpty());
}

TEST_F(SmartInbox, CutsOffNoButtonInASmallWindow) {
    preview({"a.pdf = 1", "b.jpg = 1", "c.zip = 1"});
    for (const QSize size : {QSize(424, 376), QSize(584, 560), QSize(1064, 772)}) {
        view().resize(size);
        QCoreApplication::processEvents();
        for (const auto* name : {u"ageFilter", u"exportPlan", u"organize", u"tickAll"}) {
            const auto* button = widget(name);
            const QRect place(button->mapTo(&view(), QPoint(0, 0)), button->size());
            EXPECT_TRUE(view().rect().contains(place)) << QString::fromUtf16(name).toStdString();
            EXPECT_GE(place.width(), button->sizeHint().width());
            EXPECT_GE(place.height(), button->sizeHint().height());
        }
    }
}

TEST_F(SmartInbox, TicksAllAndNone) {
    preview({"a.pdf = 1", "b.pdf = 1"});
    EXPECT_EQ(widget(u"tickAll")->text(), u"Tick None"_s);
    click(u"tickAll");
    EXPECT_THAT(ticked(), IsEmpty());
    EXPECT_EQ(widget(u"tickAll")->text(), u"Tick All"_s);
    click(u"tickAll");
    EXPECT_EQ(ticked().size(), 2U);
}

TEST_F(SmartInbox, TicksOnlyWhatTheFiltersShowAndTellsOfTheRest) {
    preview({"a.pdf = 1", "b.pdf = 1", "pic.jpg = 1"});
    auto* folders = widget<Segments>(u"folderFilter");
    folders->setCurrent(2);
    EXPECT_EQ(rows(), QStringList({u"pic.jpg"_s}));
    EXPECT_EQ(folders->toolTip(), u"Shows only this folder"_s);
    EXPECT_EQ(summary(), u"3 files · 3 bytes · 2 of them not shown"_s);
    click(u"tickAll");
    EXPECT_EQ(ticked().size(), 2U);
    folders->setCurrent(0);
    EXPECT_EQ(folders->toolTip(), u"Shows all folders"_s);
    EXPECT_EQ(rows().size(), 3);
}

TEST_F(SmartInbox, Searches) {
    preview({"work/Résumé.pdf = 1", "b.pdf = 1"});
    QTest::keyClicks(widget<QLineEdit>(u"search"), u"resume"_s);
    EXPECT_EQ(rows(), QStringList({u"Résumé.pdf"_s}));
    QTest::keyClicks(widget<QLineEdit>(u"search"), u" zzz"_s);
    EXPECT_FALSE(list().isVisible());
    EXPECT_THAT(shown(), IsSupersetOf({u"No matching files"_s}));
    EXPECT_FALSE(widget(u"tickAll")->isEnabled());
    click(u"clearFilters");
    EXPECT_EQ(rows().size(), 2);
    EXPECT_TRUE(list().isVisible());
}

TEST_F(SmartInbox, TicksByAge) {
    now = 1'700'000'000;
    tree({"new.pdf = 1", "month.pdf = 1", "old.pdf = 1"});
    memory.setModified("/r/new.pdf", std::int64_t{1'699'900'000} * 1'000'000'000);
    memory.setModified("/r/month.pdf", std::int64_t{1'697'000'000} * 1'000'000'000);
    memory.setModified("/r/old.pdf", std::int64_t{1'600'000'000} * 1'000'000'000);
    preview({});
    const QList<QAction*> actions = widget(u"ageFilter")->menu()->actions();
    QStringList names;
    for (const QAction* action : actions) names.append(action->text());
    EXPECT_EQ(names, QStringList({u"Tick only files last changed more than this long ago"_s, QString(),
                                  u"Older than 7 days"_s, u"Older than 30 days"_s, u"Older than 90 days"_s}));
    EXPECT_EQ(widget(u"ageFilter")->text(), u"Older than…"_s);
    EXPECT_EQ(widget(u"ageFilter")->accessibleName(), QString());
    EXPECT_EQ(widget(u"ageFilter")->toolTip(), names.front());
    actions[3]->trigger();
    EXPECT_EQ(ticked().size(), 2U);
    actions[4]->trigger();
    EXPECT_THAT(ticked(), ElementsAre("old.pdf -> ordovan+/Documents/old.pdf"));
    EXPECT_EQ(widget(u"organize")->text(), u"Organize 1 File…"_s);
}

TEST_F(SmartInbox, ActsFromTheMenuOfARow) {
    preview({"a.pdf = 1", "b.pdf = 1"});
    Q_EMIT list().actionTriggered(1, PlanModel::includeOrLeaveOut);
    EXPECT_THAT(ticked(), ElementsAre("b.pdf -> ordovan+/Documents/b.pdf"));
    Q_EMIT list().actionTriggered(2, PlanModel::reveal);
    EXPECT_THAT(desktop.revealed, ElementsAre(Url::file("/r/b.pdf")));
}

TEST_F(SmartInbox, FitsIntoASmallWindow) {
    preview({"a.pdf = 1", "b.jpg = 1", "c.zip = 1", "d.mp3 = 1", "e.py = 1", "f.ttf = 1"});
    EXPECT_LE(view().minimumSizeHint().width(), 584);
    EXPECT_LE(view().minimumSizeHint().height(), 560);
}

}  // namespace
