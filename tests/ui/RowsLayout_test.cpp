#include "OrdovanApp/theme/RowsPainter.h"

#include "tests/support/WidgetTestMain.h"

using namespace Qt::StringLiterals;

namespace {

class RowsLayoutTest : public ::testing::Test {
protected:
    [[nodiscard]] RowsPainter::Layout layout(int width) const {
        return painter.layout(content, {0, 0, width, 54}, RowsPainter::Head::none);
    }
    void addTags(int count) {
        for (int i = 0; i < count; ++i) content.tags.append({u".ex%1"_s.arg(i), Qt::red});
    }

    ThemeEnvironment theme{AppTheme::lagoon};
    RowsPainter painter{theme};
    RowContent content{.mark = RowContent::Mark::grip,
                       .title = u"→ Papers"_s,
                       .detail = u"Files in the folder"_s,
                       .actions = {RowAction{.id = 1, .text = u"Delete"_s, .glyph = Glyph::trash, .glyphOnly = true}}};
};

}  // namespace

TEST_F(RowsLayoutTest, LeavesTheTitleRoomBesideManyTags) {
    addTags(20);
    for (const int width : {500, 800}) {
        const RowsPainter::Layout placed = layout(width);
        EXPECT_GE(placed.title.width(), 140) << width;
        EXPECT_GE(placed.detail.width(), 140) << width;
        EXPECT_FALSE(placed.tags.empty()) << width;
        EXPECT_LT(placed.tags.size(), 20U) << width;
        EXPECT_GT(placed.moreTags.left(), placed.tags.back().right()) << width;
        EXPECT_LT(placed.moreTags.right(), placed.title.left()) << width;
        EXPECT_LT(placed.title.right(), placed.buttons.front().rect.left()) << width;
        EXPECT_TRUE(painter.isElided(content, placed)) << width;
    }
}

TEST_F(RowsLayoutTest, ShowsAllTagsWhereThereIsRoom) {
    addTags(3);
    EXPECT_EQ(layout(500).tags.size(), 3U);
    EXPECT_TRUE(layout(500).moreTags.isEmpty());
    EXPECT_FALSE(painter.isElided(content, layout(500)));
}

TEST_F(RowsLayoutTest, ShowsOnlyHowManyTagsThereAreWhereNoneFits) {
    addTags(2);
    EXPECT_TRUE(layout(240).tags.empty());
    EXPECT_FALSE(layout(240).moreTags.isEmpty());
}
