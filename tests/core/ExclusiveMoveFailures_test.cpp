// Exclusive moves where replies are lost, and where what was done can not be seen.

#include "tests/support/ExclusiveMoves.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <string>

using namespace ordovan::test;
using ordovan::MoveWays;

namespace {

/// The reply to a call says that it was not done, and it was.
class ExclusiveMoveWithLostReplies : public testing::Test {
protected:
    ExclusiveMoveWithLostReplies() { t.write("a", "content"); }
    ~ExclusiveMoveWithLostReplies() override {
        linkReply = renameReply = 0;
        hidden = {};
        examination = {};
        atExamination = nullptr;
    }
    void expectOnly(const char* name) {
        EXPECT_EQ(t.read(name), "content");
        EXPECT_EQ(t.count(), 1u);
    }
    TempFolder t;
};

TEST_F(ExclusiveMoveWithLostReplies, GoesOnWhenTheLinkWasMade) {
    for (const int reply : {EIO, EEXIST, ETIMEDOUT}) {
        for (const MoveWays ways : {byLink, byLinkPlainly}) {
            linkReply = reply;
            EXPECT_EQ(move(t, "a", "b", ways), 0);
            expectOnly("b");
            std::filesystem::rename(t.path("b"), t.path("a"));
        }
    }
}

TEST_F(ExclusiveMoveWithLostReplies, LeavesANameThatTheFileHadBefore) {
    std::filesystem::create_hard_link(t.path("a"), t.path("b"));
    linkRefusal = EIO;
    EXPECT_EQ(move(t, "a", "b", byLink), EIO);
    linkRefusal = 0;
    EXPECT_EQ(t.count(), 2u);
}

TEST_F(ExclusiveMoveWithLostReplies, TakesTheLinkBackThatItCanNotSee) {
    linkReply = EIO;
    atExamination = [&] { examination = {t.path("b"), EIO}; };
    skip = 0;
    EXPECT_EQ(move(t, "a", "b", byLink), EIO);
    expectOnly("a");
}

TEST_F(ExclusiveMoveWithLostReplies, TouchesNothingUnseenWhereSomethingStoodAlready) {
    linkReply = EEXIST;
    atExamination = [&] { examination = {t.path("b"), EIO}; };
    skip = 0;
    EXPECT_EQ(move(t, "a", "b", byLink), EEXIST);
    EXPECT_EQ(t.read("a"), "content");
    EXPECT_EQ(t.count(), 2u);
}

TEST_F(ExclusiveMoveWithLostReplies, GoesOnWhenTheOldNameWasHidden) {
    for (const int reply : {EIO, ENOENT}) {
        renameReply = reply;
        EXPECT_EQ(move(t, "a", "b", byLink), 0);
        expectOnly("b");
        std::filesystem::rename(t.path("b"), t.path("a"));
    }
}

TEST_F(ExclusiveMoveWithLostReplies, TakesTheLinkBackWhenTheOldNameCanNotBeHidden) {
    hidden.rename = EBUSY;
    EXPECT_EQ(move(t, "a", "b", byLink), EBUSY);
    expectOnly("a");
}

TEST_F(ExclusiveMoveWithLostReplies, GoesBackWhenTheHiddenNameCanNotBeSeen) {
    hidden.examination = EIO;
    EXPECT_EQ(move(t, "a", "b", byLink), EIO);
    expectOnly("a");
}

TEST_F(ExclusiveMoveWithLostReplies, HasItsOldNameWhenTheHiddenOneStays) {
    hidden.removal = EBUSY;
    EXPECT_EQ(move(t, "a", "b", byLink), EBUSY);
    EXPECT_EQ(t.read("a"), "content");
    EXPECT_FALSE(t.has("b"));
    EXPECT_EQ(t.count(), 2u) << "the hidden name, which the record of the run tells";
}

TEST_F(ExclusiveMoveWithLostReplies, HasMovedWhenTheHiddenNameStaysAndTheOldOneIsTaken) {
    hidden.removal = EBUSY;
    atExamination = [&] { t.write("a", "new"); };
    skip = 2;
    EXPECT_EQ(move(t, "a", "b", byLink), 0);
    EXPECT_EQ(t.read("a"), "new");
    EXPECT_EQ(t.read("b"), "content");
}

/// Moves "a" to "b"; from the examination after `skipped` others on, `b` can not be examined.
class ExclusiveMoveInTheDark : public testing::Test {
protected:
    ExclusiveMoveInTheDark() { t.write("a", "content"); }
    ~ExclusiveMoveInTheDark() override {
        atExamination = nullptr;
        examination = removal = {};
        openFileRefusal = 0;
    }
    int moveBlind(MoveWays ways, int skipped, int error = EIO) {
        atExamination = [=, this] { examination = {t.path("b"), error}; };
        skip = skipped;
        const int moved = move(t, "a", "b", ways);
        examination = {};
        return moved;
    }
    void expectOnlyTheOldName() {
        EXPECT_EQ(t.read("a"), "content");
        EXPECT_EQ(t.count(), 1u);
    }
    TempFolder t;
};

TEST_F(ExclusiveMoveInTheDark, TakesTheLinkBackThatItCanNotSee) {
    EXPECT_EQ(moveBlind(byLinkPlainly, 0), EIO);
    expectOnlyTheOldName();
}

TEST_F(ExclusiveMoveInTheDark, TakesTheLinkBackOfAFileWithOtherNames) {
    std::filesystem::create_hard_link(t.path("a"), t.path("other"));
    EXPECT_EQ(moveBlind(byLinkPlainly, 0), EIO);
    EXPECT_FALSE(t.has("b"));
    EXPECT_EQ(t.count(), 2u);
}

TEST_F(ExclusiveMoveInTheDark, TakesTheLinkBackWhenTheOldNameStays) {
    removal = {t.path("a"), EBUSY};
    EXPECT_EQ(move(t, "a", "b", byLinkPlainly), EBUSY);
    expectOnlyTheOldName();
    EXPECT_EQ(moveBlind(byLinkPlainly, 4), EBUSY);  // looked at: a, b, a, a, then b once more
    expectOnlyTheOldName();
}

TEST_F(ExclusiveMoveInTheDark, KeepsTheLinkWhenItIsTheOnlyName) {
    atExamination = [&] {
        std::filesystem::remove(t.path("a"));
        examination = {t.path("b"), EIO};
    };
    skip = 1;
    EXPECT_EQ(move(t, "a", "b", byLinkPlainly), EIO);
    EXPECT_EQ(t.read("b"), "content");
}

TEST_F(ExclusiveMoveInTheDark, KeepsAFileThatTookThePlaceOfTheLink) {
    t.write("theirs", "someone else's");
    atExamination = [&] {
        std::filesystem::rename(t.path("theirs"), t.path("b"));
        examination = {t.path("b"), EIO};
    };
    skip = 1;
    EXPECT_EQ(move(t, "a", "b", byLinkPlainly), EIO);
    EXPECT_EQ(t.read("b"), "someone else's");
    EXPECT_EQ(t.read("a"), "content");
}

TEST_F(ExclusiveMoveInTheDark, TakesTheLinkBackWhenTheOldNameCanNotBeSeenForAMoment) {
    for (const int error : {EIO, ESTALE, EACCES}) {
        atExamination = [&, error] {
            examination = {t.path("a"), error};
            atExamination = [] { examination = {}; };
            skip = 0;
        };
        skip = 2;  // looked at: a, b, then a once more
        EXPECT_EQ(move(t, "a", "b", byLinkPlainly), error);
        expectOnlyTheOldName();
    }
}

TEST_F(ExclusiveMoveInTheDark, ClaimsNoSuccessWhileTheOldNameCanNotBeSeen) {
    atExamination = [&] { examination = {t.path("a"), EIO}; };
    skip = 2;
    EXPECT_EQ(move(t, "a", "b", byLinkPlainly), EIO);
    EXPECT_EQ(t.read("a"), "content");
    EXPECT_EQ(t.read("b"), "content");
}

TEST_F(ExclusiveMoveInTheDark, TakesThePlaceholderBackThatItCanNotSee) {
    EXPECT_EQ(moveBlind(byPlaceholder, 0), EIO);
    expectOnlyTheOldName();
}

TEST_F(ExclusiveMoveInTheDark, TakesThePlaceholderBackThatItCanNotLookInto) {
    openFileRefusal = EIO;
    EXPECT_EQ(move(t, "a", "b", byPlaceholder), EIO);
    openFileRefusal = 0;
    expectOnlyTheOldName();
}

TEST_F(ExclusiveMoveInTheDark, TakesThePlaceholderBackWhenTheSourceGoes) {
    atExamination = [&] { std::filesystem::rename(t.path("a"), t.path("c")); };
    skip = 1;
    EXPECT_EQ(move(t, "a", "b", byPlaceholder), ENOENT);
    EXPECT_EQ(t.read("c"), "content");
    EXPECT_EQ(t.count(), 1u);
}

TEST_F(ExclusiveMoveInTheDark, TakesThePlaceholderBackWhenTheSourceGoesAndItCanNotSee) {
    atExamination = [&] {
        std::filesystem::rename(t.path("a"), t.path("c"));
        atExamination = [&] { examination = {t.path("b"), EIO}; };
        skip = 0;
    };
    skip = 1;
    EXPECT_EQ(move(t, "a", "b", byPlaceholder), ENOENT);
    EXPECT_EQ(t.count(), 1u);
}

TEST_F(ExclusiveMoveInTheDark, KeepsWhatWasWrittenIntoThePlaceholder) {
    atExamination = [&] {
        t.write("b", "someone else's");
        examination = {t.path("b"), EIO};
    };
    skip = 1;
    EXPECT_EQ(move(t, "a", "b", byPlaceholder), EIO);
    EXPECT_EQ(t.read("b"), "someone else's");
    EXPECT_EQ(t.read("a"), "content");
}

TEST_F(ExclusiveMoveInTheDark, KeepsAFileThatTookThePlaceOfThePlaceholder) {
    t.write("theirs", "");
    atExamination = [&] {
        std::filesystem::rename(t.path("theirs"), t.path("b"));
        examination = {t.path("b"), EIO};
    };
    skip = 1;
    EXPECT_EQ(move(t, "a", "b", byPlaceholder), EIO);
    EXPECT_EQ(t.read("a"), "content");
    EXPECT_EQ(t.count(), 2u);
}

TEST_F(ExclusiveMoveInTheDark, TakesTheFolderPlaceholderBackWhenTheRenameFails) {
    t.makeFolder("folder/inside");
    EXPECT_EQ(move(t, "folder", "folder/inside/b", byPlaceholder), EINVAL);
    EXPECT_EQ(t.count("folder/inside"), 0u);
}

}  // namespace
