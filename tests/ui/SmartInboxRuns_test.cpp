#include "OrdovanApp/screens/RunTexts.h"
#include "OrdovanApp/theme/ProgressStrip.h"
#include "tests/support/WidgetTestMain.h"
#include "tests/ui/SmartInboxWorld.h"

#include <gmock/gmock.h>

using namespace ordovan::test;
using ::testing::ElementsAre;
using ::testing::IsSupersetOf;

namespace {

using SmartInboxRuns = SmartInbox;

// Exporting.

TEST_F(SmartInboxRuns, SavesThePlan) {
    preview({"a.pdf = 1"});
    desktop.planFile = Url::file("/out/plan.csv");
    desktop.planFormat = OrdovanPlanExportFormat::csv;
    memory.makeDirectory("/out");
    click(u"exportPlan");
    EXPECT_EQ(desktop.asked.first, u"A report of the preview. Nothing is moved."_s);
    EXPECT_EQ(desktop.asked.second, u"ordovan+ plan – r"_s);
    tasks.finish();
    EXPECT_EQ(memory.read("/out/plan.csv"),
              "selected,file,destination_folder,status\r\nyes,\"a.pdf\",\"Documents\",proposed\r\n");
    EXPECT_EQ(banner(u"exportResult"), u"The plan was saved."_s);
}

TEST_F(SmartInboxRuns, SaysThatThePlanCouldNotBeSaved) {
    preview({"a.pdf = 1"});
    desktop.planFile = Url::file("/out/plan.md");
    writeError = EACCES;
    view().requestExport();
    tasks.finish();
    EXPECT_EQ(banner(u"exportResult"), u"The plan couldn't be saved there. Try another folder."_s);
    EXPECT_EQ(announcer.lastSaid(), u"The plan couldn't be saved there. Try another folder."_s);
}

TEST_F(SmartInboxRuns, SavesNothingWithoutAPreviewOrWithoutAnAnswer) {
    view().requestExport();
    EXPECT_EQ(desktop.asked.first, QString());
    preview({"a.pdf = 1"});
    view().requestExport();
    EXPECT_EQ(tasks.waiting(), 0U);
}

// Organizing.

TEST_F(SmartInboxRuns, AsksBeforeItOrganizes) {
    preview({"a.pdf = 1", "b.pdf = 1"});
    click(u"organize");
    EXPECT_TRUE(sheet()->isVisible());
    EXPECT_THAT(
        texts(*sheet()),
        IsSupersetOf({u"Organize these files?"_s,
                      u"Files move into the ordovan+ folder inside this folder. Nothing is copied or deleted, and "
                      "you can undo this from the Recovery Center."_s,
                      u"Applying is explicit and reversible"_s,
                      u"Cross-volume moves are copy-verified before removal"_s, u"Cancel"_s, u"Organize 2 Files"_s}));
    click(sheet()->cancelButton());
    EXPECT_EQ(tasks.waiting(), 0U);
    EXPECT_FALSE(model->isApplying());
}

TEST_F(SmartInboxRuns, DoesNotAskWhereNothingCanBeOrganized) {
    view().requestOrganize();
    EXPECT_EQ(sheet(), nullptr);
    preview({"a.pdf = 1"});
    click(u"tickAll");
    view().requestOrganize();
    EXPECT_EQ(sheet(), nullptr);
}

TEST_F(SmartInboxRuns, ShowsTheProgressOfARunAndLocksWhatWouldDisturbIt) {
    preview({"a.pdf = 1", "b.pdf = 1"});
    organize();
    auto* progress = widget<ProgressStrip>(u"runProgress");
    EXPECT_TRUE(progress->isVisible());
    EXPECT_FALSE(widget(u"organize")->isVisible());
    Q_EMIT model->runProgressed(1, 2);
    EXPECT_THAT(texts(*progress), IsSupersetOf({u"Organizing files…"_s, u"1 of 2 files"_s}));
    for (const QString& name : {u"organize"_s, u"exportPlan"_s, u"ageFilter"_s, u"tickAll"_s, u"chooseFolder"_s}) {
        EXPECT_FALSE(widget(name)->isEnabled()) << name.toStdString();
        EXPECT_EQ(widget(name)->toolTip(), u"Files are being moved right now."_s) << name.toStdString();
    }
    list().setCurrentIndex(list().rows()->index(1));
    QTest::keyClick(&list(), Qt::Key_Space);
    EXPECT_EQ(ticked().size(), 2U);
    tasks.finish();
    EXPECT_FALSE(progress->isVisible());
    EXPECT_TRUE(widget(u"chooseFolder")->isEnabled());
}

TEST_F(SmartInboxRuns, StopsARunThatIsCancelled) {
    preview({"a.pdf = 1", "b.pdf = 1"});
    organize();
    QTest::mouseClick(widget<ProgressStrip>(u"runProgress")->findChild<QPushButton*>(u"progressCancel"_s),
                      Qt::LeftButton);
    tasks.finish();
    EXPECT_EQ(banner(u"runSummary"), u"Last organize run moved 0 files; 2 skipped."_s);
    EXPECT_TRUE(memory.exists(Url::file("/r/a.pdf")));
}

TEST_F(SmartInboxRuns, TellsWhatARunDidAndTakesItBack) {
    preview({"a.pdf = 1", "b.pdf = 1"});
    organize();
    tasks.finish();
    EXPECT_EQ(banner(u"runSummary"), u"Last organize run moved 2 files."_s);
    EXPECT_EQ(announcer.lastSaid(), u"Last organize run moved 2 files."_s);
    EXPECT_TRUE(memory.exists(Url::file("/r/ordovan+/Documents/a.pdf")));
    EXPECT_THAT(shown(), IsSupersetOf({u"Nothing to organize"_s, u"Undo"_s}));
    click(u"undoRun");
    EXPECT_THAT(shown(), IsSupersetOf({u"Putting files back…"_s}));
    tasks.finish();
    EXPECT_EQ(banner(u"runSummary"), u"Last undo run put back 2 files."_s);
    EXPECT_FALSE(widget(u"undoRun")->isVisible());
    EXPECT_TRUE(memory.exists(Url::file("/r/a.pdf")));
    EXPECT_EQ(rows(), QStringList({u"a.pdf"_s, u"b.pdf"_s}));
}

TEST_F(SmartInboxRuns, TakesBackOnlyTheLastRun) {
    preview({"a.pdf = 1"});
    organize();
    tasks.finish();
    tree({"b.pdf = 1"});
    model->preview();
    tasks.finish();
    organize();
    tasks.finish();
    click(u"undoRun");
    tasks.finish();
    EXPECT_THAT(recoverable(*model), ElementsAre("a.pdf -> ordovan+/Documents/a.pdf"));
    EXPECT_TRUE(memory.exists(Url::file("/r/b.pdf")));
}

TEST_F(SmartInboxRuns, ListsTheProblemsOfARun) {
    preview({"a.pdf = 1", "b.pdf = 1"});
    memory.removeTree("/r/a.pdf");
    organize();
    tasks.finish();
    EXPECT_EQ(banner(u"runSummary"), u"Last organize run moved 1 file; 1 skipped."_s);
    EXPECT_THAT(shown(), IsSupersetOf({u"Show Problems"_s}));
    EXPECT_EQ(RunTexts::problems(model->lastReport()->outcomes),
              QStringList({u"a.pdf — "_s + QString::fromStdString(messages(*model).front())}));
}

TEST_F(SmartInboxRuns, WarnsWhenTheUndoRecordCouldNotBeSaved) {
    preview({"a.pdf = 1"});
    records.failAll("write", ENOSPC);
    organize();
    tasks.finish();
    EXPECT_EQ(
        banner(u"journalWarning"),
        u"Files were organized, but the undo record could not be saved to disk. Undo is available until you quit."_s);
    EXPECT_EQ(banner(u"runSummary"), u"Last organize run moved 1 file."_s);
}

TEST_F(SmartInboxRuns, SaysWhyARunWasRefused) {
    preview({"a.pdf = 1"});
    heldElsewhere = {"/r"};
    organize();
    tasks.finish();
    EXPECT_EQ(banner(u"refusal"), u"Another ordovan+ run is working in this folder. Try again when it has finished."_s);
    EXPECT_EQ(banner(u"runSummary"), QString());
    EXPECT_EQ(rows(), QStringList({u"a.pdf"_s}));
}

TEST_F(SmartInboxRuns, ForgetsTheLastRunWhenAnotherFolderIsChosen) {
    preview({"a.pdf = 1", "sub/b.pdf = 1"});
    organize();
    tasks.finish();
    model->chooseFolder(Url::file("/r/sub"));
    EXPECT_EQ(banner(u"runSummary"), QString());
}

TEST_F(SmartInboxRuns, CutsOffNothingInALowWindowWithAResult) {
    preview({"a.pdf = 1", "b.pdf = 1"});
    model->toggle(std::size_t{1});
    organize();
    tasks.finish();
    const auto* result = widget<Banner>(u"runSummary");
    const int whole = result->height();
    view().resize(584, 350);
    QCoreApplication::processEvents();
    EXPECT_GE(result->height(), whole);
    for (const auto* name : {u"bannerClose", u"undoRun", u"chooseFolder", u"ageFilter", u"exportPlan", u"organize"}) {
        const auto* button = widget(name);
        EXPECT_GE(button->height(), button->sizeHint().height()) << QString::fromUtf16(name).toStdString();
    }
}

}  // namespace
