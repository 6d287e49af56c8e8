#include "OrdovanApp/models/HistoryModel.h"

#include "OrdovanApp/theme/ThemeEnvironment.h"
#include "tests/support/RowText.h"
#include "tests/support/TidyWorld.h"
#include "tests/support/WidgetTestMain.h"

#include <gmock/gmock.h>

#include <QAbstractItemModelTester>

#include <ctime>

using namespace ordovan::test;
using namespace Qt::StringLiterals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

using Kind = OrdovanRunRecord::Kind;

class HistoryModelTest : public TidyWorld {
protected:
    HistoryModelTest() {
        ::setenv("TZ", "UTC", 1);
        ::tzset();
    }
    void ran(Kind kind, double epoch, std::int64_t moved, std::int64_t skipped = 0, std::int64_t failed = 0) {
        OrdovanRunRecord record = OrdovanRunRecord::make(kind, {}, Url::file("/home/ada/Downloads"), epoch);
        record.moved = moved;
        record.skipped = skipped;
        record.failed = failed;
        ASSERT_TRUE(history.add(record, {}, epoch).saved);
    }
    HistoryModel& show() {
        controller = make();
        tasks.finish();
        rows = std::make_unique<HistoryModel>(*controller, theme, [this] { return today; });
        tester = std::make_unique<QAbstractItemModelTester>(rows.get(),
                                                            QAbstractItemModelTester::FailureReportingMode::Fatal);
        return *rows;
    }

    static constexpr double day = 86'400;
    double today = 1'763'725'000;  // 21 Nov 2025, 11:36 UTC
    ThemeEnvironment theme{AppTheme::lagoon};
    std::unique_ptr<TidyViewModel> controller;
    std::unique_ptr<HistoryModel> rows;
    std::unique_ptr<QAbstractItemModelTester> tester;
};

}  // namespace

TEST_F(HistoryModelTest, GroupsRunsByTheirLocalDay) {
    ran(Kind::organize, today - 4 * day, 12);
    ran(Kind::trash, today - 3600, 29);
    ran(Kind::organize, today, 1, 2, 3);
    EXPECT_THAT(rowTexts(show()), ElementsAre("# Today", "Organized 1 file in Downloads | 2 skipped · 3 failed | 11:36",
                                              "Moved 29 duplicate files to the Trash in Downloads | 10:36",
                                              "# Monday, 17 November", "Organized 12 files in Downloads | 11:36"));
    EXPECT_TRUE(rows->content(1).toolTip.contains(u"21 Nov 2025 11:36"_s));
}

TEST_F(HistoryModelTest, ShowsOnlyCountsThatAreNotZero) {
    ran(Kind::undo, today, 1, 0, 1);
    EXPECT_EQ(show().content(1).chip->text, u"1 failed"_s);
}

TEST_F(HistoryModelTest, ShowsOneKind) {
    ran(Kind::organize, today - day, 12);
    ran(Kind::restoreTrash, today, 1);
    auto& model = show();
    model.setKind(Kind::organize);
    EXPECT_EQ(model.rowCount(), 2);
    EXPECT_EQ(model.title(1), u"Organized 12 files in Downloads"_s);
    model.setKind(Kind::undo);
    EXPECT_EQ(model.rowCount(), 0);
    EXPECT_FALSE(model.isEmpty());
    model.setKind(std::nullopt);
    EXPECT_EQ(model.rowCount(), 4);
}

TEST_F(HistoryModelTest, FollowsTheHistory) {
    ran(Kind::organize, today, 12);
    auto& model = show();
    controller->clearHistory();
    tasks.finish();
    EXPECT_TRUE(model.isEmpty());
    EXPECT_THAT(rowTexts(model), IsEmpty());
}

TEST_F(HistoryModelTest, GivesEachKindItsIcon) {
    for (const Kind kind : {Kind::restoreTrash, Kind::trash, Kind::undo, Kind::organize}) ran(kind, today, 1);
    const auto& model = show();
    EXPECT_EQ(model.content(1).glyph, Glyph::inbox);
    EXPECT_EQ(model.content(2).glyph, Glyph::undo);
    EXPECT_EQ(model.content(3).glyph, Glyph::trash);
    EXPECT_EQ(model.content(4).glyph, Glyph::recovery);
}
