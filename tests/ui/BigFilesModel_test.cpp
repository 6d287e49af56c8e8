#include "OrdovanApp/models/BigFilesModel.h"

#include "OrdovanApp/theme/ThemeEnvironment.h"
#include "tests/support/RowText.h"
#include "tests/support/TidyWorld.h"
#include "tests/support/WidgetTestMain.h"

#include <gmock/gmock.h>

#include <QAbstractItemModelTester>

using namespace ordovan::test;
using namespace Qt::StringLiterals;
using ::testing::ElementsAre;

namespace {

class BigFilesModelTest : public TidyWorld {
protected:
    BigFilesModel& show(std::initializer_list<std::string_view> items) {
        tree(items);
        controller = previewed();
        rows = std::make_unique<BigFilesModel>(*controller, theme);
        tester = std::make_unique<QAbstractItemModelTester>(rows.get(),
                                                            QAbstractItemModelTester::FailureReportingMode::Fatal);
        return *rows;
    }
    static std::vector<std::string> names(const BigFilesModel& model) {
        std::vector<std::string> result;
        for (int row = 1; row < model.rowCount(); ++row) result.push_back(model.title(row).toStdString());
        return result;
    }

    ThemeEnvironment theme{AppTheme::lagoon};
    std::unique_ptr<TidyViewModel> controller;
    std::unique_ptr<BigFilesModel> rows;
    std::unique_ptr<QAbstractItemModelTester> tester;
};

}  // namespace

TEST_F(BigFilesModelTest, ShowsTheLargestFirst) {
    auto& model = show({"small.txt = 1", "work/big.mov = 1234567890", "middle.zip = 12345"});
    EXPECT_EQ(model.title(0), u"Largest files, biggest first"_s);
    EXPECT_THAT(names(model), ElementsAre("big.mov", "middle.zip", "small.txt"));
    EXPECT_EQ(model.content(1).columns.first(), u"10 bytes"_s);
    EXPECT_EQ(model.content(1).detail, u"r / work"_s);
    EXPECT_DOUBLE_EQ(model.content(1).share, 1);
    EXPECT_DOUBLE_EQ(model.content(2).share, 0.5);
    EXPECT_THAT(actionTexts(model, 1), ElementsAre("Quick Look", "Reveal in Finder", "Select for Trash"));
}

TEST_F(BigFilesModelTest, NarrowsBySizeKindAndName) {
    auto& model = show({"a.mov = 123456789", "b.mov = 1234", "a.zip = 12345678"});
    EXPECT_THAT(model.kinds(), ElementsAre(OrdovanFileCategory::videos, OrdovanFileCategory::archives));
    model.setMinimumBytes(8);
    EXPECT_THAT(names(model), ElementsAre("a.mov", "a.zip"));
    model.setKind(OrdovanFileCategory::videos);
    EXPECT_THAT(names(model), ElementsAre("a.mov"));
    model.setMinimumBytes(0);
    model.setQuery(u"B"_s);
    EXPECT_THAT(names(model), ElementsAre("b.mov"));
    model.setMinimumBytes(1000);
    EXPECT_EQ(model.rowCount(), 0);
    EXPECT_FALSE(model.hasFilesOfSize());
}

TEST_F(BigFilesModelTest, HoldsTicksThroughFilters) {
    auto& model = show({"a.mov = 123456789", "b.mov = 1234", "a.zip = 12345678"});
    model.toggle(1);
    model.toggle(2);
    EXPECT_EQ(model.ticked(), (BigFilesModel::Ticked{2, 17, 0}));
    model.setKind(OrdovanFileCategory::videos);
    EXPECT_EQ(model.ticked(), (BigFilesModel::Ticked{2, 17, 1}));
    EXPECT_TRUE(model.content(1).marked);
    model.toggle(1);
    const auto items = model.tickedItems();
    ASSERT_EQ(items.size(), 1U);
    EXPECT_EQ(items.front().url, Url::file("/r/a.zip"));
    EXPECT_EQ(items.front().expectedSize, 8);
}

TEST_F(BigFilesModelTest, HoldsTicksThroughPreviewsOfFilesThatAreStillThere) {
    auto& model = show({"a.mov = 123456789", "b.mov = 1234"});
    model.toggle(1);
    model.toggle(2);
    ASSERT_TRUE(memory.remove(Url::file("/r/a.mov")));
    controller->preview();
    tasks.finish();
    model.reload();
    EXPECT_EQ(model.ticked(), (BigFilesModel::Ticked{1, 4, 0}));
}

TEST_F(BigFilesModelTest, LetsTicksGoWithTheirFolder) {
    auto& model = show({"a.mov = 123456789", "sub/b.mov = 1234"});
    model.toggle(2);
    controller->chooseFolder(Url::file("/r/sub"));
    tasks.finish();
    model.reload();
    EXPECT_THAT(names(model), ElementsAre("b.mov"));
    EXPECT_EQ(model.ticked(), BigFilesModel::Ticked());
}

TEST_F(BigFilesModelTest, SaysOfATickWhatItDoes) {
    auto& model = show({"a.mov = 12"});
    EXPECT_EQ(model.content(1).description, u"Select for Trash"_s);
    EXPECT_EQ(model.content(1).markHelp, u"Select for Trash"_s);
    model.toggle(1);
    EXPECT_EQ(model.content(1).description, u"Leave Out of Trash"_s);
    EXPECT_EQ(model.content(1).markHelp, u"Leave Out of Trash"_s);
    EXPECT_THAT(actionTexts(model, 1), ElementsAre("Quick Look", "Reveal in Finder", "Leave Out of Trash"));
}

TEST_F(BigFilesModelTest, ShowsFiftyAtMost) {
    for (int i = 0; i < 60; ++i) {
        const std::string item = "f" + std::to_string(i) + " = x";
        tree({item});
    }
    EXPECT_EQ(names(show({})).size(), 50U);
}

TEST_F(BigFilesModelTest, KnowsOfInstallers) {
    auto& model = show({"a.mov = 12", "setup.dmg = 1"});
    model.setKind(OrdovanFileCategory::videos);
    EXPECT_TRUE(model.hasInstallers());
    ASSERT_TRUE(memory.remove(Url::file("/r/setup.dmg")));
    controller->preview();
    tasks.finish();
    model.reload();
    EXPECT_FALSE(model.hasInstallers());
}

TEST_F(BigFilesModelTest, KeepsTicksWhileLocked) {
    auto& model = show({"a.mov = 12"});
    EXPECT_TRUE(model.content(1).enabled);
    model.setLocked(u"Files are being moved to the Trash."_s);
    EXPECT_FALSE(model.content(1).enabled);
    model.toggle(1);
    EXPECT_EQ(model.ticked().files, 0);
    EXPECT_EQ(model.content(1).toolTip, u"Files are being moved to the Trash."_s);
    EXPECT_EQ(model.content(1).actions.back().help, u"Files are being moved to the Trash."_s);
    EXPECT_EQ(model.content(1).markHelp, u"Files are being moved to the Trash."_s);
}

TEST_F(BigFilesModelTest, HasNoRowsWithoutAPreview) {
    controller = make();
    EXPECT_EQ(BigFilesModel(*controller, theme).rowCount(), 0);
}
