#include "OrdovanApp/models/RecoveryModel.h"

#include "OrdovanApp/theme/ThemeEnvironment.h"
#include "tests/support/RowText.h"
#include "tests/support/TidyWorld.h"
#include "tests/support/WidgetTestMain.h"

#include <gmock/gmock.h>

#include <QAbstractItemModelTester>

using namespace ordovan::test;
using namespace Qt::StringLiterals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

class RecoveryModelTest : public TidyWorld {
protected:
    /// "/r" with these files organized.
    void organized(std::initializer_list<std::string_view> items) {
        tree(items);
        controller = previewed();
        controller->organize();
        tasks.finish();
    }
    /// Moves a file of "/r" to the Trash.
    void trash(const std::string& name, std::int64_t size) {
        if (!controller) controller = previewed();
        controller->trashBigFiles({{Url::file("/r/" + name), size}});
        tasks.finish();
    }
    RecoveryModel& show() {
        rows = std::make_unique<RecoveryModel>(*controller, theme);
        tester = std::make_unique<QAbstractItemModelTester>(rows.get(),
                                                            QAbstractItemModelTester::FailureReportingMode::Fatal);
        return *rows;
    }
    RecoveryModel& surveyed() {
        show();
        tasks.finish();
        return *rows;
    }

    ThemeEnvironment theme{AppTheme::lagoon};
    std::unique_ptr<TidyViewModel> controller;
    std::unique_ptr<RecoveryModel> rows;
    std::unique_ptr<QAbstractItemModelTester> tester;
};

}  // namespace

TEST_F(RecoveryModelTest, IsEmptyWithoutRecords) {
    controller = previewed();
    EXPECT_TRUE(surveyed().isEmpty());
    EXPECT_THAT(rowTexts(*rows), IsEmpty());
}

TEST_F(RecoveryModelTest, ListsOrganizedFilesTheLatestFirst) {
    organized({"a.pdf = 1", "work/b.pdf = 22"});
    EXPECT_THAT(rowTexts(surveyed()),
                ElementsAre("# 2 organized files can go back to where they came from.",
                            "b.pdf | ordovan+ / Documents · Undo returns it to r / work | 2 bytes",
                            "a.pdf | ordovan+ / Documents · Undo returns it to r | 1 byte"));
    EXPECT_EQ(rows->entryID(2), "/r/ordovan+/Documents/a.pdf");
    EXPECT_THAT(actionTexts(*rows, 1), ElementsAre("Put Just This File Back", "Reveal in Finder"));
    EXPECT_EQ(rows->content(1).actions.front().help, u"Put just this file back"_s);
}

TEST_F(RecoveryModelTest, SaysWhichOrganizedFileIsGoneBeforeItIsTried) {
    organized({"a.pdf = 1", "b.pdf = 22"});
    ASSERT_TRUE(memory.remove(Url::file("/r/ordovan+/Documents/a.pdf")));
    show();
    EXPECT_FALSE(rows->content(2).dimmed) << "not known yet";
    tasks.finish();
    EXPECT_EQ(rows->title(0), u"1 organized file can go back to where they came from."_s);
    EXPECT_TRUE(rows->content(2).dimmed);
    EXPECT_EQ(rows->content(2).detail,
              u"This file is no longer there. Missing: deleted or moved since organizing. Undo will skip it."_s);
    EXPECT_THAT(actionTexts(*rows, 2), ElementsAre("(Put Just This File Back)", "(Reveal in Finder)"));
    EXPECT_FALSE(rows->content(1).dimmed);
}

TEST_F(RecoveryModelTest, PutsNothingBackOfWhichItIsNotKnownWhetherItIsThere) {
    organized({"a.pdf = 1", "c.mov = 12345"});
    trash("ordovan+/Videos/c.mov", 5);
    show();
    EXPECT_FALSE(rows->isSurveyed());
    for (const int row : {1, 4}) {
        EXPECT_FALSE(rows->content(row).actions.front().enabled) << row;
        EXPECT_EQ(rows->content(row).actions.front().help, u"Looking whether it is still there…"_s) << row;
    }
    tasks.finish();
    EXPECT_TRUE(rows->isSurveyed());
    EXPECT_TRUE(rows->content(4).actions.front().enabled);
}

TEST_F(RecoveryModelTest, KeepsWhatItKnowsOfOtherFilesWhenOneGoesBack) {
    organized({"a.pdf = 1", "b.pdf = 22", "c.pdf = 333"});
    ASSERT_TRUE(memory.remove(Url::file("/r/ordovan+/Documents/a.pdf")));
    auto& model = surveyed();
    std::vector<std::string> atOnce;
    QObject::connect(&model, &RecoveryModel::modelReset, &model, [&] { atOnce = rowTexts(model); });
    controller->undo({model.entryID(2)});
    tasks.finish();
    EXPECT_THAT(atOnce, ElementsAre("# 1 organized file can go back to where they came from.",
                                    "c.pdf | ordovan+ / Documents · Undo returns it to r | 3 bytes",
                                    "a.pdf | This file is no longer there. Missing: deleted or moved since organizing. "
                                    "Undo will skip it. | 1 byte ~"));
    EXPECT_EQ(rowTexts(model), atOnce);
}

TEST_F(RecoveryModelTest, KnowsOnlyOfNewFilesNothing) {
    tree({"a.mov = 1", "b.mov = 2"});
    trash("a.mov", 1);
    auto& model = surveyed();
    controller->trashBigFiles({{Url::file("/r/b.mov"), 1}});
    bool wasKnown = false;
    QObject::connect(&model, &RecoveryModel::modelReset, &model, [&] {
        EXPECT_FALSE(model.content(1).actions.front().enabled) << "the new one";
        wasKnown = model.content(2).actions.front().enabled;
    });
    tasks.finish();
    EXPECT_TRUE(wasKnown);
}

TEST_F(RecoveryModelTest, ForgetsInAnotherFolderWhatCouldGoBack) {
    tree({"a.mov = 12345"});
    trash("a.mov", 5);
    auto& model = surveyed();
    memory.makeDirectory("/other");
    controller->chooseFolder(Url::file("/other"));
    EXPECT_THAT(actionTexts(model, 1), ElementsAre("(Put Back from Trash)", "(Show in the Trash)"));
}

TEST_F(RecoveryModelTest, ShowsWhatTheSearchFoundUntilItIsLookedUpAnew) {
    organized({"a.pdf = 1", "b.pdf = 22", "c.mov = 12345"});
    auto& model = surveyed();
    model.setQuery(u"pdf"_s);
    std::vector<std::vector<std::string>> shown;
    QObject::connect(&model, &RecoveryModel::modelReset, &model, [&] {
        shown.emplace_back();
        for (int row = 1; row < model.rowCount(); ++row) shown.back().push_back(model.title(row).toStdString());
    });
    controller->undo({model.entryID(1)});
    tasks.finish();
    ASSERT_FALSE(shown.empty());
    for (const auto& titles : shown) EXPECT_THAT(titles, ElementsAre("a.pdf"));
}

TEST_F(RecoveryModelTest, SearchesOnceItKnowsTheNames) {
    organized({"a.pdf = 1", "b.pdf = 22"});
    auto& model = show();
    model.setQuery(u"b.pdf"_s);
    EXPECT_EQ(model.rowCount(), 3) << "not searched on this thread";
    tasks.finish();
    EXPECT_EQ(model.rowCount(), 2);
}

TEST_F(RecoveryModelTest, ListsFilesInTheTrash) {
    tree({"old/a.mov = 12345"});
    trash("old/a.mov", 5);
    EXPECT_THAT(rowTexts(surveyed()),
                ElementsAre("# 1 file in the Trash can be put back (from Duplicates or Big Files).",
                            "a.mov | In the Trash · 5 bytes · Put Back returns it to r / old"));
    EXPECT_EQ(rows->entryID(1), "/r/old/a.mov");
    EXPECT_EQ(rows->url(1), Url::file(controller->trashRecord()->entries.front().trashed()));
    EXPECT_THAT(actionTexts(*rows, 1), ElementsAre("Put Back from Trash", "Show in the Trash"));
}

TEST_F(RecoveryModelTest, SaysWhatIsNoLongerInTheTrash) {
    tree({"a.mov = 12345"});
    trash("a.mov", 5);
    ASSERT_TRUE(memory.remove(Url::file(controller->trashRecord()->entries.front().trashed())));
    EXPECT_THAT(rowTexts(surveyed()),
                ElementsAre("# 0 files in the Trash can be put back (from Duplicates or Big Files).",
                            "a.mov | No longer in the Trash (emptied or moved), so it can't be put back from here. ~"));
    EXPECT_THAT(actionTexts(*rows, 1), ElementsAre("(Put Back from Trash)", "(Show in the Trash)"));
}

TEST_F(RecoveryModelTest, TellsInItsToolTipWhatDoesNotFitIntoARow) {
    organized({"papers/a.pdf = 1", "c.mov = 12345"});
    trash("ordovan+/Videos/c.mov", 5);
    surveyed();
    EXPECT_EQ(rows->content(2).toolTip, u"/r/ordovan+/Documents/a.pdf · Undo returns it to /r/papers/a.pdf"_s);
    EXPECT_EQ(rows->content(4).toolTip, u"In the Trash · 5 bytes · Put Back returns it to /r/ordovan+/Videos/c.mov"_s);
    const QString gone =
        u"This file is no longer there. Missing: deleted or moved since organizing. Undo will skip it."_s;
    EXPECT_EQ(rows->content(1).toolTip, u"/r/ordovan+/Videos/c.mov\n"_s + gone);
}

TEST_F(RecoveryModelTest, SaysOfEachDisabledButtonWhy) {
    organized({"c.mov = 12345"});
    trash("ordovan+/Videos/c.mov", 5);
    ASSERT_TRUE(memory.remove(Url::file(controller->trashRecord()->entries.front().trashed())));
    surveyed();
    for (const int row : {1, 3}) {
        const RowContent content = rows->content(row);
        for (const RowAction& action : content.actions) {
            EXPECT_FALSE(action.enabled) << row;
            EXPECT_EQ(action.help, content.detail) << row;
        }
    }
}

TEST_F(RecoveryModelTest, PutsNothingBackOutsideOfTheChosenFolder) {
    tree({"a.mov = 12345"});
    trash("a.mov", 5);
    ordovan::testing::build(memory, "/other", {"b.txt = 1"});
    controller->chooseFolder(Url::file("/other"));
    tasks.finish();
    EXPECT_THAT(actionTexts(surveyed(), 1), ElementsAre("(Put Back from Trash)", "Show in the Trash"));
    EXPECT_EQ(rows->content(1).actions.front().help, u"Choose the folder that it came from first."_s);
}

TEST_F(RecoveryModelTest, ShowsBothGroupsAndSearchesThem) {
    organized({"a.pdf = 1", "b.pdf = 22", "c.mov = 12345"});
    trash("ordovan+/Videos/c.mov", 5);
    auto& model = surveyed();
    EXPECT_THAT(std::vector<int>(model.heads().begin(), model.heads().end()), ElementsAre(0, 4));
    model.setQuery(u"mov"_s);
    EXPECT_EQ(model.rowCount(), 4);
    model.setQuery(u"b.pdf"_s);
    EXPECT_EQ(model.rowCount(), 2);
    EXPECT_EQ(model.entryID(1), "/r/ordovan+/Documents/b.pdf");
    model.setQuery(u"nowhere"_s);
    EXPECT_EQ(model.rowCount(), 0);
    EXPECT_FALSE(model.isEmpty());
}

TEST_F(RecoveryModelTest, SearchesBelowTheChosenFolder) {
    organized({"a.pdf = 1", "c.mov = 12345"});
    trash("ordovan+/Videos/c.mov", 5);
    RecoveryModel& model = surveyed();
    model.setQuery(u"documents/"_s);
    EXPECT_EQ(model.rowCount(), 2);
    model.setQuery(u"/r/"_s);
    EXPECT_EQ(model.rowCount(), 0) << "every file lies there";
}

TEST_F(RecoveryModelTest, FollowsTheRecords) {
    organized({"a.pdf = 1", "b.pdf = 22"});
    auto& model = surveyed();
    controller->undo({model.entryID(1)});
    tasks.finish();
    EXPECT_EQ(model.rowCount(), 2);
    controller->undo();
    tasks.finish();
    EXPECT_TRUE(model.isEmpty());
}

TEST_F(RecoveryModelTest, SaysWhyNothingCanBePutBackNow) {
    organized({"a.pdf = 1"});
    auto& model = surveyed();
    model.setLocked(u"Files are being moved."_s);
    EXPECT_THAT(actionTexts(model, 1), ElementsAre("(Put Just This File Back)", "Reveal in Finder"));
    EXPECT_EQ(model.content(1).actions.front().help, u"Files are being moved."_s);
}

TEST_F(RecoveryModelTest, SurvivesAnAnswerThatComesAfterItsEnd) {
    organized({"a.pdf = 1"});
    show();
    tester.reset();
    rows.reset();
    tasks.finish();
}
