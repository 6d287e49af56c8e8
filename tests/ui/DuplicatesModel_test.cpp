#include "OrdovanApp/models/DuplicatesModel.h"

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

class DuplicatesModelTest : public TidyWorld {
protected:
    DuplicatesModel& show(std::initializer_list<std::string_view> items) {
        tree(items);
        controller = previewed();
        controller->findDuplicates();
        tasks.finish();
        rows = std::make_unique<DuplicatesModel>(*controller, theme);
        tester = std::make_unique<QAbstractItemModelTester>(rows.get(),
                                                            QAbstractItemModelTester::FailureReportingMode::Fatal);
        return *rows;
    }

    ThemeEnvironment theme{AppTheme::lagoon};
    std::unique_ptr<TidyViewModel> controller;
    std::unique_ptr<DuplicatesModel> rows;
    std::unique_ptr<QAbstractItemModelTester> tester;
};

}  // namespace

TEST_F(DuplicatesModelTest, ShowsACardForEachGroup) {
    const auto& model =
        show({"a.mov = 12345678", "old/b.mov = 12345678", "c.txt = xy", "d.txt = xy", "e.txt = xy", "f.txt = z"});
    EXPECT_THAT(rowTexts(model),
                ElementsAre("# 2 identical copies · 8 bytes | frees 8 bytes", ::testing::StartsWith("(o) a.mov"),
                            ::testing::StartsWith("( ) b.mov"), "# 3 identical copies · 2 bytes | frees 4 bytes",
                            ::testing::StartsWith("(o) c.txt"), ::testing::StartsWith("( ) d.txt"),
                            ::testing::StartsWith("( ) e.txt")));
    EXPECT_EQ(model.groups(), 2);
    EXPECT_EQ(model.extras(), 3);
    EXPECT_EQ(model.reclaimableBytes(), 12);
}

TEST_F(DuplicatesModelTest, SaysWhereACopyIsAndWhatBecomesOfIt) {
    tree({"a.mov = same", "old/b.mov = same"});
    memory.setModified("/r/old/b.mov", 1'763'725'000'000'000'000);
    const auto& model = show({});
    EXPECT_EQ(model.content(2).detail, u"r / old · 21 Nov 2025"_s);
    EXPECT_EQ(model.content(1).chip->text, u"kept"_s);
    EXPECT_EQ(model.content(2).chip->text, u"extra"_s);
    EXPECT_FALSE(model.content(1).dimmed);
    EXPECT_TRUE(model.content(2).dimmed);
    EXPECT_THAT(actionTexts(model, 1), ElementsAre("(Keep this copy instead)", "Reveal in Finder"));
    EXPECT_THAT(actionTexts(model, 2), ElementsAre("Keep this copy instead", "Reveal in Finder"));
    EXPECT_EQ(model.url(2), Url::file("/r/old/b.mov"));
}

TEST_F(DuplicatesModelTest, KeepsTheCopyThatIsChosen) {
    auto& model = show({"a.mov = same", "b.mov = same"});
    model.toggle(2);
    EXPECT_FALSE(model.content(1).marked);
    EXPECT_TRUE(model.content(2).marked);
    EXPECT_EQ(controller->keeper(controller->duplicateReport()->groups.front()), Url::file("/r/b.mov"));
}

TEST_F(DuplicatesModelTest, FollowsAnAutomaticPick) {
    auto& model = show({"a.mov = same", "deep/down/b.mov = same"});
    int changes = 0;
    QObject::connect(&model, &QAbstractItemModel::dataChanged, [&] { ++changes; });
    controller->autoPick(OrdovanKeepPolicy::deepestPath);
    EXPECT_TRUE(model.content(2).marked);
    EXPECT_EQ(changes, 1);
}

TEST_F(DuplicatesModelTest, ShowsWholeGroupsForASearch) {
    auto& model = show({"alpha.mov = same", "beta.mov = same", "c.txt = xy", "d.txt = xy"});
    model.setQuery(u"BETA"_s);
    EXPECT_EQ(model.rowCount(), 3);
    EXPECT_EQ(model.title(1), u"alpha.mov"_s);
    model.setQuery(u"nothing"_s);
    EXPECT_EQ(model.rowCount(), 0);
    EXPECT_EQ(model.groups(), 2);
}

TEST_F(DuplicatesModelTest, KeepsTheChoiceWhileLocked) {
    auto& model = show({"a.mov = same", "b.mov = same"});
    EXPECT_TRUE(model.content(1).enabled);
    model.setLocked(u"Files are being moved to the Trash."_s);
    EXPECT_FALSE(model.content(1).enabled);
    model.toggle(2);
    EXPECT_TRUE(model.content(1).marked);
    EXPECT_EQ(model.content(2).toolTip, u"Files are being moved to the Trash."_s);
    EXPECT_EQ(model.content(2).actions.front().help, u"Files are being moved to the Trash."_s);
    EXPECT_THAT(actionTexts(model, 2), ElementsAre("(Keep this copy instead)", "Reveal in Finder"));
}

TEST_F(DuplicatesModelTest, SaysWhyTheKeptCopyCanNotBeChosen) {
    const auto& model = show({"a.mov = same", "b.mov = same"});
    EXPECT_EQ(model.content(1).actions.front().help, u"This copy is kept."_s);
    EXPECT_EQ(model.content(2).actions.front().help, QString());
}

TEST_F(DuplicatesModelTest, CountsTheExtrasThatASearchHides) {
    auto& model = show({"alpha.mov = same", "beta.mov = same", "c.txt = xy", "d.txt = xy", "e.txt = xy"});
    EXPECT_EQ(model.hiddenExtras(), 0);
    model.setQuery(u"BETA"_s);
    EXPECT_EQ(model.hiddenExtras(), 2);
    model.setQuery(u"nothing"_s);
    EXPECT_EQ(model.hiddenExtras(), 3);
}

TEST_F(DuplicatesModelTest, HasNoRowsWithoutDuplicates) {
    EXPECT_THAT(rowTexts(show({"a.txt = 1", "b.txt = 2"})), IsEmpty());
}
