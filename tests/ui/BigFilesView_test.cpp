#include "OrdovanApp/screens/BigFilesView.h"

#include "OrdovanApp/screens/QuickLook.h"
#include "OrdovanApp/theme/Banner.h"
#include "OrdovanApp/theme/ProgressStrip.h"
#include "OrdovanApp/theme/RowsView.h"
#include "OrdovanApp/theme/Segments.h"
#include "OrdovanApp/theme/Sheet.h"
#include "tests/support/RowText.h"
#include "tests/support/ScreenWorld.h"
#include "tests/support/WidgetTestMain.h"

#include <gmock/gmock.h>

#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

using namespace ordovan::test;
using namespace Qt::StringLiterals;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::IsSupersetOf;
using ::testing::Not;

namespace {

const QString hint = u"Tick files to clean up. Trashed files can be put back from the Recovery Center."_s;
const QString running = u"Files are being moved right now."_s;

class BigFiles : public SectionWorld<BigFilesView> {
protected:
    RowsView& list() { return *widget<RowsView>(u"bigFileList"); }
    QStringList names() { return titles(list()); }
    void tick(int row) { QTest::mouseClick(list().viewport(), Qt::LeftButton, {}, list().markRect(row).center()); }
    QString summary() { return widget<QWidget>(u"summary")->accessibleName(); }
    Sheet& sheet() { return *question(u"trashFilesSheet"); }
    QuickLook* quickLook() { return view().findChild<QuickLook*>(); }
    void trash() {
        click(u"trashTicked");
        click(sheet().confirmButton());
    }
};

}  // namespace

// States.

TEST_F(BigFiles, AsksForAFolderWithoutAPreview) {
    QSignalSpy posted(&commands, &CommandCenter::posted);
    EXPECT_THAT(shown(), IsSupersetOf({u"Big Files"_s, u"Preview a folder first"_s,
                                       u"Big Files uses the sizes from your current preview."_s}));
    click(u"chooseFirstFolder");
    ASSERT_EQ(posted.size(), 1);
    EXPECT_EQ(posted[0][0].toString(), Commands::chooseFolder);
}

TEST_F(BigFiles, TellsThatThePreviewIsOnItsWay) {
    view();
    tree({"a = 1"});
    model->chooseFolder(Url::file("/r"));
    EXPECT_THAT(shown(), Contains(u"Previewing — reading metadata only…"_s));
    EXPECT_FALSE(widget(u"chooseFirstFolder")->isVisible());
}

TEST_F(BigFiles, ListsTheLargestFilesBiggestFirst) {
    preview({"small = 1", "sub/big.mov = 123", "middle.zip = 12"});
    EXPECT_THAT(shown(),
                IsSupersetOf({u"The largest files in this folder. Looking changes nothing; files you tick and confirm "
                              "go to the Trash, and you can put them back."_s,
                              u"r"_s, u"Choose Folder…"_s, u"3"_s, u"largest files"_s, u"6 bytes"_s,
                              u"in the largest files"_s, u"Search big files"_s, u"Any size"_s, u"Over 10 MB"_s,
                              u"Over 100 MB"_s, u"Over 1 GB"_s, u"All kinds"_s, hint, u"Move to Trash…"_s}));
    EXPECT_EQ(list().rows()->title(0), u"Largest files, biggest first"_s);
    EXPECT_EQ(names(), QStringList({u"big.mov"_s, u"middle.zip"_s, u"small"_s}));
    EXPECT_FALSE(widget<QWidget>(u"installersHint")->isVisible());
}

TEST_F(BigFiles, TellsOfTheSpaceInDuplicateCopiesOnceItIsKnown) {
    preview({"a = 123", "b = 123", "c = 1"});
    QSignalSpy posted(&commands, &CommandCenter::posted);
    EXPECT_THAT(shown(), Not(Contains(u"in duplicate copies"_s)));
    click(u"findDuplicates");
    ASSERT_EQ(posted.size(), 1);
    EXPECT_EQ(posted[0][0].toString(), Commands::findDuplicates);
    model->findDuplicates();
    EXPECT_FALSE(widget(u"findDuplicates")->isEnabled());
    tasks.finish();
    EXPECT_THAT(shown(), Contains(u"3 bytes in duplicate copies"_s));
    EXPECT_FALSE(widget(u"findDuplicates")->isVisible());
}

TEST_F(BigFiles, TellsWhereInstallersGo) {
    preview({"Setup.dmg = 1", "a = 1"});
    EXPECT_THAT(shown(),
                Contains(u"Installers (.dmg, .pkg) are often safe to remove once the app is installed. Organize sends "
                         "them to ordovan+/Installers so you can review them in one place."_s));
    click(widget<QWidget>(u"installersHint")->findChild<QPushButton*>(u"bannerClose"_s));
    model->preview();
    tasks.finish();
    EXPECT_FALSE(widget<QWidget>(u"installersHint")->isVisible());
}

TEST_F(BigFiles, SaysThatAFolderHasNoFiles) {
    preview({"folder/"});
    EXPECT_THAT(shown(), IsSupersetOf({u"No files here"_s, u"This folder has no files."_s}));
}

TEST_F(BigFiles, KeepsTicksAndFiltersAcrossANewPreview) {
    preview({"a.zip = 12", "b.zip = 1", "c.mov = 123"});
    widget<Segments>(u"kindFilter")->setCurrent(2);
    EXPECT_EQ(names(), QStringList({u"a.zip"_s, u"b.zip"_s}));
    tick(1);
    memory.removeTree("/r/b.zip");
    model->preview();
    tasks.finish();
    EXPECT_EQ(names(), QStringList({u"a.zip"_s}));
    EXPECT_EQ(summary(), u"1 file ticked · 2 bytes. "_s + hint);
}

TEST_F(BigFiles, StartsAfreshWithAnotherFolder) {
    preview({"a.zip = 12", "sub/b.zip = 1"});
    widget<QLineEdit>(u"search")->setText(u"a"_s);
    tick(1);
    model->chooseFolder(Url::file("/r/sub"));
    tasks.finish();
    EXPECT_EQ(names(), QStringList({u"b.zip"_s}));
    EXPECT_EQ(summary(), hint);
    EXPECT_EQ(widget<QLineEdit>(u"search")->text(), QString());
}

// Filters.

TEST_F(BigFiles, FiltersBySizeTheBoundIncluded) {
    memory.write("/r/ten", std::string(10'000'000, 'x'));
    memory.write("/r/less", std::string(9'999'999, 'x'));
    preview({});
    auto* sizes = widget<Segments>(u"sizeFilter");
    EXPECT_EQ(sizes->texts(), QStringList({u"Any size"_s, u"Over 10 MB"_s, u"Over 100 MB"_s, u"Over 1 GB"_s}));
    sizes->setCurrent(1);
    EXPECT_EQ(names(), QStringList({u"ten"_s}));
    sizes->setCurrent(2);
    EXPECT_THAT(shown(), IsSupersetOf({u"No files this size"_s, u"Try a smaller size filter."_s}));
    EXPECT_FALSE(list().isVisible());
    sizes->setCurrent(0);
    EXPECT_EQ(names().size(), 2);
}

TEST_F(BigFiles, FiltersByTheKindsThatThereAre) {
    preview({"a.zip = 12", "b.mov = 1"});
    auto* kinds = widget<Segments>(u"kindFilter");
    EXPECT_EQ(kinds->texts(), QStringList({u"All kinds"_s, u"Videos"_s, u"Archives"_s}));
    kinds->setCurrent(1);
    EXPECT_EQ(names(), QStringList({u"b.mov"_s}));
    memory.removeTree("/r/b.mov");
    model->preview();
    tasks.finish();
    EXPECT_EQ(names(), QStringList({u"a.zip"_s}));
    EXPECT_EQ(kinds->current(), 0);
}

TEST_F(BigFiles, SearchesAndTellsOfTickedFilesOutOfSight) {
    preview({"a.zip = 12", "b.mov = 1"});
    tick(1);
    QTest::keyClicks(widget<QLineEdit>(u"search"), u"b.m"_s);
    EXPECT_EQ(names(), QStringList({u"b.mov"_s}));
    EXPECT_EQ(summary(), u"1 file ticked · 2 bytes · 1 of them not shown. "_s + hint);
    QTest::keyClicks(widget<QLineEdit>(u"search"), u"zzz"_s);
    EXPECT_THAT(shown(), Contains(u"No matching files"_s));
    click(u"clearFilters");
    EXPECT_EQ(names().size(), 2);
}

// Rows.

TEST_F(BigFiles, OffersWhatCanBeDoneWithARow) {
    preview({"a.zip = 12"});
    EXPECT_THAT(actionTexts(*list().rows(), 1), ElementsAre("Quick Look", "Reveal in Finder", "Select for Trash"));
    Q_EMIT list().actionTriggered(1, BigFilesModel::reveal);
    EXPECT_THAT(desktop.revealed, ElementsAre(Url::file("/r/a.zip")));
    Q_EMIT list().actionTriggered(1, BigFilesModel::selectForTrash);
    EXPECT_EQ(summary(), u"1 file ticked · 2 bytes. "_s + hint);
    Q_EMIT list().actionTriggered(1, BigFilesModel::quickLook);
    EXPECT_EQ(quickLook()->file(), Url::file("/r/a.zip"));
}

TEST_F(BigFiles, TicksWithReturnAndLooksWithSpace) {
    preview({"a.zip = 12", "b.zip = 1"});
    list().setCurrentIndex(list().rows()->index(2));
    QTest::keyClick(&list(), Qt::Key_Return);
    EXPECT_EQ(summary(), u"1 file ticked · 1 byte. "_s + hint);
    QTest::keyClick(&list(), Qt::Key_Space);
    EXPECT_TRUE(quickLook()->isVisible());
    EXPECT_EQ(quickLook()->file(), Url::file("/r/b.zip"));
    QTest::keyClick(quickLook(), Qt::Key_Space);
    EXPECT_FALSE(quickLook()->isVisible());
    EXPECT_EQ(summary(), u"1 file ticked · 1 byte. "_s + hint);
}

TEST_F(BigFiles, LetsTheQuickLookFollowTheArrowKeys) {
    preview({"a.zip = 123", "b.zip = 12", "c.zip = 1"});
    list().setCurrentIndex(list().rows()->index(1));
    QTest::keyClick(&list(), Qt::Key_Space);
    QTest::keyClick(quickLook(), Qt::Key_Down);
    EXPECT_EQ(quickLook()->file(), Url::file("/r/b.zip"));
    QTest::keyClick(quickLook(), Qt::Key_End);
    EXPECT_EQ(quickLook()->file(), Url::file("/r/c.zip"));
    list().setCurrentIndex(list().rows()->index(1));
    EXPECT_EQ(quickLook()->file(), Url::file("/r/a.zip"));
    QTest::keyClick(quickLook(), Qt::Key_Escape);
    EXPECT_FALSE(quickLook()->isVisible());
    list().setCurrentIndex(list().rows()->index(2));
    EXPECT_FALSE(quickLook()->isVisible());
}

TEST_F(BigFiles, ClosesTheQuickLookWithTheScreen) {
    preview({"a.zip = 123"});
    list().setCurrentIndex(list().rows()->index(1));
    QTest::keyClick(&list(), Qt::Key_Space);
    view().hide();
    EXPECT_FALSE(quickLook()->isVisible());
}

// Moving files to the Trash.

TEST_F(BigFiles, AsksBeforeItMovesOneFile) {
    preview({"a.zip = 12", "b.zip = 1"});
    EXPECT_FALSE(widget(u"trashTicked")->isEnabled());
    EXPECT_EQ(widget(u"trashTicked")->toolTip(), u"Tick at least one file first."_s);
    tick(1);
    click(u"trashTicked");
    EXPECT_THAT(
        texts(sheet()),
        IsSupersetOf({u"Move 1 file to the Trash?"_s,
                      u"a.zip (2 bytes) goes to the macOS Trash, not deleted. Each file is checked again first; "
                      "anything that changed is left alone. Put files back from the Recovery Center."_s,
                      u"Move 1 file to Trash"_s}));
    click(sheet().cancelButton());
    EXPECT_FALSE(model->isTrashing());
}

TEST_F(BigFiles, AsksBeforeItMovesSeveralFiles) {
    preview({"a.zip = 12", "b.zip = 1"});
    tick(1);
    tick(2);
    click(u"trashTicked");
    EXPECT_THAT(texts(sheet()),
                IsSupersetOf({u"Move 2 files to the Trash?"_s,
                              u"3 bytes goes to the macOS Trash, not deleted. Each file is checked again first; "
                              "anything that changed is left alone. Put files back from the Recovery Center."_s,
                              u"Move 2 files to Trash"_s}));
}

TEST_F(BigFiles, LocksItselfWhileItMovesFiles) {
    preview({"a.zip = 12", "b.zip = 1"});
    tick(1);
    trash();
    auto* progress = widget<ProgressStrip>(u"runProgress");
    Q_EMIT model->trashProgressed(0, 1, 0, 2);
    EXPECT_THAT(texts(*progress), IsSupersetOf({u"Checking each file again, then moving files to the Trash…"_s,
                                                u"0 of 1 file · 0 bytes of 2 bytes"_s}));
    EXPECT_FALSE(widget(u"chooseFolder")->isEnabled());
    EXPECT_EQ(widget(u"chooseFolder")->toolTip(), running);
    tick(2);
    EXPECT_EQ(summary(), u"1 file ticked · 2 bytes. "_s + hint);
    EXPECT_EQ(list().rows()->content(2).toolTip, running);
    tasks.finish();
    EXPECT_FALSE(progress->isVisible());
    EXPECT_TRUE(widget(u"chooseFolder")->isEnabled());
}

TEST_F(BigFiles, LocksItselfWhileFilesAreOrganized) {
    preview({"a.zip = 12"});
    tick(1);
    model->organize();
    EXPECT_FALSE(widget(u"trashTicked")->isEnabled());
    EXPECT_EQ(widget(u"trashTicked")->toolTip(), running);
    tasks.finish();
}

TEST_F(BigFiles, TellsWhatWasMoved) {
    preview({"a.zip = 12", "b.zip = 1"});
    tick(1);
    trash();
    tasks.finish();
    EXPECT_FALSE(exists("a.zip"));
    EXPECT_EQ(banner(u"trashResult"), u"1 file moved to the Trash · 2 bytes"_s);
    EXPECT_EQ(announcer.lastSaid(), u"1 file moved to the Trash · 2 bytes"_s);
    EXPECT_EQ(names(), QStringList({u"b.zip"_s}));
    EXPECT_EQ(summary(), hint);
    EXPECT_EQ(model->trashRecord()->entries.size(), 1U);
}

TEST_F(BigFiles, PutsItsFiltersSideBySideWhereThereIsLittleRoom) {
    preview({"a.pdf = 1", "b.jpg = 1", "c.zip = 1"});
    view().resize(584, 500);
    QCoreApplication::processEvents();
    const auto* sizes = widget<Segments>(u"sizeFilter");
    EXPECT_LT(sizes->width(), sizes->sizeHint().width());
    EXPECT_EQ(sizes->width(), sizes->widthWithin(sizes->width()));
    EXPECT_EQ(widget<Segments>(u"kindFilter")->x(), sizes->geometry().right() + 1 + 8);
}

TEST_F(BigFiles, GivesUpItsFiguresBeforeTheBarWouldCoverTheList) {
    preview({"a.dmg = 12", "b.zip = 1"});
    tick(1);
    trash();
    tasks.finish();
    QCoreApplication::sendPostedEvents();
    EXPECT_TRUE(widget<QWidget>(u"statCard")->isVisible());
    view().resize(584, 500);
    QCoreApplication::sendPostedEvents();
    EXPECT_FALSE(widget<QWidget>(u"statCard")->isVisible());
    const int listEnd = list().mapTo(&view(), list().rect().bottomLeft()).y();
    const auto* bar = widget(u"trashTicked");
    EXPECT_LT(listEnd, bar->mapTo(&view(), bar->rect().topLeft()).y());
}

TEST_F(BigFiles, LeavesAFileAloneThatGrewSinceItWasSeen) {
    preview({"a.zip = 12", "b.zip = 1"});
    tick(1);
    tick(2);
    memory.write("/r/a.zip", "123");
    trash();
    tasks.finish();
    EXPECT_TRUE(exists("a.zip"));
    EXPECT_EQ(banner(u"trashResult"), u"1 file moved to the Trash · 1 byte · 1 skipped"_s);
    EXPECT_THAT(shown(), Contains(u"Show Problems"_s));
    EXPECT_EQ(messages(*model->lastTrashReport()).front(), "The file changed since you looked at it; left untouched.");
}

TEST_F(BigFiles, FitsIntoASmallWindow) {
    preview({"Setup.dmg = 1", "a.zip = 12", "b.mov = 1", "c.jpg = 1", "d.pdf = 1"});
    EXPECT_LE(view().minimumSizeHint().width(), 584);
    EXPECT_LE(view().minimumSizeHint().height(), 560);
}
