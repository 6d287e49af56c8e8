// Exclusive moves that can not take back what they have made: whoever keeps a record has to be told, and of no others.

#include "tests/support/ExclusiveMoves.h"
#include "tests/support/TempFolder.h"
#include "tests/support/Unprivileged.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <functional>
#include <string>
#include <utility>

using namespace ordovan::test;
using ordovan::MoveWays;

namespace {

class ExclusiveMoveRemains : public testing::Test {
protected:
    ExclusiveMoveRemains() { t.write("a", "content"); }
    ~ExclusiveMoveRemains() override {
        atExamination = atRename = nullptr;
        examination = removal = {};
        hidden = {};
        renameReply = linkReply = openReply = linkRefusal = openFileRefusal = 0;
        isReadOnly = numbersByName = false;
    }
    /// Moves "a" to "b" and hears whether something may be left. Its error.
    int moved(MoveWays ways) {
        bool leavesSomething = false;
        ways.leavesSomething = &leavesSomething;
        const int error = move(t, "a", "b", ways);
        told = leavesSomething;
        return error;
    }
    /// Something happens at the examination after so many others.
    static void afterLooks(int looks, std::function<void()> action) {
        atExamination = std::move(action);
        skip = looks;
    }
    static void turnReadOnly() { isReadOnly = true; }

    TempFolder t;
    bool told = false;
};

TEST_F(ExclusiveMoveRemains, AreToldWhenTheVolumeTurnsReadOnlyBehindTheLink) {
    for (const MoveWays ways : {byLink, byLinkPlainly}) {
        afterLooks(1, turnReadOnly);
        EXPECT_EQ(moved(ways), EROFS);
        EXPECT_TRUE(told);
        EXPECT_EQ(inode(t.path("a")), inode(t.path("b")));
        isReadOnly = false;
        std::filesystem::remove(t.path("b"));
    }
}

TEST_F(ExclusiveMoveRemains, AreToldWhenTheVolumeTurnsReadOnlyBehindTheHiddenName) {
    atRename = [] { afterLooks(0, turnReadOnly); };
    EXPECT_EQ(moved(byLink), 0) << "it has its new name, and not its old one";
    EXPECT_TRUE(told);
    EXPECT_FALSE(t.has("a"));
    EXPECT_EQ(t.read("b"), "content");
    EXPECT_EQ(t.count(), 2U);
}

TEST_F(ExclusiveMoveRemains, AreToldWhenTheVolumeTurnsReadOnlyBehindThePlaceholder) {
    afterLooks(1, turnReadOnly);
    EXPECT_EQ(moved(byPlaceholder), EROFS);
    EXPECT_TRUE(told);
    EXPECT_EQ(t.read("a"), "content");
    EXPECT_TRUE(t.has("b"));
}

TEST_F(ExclusiveMoveRemains, AreToldWhenTheVolumeTurnsReadOnlyBehindTheFolderPlaceholder) {
    std::filesystem::remove(t.path("a"));
    t.makeFolder("a");
    atRename = turnReadOnly;
    EXPECT_EQ(moved(byPlaceholder), EROFS);
    EXPECT_TRUE(told);
    EXPECT_TRUE(t.has("b"));
}

TEST_F(ExclusiveMoveRemains, AreToldWhenTheFolderIsSaidNotToHaveMovedAndStandsThere) {
    std::filesystem::remove(t.path("a"));
    t.makeFolder("a/inside");
    renameReply = EIO;
    EXPECT_EQ(moved(byPlaceholder), EIO);
    EXPECT_TRUE(told);
    EXPECT_TRUE(t.has("b/inside"));
}

TEST_F(ExclusiveMoveRemains, AreNotToldWhereTheFolderPlaceholderIsTakenBack) {
    std::filesystem::remove(t.path("a"));
    t.makeFolder("a");
    atRename = [&] { std::filesystem::rename(t.path("a"), t.path("c")); };
    EXPECT_EQ(moved(byPlaceholder), ENOENT);
    EXPECT_FALSE(told);
    std::filesystem::rename(t.path("c"), t.path("a"));
    atRename = [&] {
        std::filesystem::rename(t.path("a"), t.path("c"));
        std::filesystem::remove(t.path("b"));
    };
    EXPECT_EQ(moved(byPlaceholder), ENOENT);
    EXPECT_FALSE(told);
    EXPECT_EQ(t.count(), 1U);
}

TEST_F(ExclusiveMoveRemains, AreToldWhenTheSecondNameCanNotBeRemoved) {
    hidden.rename = EBUSY;
    removal = {t.path("b"), EIO};
    EXPECT_EQ(moved(byLink), EBUSY);
    EXPECT_TRUE(told);
    EXPECT_EQ(t.count(), 2U);
}

TEST_F(ExclusiveMoveRemains, AreToldWhenTheSecondNameCanNotBeSeenNorRemoved) {
    linkReply = EIO;
    afterLooks(1, [&] { examination = {t.path("b"), EIO}; });
    removal = {t.path("b"), EIO};
    EXPECT_EQ(moved(byLink), EIO);
    EXPECT_TRUE(told);
    EXPECT_EQ(t.count(), 2U);
}

TEST_F(ExclusiveMoveRemains, AreToldWhenTheSecondNameStaysThoughTheHiddenOneIsGone) {
    hidden.removal = EBUSY;
    removal = {t.path("b"), EIO};
    atRename = [] {
        linkReply = EIO;  // when it gets its name back, which is seen then
        afterLooks(1, [] { hidden.removal = 0; });
    };
    EXPECT_EQ(moved(byLink), EBUSY);
    EXPECT_TRUE(told);
    EXPECT_TRUE(t.has("a") && t.has("b"));
    EXPECT_EQ(t.count(), 2U);
}

TEST_F(ExclusiveMoveRemains, AreToldWhenTheFirstNameCanNotBeSeen) {
    afterLooks(2, [&] { examination = {t.path("a"), EIO}; });
    EXPECT_EQ(moved(byLinkPlainly), EIO);
    EXPECT_TRUE(told);
    EXPECT_EQ(t.count(), 2U);
}

TEST_F(ExclusiveMoveRemains, AreToldWhenTheHiddenNameCanNotBeRemoved) {
    hidden.removal = EBUSY;
    EXPECT_EQ(moved(byLink), EBUSY);
    EXPECT_TRUE(told);
    EXPECT_FALSE(t.has("b"));
    EXPECT_EQ(t.count(), 2U);
}

TEST_F(ExclusiveMoveRemains, AreToldWhenTheHiddenNameCanNotBeRemovedAndTheOldOneIsTaken) {
    hidden.removal = EBUSY;
    afterLooks(2, [&] { t.write("a", "new"); });
    EXPECT_EQ(moved(byLink), 0);
    EXPECT_TRUE(told);
    EXPECT_EQ(t.count(), 3U);
}

TEST_F(ExclusiveMoveRemains, AreToldWhenTheHiddenNameCanNotBeSeen) {
    hidden.rename = EIO;
    hidden.examination = EIO;
    EXPECT_EQ(moved(byLink), EIO);
    EXPECT_TRUE(told);
    EXPECT_EQ(t.count(), 1U);
}

TEST_F(ExclusiveMoveRemains, AreToldWhenAnotherFileStaysHidden) {
    t.write("fresh", "new");
    atRename = [&] {
        std::filesystem::rename(t.path("fresh"), t.path("a"));
        afterLooks(0, [&] { t.write("a", "newer"); });
    };
    EXPECT_EQ(moved(byLink), 0);
    EXPECT_TRUE(told);
    EXPECT_EQ(t.read("a"), "newer");
    EXPECT_EQ(t.count(), 3U);
}

TEST_F(ExclusiveMoveRemains, AreNotToldWhereAnotherFileHasItsNameBack) {
    t.write("fresh", "new");
    atRename = [&] { std::filesystem::rename(t.path("fresh"), t.path("a")); };
    EXPECT_EQ(moved(byLink), 0);
    EXPECT_FALSE(told);
    EXPECT_EQ(t.count(), 2U);
}

TEST_F(ExclusiveMoveRemains, AreToldWhenTheNameSeemsTakenAndTheItemHasOneMore) {
    linkReply = EEXIST;
    afterLooks(1, [&] { examination = {t.path("b"), EIO}; });
    EXPECT_EQ(moved(byLink), EEXIST);
    EXPECT_TRUE(told);
    EXPECT_EQ(t.count(), 2U);
}

TEST_F(ExclusiveMoveRemains, AreNotToldWhenTheNameIsTakenByWhatCanNotBeSeen) {
    t.write("b", "theirs");
    examination = {t.path("b"), EIO};
    EXPECT_EQ(moved(byLink), EEXIST);
    EXPECT_FALSE(told);
}

TEST_F(ExclusiveMoveRemains, AreToldWhenWhatLooksLikeTheItemHasAnotherNumber) {
    numbersByName = true;
    linkReply = EIO;
    EXPECT_EQ(moved(byLink), EIO);
    EXPECT_TRUE(told);
    EXPECT_EQ(t.count(), 2U);
}

TEST_F(ExclusiveMoveRemains, AreToldWhenTheSecondNameOfAnotherNumberIsNotTakenBack) {
    numbersByName = true;
    hidden.rename = EBUSY;
    EXPECT_EQ(moved(byLink), EBUSY);
    EXPECT_TRUE(told);
    EXPECT_EQ(t.count(), 2U);
}

TEST_F(ExclusiveMoveRemains, AreNotToldWhenAnotherFileHasTheName) {
    t.write("b", "theirs");
    for (const bool byName : {false, true}) {
        numbersByName = byName;
        for (const int refusal : {EIO, ENOSPC, EROFS}) {
            linkRefusal = refusal;
            EXPECT_EQ(moved(byLink), refusal);
            EXPECT_FALSE(told);
        }
    }
}

TEST_F(ExclusiveMoveRemains, AreNotToldWhenTheNameIsTakenByWhatLooksLikeTheItem) {
    numbersByName = true;
    t.write("b", "another");
    std::filesystem::last_write_time(t.path("b"), std::filesystem::last_write_time(t.path("a")));
    EXPECT_EQ(moved(byLink), EEXIST);
    EXPECT_FALSE(told);
}

TEST_F(ExclusiveMoveRemains, AreNotToldWhenTheNameIsAnotherOfTheItem) {
    std::filesystem::create_hard_link(t.path("a"), t.path("b"));
    for (const int refusal : {EIO, EEXIST}) {
        linkRefusal = refusal;
        EXPECT_EQ(moved(byLink), refusal);
        EXPECT_FALSE(told);
    }
}

TEST_F(ExclusiveMoveRemains, AreNotToldWhenAnotherFileTookThePlaceOfTheSecondName) {
    t.write("theirs", "someone else's");
    hidden.rename = EBUSY;
    atRename = [&] { std::filesystem::rename(t.path("theirs"), t.path("b")); };
    EXPECT_EQ(moved(byLink), EBUSY);
    EXPECT_FALSE(told);
    EXPECT_EQ(t.read("b"), "someone else's");
}

TEST_F(ExclusiveMoveRemains, AreNotToldWhenSomebodyElseRemovedTheSecondName) {
    hidden.rename = EBUSY;
    atRename = [&] { std::filesystem::remove(t.path("b")); };
    EXPECT_EQ(moved(byLink), EBUSY);
    EXPECT_FALSE(told);
    removal = {t.path("b"), ENOENT};  // as if that were done between the look and the removal
    EXPECT_EQ(moved(byLink), EBUSY);
    EXPECT_FALSE(told);
}

TEST_F(ExclusiveMoveRemains, AreToldWhenThePlaceholderCanNotBeRemoved) {
    removal = {t.path("b"), EIO};
    atRename = [&] { std::filesystem::rename(t.path("a"), t.path("c")); };
    EXPECT_EQ(moved(byPlaceholder), ENOENT);
    EXPECT_TRUE(told);
    EXPECT_TRUE(t.has("b"));
}

TEST_F(ExclusiveMoveRemains, AreToldWhenThePlaceholderCanNotBeSeenInAnyWay) {
    openFileRefusal = EIO;
    afterLooks(1, [&] { examination = {t.path("b"), EIO}; });
    EXPECT_EQ(moved(byPlaceholder), EIO);
    EXPECT_TRUE(told);
    EXPECT_TRUE(t.has("b"));
}

TEST_F(ExclusiveMoveRemains, AreNotToldWhenSomebodyElseRemovedThePlaceholder) {
    openFileRefusal = EIO;
    afterLooks(1, [&] { std::filesystem::remove(t.path("b")); });
    EXPECT_EQ(moved(byPlaceholder), EIO);
    EXPECT_FALSE(told);
    openFileRefusal = 0;
    removal = {t.path("b"), ENOENT};  // as if that were done between the look and the removal
    atRename = [&] { std::filesystem::rename(t.path("a"), t.path("c")); };
    EXPECT_EQ(moved(byPlaceholder), ENOENT);
    EXPECT_FALSE(told);
}

TEST_F(ExclusiveMoveRemains, AreNotToldWhenAnotherItemTookThePlaceOfAPlaceholderThatWasNotLookedInto) {
    openFileRefusal = EIO;
    t.write("theirs", "");
    std::filesystem::create_hard_link(t.path("theirs"), t.path("also theirs"));
    ASSERT_EQ(::mkfifo(t.path("pipe").c_str(), 0600), 0);
    for (const char* name : {"theirs", "pipe"}) {
        afterLooks(1, [&] { std::filesystem::rename(t.path(name), t.path("b")); });
        EXPECT_EQ(moved(byPlaceholder), EIO);
        EXPECT_FALSE(told);
        EXPECT_TRUE(t.has("b"));
        std::filesystem::remove(t.path("b"));
    }
}

TEST_F(ExclusiveMoveRemains, AreToldWhenThePlaceholderIsSaidNotToBeMadeAndStandsThere) {
    openReply = EIO;
    EXPECT_EQ(moved(byPlaceholder), EIO);
    EXPECT_TRUE(told);
    EXPECT_TRUE(t.has("b")) << "it may be another program's";
}

TEST_F(ExclusiveMoveRemains, AreNotToldWhenThePlaceholderIsAnothersByNow) {
    afterLooks(1, [&] { t.write("b", "someone else's"); });
    EXPECT_EQ(moved(byPlaceholder), EEXIST);
    EXPECT_FALSE(told);
    std::filesystem::remove(t.path("b"));
    afterLooks(1, [&] { std::filesystem::remove(t.path("b")); });
    EXPECT_EQ(moved(byPlaceholder), ENOENT);
    EXPECT_FALSE(told);
    afterLooks(1, [&] {
        t.write("b", "someone else's");
        examination = {t.path("b"), EIO};
    });
    EXPECT_EQ(moved(byPlaceholder), EIO);
    EXPECT_FALSE(told) << "the file itself tells that it was written to";
}

TEST_F(ExclusiveMoveRemains, AreNotToldWhenEverythingIsTakenBack) {
    hidden.rename = EBUSY;
    EXPECT_EQ(moved(byLink), EBUSY);
    EXPECT_FALSE(told);
    hidden = {};
    removal = {t.path("a"), EBUSY};
    EXPECT_EQ(moved(byLinkPlainly), EBUSY);
    EXPECT_FALSE(told);
    removal = {};
    openFileRefusal = EIO;
    EXPECT_EQ(moved(byPlaceholder), EIO);
    EXPECT_FALSE(told);
    EXPECT_EQ(t.count(), 1U);
}

TEST_F(ExclusiveMoveRemains, AreNotToldOfAMoveThatIsDone) {
    for (const MoveWays ways : {MoveWays{}, byLink, byLinkPlainly, byPlaceholder}) {
        EXPECT_EQ(moved(ways), 0);
        EXPECT_FALSE(told);
        std::filesystem::rename(t.path("b"), t.path("a"));
    }
}

TEST_F(ExclusiveMoveRemains, AreNotToldWhereNothingWasMade) {
    for (const int refusal : {EPERM, EACCES, ENOSPC, EDQUOT, EROFS, EIO, EXDEV}) {
        linkRefusal = refusal;
        EXPECT_EQ(moved(byLink), refusal);
        EXPECT_FALSE(told);
    }
    linkRefusal = 0;
    isReadOnly = true;
    EXPECT_EQ(moved(byPlaceholder), EROFS);
    EXPECT_FALSE(told);
    isReadOnly = false;
    t.write("b", "");
    for (const MoveWays ways : {MoveWays{}, byLink, byLinkPlainly, byPlaceholder}) {
        EXPECT_EQ(moved(ways), EEXIST);
        EXPECT_FALSE(told);
    }
}

TEST_F(ExclusiveMoveRemains, AreNotToldOfAFolderThatMayNotBeEntered) {
    t.makeFolder("closed");
    giveToUnprivileged(t.path());
    ::chmod(t.path("closed").c_str(), 0600);
    for (MoveWays ways : {byLink, byPlaceholder}) {
        const int error = unprivileged([&] {
            bool leavesSomething = false;
            ways.leavesSomething = &leavesSomething;
            const int refused = move(t, "a", "closed/b", ways);
            return leavesSomething ? -refused : refused;
        });
        EXPECT_EQ(error, EACCES);
    }
}

}  // namespace
