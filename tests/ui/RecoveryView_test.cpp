#include "OrdovanApp/screens/RecoveryView.h"

#include "OrdovanApp/theme/Banner.h"
#include "OrdovanApp/theme/ElidedLabel.h"
#include "OrdovanApp/theme/ProgressStrip.h"
#include "OrdovanApp/theme/RowsView.h"
#include "OrdovanApp/theme/Sheet.h"
#include "tests/support/ScreenWorld.h"
#include "tests/support/WidgetTestMain.h"

#include <gmock/gmock.h>

#include <QLineEdit>
#include <QPushButton>
#include <QTest>

using namespace ordovan::test;
using namespace Qt::StringLiterals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::IsSupersetOf;

namespace {

class RecoveryViewTest : public SectionWorld<RecoveryView> {
protected:
    void preview(const std::string& folder = "/r") {
        model->chooseFolder(Url::file(folder));
        tasks.finish();
    }
    /// "/r" with these files organized.
    void organized(std::initializer_list<std::string_view> items) {
        tree(items);
        preview();
        model->organize();
        tasks.finish();
    }
    /// "/r" with these files, each of one byte, in the Trash.
    void trashed(std::initializer_list<std::string> names) {
        std::vector<OrdovanFileTrasher::Item> items;
        for (const std::string& name : names) {
            memory.write("/r/" + name, "1");
            items.push_back({Url::file("/r/" + name), 1});
        }
        preview();
        model->trashBigFiles(std::move(items));
        tasks.finish();
    }
    void confirm() { click(sheet()->confirmButton()); }
    Sheet* sheet() { return question(u"putBackSheet"); }
    RowsView& list() { return *widget<RowsView>(u"recoveryList"); }
    void clickAction(int row, int action) {
        QTest::mouseClick(list().viewport(), Qt::LeftButton, {}, list().actionRect(row, action).center());
    }
    QStringList rows() { return titles(list(), true); }
    RowAction action(int row, int number = 0) { return list().rows()->content(row).actions.at(number); }
};

const QString rule =
    u"Undo is fail-closed: a file changed since organizing, or whose original slot is now occupied, is left where it "
    "is."_s;

}  // namespace

// States.

TEST_F(RecoveryViewTest, SaysThatThereIsNothingToRecover) {
    EXPECT_THAT(texts(view()),
                IsSupersetOf({u"Recovery Center"_s, u"Nothing to recover"_s,
                              u"After you organize files or move duplicates to the Trash, this is where you can undo "
                              "it."_s}));
    EXPECT_FALSE(widget(u"undoOrganize")->isVisible());
    EXPECT_FALSE(widget(u"putAllBack")->isVisible());
    EXPECT_FALSE(list().isVisible());
}

TEST_F(RecoveryViewTest, ShowsOrganizedAndTrashedFiles) {
    organized({"a.pdf = 1", "b.pdf = 1"});
    trashed({"c.mov"});
    EXPECT_THAT(texts(view()),
                IsSupersetOf({rule, u"Search organized and trashed files"_s, u"Undo Organize…"_s, u"Put All Back…"_s}));
    EXPECT_EQ(rows(),
              QStringList({u"2 organized files can go back to where they came from."_s, u"b.pdf"_s, u"a.pdf"_s,
                           u"1 file in the Trash can be put back (from Duplicates or Big Files)."_s, u"c.mov"_s}));
    EXPECT_FALSE(widget<QWidget>(u"elsewhere")->isVisible());
}

TEST_F(RecoveryViewTest, SaysWhatIsGoneOnceItIsKnown) {
    organized({"a.pdf = 1"});
    view();
    ASSERT_TRUE(memory.remove(Url::file("/r/ordovan+/Documents/a.pdf")));
    activate();
    EXPECT_TRUE(action(1).enabled) << "not looked up on this thread";
    tasks.finish();
    EXPECT_EQ(rows().front(), u"0 organized files can go back to where they came from."_s);
    EXPECT_EQ(list().rows()->content(1).detail,
              u"This file is no longer there. Missing: deleted or moved since organizing. Undo will skip it."_s);
    EXPECT_FALSE(action(1).enabled);
    EXPECT_FALSE(widget(u"undoOrganize")->isEnabled());
    EXPECT_EQ(widget(u"undoOrganize")->toolTip(), u"None of the organized files is there any more."_s);
}

TEST_F(RecoveryViewTest, ShowsWhatAnotherProgramTrashedWhenItsWindowIsActivated) {
    view();
    auto other = make();
    memory.write("/r/c.mov", "1");
    other->chooseFolder(Url::file("/r"));
    tasks.finish();
    other->trashBigFiles({{Url::file("/r/c.mov"), 1}});
    tasks.finish();
    EXPECT_THAT(rows(), IsEmpty());
    activate();
    tasks.finish();
    EXPECT_EQ(rows().size(), 2);
}

TEST_F(RecoveryViewTest, TellsOfFilesThatCameFromOtherFolders) {
    trashed({"c.mov", "d.mov"});
    memory.makeDirectory("/other");
    preview("/other");
    view();
    EXPECT_EQ(widget<ElidedLabel>(u"elsewhere")->accessibleName(),
              u"2 files came from other folders. Choose their folder to put them back."_s);
    EXPECT_FALSE(action(1).enabled);
    EXPECT_EQ(action(1).help, u"Choose the folder that it came from first."_s);
    EXPECT_FALSE(widget(u"putAllBack")->isEnabled());
    EXPECT_EQ(widget(u"putAllBack")->toolTip(), u"No file in the Trash can go back to this folder."_s);
}

TEST_F(RecoveryViewTest, KeepsRoomForNamesWhereThereIsLittle) {
    organized({"a.pdf = 1"});
    view();
    const QRect wide = list().actionRect(1, RecoveryModel::putBack);
    view().resize(584, 500);
    EXPECT_LT(list().actionRect(1, RecoveryModel::putBack).width(), wide.width() / 3);
    EXPECT_EQ(action(1).text, u"Put Just This File Back"_s) << "still its name";
}

// Searching.

TEST_F(RecoveryViewTest, SearchesBothLists) {
    organized({"a.pdf = 1", "b.pdf = 1"});
    trashed({"b.mov"});
    view();
    QTest::keyClicks(widget<QLineEdit>(u"search"), u"b."_s);
    EXPECT_EQ(rows().size(), 4);
    QTest::keyClicks(widget<QLineEdit>(u"search"), u"zzz"_s);
    EXPECT_FALSE(list().isVisible());
    EXPECT_THAT(texts(view()), IsSupersetOf({u"No matching files"_s}));
    click(u"clearFilters");
    EXPECT_EQ(rows().size(), 5);
    EXPECT_TRUE(list().isVisible());
}

TEST_F(RecoveryViewTest, MakesNoOtherFileCurrentWhenTheSearchHidesIt) {
    organized({"a.pdf = 1", "b.pdf = 1", "c.pdf = 1"});
    view();
    list().setCurrentIndex(list().rows()->index(2));
    QTest::keyClicks(widget<QLineEdit>(u"search"), u"b.pdf"_s);
    EXPECT_EQ(list().rows()->title(list().currentIndex().row()), u"b.pdf"_s);
    widget<QLineEdit>(u"search")->setText(u"a.pdf"_s);
    EXPECT_FALSE(list().currentIndex().isValid());
}

// Single files.

TEST_F(RecoveryViewTest, PutsJustOneOrganizedFileBack) {
    organized({"a.pdf = 1", "b.pdf = 1"});
    view();
    EXPECT_EQ(action(2).text, u"Put Just This File Back"_s);
    EXPECT_EQ(action(2).help, u"Put just this file back"_s);
    clickAction(2, RecoveryModel::putBack);
    EXPECT_THAT(texts(view()), IsSupersetOf({u"Putting files back…"_s}));
    tasks.finish();
    EXPECT_TRUE(exists("a.pdf"));
    EXPECT_FALSE(exists("b.pdf"));
    EXPECT_EQ(banner(u"recoveryResult"), u"Last undo run put back 1 file."_s);
    EXPECT_EQ(announcer.lastSaid(), u"Last undo run put back 1 file."_s);
    EXPECT_EQ(rows(), QStringList({u"1 organized file can go back to where they came from."_s, u"b.pdf"_s}));
}

TEST_F(RecoveryViewTest, PutsJustOneTrashedFileBack) {
    trashed({"c.mov", "d.mov"});
    view();
    EXPECT_EQ(action(1).text, u"Put Back from Trash"_s);
    clickAction(1, RecoveryModel::putBackFromTrash);
    tasks.finish();
    EXPECT_TRUE(exists("d.mov"));
    EXPECT_FALSE(exists("c.mov"));
    EXPECT_EQ(banner(u"recoveryResult"), u"Put back 1 file from the Trash."_s);
    EXPECT_EQ(rows().size(), 2);
}

TEST_F(RecoveryViewTest, GoesOnToTheNextFileWhenOneWasPutBackWithTheKeyboard) {
    organized({"a.pdf = 1", "b.pdf = 1", "c.pdf = 1"});
    view();
    list().setCurrentIndex(list().rows()->index(2));
    QTest::keyClick(&list(), Qt::Key_Return);
    tasks.finish();
    EXPECT_TRUE(exists("b.pdf"));
    EXPECT_EQ(list().rows()->title(list().currentIndex().row()), u"a.pdf"_s);
}

TEST_F(RecoveryViewTest, MovesNothingByADoubleClickOnARow) {
    organized({"a.pdf = 1"});
    trashed({"c.mov"});
    view();
    for (const int row : {1, 3}) {
        const QRect place = list().visualRect(list().rows()->index(row));
        QTest::mouseDClick(list().viewport(), Qt::LeftButton, {}, place.center());
    }
    EXPECT_FALSE(model->isApplying());
    EXPECT_FALSE(model->isTrashing());
    EXPECT_FALSE(exists("a.pdf"));
}

TEST_F(RecoveryViewTest, ShowsFilesWhereTheyAre) {
    organized({"a.pdf = 1"});
    trashed({"c.mov"});
    view();
    clickAction(1, RecoveryModel::reveal);
    clickAction(3, RecoveryModel::showInTrash);
    EXPECT_THAT(desktop.revealed, ElementsAre(Url::file("/r/ordovan+/Documents/a.pdf")));
    EXPECT_THAT(desktop.shownInTrash, ElementsAre(Url::file(model->trashRecord()->entries.front().trashed())));
}

// All of them.

TEST_F(RecoveryViewTest, AsksBeforeItUndoesEverything) {
    organized({"a.pdf = 1", "b.pdf = 1"});
    view();
    click(u"undoOrganize");
    EXPECT_THAT(texts(*sheet()), IsSupersetOf({u"Undo everything organized in this folder?"_s,
                                               u"2 organized files can go back to where they came from. "_s + rule,
                                               u"Undo Organize"_s, u"Cancel"_s}));
    QTest::mouseClick(sheet()->cancelButton(), Qt::LeftButton);
    EXPECT_FALSE(model->isApplying());
    click(u"undoOrganize");
    confirm();
    tasks.finish();
    EXPECT_TRUE(exists("a.pdf"));
    EXPECT_TRUE(exists("b.pdf"));
    EXPECT_EQ(banner(u"recoveryResult"), u"Last undo run put back 2 files."_s);
    EXPECT_THAT(texts(view()), IsSupersetOf({u"Nothing to recover"_s}));
}

TEST_F(RecoveryViewTest, AsksBeforeItPutsAllTrashedFilesBack) {
    trashed({"c.mov", "d.mov"});
    view();
    click(u"putAllBack");
    EXPECT_THAT(texts(*sheet()),
                IsSupersetOf({u"Put all trashed files of this folder back?"_s,
                              u"2 files can go back from the Trash. A file whose original place is now occupied stays "
                              "in the Trash."_s,
                              u"Put All Back"_s, u"Cancel"_s}));
    confirm();
    tasks.finish();
    EXPECT_TRUE(exists("c.mov"));
    EXPECT_TRUE(exists("d.mov"));
    EXPECT_EQ(banner(u"recoveryResult"), u"Put back 2 files from the Trash."_s);
}

TEST_F(RecoveryViewTest, SaysWhyOneOfTheWholePutBacksIsNotPossible) {
    trashed({"c.mov"});
    view();
    EXPECT_FALSE(widget(u"undoOrganize")->isEnabled());
    EXPECT_EQ(widget(u"undoOrganize")->toolTip(), u"Nothing was organized in this folder that could be undone."_s);
    EXPECT_TRUE(widget(u"putAllBack")->isEnabled());
}

// Runs.

TEST_F(RecoveryViewTest, ShowsProgressAndLocksWhatWouldDisturbARun) {
    organized({"a.pdf = 1"});
    trashed({"c.mov", "d.mov"});
    view();
    click(u"putAllBack");
    confirm();
    auto* progress = widget<ProgressStrip>(u"runProgress");
    EXPECT_TRUE(progress->isVisible());
    Q_EMIT model->trashProgressed(1, 2, 10, 20);
    EXPECT_THAT(texts(*progress), IsSupersetOf({u"Putting files back…"_s, u"1 of 2 files"_s}));
    for (const QString& name : {u"undoOrganize"_s, u"putAllBack"_s}) {
        EXPECT_FALSE(widget(name)->isEnabled()) << name.toStdString();
        EXPECT_EQ(widget(name)->toolTip(), u"Files are being moved right now."_s) << name.toStdString();
    }
    for (const int row : {1, 3}) {
        EXPECT_FALSE(action(row).enabled) << row;
        EXPECT_EQ(action(row).help, u"Files are being moved right now."_s) << row;
    }
    tasks.finish();
    EXPECT_FALSE(progress->isVisible());
    EXPECT_TRUE(widget(u"undoOrganize")->isEnabled());
    EXPECT_TRUE(action(1).enabled);
}

TEST_F(RecoveryViewTest, ShowsHowFarAnUndoIs) {
    organized({"a.pdf = 1"});
    view();
    model->undo();
    Q_EMIT model->runProgressed(3, 1204);
    EXPECT_THAT(texts(*widget<ProgressStrip>(u"runProgress")), IsSupersetOf({u"3 of 1,204 files"_s}));
}

TEST_F(RecoveryViewTest, ShowsHowFarPuttingAnInterruptedRunInOrderIsBeforeAnUndo) {
    organized({"a.pdf = 1"});
    view();
    click(u"undoOrganize");
    confirm();
    const auto& progress = *widget<ProgressStrip>(u"runProgress");
    Q_EMIT model->recoveryProgressed(3, 1204);
    EXPECT_THAT(texts(progress), IsSupersetOf({u"Putting an interrupted run in order…"_s, u"3 of 1,204 files"_s}));
    Q_EMIT model->runProgressed(1, 2);
    EXPECT_THAT(texts(progress), IsSupersetOf({u"Putting files back…"_s, u"1 of 2 files"_s}));
}

TEST_F(RecoveryViewTest, StopsARunThatIsCancelled) {
    organized({"a.pdf = 1"});
    view();
    click(u"undoOrganize");
    confirm();
    QTest::mouseClick(widget<ProgressStrip>(u"runProgress")->findChild<QPushButton*>(u"progressCancel"_s),
                      Qt::LeftButton);
    tasks.finish();
    EXPECT_FALSE(exists("a.pdf"));
    EXPECT_EQ(banner(u"recoveryResult"), u"Last undo run put back 0 files; 1 skipped."_s);
}

TEST_F(RecoveryViewTest, TellsNothingOfRunsOfOtherSections) {
    view();
    window_.hide();
    tree({"a.pdf = 1"});
    preview();
    model->organize();
    window_.show();
    EXPECT_FALSE(widget<ProgressStrip>(u"runProgress")->isVisible());
    EXPECT_FALSE(widget(u"undoOrganize")->isEnabled());
    tasks.finish();
    EXPECT_EQ(banner(u"recoveryResult"), QString());
    EXPECT_EQ(rows().size(), 2);
}

TEST_F(RecoveryViewTest, ListsTheProblemsOfARun) {
    organized({"a.pdf = 1", "b.pdf = 1"});
    view();
    memory.write("/r/a.pdf", "another");
    click(u"undoOrganize");
    confirm();
    tasks.finish();
    EXPECT_EQ(banner(u"recoveryResult"), u"Last undo run put back 1 file; 1 skipped."_s);
    EXPECT_THAT(texts(view()), IsSupersetOf({u"Show Problems"_s}));
    EXPECT_EQ(rows().size(), 2) << "still there to be put back";
}

TEST_F(RecoveryViewTest, TellsOfTrashedFilesThatCouldNotBePutBack) {
    trashed({"c.mov", "d.mov"});
    view();
    memory.write("/r/c.mov", "another");
    click(u"putAllBack");
    confirm();
    tasks.finish();
    EXPECT_EQ(banner(u"recoveryResult"), u"Put back 1 file from the Trash; 1 skipped."_s);
    EXPECT_THAT(texts(view()), IsSupersetOf({u"Show Problems"_s}));
}

TEST_F(RecoveryViewTest, WarnsWhenARecordCouldNotBeUpdated) {
    organized({"a.pdf = 1"});
    view();
    records.failAll("remove", EACCES);
    click(u"undoOrganize");
    confirm();
    tasks.finish();
    EXPECT_EQ(banner(u"recordWarning"),
              u"The undo record could not be updated. Files that were restored may be listed again; restoring them "
              "again is refused safely."_s);
    EXPECT_EQ(banner(u"recoveryResult"), u"Last undo run put back 1 file."_s);
}

TEST_F(RecoveryViewTest, SaysWhyARunWasRefused) {
    organized({"a.pdf = 1"});
    view();
    heldElsewhere = {"/r"};
    click(u"undoOrganize");
    confirm();
    tasks.finish();
    EXPECT_EQ(banner(u"refusal"), u"Another ordovan+ run is working in this folder. Try again when it has finished."_s);
    EXPECT_EQ(banner(u"recoveryResult"), QString());
    EXPECT_EQ(rows().size(), 2);
}

TEST_F(RecoveryViewTest, ForgetsTheLastRunWhenAnotherFolderIsChosen) {
    organized({"a.pdf = 1", "sub/b.pdf = 1"});
    view();
    clickAction(1, RecoveryModel::putBack);
    tasks.finish();
    EXPECT_NE(banner(u"recoveryResult"), QString());
    memory.makeDirectory("/other");
    preview("/other");
    EXPECT_EQ(banner(u"recoveryResult"), QString());
}
