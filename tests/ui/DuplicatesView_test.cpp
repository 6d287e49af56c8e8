#include "OrdovanApp/screens/DuplicatesView.h"

#include "OrdovanApp/screens/SpaceTexts.h"
#include "OrdovanApp/theme/Banner.h"
#include "OrdovanApp/theme/ProgressStrip.h"
#include "OrdovanApp/theme/RowsView.h"
#include "OrdovanApp/theme/Sheet.h"
#include "OrdovanCore/testing/MemoryContentReader.h"
#include "tests/support/RowText.h"
#include "tests/support/ScreenWorld.h"
#include "tests/support/WidgetTestMain.h"

#include <gmock/gmock.h>

#include <QLineEdit>
#include <QListView>
#include <QMenu>
#include <QPushButton>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>

#include <cerrno>
#include <initializer_list>
#include <string>
#include <string_view>

using namespace ordovan::test;
using namespace Qt::StringLiterals;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::IsSupersetOf;
using ::testing::Not;

namespace {

const QString trashing = u"Checking each file again, then moving extras to the Trash…"_s;
const QString running = u"Files are being moved right now."_s;

class Duplicates : public SectionWorld<DuplicatesView> {
protected:
    void find(std::initializer_list<std::string_view> items) {
        preview(items);
        click(u"findDuplicates");
        tasks.finish();
    }
    RowsView& list() { return *widget<RowsView>(u"duplicateList"); }
    std::vector<std::string> kept() {
        std::vector<std::string> result;
        for (const auto& group : model->duplicateReport()->groups) result.push_back(local(model->keeper(group).path()));
        return result;
    }
    Sheet& sheet() { return *question(u"trashExtrasSheet"); }
    void trash() {
        click(u"trash-all-extras");
        click(sheet().confirmButton());
    }
};

/// Files of one byte that are all alike, of which some can not be opened.
class UnreadDuplicates : public Duplicates {
protected:
    UnreadDuplicates() {
        contents = &reader;
        model = make();
    }
    void find(std::initializer_list<std::string_view> readable, std::initializer_list<std::string_view> locked) {
        for (const std::string_view name : readable) put(name);
        for (const std::string_view name : locked) {
            put(name);
            reader.failOpening("/r/" + std::string(name), EACCES);
        }
        Duplicates::find({});
    }
    QStringList lines() {
        auto* details = widget<Banner>(u"unreadFiles")->findChild<QListView*>();
        QStringList result;
        for (int row = 0; row < details->model()->rowCount(); ++row)
            result += details->model()->index(row, 0).data().toString();
        return result;
    }
    ordovan::testing::MemoryContentReader reader;

private:
    void put(std::string_view name) {
        memory.write("/r/" + std::string(name), "1");
        reader.write("/r/" + std::string(name), "1");
    }
};

}  // namespace

// States.

TEST_F(Duplicates, AsksForAFolderWithoutAPreview) {
    QSignalSpy posted(&commands, &CommandCenter::posted);
    EXPECT_THAT(shown(), IsSupersetOf({u"Duplicates"_s, u"Find exact duplicates"_s, u"Preview a folder first."_s,
                                       u"Choose Folder…"_s}));
    EXPECT_FALSE(widget(u"findDuplicates")->isVisible());
    click(u"chooseFolder");
    ASSERT_EQ(posted.size(), 1);
    EXPECT_EQ(posted[0][0].toString(), Commands::chooseFolder);
}

TEST_F(Duplicates, OffersToSearchThePreview) {
    preview({"a = 1"});
    EXPECT_THAT(shown(),
                IsSupersetOf({u"Find exact duplicates"_s,
                              u"Scans the files from your current preview and groups byte-for-byte identical copies."_s,
                              u"Find Duplicates"_s}));
    EXPECT_FALSE(widget(u"chooseFolder")->isVisible());
    EXPECT_FALSE(widget(u"autoPick")->isVisible());
    click(u"findDuplicates");
    EXPECT_TRUE(model->isScanningDuplicates());
}

TEST_F(Duplicates, WaitsForThePreviewBeforeItSearches) {
    view();
    tree({"a = 1"});
    model->chooseFolder(Url::file("/r"));
    EXPECT_FALSE(widget(u"findDuplicates")->isEnabled());
    EXPECT_EQ(widget(u"findDuplicates")->toolTip(), u"The preview is not ready yet."_s);
    tasks.finish();
    EXPECT_TRUE(widget(u"findDuplicates")->isEnabled());
}

TEST_F(Duplicates, TellsHowFarTheSearchIs) {
    preview({"a = 1", "b = 1"});
    click(u"findDuplicates");
    Q_EMIT model->duplicateSearchProgressed(1204, 5000, 1'200'000'000, 3'000'000'000);
    auto* progress = widget<ProgressStrip>(u"searchProgress");
    EXPECT_TRUE(progress->isVisible());
    EXPECT_THAT(texts(*progress), Contains(u"Hashing files to find exact duplicates…"_s));
    EXPECT_THAT(texts(*progress), Contains(u"1,204 of 5,000 files · 1.2 GB of 3 GB"_s));
    tasks.finish();
    EXPECT_FALSE(progress->isVisible());
}

TEST_F(Duplicates, TellsHowFastTheSearchReads) {
    EXPECT_EQ(SpaceTexts::hashed(3, 5, 1'000'000, 2'000'000, 340'000'000), u"3 of 5 files · 1 MB of 2 MB · 340 MB/s"_s);
}

TEST_F(Duplicates, GoesBackWhenTheSearchIsCancelled) {
    preview({"a = 1", "b = 1"});
    click(u"findDuplicates");
    click(widget<ProgressStrip>(u"searchProgress")->findChild<QPushButton*>(u"progressCancel"_s));
    EXPECT_TRUE(widget(u"findDuplicates")->isVisible());
    tasks.finish();
    EXPECT_EQ(model->duplicateReport(), nullptr);
}

TEST_F(Duplicates, SaysThatThereAreNone) {
    find({"a = 1", "b = 2"});
    EXPECT_THAT(shown(),
                IsSupersetOf({u"No exact duplicates"_s, u"Every file in this folder is unique by content."_s}));
    click(u"searchAgainForNone");
    EXPECT_TRUE(model->isScanningDuplicates());
}

TEST_F(Duplicates, ShowsTheGroups) {
    find({"a.mov = 1234", "old/b.mov = 1234", "c = xy", "d = xy", "e = xy", "f = z"});
    EXPECT_THAT(
        shown(),
        IsSupersetOf({u"Click a file to keep it. Extras go to the Trash — you can put them back here or from the "
                      "Finder."_s,
                      u"2"_s, u"duplicate groups"_s, u"3"_s, u"extras"_s, u"8 bytes"_s, u"can be freed"_s, u"6"_s,
                      u"files compared"_s, u"Search duplicates"_s, u"Auto-pick the copy to keep"_s,
                      u"3 extras · 8 bytes, each checked again first"_s, u"Move All Extras to Trash…"_s}));
    EXPECT_EQ(list().rows()->title(0), u"2 identical copies · 4 bytes"_s);
    EXPECT_EQ(list().rows()->title(3), u"3 identical copies · 2 bytes"_s);
}

TEST_F(Duplicates, ShowsNothingOfTheFolderBefore) {
    find({"a = 1", "sub/b = 1"});
    widget<QLineEdit>(u"search")->setText(u"a"_s);
    model->chooseFolder(Url::file("/r/sub"));
    EXPECT_FALSE(list().isVisible());
    tasks.finish();
    EXPECT_TRUE(widget(u"findDuplicates")->isVisible());
    EXPECT_EQ(widget<QLineEdit>(u"search")->text(), QString());
}

TEST_F(Duplicates, KeepsItsPlaceAcrossANewPreview) {
    view();
    for (int i = 100; i < 160; ++i) {
        memory.write("/r/a" + std::to_string(i), std::to_string(i));
        memory.write("/r/b" + std::to_string(i), std::to_string(i));
    }
    find({});
    list().setCurrentIndex(list().rows()->index(100));
    const int scroll = list().verticalScrollBar()->value();
    const QString current = list().rows()->title(100);
    memory.write("/r/zzz", "new");
    model->preview();
    tasks.finish();
    EXPECT_GT(scroll, 0);
    EXPECT_EQ(list().verticalScrollBar()->value(), scroll);
    EXPECT_EQ(list().rows()->title(list().currentIndex().row()), current);
}

// Choosing.

TEST_F(Duplicates, KeepsTheCopyThatIsClicked) {
    find({"a = 1", "b = 1", "c = 1"});
    EXPECT_THAT(kept(), ElementsAre("a"));
    QTest::mouseClick(list().viewport(), Qt::LeftButton, {}, list().visualRect(list().rows()->index(2)).center());
    EXPECT_THAT(kept(), ElementsAre("b"));
    list().setCurrentIndex(list().rows()->index(3));
    QTest::keyClick(&list(), Qt::Key_Space);
    EXPECT_THAT(kept(), ElementsAre("c"));
}

TEST_F(Duplicates, ActsFromTheMenuOfACopy) {
    find({"a = 1", "b = 1"});
    EXPECT_THAT(actionTexts(*list().rows(), 2), Contains("Keep this copy instead"));
    Q_EMIT list().actionTriggered(2, DuplicatesModel::keepInstead);
    EXPECT_THAT(kept(), ElementsAre("b"));
    Q_EMIT list().actionTriggered(2, DuplicatesModel::reveal);
    EXPECT_THAT(desktop.revealed, ElementsAre(Url::file("/r/b")));
}

TEST_F(Duplicates, PicksTheCopyToKeepInEveryGroup) {
    tree({"a = 1", "b/b = 1", "b/c/c = 1"});
    memory.setModified("/r/a", 2'000'000'000);
    memory.setModified("/r/b/b", 1'000'000'000);
    memory.setModified("/r/b/c/c", 3'000'000'000);
    find({});
    EXPECT_EQ(widget(u"autoPick")->toolTip(),
              u"Oldest, newest, shortest or deepest path, for every group at once. You can still click any copy."_s);
    QStringList names;
    std::vector<std::string> picked;
    for (QAction* action : widget(u"autoPick")->menu()->actions()) {
        names += action->text();
        action->trigger();
        picked.push_back(kept().front());
    }
    EXPECT_EQ(names, QStringList({u"Oldest"_s, u"Newest"_s, u"Shortest path"_s, u"Deepest path"_s}));
    EXPECT_THAT(picked, ElementsAre("b/b", "b/c/c", "a", "b/c/c"));
}

TEST_F(Duplicates, ReplacesAHandChoiceWhenItPicks) {
    find({"a = 1", "b = 1"});
    list().rows()->toggle(2);
    widget(u"autoPick")->menu()->actions().at(2)->trigger();
    EXPECT_THAT(kept(), ElementsAre("a"));
}

TEST_F(Duplicates, Searches) {
    find({"a.mov = 1234", "b.mov = 1234", "c.txt = xy", "d.txt = xy"});
    QTest::keyClicks(widget<QLineEdit>(u"search"), u"d.txt"_s);
    EXPECT_THAT(rowTexts(*list().rows()).size(), 3U);
    QTest::keyClicks(widget<QLineEdit>(u"search"), u"zzz"_s);
    EXPECT_THAT(shown(), Contains(u"No matching files"_s));
    EXPECT_FALSE(list().isVisible());
    click(u"clearFilters");
    EXPECT_TRUE(list().isVisible());
    EXPECT_EQ(rowTexts(*list().rows()).size(), 6U);
}

// Moving extras to the Trash.

TEST_F(Duplicates, TellsHowManyOfTheExtrasTheSearchHides) {
    find({"a.txt = xy", "b.txt = xy", "c.mov = 1234", "d.mov = 1234"});
    const auto summary = [this] { return widget<QWidget>(u"summary")->accessibleName(); };
    EXPECT_EQ(summary(), u"2 extras · 6 bytes, each checked again first"_s);
    widget<QLineEdit>(u"search")->setText(u"a.txt"_s);
    EXPECT_EQ(summary(), u"2 extras · 6 bytes, each checked again first · 1 of them not shown"_s);
    click(u"trash-all-extras");
    EXPECT_THAT(texts(sheet()), Contains(u"1 of them not shown"_s));
    click(sheet().cancelButton());
    widget<QLineEdit>(u"search")->clear();
    click(u"trash-all-extras");
    EXPECT_THAT(texts(sheet()), Not(Contains(u"1 of them not shown"_s)));
}

TEST_F(Duplicates, AsksBeforeItMovesExtras) {
    find({"a = 1", "b = 1", "c = 1"});
    click(u"trash-all-extras");
    EXPECT_TRUE(sheet().isVisible());
    EXPECT_THAT(texts(sheet()),
                IsSupersetOf({u"Move duplicate extras to the Trash?"_s,
                              u"The copy you chose to keep stays. Each extra is checked again first, and anything that "
                              "changed is left alone. You can put files back from the Recovery Center or the Finder "
                              "Trash."_s,
                              u"Cancel"_s, u"Move 2 Extras to Trash"_s}));
    EXPECT_FALSE(sheet().confirmButton()->hasFocus());
    click(sheet().cancelButton());
    EXPECT_FALSE(model->isTrashing());
}

TEST_F(Duplicates, KeepsTheResultsInSightWhileItMovesExtras) {
    find({"a = 1", "b = 1"});
    trash();
    auto* progress = widget<ProgressStrip>(u"runProgress");
    Q_EMIT model->trashProgressed(1, 2, 1'000'000, 2'000'000);
    EXPECT_THAT(texts(*progress), Contains(trashing));
    EXPECT_THAT(texts(*progress), Contains(u"1 of 2 files · 1 MB of 2 MB"_s));
    EXPECT_TRUE(list().isVisible());
    EXPECT_FALSE(widget(u"trash-all-extras")->isVisible());
    EXPECT_FALSE(widget(u"autoPick")->isEnabled());
    EXPECT_EQ(widget(u"autoPick")->toolTip(), running);
    EXPECT_FALSE(widget(u"searchAgain")->isEnabled());
    EXPECT_EQ(widget(u"searchAgain")->toolTip(), running);
    list().rows()->toggle(2);
    EXPECT_THAT(kept(), ElementsAre("a"));
    EXPECT_EQ(list().rows()->content(2).toolTip, running);
    EXPECT_TRUE(list().rows()->content(1).dimmed);
    tasks.finish();
    EXPECT_FALSE(progress->isVisible());
}

TEST_F(Duplicates, GivesUpItsFiguresBeforeTheBarWouldCoverTheList) {
    find({"a = 12", "b = 12"});
    QCoreApplication::sendPostedEvents();
    EXPECT_TRUE(widget<QWidget>(u"statCard")->isVisible());
    view().resize(584, 400);
    QCoreApplication::sendPostedEvents();
    EXPECT_FALSE(widget<QWidget>(u"statCard")->isVisible());
    const int listEnd = list().mapTo(&view(), list().rect().bottomLeft()).y();
    const auto* bar = widget(u"trash-all-extras");
    EXPECT_LT(listEnd, bar->mapTo(&view(), bar->rect().topLeft()).y());
}

TEST_F(Duplicates, MovesWhatIsNotKeptAndSaysSo) {
    find({"a = 12", "b = 12", "c = 12"});
    list().rows()->toggle(2);
    QSignalSpy posted(&commands, &CommandCenter::posted);
    trash();
    tasks.finish();
    EXPECT_TRUE(exists("b"));
    EXPECT_FALSE(exists("a"));
    EXPECT_FALSE(exists("c"));
    EXPECT_EQ(banner(u"trashResult"), u"2 extras moved to the Trash · 4 bytes"_s);
    EXPECT_EQ(announcer.lastSaid(), u"2 extras moved to the Trash · 4 bytes"_s);
    EXPECT_THAT(shown(), IsSupersetOf({u"No exact duplicates"_s, u"Open Recovery Center"_s}));
    click(u"openRecovery");
    ASSERT_EQ(posted.size(), 1);
    EXPECT_EQ(posted[0][0].toString(), Commands::showRecovery);
}

TEST_F(Duplicates, ListsTheProblemsOfARun) {
    find({"a = 1", "b = 1", "c = 2", "d = 2"});
    memory.write("/r/b", "x");
    trash();
    tasks.finish();
    EXPECT_EQ(banner(u"trashResult"), u"1 extra moved to the Trash · 1 byte · 1 skipped"_s);
    EXPECT_THAT(shown(), Contains(u"Show Problems"_s));
    EXPECT_TRUE(exists("b"));
}

TEST_F(Duplicates, StopsARunThatIsCancelled) {
    find({"a = 1", "b = 1"});
    trash();
    click(widget<ProgressStrip>(u"runProgress")->findChild<QPushButton*>(u"progressCancel"_s));
    tasks.finish();
    EXPECT_TRUE(exists("b"));
    EXPECT_EQ(banner(u"trashResult"), u"0 extras moved to the Trash · 0 bytes · 1 skipped"_s);
}

TEST_F(Duplicates, DoesNotTakeAnotherTrashRunForItsOwn) {
    find({"a = 1", "b = 1", "c = 22"});
    model->trashBigFiles({{Url::file("/r/c"), 2}});
    EXPECT_FALSE(widget<ProgressStrip>(u"runProgress")->isVisible());
    EXPECT_FALSE(widget(u"trash-all-extras")->isEnabled());
    EXPECT_EQ(widget(u"trash-all-extras")->toolTip(), running);
    tasks.finish();
    EXPECT_EQ(banner(u"trashResult"), QString());
    EXPECT_TRUE(widget(u"trash-all-extras")->isEnabled());
}

TEST_F(Duplicates, LocksWhatWouldDisturbAnOrganizeRun) {
    find({"a.pdf = 1", "b.pdf = 1"});
    model->organize();
    EXPECT_FALSE(widget(u"trash-all-extras")->isEnabled());
    EXPECT_EQ(widget(u"trash-all-extras")->toolTip(), running);
    EXPECT_FALSE(widget(u"autoPick")->isEnabled());
    tasks.finish();
}

TEST_F(Duplicates, SaysWhyARunWasRefused) {
    find({"a = 1", "b = 1"});
    heldElsewhere = {"/r"};
    trash();
    tasks.finish();
    EXPECT_EQ(banner(u"refusal"), u"Another ordovan+ run is working in this folder. Try again when it has finished."_s);
    EXPECT_EQ(banner(u"trashResult"), QString());
    EXPECT_TRUE(list().isVisible());
}

TEST_F(Duplicates, WarnsWhenTheRestoreRecordCouldNotBeSaved) {
    find({"a = 1", "b = 1"});
    records.failAll("write", ENOSPC);
    trash();
    tasks.finish();
    EXPECT_EQ(banner(u"recordWarning"),
              u"Files were moved to the Trash, but the restore record couldn't be saved. Restore works until you quit; "
              "after that, use Put Back in the Finder Trash."_s);
    EXPECT_EQ(banner(u"trashResult"), u"1 extra moved to the Trash · 1 byte"_s);
}

// Files that could not be read.

TEST_F(UnreadDuplicates, AreCountedAboveWhatWasFoundAndNamedOnDemand) {
    find({"a", "b"}, {"old/c", "d", "e"});
    EXPECT_TRUE(list().isVisible());
    const QString text = u"3 files could not be read and were left out."_s;
    EXPECT_EQ(banner(u"unreadFiles"), text);
    EXPECT_EQ(announcer.lastSaid(), text);
    auto* unread = widget<Banner>(u"unreadFiles");
    EXPECT_FALSE(unread->detailsShown());
    EXPECT_THAT(shown(), Contains(u"Show Files"_s));
    click(unread->findChild<QPushButton*>(u"bannerToggle"_s));
    EXPECT_TRUE(unread->detailsShown());
    EXPECT_THAT(shown(), IsSupersetOf({u"Hide Files"_s, u"Files that could not be read"_s}));
    EXPECT_EQ(lines(), (QStringList{u"d — r"_s, u"e — r"_s, u"c — r / old"_s}));
}

TEST_F(UnreadDuplicates, AreNotAmongTheFilesCompared) {
    find({"a", "b", "c", "d"}, {"e", "f", "g"});
    EXPECT_THAT(shown(), IsSupersetOf({u"4"_s, u"files compared"_s}));
    EXPECT_THAT(shown(), Not(Contains(u"7"_s)));
}

TEST_F(UnreadDuplicates, AreToldOfAlsoWhereNothingWasFound) {
    find({"a"}, {"b"});
    EXPECT_THAT(shown(), Contains(u"No exact duplicates"_s));
    EXPECT_EQ(banner(u"unreadFiles"), u"1 file could not be read and was left out."_s);
}

TEST_F(UnreadDuplicates, AreNotToldOfWhereAllWereRead) {
    find({"a", "b"}, {});
    EXPECT_EQ(banner(u"unreadFiles"), QString());
}

TEST_F(UnreadDuplicates, StayDismissedUntilTheNextSearch) {
    find({"a", "b"}, {"c"});
    click(widget<Banner>(u"unreadFiles")->findChild<QPushButton*>(u"bannerClose"_s));
    model->preview();
    tasks.finish();
    EXPECT_EQ(banner(u"unreadFiles"), QString());
    click(u"searchAgain");
    tasks.finish();
    EXPECT_NE(banner(u"unreadFiles"), QString());
}

TEST_F(UnreadDuplicates, GoWithTheFolder) {
    find({"a", "b"}, {"c"});
    memory.makeDirectory("/s");
    model->chooseFolder(Url::file("/s"));
    EXPECT_EQ(banner(u"unreadFiles"), QString());
    tasks.finish();
    EXPECT_EQ(banner(u"unreadFiles"), QString());
}

TEST_F(Duplicates, FitsIntoASmallWindow) {
    find({"a = 1", "b = 1"});
    EXPECT_LE(view().minimumSizeHint().width(), 584);
    EXPECT_LE(view().minimumSizeHint().height(), 560);
}
