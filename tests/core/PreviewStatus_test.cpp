#include "OrdovanCore/PreviewStatus.h"

#include <gtest/gtest.h>

using Status = OrdovanPreviewStatus;

TEST(PreviewStatus, CountsWhatIsReady) {
    EXPECT_EQ(Status::ready(12, 3).pulseSummary(), "12 proposed \u00b7 3 need review");
    EXPECT_EQ(Status::ready(12, 3).announcement(), "Preview ready. 12 proposed, 3 need review.");
}

TEST(PreviewStatus, AnnouncesNoReviewWhereNoneIsNeeded) {
    EXPECT_EQ(Status::ready(12, 0).pulseSummary(), "12 proposed \u00b7 0 need review");
    EXPECT_EQ(Status::ready(12, 0).announcement(), "Preview ready. 12 proposed.");
    EXPECT_EQ(Status::ready(0, 0).pulseSummary(), "0 proposed \u00b7 0 need review");
    EXPECT_EQ(Status::ready(0, 0).announcement(), "Preview ready. 0 proposed.");
}

TEST(PreviewStatus, AnnouncesOnlyFailureOfTheStatesWithoutCounts) {
    EXPECT_EQ(Status::idle().pulseSummary(), "No folder selected");
    EXPECT_EQ(Status::idle().announcement(), std::nullopt);
    EXPECT_EQ(Status::scanning().pulseSummary(), "Previewing\u2026");
    EXPECT_EQ(Status::scanning().announcement(), std::nullopt);
    EXPECT_EQ(Status::failed().pulseSummary(), "Preview unavailable");
    EXPECT_EQ(Status::failed().announcement(), "Preview unavailable. Check folder permissions and try again.");
}

TEST(PreviewStatus, IsEqualOnlyWithEqualCounts) {
    EXPECT_EQ(Status::ready(1, 2), Status::ready(1, 2));
    EXPECT_NE(Status::ready(1, 2), Status::ready(1, 3));
    EXPECT_NE(Status::ready(1, 2), Status::ready(2, 2));
    EXPECT_NE(Status::idle(), Status::scanning());
    EXPECT_NE(Status::ready(0, 0), Status::idle());
}

TEST(PreviewStatus, TellsItsCounts) {
    EXPECT_EQ(Status::ready(12, 3).proposed(), 12);
    EXPECT_EQ(Status::ready(12, 3).needReview(), 3);
    EXPECT_EQ(Status::idle().proposed(), 0);
}

TEST(PreviewStatus, TellsItsKind) {
    EXPECT_EQ(Status::ready(1, 2).kind(), Status::Case::ready);
    EXPECT_EQ(Status::idle().kind(), Status::Case::idle);
    EXPECT_EQ(Status::scanning().kind(), Status::Case::scanning);
    EXPECT_EQ(Status::failed().kind(), Status::Case::failed);
}
