#include "OrdovanApp/theme/RowsGeometry.h"

#include "tests/support/QtTestMain.h"

#include <numeric>
#include <vector>

namespace {

constexpr RowsGeometry::Metrics sections{.width = 600};
constexpr RowsGeometry::Metrics cards{.width = 1000, .headHeight = 52, .cards = true};

/// Every row is found again at the middle of its own rectangle, in order and without overlap.
void expectEachRowWhereItIs(const RowsGeometry& geometry) {
    for (int row = 0; row < geometry.rowCount(); ++row) {
        const QRect rect = geometry.rowRect(row);
        EXPECT_EQ(geometry.rowAt(rect.center()), row);
        EXPECT_EQ(geometry.rowAt(rect.topLeft()), row);
        EXPECT_EQ(geometry.rowAt(rect.bottomRight()), row);
        EXPECT_EQ(geometry.rowsIn(geometry.groupOf(row), rect.top(), rect.bottom() + 1),
                  (RowsGeometry::Range{row, row + 1}));
    }
}

}  // namespace

TEST(RowsGeometry, StandsHeadsAndRowsOnTopOfEachOther) {
    const std::vector heads{0, 3};
    RowsGeometry geometry;
    geometry.set(heads, 5, sections);
    std::vector<int> tops;
    for (int row = 0; row < 5; ++row) tops.push_back(geometry.rowRect(row).top());
    EXPECT_EQ(tops, (std::vector{0, 36, 90, 144, 180}));
    EXPECT_EQ(geometry.height(), 234);
    expectEachRowWhereItIs(geometry);
}

TEST(RowsGeometry, TakesRowsWithoutAnyHead) {
    RowsGeometry geometry;
    geometry.set({}, 4, sections);
    EXPECT_EQ(geometry.height(), 4 * 54);
    EXPECT_EQ(geometry.groupCount(), 1);
    EXPECT_FALSE(geometry.hasHead(0));
    expectEachRowWhereItIs(geometry);
}

TEST(RowsGeometry, TakesRowsBeforeTheFirstHead) {
    const std::vector heads{2};
    RowsGeometry geometry;
    geometry.set(heads, 4, sections);
    EXPECT_EQ(geometry.rowRect(2), QRect(0, 108, 600, 36));
    EXPECT_EQ(geometry.rowsOf(0), (RowsGeometry::Range{0, 2}));
    EXPECT_EQ(geometry.rowsOf(1), (RowsGeometry::Range{2, 4}));
    expectEachRowWhereItIs(geometry);
}

TEST(RowsGeometry, HasNothingWithoutRows) {
    for (const auto& metrics : {sections, cards}) {
        RowsGeometry geometry;
        geometry.set({}, 0, metrics);
        EXPECT_EQ(geometry.height(), 0);
        EXPECT_EQ(geometry.rowAt({5, 5}), -1);
        EXPECT_EQ(geometry.groupsIn(0, 500), RowsGeometry::Range{});
        EXPECT_TRUE(geometry.rowRect(0).isEmpty());
    }
}

TEST(RowsGeometry, FindsNoRowBesideOrBelow) {
    const std::vector heads{0};
    RowsGeometry geometry;
    geometry.set(heads, 2, sections);
    EXPECT_EQ(geometry.rowAt({-1, 10}), -1);
    EXPECT_EQ(geometry.rowAt({600, 10}), -1);
    EXPECT_EQ(geometry.rowAt({10, 90}), -1);
}

TEST(RowsGeometry, PutsCardsInAsManyColumnsAsFit) {
    const std::vector heads{0, 4, 7};
    RowsGeometry geometry;
    geometry.set(heads, 9, cards);
    EXPECT_EQ(geometry.columns(), 2);
    EXPECT_EQ(geometry.cardRect(0), QRect(0, 0, 494, 216));
    EXPECT_EQ(geometry.cardRect(1), QRect(506, 0, 494, 216));
    EXPECT_EQ(geometry.cardRect(2), QRect(0, 228, 494, 108));
    EXPECT_EQ(geometry.height(), 336);
    EXPECT_EQ(geometry.rowRect(5), QRect(507, 53, 492, 54));
    EXPECT_EQ(geometry.rowAt({600, 200}), -1) << "below the last row of the shorter card";
    EXPECT_EQ(geometry.rowAt({500, 60}), -1) << "between two cards";
    expectEachRowWhereItIs(geometry);
}

TEST(RowsGeometry, PutsCardsBelowEachOtherWhereItIsNarrow) {
    const std::vector heads{0, 3};
    RowsGeometry geometry;
    geometry.set(heads, 5, {.width = 700, .headHeight = 52, .cards = true});
    EXPECT_EQ(geometry.columns(), 1);
    EXPECT_EQ(geometry.cardRect(1).top(), geometry.cardRect(0).bottom() + 1 + 12);
    expectEachRowWhereItIs(geometry);
}

TEST(RowsGeometry, LeavesAHeadOutsideOfItsCard) {
    const std::vector heads{0};
    RowsGeometry geometry;
    geometry.set(heads, 3, {.width = 500, .cards = true, .headsOutside = true});
    EXPECT_EQ(geometry.cardRect(0).top(), 36);
    EXPECT_EQ(geometry.cardRect(0).bottom() + 1, geometry.height());
    expectEachRowWhereItIs(geometry);
}

TEST(RowsGeometry, FindsTheGroupsInSight) {
    std::vector<int> heads(1000);
    std::iota(heads.begin(), heads.end(), 0);
    for (int& head : heads) head *= 101;
    RowsGeometry geometry;
    geometry.set(heads, 101'000, sections);
    constexpr int group = 36 + 100 * 54;
    EXPECT_EQ(geometry.groupsIn(500 * group - 1, 500 * group + 1), (RowsGeometry::Range{499, 501}));
    EXPECT_EQ(geometry.groupsIn(500 * group, 500 * group + 1), (RowsGeometry::Range{500, 501}));
    EXPECT_EQ(geometry.rowAt({1, 500 * group + 36}), 500 * 101 + 1);
}
