#include "OrdovanApp/screens/HistoryView.h"

#include "OrdovanApp/theme/Banner.h"
#include "OrdovanApp/theme/RowsView.h"
#include "OrdovanApp/theme/Segments.h"
#include "OrdovanApp/theme/Sheet.h"
#include "tests/support/ScreenWorld.h"
#include "tests/support/WidgetTestMain.h"

#include <gmock/gmock.h>

#include <QPushButton>
#include <QTest>

using namespace ordovan::test;
using namespace Qt::StringLiterals;
using ::testing::IsSupersetOf;

namespace {

using Kind = OrdovanRunRecord::Kind;

class HistoryViewTest : public SectionWorld<HistoryView> {
protected:
    void ran(Kind kind, std::int64_t moved, std::int64_t skipped = 0, std::int64_t failed = 0) {
        OrdovanRunRecord record = OrdovanRunRecord::make(kind, {}, Url::file("/home/ada/Downloads"), now);
        record.moved = moved;
        record.skipped = skipped;
        record.failed = failed;
        ASSERT_TRUE(history.add(record, {}, now).saved);
    }
    void oneOfEach() {
        ran(Kind::restoreTrash, 1);
        ran(Kind::trash, 29);
        ran(Kind::undo, 3, 0, 1);
        ran(Kind::organize, 121, 2);
    }
    Sheet& sheet() { return *question(u"clearHistorySheet"); }
    RowsView& list() { return *widget<RowsView>(u"historyList"); }
    QStringList runs() { return titles(list()); }
};

}  // namespace

TEST_F(HistoryViewTest, SaysWhatItIsForWhenItIsEmpty) {
    EXPECT_THAT(texts(view()),
                IsSupersetOf({u"History"_s, u"Past runs, newest first"_s,
                              u"Kept on this computer. Clearing it doesn't touch your files or the undo record."_s,
                              u"Each time you organize or undo, a summary appears here."_s, u"Clear History…"_s}));
    EXPECT_FALSE(widget(u"clearHistory")->isEnabled());
    EXPECT_EQ(widget(u"clearHistory")->toolTip(), u"There is nothing to clear."_s);
    EXPECT_FALSE(list().isVisible());
}

TEST_F(HistoryViewTest, ListsTheRunsNewestFirst) {
    oneOfEach();
    EXPECT_THAT(texts(view()), IsSupersetOf({u"Past runs, newest first"_s}));
    EXPECT_EQ(runs(), QStringList({u"Organized 121 files in Downloads"_s, u"Restored 3 files in Downloads"_s,
                                   u"Moved 29 duplicate files to the Trash in Downloads"_s,
                                   u"Put back 1 file from the Trash in Downloads"_s}));
    EXPECT_EQ(list().rows()->content(1).chip->text, u"2 skipped"_s);
    EXPECT_EQ(list().rows()->content(2).chip->text, u"1 failed"_s);
    EXPECT_FALSE(list().rows()->content(3).chip.has_value());
}

TEST_F(HistoryViewTest, FiltersByKind) {
    oneOfEach();
    view();
    auto* kinds = widget<Segments>(u"kindFilter");
    EXPECT_EQ(kinds->texts(), QStringList({u"All"_s, u"Organize"_s, u"Undo"_s, u"Trash"_s, u"Put Back"_s}));
    const QStringList expected = {u"Organized"_s, u"Restored"_s, u"Moved"_s, u"Put"_s};
    for (int kind = 1; kind <= 4; ++kind) {
        kinds->setCurrent(kind);
        ASSERT_EQ(runs().size(), 1) << kind;
        EXPECT_TRUE(runs().front().startsWith(expected[kind - 1])) << kind;
    }
    kinds->setCurrent(0);
    EXPECT_EQ(runs().size(), 4);
}

TEST_F(HistoryViewTest, SaysWhenThereIsNoRunOfAKind) {
    ran(Kind::organize, 1);
    view();
    widget<Segments>(u"kindFilter")->setCurrent(4);
    EXPECT_THAT(texts(view()),
                IsSupersetOf({u"No runs of this kind"_s, u"None of the past runs is of the kind “Put Back”."_s}));
    click(u"clearFilters");
    EXPECT_EQ(runs().size(), 1);
    EXPECT_TRUE(list().isVisible());
}

TEST_F(HistoryViewTest, AsksBeforeItClearsTheHistory) {
    oneOfEach();
    view();
    click(u"clearHistory");
    EXPECT_THAT(texts(sheet()), IsSupersetOf({u"Clear the run history?"_s,
                                              u"Only this log is cleared. Organized files and Undo stay as they are."_s,
                                              u"Clear History"_s, u"Cancel"_s}));
    EXPECT_EQ(window_.focusWidget(), sheet().cancelButton());
    QTest::mouseClick(sheet().cancelButton(), Qt::LeftButton);
    tasks.finish();
    EXPECT_EQ(runs().size(), 4);
    click(u"clearHistory");
    QTest::mouseClick(sheet().confirmButton(), Qt::LeftButton);
    tasks.finish();
    EXPECT_THAT(texts(view()), IsSupersetOf({u"Each time you organize or undo, a summary appears here."_s}));
    EXPECT_TRUE(history.load().records.empty());
}

TEST_F(HistoryViewTest, SaysThatItCouldNotBeCleared) {
    oneOfEach();
    view();
    records.failAll("write", ENOSPC);
    click(u"clearHistory");
    QTest::mouseClick(sheet().confirmButton(), Qt::LeftButton);
    tasks.finish();
    EXPECT_EQ(banner(u"historyResult"), u"The history couldn't be cleared."_s);
    EXPECT_EQ(announcer.lastSaid(), u"The history couldn't be cleared."_s);
    EXPECT_EQ(runs().size(), 4);
    records.failAll("", 0);
    click(u"clearHistory");
    click(sheet().confirmButton());
    tasks.finish();
    EXPECT_EQ(banner(u"historyResult"), QString());
}

TEST_F(HistoryViewTest, SaysThatItCouldNotBeClearedBesideAWarningThatStands) {
    records.failAll("write", ENOSPC);
    preview({"a.pdf = 1"});
    model->organize();
    tasks.finish();
    const QString standing = banner(u"recordWarning");
    EXPECT_FALSE(standing.isEmpty());
    click(u"clearHistory");
    click(sheet().confirmButton());
    tasks.finish();
    EXPECT_EQ(banner(u"historyResult"), u"The history couldn't be cleared."_s);
    EXPECT_EQ(banner(u"recordWarning"), standing);
}

TEST_F(HistoryViewTest, ClearsNothingWhileFilesAreBeingMoved) {
    ran(Kind::organize, 1);
    tree({"a.pdf = 1"});
    model = previewed();
    view();
    model->organize();
    EXPECT_FALSE(widget(u"clearHistory")->isEnabled());
    EXPECT_EQ(widget(u"clearHistory")->toolTip(), u"Files are being moved right now."_s);
    tasks.finish();
    EXPECT_TRUE(widget(u"clearHistory")->isEnabled());
    EXPECT_EQ(runs().size(), 2);
}

TEST_F(HistoryViewTest, ShowsWhatAnotherProgramDidWhenItsWindowIsActivated) {
    ran(Kind::organize, 1);
    view();
    ran(Kind::undo, 1);
    EXPECT_EQ(runs().size(), 1);
    activate();
    tasks.finish();
    EXPECT_EQ(runs().size(), 2);
}
