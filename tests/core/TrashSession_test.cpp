// One session for many items: what it keeps from item to item must never lead an item astray.

#include "OrdovanCore/platform/RunFileSystem.h"
#include "OrdovanCore/testing/TreeBuilder.h"
#include "tests/support/SecondVolume.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>

namespace {

using ordovan::RunFileSystem;
using ordovan::TrashSession;
using ordovan::test::SecondVolume;
using ordovan::test::TempFolder;
using ordovan::testing::describeTree;
using testing::HasSubstr;
using testing::IsEmpty;

class TrashSessionTest : public testing::Test {
protected:
    TrashSessionTest() { ::setenv("XDG_DATA_HOME", home_.path("data").c_str(), 1); }
    ~TrashSessionTest() override { ::unsetenv("XDG_DATA_HOME"); }

    /// Trashes a new file of that name; its path in the Trash, empty on failure.
    std::string trash(std::string_view name) {
        return std::string(session_.move(home_.write(name, name)).value_or(Url()).path());
    }
    [[nodiscard]] std::string info(std::string_view name) const {
        return home_.read("data/Trash/info/" + std::string(name) + ".trashinfo");
    }
    void rename(std::string_view from, std::string_view to) const {
        ASSERT_EQ(::rename(home_.path(from).c_str(), home_.path(to).c_str()), 0);
    }

    TempFolder home_;
    TrashSession session_;
};

TEST_F(TrashSessionTest, ManyItemsOfManyFoldersGoEachWithItsOwnInfo) {
    for (int i = 0; i < 300; ++i) {
        const std::string name = "f" + std::to_string(i / 7) + "/" + std::to_string(i);
        ASSERT_EQ(trash(name), home_.path("data/Trash/files/" + std::to_string(i)));
    }
    EXPECT_EQ(home_.count("data/Trash/files"), 300U);
    for (int i = 0; i < 300; i += 50) {
        const std::string path = home_.path("f" + std::to_string(i / 7) + "/" + std::to_string(i));
        EXPECT_THAT(info(std::to_string(i)), HasSubstr("\nPath=" + path + "\n"));
    }
}

TEST_F(TrashSessionTest, GoesFromVolumeToVolume) {
    if (!SecondVolume::available()) GTEST_SKIP() << SecondVolume::unavailable;
    const SecondVolume one(1 << 20), two(1 << 20);
    const std::string own = ".Trash-" + std::to_string(::geteuid()) + "/files/";
    for (const std::string name : {"a", "b", "c"}) {
        EXPECT_EQ(session_.move(one.root().write("x/" + name, "1")).value().path(), one.path(own + name));
        EXPECT_EQ(session_.move(two.root().write("x/" + name, "2")).value().path(), two.path(own + name));
        EXPECT_EQ(trash(name), home_.path("data/Trash/files/" + name));
    }
}

TEST_F(TrashSessionTest, ATrashThatWasRemovedMeanwhileIsMadeAnew) {
    EXPECT_NE(trash("a"), "");
    std::filesystem::remove_all(home_.path("data"));
    EXPECT_EQ(trash("b"), home_.path("data/Trash/files/b"));
    EXPECT_EQ(home_.count("data/Trash/info"), 1U);
}

TEST_F(TrashSessionTest, ATrashThatWasMovedAwayMeanwhileGetsNothingMore) {
    EXPECT_NE(trash("a"), "");
    rename("data/Trash", "elsewhere");
    const auto there = session_.move(home_.write("b", "b"));
    EXPECT_EQ(there, std::unexpected(OrdovanSystemError::cocoa(OrdovanSystemError::fileWriteUnknown)));
    EXPECT_EQ(home_.read("b"), "b");
    EXPECT_EQ(home_.count("elsewhere/files"), 1U);
    EXPECT_EQ(home_.count("elsewhere/info"), 1U);
}

TEST_F(TrashSessionTest, AnotherFolderThatTookTheNameOfTheLastIsSeen) {
    EXPECT_NE(trash("in/a"), "");
    rename("in", "old");
    home_.write("old/b", "old");
    EXPECT_NE(trash("in/b"), "");
    EXPECT_EQ(home_.read("data/Trash/files/b"), "in/b");
    EXPECT_EQ(home_.read("old/b"), "old");
}

TEST_F(TrashSessionTest, AFolderThatIsGoneOrMissingAnItemIsAnErrorAndNothingElse) {
    EXPECT_NE(trash("in/a"), "");
    EXPECT_EQ(session_.move(home_.url("in/missing")).error(), OrdovanSystemError::posix(ENOENT));
    rename("in", "old");
    EXPECT_EQ(session_.move(home_.url("in/a")).error(), OrdovanSystemError::posix(ENOENT));
    EXPECT_NE(trash("old/b"), "");
    EXPECT_EQ(home_.count("data/Trash/info"), 2U);
}

TEST_F(TrashSessionTest, ARunOnTheRealDiskUsesOneAndLeavesNothingBehindWhenPutBack) {
    RunFileSystem fs(home_.url());
    home_.write("in/a", "a");
    home_.write("in/b", "b");
    const auto before = describeTree(home_.path("in"));
    const Url a = fs.trash(home_.url("in/a")).value(), b = fs.trash(home_.url("in/b")).value();
    EXPECT_THAT(describeTree(home_.path("in")), IsEmpty());
    ASSERT_TRUE(fs.move(b, home_.url("in/b")));
    ASSERT_TRUE(fs.move(a, home_.url("in/a")));
    EXPECT_EQ(describeTree(home_.path("in")), before);
    EXPECT_EQ(home_.count("data/Trash/info"), 0U);
}

}  // namespace
