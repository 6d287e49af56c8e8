#include "OrdovanCore/platform/ExclusiveMove.h"

#include "tests/support/ExclusiveMoves.h"
#include "tests/support/SecondVolume.h"
#include "tests/support/TempFolder.h"
#include "tests/support/Unprivileged.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <vector>

using namespace ordovan::test;
using ordovan::MoveWays;

namespace {

/// Every way alone.
class ExclusiveMove : public testing::TestWithParam<MoveWays> {};

std::string nameOf(const MoveWays& way) {
    if (way.rename) return "Rename";
    if (way.link) return way.hidesOldName ? "Link" : "LinkPlainly";
    return "Placeholder";
}

INSTANTIATE_TEST_SUITE_P(EveryWay, ExclusiveMove,
                         testing::Values(MoveWays{true, false, false}, byLink, byLinkPlainly, byPlaceholder),
                         [](const auto& way) { return nameOf(way.param); });

TEST_P(ExclusiveMove, KeepsContentAndIdentity) {
    const TempFolder t;
    t.write("a", "content");
    const ::ino_t before = inode(t.path("a"));
    EXPECT_EQ(move(t, "a", "b", GetParam()), 0);
    EXPECT_EQ(t.read("b"), "content");
    EXPECT_EQ(inode(t.path("b")), before);
    EXPECT_EQ(t.count(), 1u);
}

TEST_P(ExclusiveMove, NeverReplacesAFile) {
    const TempFolder t;
    t.write("a", "content");
    t.write("b", "");
    EXPECT_EQ(move(t, "a", "b", GetParam()), EEXIST);
    EXPECT_EQ(t.read("a"), "content");
    EXPECT_EQ(t.read("b"), "");
}

TEST_P(ExclusiveMove, NeverReplacesADanglingLink) {
    const TempFolder t;
    t.write("a", "content");
    t.makeLink("b", "nowhere");
    EXPECT_EQ(move(t, "a", "b", GetParam()), EEXIST);
    EXPECT_EQ(t.read("a"), "content");
    EXPECT_EQ(std::filesystem::read_symlink(t.path("b")), "nowhere");
    EXPECT_FALSE(t.has("nowhere"));
}

TEST_P(ExclusiveMove, NeverReplacesAnotherNameOfTheSameFile) {
    const TempFolder t;
    t.write("a", "content");
    std::filesystem::create_hard_link(t.path("a"), t.path("b"));
    EXPECT_EQ(move(t, "a", "b", GetParam()), EEXIST);
    EXPECT_EQ(t.count(), 2u);
}

TEST_P(ExclusiveMove, MovesALinkItself) {
    const TempFolder t;
    t.write("target", "content");
    t.makeLink("a", "target");
    EXPECT_EQ(move(t, "a", "b", GetParam()), 0);
    EXPECT_EQ(std::filesystem::read_symlink(t.path("b")), "target");
    EXPECT_EQ(t.read("target"), "content");
    EXPECT_FALSE(t.has("a"));
}

TEST_P(ExclusiveMove, LeavesNothingBehindWithoutASource) {
    const TempFolder t;
    EXPECT_EQ(move(t, "a", "b", GetParam()), ENOENT);
    EXPECT_EQ(t.count(), 0u);
}

TEST_P(ExclusiveMove, RefusesAMissingFolder) {
    const TempFolder t;
    t.write("a", "content");
    EXPECT_EQ(move(t, "a", "missing/b", GetParam()), ENOENT);
    EXPECT_EQ(t.read("a"), "content");
}

TEST_P(ExclusiveMove, RefusesAnotherVolumeAndLeavesNothingThere) {
    if (!SecondVolume::available()) GTEST_SKIP() << SecondVolume::unavailable;
    const TempFolder t;
    const SecondVolume other;
    t.write("a", "content");
    EXPECT_EQ(ordovan::moveExclusively(t.path("a").c_str(), other.path("b").c_str(), GetParam()), EXDEV);
    EXPECT_EQ(other.root().count(), 0u);
    EXPECT_EQ(t.read("a"), "content");
}

TEST_P(ExclusiveMove, RefusesAnotherMountOfTheSameDevice) {
    if (!SecondVolume::available()) GTEST_SKIP() << SecondVolume::unavailable;
    const TempFolder t;
    t.write("a", "content");
    t.makeFolder("shown");
    const BindMount elsewhere(t.path("shown"));
    EXPECT_EQ(ordovan::moveExclusively(t.path("a").c_str(), elsewhere.root().path("b").c_str(), GetParam()), EXDEV);
    EXPECT_EQ(t.count("shown"), 0u);
    EXPECT_EQ(t.read("a"), "content");
}

TEST_P(ExclusiveMove, LeavesTheItemAloneWhenItsFolderMayNotChange) {
    const TempFolder t;
    t.write("locked/a", "content");
    t.makeFolder("open");
    ordovan::test::giveToUnprivileged(t.path());
    ::chmod(t.path("locked").c_str(), 0500);
    EXPECT_EQ(ordovan::test::unprivileged([&] { return move(t, "locked/a", "open/b", GetParam()); }), EACCES);
    EXPECT_EQ(t.read("locked/a"), "content");
    EXPECT_EQ(t.count("open"), 0u);
}

TEST(ExclusiveMoveWhereRenamesReplace, TakesALinkInstead) {
    for (const int refusal : {EINVAL, ENOSYS, EOPNOTSUPP}) {
        const TempFolder t;
        t.write("a", "content");
        t.write("taken", "");
        renameRefusal = refusal;
        EXPECT_EQ(move(t, "a", "taken", {}), EEXIST);
        EXPECT_EQ(move(t, "a", "b", {}), 0);
        renameRefusal = 0;
        EXPECT_EQ(t.read("b"), "content");
        EXPECT_EQ(t.count(), 2u);
    }
}

TEST(ExclusiveMoveWhereRenamesReplace, TakesNoOtherWayForAnotherReason) {
    const TempFolder t;
    t.write("a", "content");
    renameRefusal = EIO;
    EXPECT_EQ(move(t, "a", "b", {}), EIO);
    renameRefusal = 0;
    EXPECT_EQ(t.read("a"), "content");
    EXPECT_EQ(t.count(), 1u);
}

TEST(ExclusiveMoveOfAFolder, TakesAnEmptyFolderAsPlaceholder) {
    const TempFolder t;
    t.write("a/inside", "content");
    EXPECT_EQ(move(t, "a", "b", byLinkOrPlaceholder), 0);
    EXPECT_EQ(t.read("b/inside"), "content");
    EXPECT_FALSE(t.has("a"));
}

TEST(ExclusiveMoveOfAFolder, NeverReplacesAnEmptyFolder) {
    const TempFolder t;
    t.write("a/inside", "content");
    t.makeFolder("b");
    EXPECT_EQ(move(t, "a", "b", byLinkOrPlaceholder), EEXIST);
    EXPECT_EQ(move(t, "a", "b", {}), EEXIST);
    EXPECT_EQ(t.read("a/inside"), "content");
    EXPECT_EQ(t.count("b"), 0u);
}

TEST(ExclusiveMoveOfAFolder, HasNoOtherWayThanAPlaceholderWhereRenamesReplace) {
    const TempFolder t;
    t.write("a/x", "content");
    EXPECT_EQ(move(t, "a", "b", byLink), ENOTSUP);
    EXPECT_EQ(t.read("a/x"), "content");
    EXPECT_EQ(t.count(), 1u);
}

TEST(ExclusiveMoveOfAFolder, RefusesItsOwnInsideAndLeavesNothingThere) {
    const TempFolder t;
    t.makeFolder("a");
    EXPECT_EQ(move(t, "a", "a/b", {}), EINVAL);
    EXPECT_EQ(t.count("a"), 0u);
}

TEST(ExclusiveMoveByLink, TakesThePlaceholderWhereThereAreNoLinks) {
    for (const int refusal : {EPERM, EMLINK, EOPNOTSUPP}) {
        const TempFolder t;
        t.write("a", "content");
        t.write("taken", "");
        linkRefusal = refusal;
        EXPECT_EQ(move(t, "a", "taken", byLinkOrPlaceholder), EEXIST);
        EXPECT_EQ(move(t, "a", "b", byLinkOrPlaceholder), 0);
        linkRefusal = 0;
        EXPECT_EQ(t.read("b"), "content");
        EXPECT_EQ(t.count(), 2u);
    }
}

TEST(ExclusiveMoveByLink, LeavesAFileThatTookTheOldNameMeanwhile) {
    for (const MoveWays ways : {byLink, byLinkPlainly}) {
        const TempFolder t;
        t.write("a", "old");
        t.write("fresh", "new");
        atExamination = [&] { std::filesystem::rename(t.path("fresh"), t.path("a")); };
        skip = 1;  // after the link was made
        EXPECT_EQ(move(t, "a", "b", ways), 0);
        EXPECT_EQ(t.read("a"), "new");
        EXPECT_EQ(t.read("b"), "old");
    }
}

TEST(ExclusiveMoveByLink, IsDoneWhenTheOldNameWentMeanwhile) {
    for (const MoveWays ways : {byLink, byLinkPlainly}) {
        for (const int looksBefore : {1, 2}) {
            const TempFolder t;
            t.write("a", "old");
            atExamination = [&] { std::filesystem::remove(t.path("a")); };
            skip = looksBefore;
            EXPECT_EQ(move(t, "a", "b", ways), 0);
            EXPECT_EQ(t.read("b"), "old");
            EXPECT_EQ(t.count(), 1u);
        }
    }
}

TEST(ExclusiveMoveByLink, GivesAFileItsNameBackThatWasSavedBehindTheLastLook) {
    const TempFolder t;
    t.write("a", "old");
    t.write("fresh", "new");
    atRename = [&] { std::filesystem::rename(t.path("fresh"), t.path("a")); };
    EXPECT_EQ(move(t, "a", "b", byLink), 0);
    EXPECT_EQ(t.read("a"), "new");
    EXPECT_EQ(t.read("b"), "old");
    EXPECT_EQ(t.count(), 2u);
}

TEST(ExclusiveMoveByLink, GivesAFileItsNameBackThatItMayNotLink) {
    const TempFolder t;
    t.write("a", "old");
    t.write("fresh", "new");
    atRename = [&] {
        std::filesystem::rename(t.path("fresh"), t.path("a"));
        linkRefusal = EPERM;  // as of another user's file (proc_sys_fs(5), protected_hardlinks)
    };
    EXPECT_EQ(move(t, "a", "b", byLink), 0);
    linkRefusal = 0;
    EXPECT_EQ(t.read("a"), "new");
    EXPECT_EQ(t.read("b"), "old");
    EXPECT_EQ(t.count(), 2u);
}

TEST(ExclusiveMoveByLink, IsDoneWhenTheOldNameWentBehindTheLastLook) {
    const TempFolder t;
    t.write("a", "old");
    atRename = [&] { std::filesystem::remove(t.path("a")); };
    EXPECT_EQ(move(t, "a", "b", byLink), 0);
    EXPECT_EQ(t.read("b"), "old");
    EXPECT_EQ(t.count(), 1u);
}

TEST(ExclusiveMoveByLink, LeavesAFileHiddenOnlyWhileAnotherHasItsName) {
    const TempFolder t;
    t.write("a", "old");
    t.write("fresh", "new");
    t.write("fresher", "newer");
    atRename = [&] { std::filesystem::rename(t.path("fresh"), t.path("a")); };
    atExamination = [&] {
        atExamination = [&] { std::filesystem::rename(t.path("fresher"), t.path("a")); };
        skip = 0;
    };
    skip = 1;  // looked at: a, b, then the hidden name
    EXPECT_EQ(move(t, "a", "b", byLink), 0);
    EXPECT_EQ(t.read("a"), "newer");
    EXPECT_EQ(t.read("b"), "old");
    EXPECT_EQ(t.count(), 3u) << "nothing of others is removed";
}

TEST(ExclusiveMoveByLink, TakesAHiddenNameOfOursWithoutMoreSteps) {
    const TempFolder t;
    const std::string own = ".a.ordovan-partial-00000000-0000-4000-8000-000000000000";
    int announced = 0;
    const std::function<void(const std::string&)> announce = [&](const std::string&) { ++announced; };
    const MoveWays ways{.rename = false, .announce = &announce};
    t.write("a", "content");
    linkRefusal = EIO;
    EXPECT_EQ(move(t, "a", own.c_str(), ways), 0);
    linkRefusal = 0;
    EXPECT_EQ(announced, 0);
    t.write("a", "other");
    EXPECT_EQ(move(t, "a", own.c_str(), ways), EEXIST);
    EXPECT_EQ(t.read(own), "content");
    examination = {t.path(own), EIO};
    EXPECT_EQ(move(t, "a", own.c_str(), ways), EIO);
    examination = {};
    EXPECT_EQ(t.read("a"), "other");
}

TEST(ExclusiveMoveByLink, AnnouncesTheHiddenNameThatItIsGoingToUse) {
    for (const char* from : {"a", ".a.ordovan-partial-00000000-0000-4000-8000-000000000000"}) {
        const TempFolder t;
        t.write(from, "content");
        std::string name = "none";
        const std::function<void(const std::string&)> announce = [&](const std::string& hiddenName) {
            name = hiddenName;
        };
        std::string seen;
        atExamination = [&] { seen = !name.empty() && t.has(name) ? "hidden" : "not"; };
        skip = 2;
        EXPECT_EQ(move(t, from, "b", {.rename = false, .announce = &announce}), 0);
        EXPECT_EQ(name.starts_with(".a.ordovan-partial-") ? "hidden" : "not", seen);
        EXPECT_EQ(name.empty(), from[0] == '.') << "what bears one needs no other";
        EXPECT_EQ(t.count(), 1u);
        atExamination = nullptr;
    }
}

TEST(ExclusiveMoveByPlaceholder, NeverReplacesWhatWasWrittenIntoThePlaceholder) {
    const TempFolder t;
    t.write("a", "content");
    atExamination = [&] { t.write("b", "someone else's"); };
    skip = 1;  // the first looks at the source
    EXPECT_EQ(move(t, "a", "b", byPlaceholder), EEXIST);
    EXPECT_EQ(t.read("a"), "content");
    EXPECT_EQ(t.read("b"), "someone else's");
}

TEST(ExclusiveMoveByPlaceholder, NeverReplacesAFileThatTookThePlaceOfThePlaceholder) {
    const TempFolder t;
    t.write("a", "content");
    t.write("other", "");
    const ::ino_t other = inode(t.path("other"));
    atExamination = [&] { std::filesystem::rename(t.path("other"), t.path("b")); };
    skip = 1;
    EXPECT_EQ(move(t, "a", "b", byPlaceholder), EEXIST);
    EXPECT_EQ(t.read("a"), "content");
    EXPECT_EQ(inode(t.path("b")), other);
}

TEST(ExclusiveMoveWithoutWays, ChangesNothing) {
    const TempFolder t;
    t.write("a", "content");
    EXPECT_EQ(move(t, "a", "b", {false, false, false}), ENOTSUP);
    EXPECT_EQ(t.read("a"), "content");
}

std::string synced;

TEST(DurableMove, FlushesTheFolderOfTheNewName) {
    const TempFolder t;
    t.write("a", "content");
    synced.clear();
    const auto sync = [](ordovan::FolderEntry item) {
        synced = item.name;
        return 0;
    };
    EXPECT_EQ(ordovan::moveDurably(t.path("a").c_str(), t.path("b").c_str(), {}, sync), 0);
    EXPECT_EQ(synced, t.path("b"));
    EXPECT_EQ(t.read("b"), "content");
}

TEST(DurableMove, GoesBackWhenTheFolderCanNotBeFlushed) {
    const TempFolder t;
    t.write("a", "content");
    for (const MoveWays ways : {MoveWays{}, byLink, byPlaceholder}) {
        const int error = ordovan::moveDurably(t.path("a").c_str(), t.path("b").c_str(), ways,
                                               [](ordovan::FolderEntry) { return EIO; });
        EXPECT_EQ(error, EIO);
        EXPECT_EQ(t.read("a"), "content");
        EXPECT_EQ(t.count(), 1u);
    }
}

TEST(DurableMove, FlushesNothingWhenTheMoveFails) {
    const TempFolder t;
    t.write("a", "content");
    t.write("b", "");
    synced.clear();
    const auto sync = [](ordovan::FolderEntry item) {
        synced = item.name;
        return 0;
    };
    EXPECT_EQ(ordovan::moveDurably(t.path("a").c_str(), t.path("b").c_str(), {}, sync), EEXIST);
    EXPECT_EQ(synced, "");
}

}  // namespace
