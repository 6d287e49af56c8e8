#include "OrdovanCore/platform/Folders.h"

#include "tests/support/Flushes.h"
#include "tests/support/SecondVolume.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>
#include <linux/magic.h>
#include <sys/resource.h>
#include <sys/vfs.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <vector>

using ordovan::makeFolders;
using ordovan::syncMoves;
using ordovan::test::Flushes;
using ordovan::test::SecondVolume;
using ordovan::test::TempFolder;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using ::testing::UnorderedElementsAre;

namespace {

/// The folders by which volumes were flushed, and the errno with which that fails.
std::vector<std::string> volumes;
int volumeError = 0;

}  // namespace

// Takes the place of the C library's, which would wait for everything that this machine has not written yet.
extern "C" int syncfs(int file) noexcept {
    volumes.push_back(std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(file)).string());
    errno = volumeError;
    return volumeError == 0 ? 0 : -1;
}

namespace {

TEST(MakeFolders, MakesThoseThatAreMissing) {
    const TempFolder t;
    EXPECT_EQ(makeFolders(t.path("a/b/c"), 0700), 0);
    EXPECT_EQ(makeFolders(t.path("a/b/c"), 0700), 0);
    EXPECT_TRUE(std::filesystem::is_directory(t.path("a/b/c")));
    t.write("file", "");
    EXPECT_EQ(makeFolders(t.path("file"), 0700), EEXIST);
    EXPECT_EQ(makeFolders(t.path("file/a"), 0700), ENOTDIR);
    EXPECT_EQ(makeFolders("", 0700), ENOENT);
}

class SyncFolders : public testing::Test {
protected:
    void SetUp() override {
        struct ::statfs volume;
        ASSERT_EQ(::statfs(t.path().c_str(), &volume), 0);
        if (volume.f_type == BTRFS_SUPER_MAGIC) GTEST_SKIP() << "NOT TESTED: btrfs, where whole volumes are flushed";
        Flushes::reset();
        volumes.clear();
        volumeError = 0;
    }
    /// Whether the temporary folder is on a volume with one journal for everything.
    [[nodiscard]] bool hasOneJournal() const {
        struct ::statfs volume;
        return ::statfs(t.path().c_str(), &volume) == 0 &&
               (volume.f_type == EXT4_SUPER_MAGIC || volume.f_type == XFS_SUPER_MAGIC);
    }
    /// A file in each of so many folders.
    static void fill(const TempFolder& top, int folders, std::vector<Url>& items) {
        for (int i = 0; i < folders; ++i) items.push_back(top.write(std::to_string(i) + "/a", ""));
    }
    TempFolder t;
};

TEST_F(SyncFolders, FlushesEachOfAFewFoldersOnce) {
    EXPECT_TRUE(syncMoves(std::vector{t.write("x/a", ""), t.write("x/b", ""), t.write("y/c", "")}));
    EXPECT_THAT(Flushes::paths, UnorderedElementsAre(t.path("x"), t.path("y")));
    EXPECT_THAT(volumes, IsEmpty());
}

TEST_F(SyncFolders, FlushesNothingForFoldersThatAreNotThere) {
    EXPECT_TRUE(syncMoves(std::vector{t.url("missing/b"), t.write("x/a", ""), Url::file("")}));
    EXPECT_THAT(Flushes::paths, UnorderedElementsAre(t.path("x")));
    EXPECT_THAT(volumes, IsEmpty());
}

TEST_F(SyncFolders, FlushesTheFolderFromWhichACopyMayHaveBeenTakenAwayAgain) {
    t.makeFolder("y");
    EXPECT_TRUE(syncMoves(std::vector{t.write("x/a", ""), t.url("y/a")}));
    EXPECT_THAT(Flushes::paths, UnorderedElementsAre(t.path("x"), t.path("y")));
}

TEST_F(SyncFolders, FlushesTheFolderToWhichAnItemMayHaveComeBack) {
    if (!hasOneJournal()) GTEST_SKIP() << "NOT TESTED: wants ext4 or xfs";
    EXPECT_TRUE(syncMoves(std::vector{t.write("new/a", "")}, std::vector{t.url("old/a"), t.write("old/b", "")}));
    EXPECT_EQ(Flushes::paths, (std::vector<std::string>{t.path("new"), t.path("old")}));
}

TEST_F(SyncFolders, FlushesTheFoldersThatItemsLeftWhereOthersArrivedOnAnotherVolume) {
    if (!hasOneJournal()) GTEST_SKIP() << "NOT TESTED: wants ext4 or xfs";
    if (!SecondVolume::available()) GTEST_SKIP() << SecondVolume::unavailable;
    const SecondVolume other(1 << 20);
    t.makeFolder("old");
    EXPECT_TRUE(syncMoves(std::vector{t.write("new/a", ""), other.root().write("new/b", "")},
                          std::vector{t.url("old/a"), t.url("old/b")}));
    EXPECT_EQ(Flushes::paths, (std::vector<std::string>{t.path("new"), other.root().path("new"), t.path("old")}));
}

TEST_F(SyncFolders, FlushesTheFoldersThatItemsLeftForAnotherVolume) {
    if (!SecondVolume::available()) GTEST_SKIP() << SecondVolume::unavailable;
    const SecondVolume other(1 << 20);
    other.root().write("new/a", "");
    t.makeFolder("old");
    EXPECT_TRUE(syncMoves(std::vector{other.root().url("new/a")},
                          std::vector{t.url("old/a"), t.url("old/b"), t.url("gone/since/c")}));
    EXPECT_EQ(Flushes::paths, (std::vector<std::string>{other.root().path("new"), t.path("old"), t.path()}));
}

TEST_F(SyncFolders, FlushesTheFoldersThatItemsLeftWhereARenameIsMoreThanOneChange) {
    if (!SecondVolume::available()) GTEST_SKIP() << SecondVolume::unavailable;
    const SecondVolume other(1 << 20);  // in memory, which keeps no journal
    other.root().write("new/a", "");
    other.root().makeFolder("old");
    EXPECT_TRUE(syncMoves(std::vector{other.root().url("new/a")}, std::vector{other.root().url("old/a")}));
    EXPECT_EQ(Flushes::paths, (std::vector<std::string>{other.root().path("new"), other.root().path("old")}));
}

TEST_F(SyncFolders, SparesTheFoldersThatItemsLeftWhereARenameIsOneChange) {
    if (!hasOneJournal()) GTEST_SKIP() << "NOT TESTED: wants ext4 or xfs";
    t.makeFolder("old");
    EXPECT_TRUE(syncMoves(std::vector{t.write("new/a", "")}, std::vector{t.url("old/a")}));
    EXPECT_EQ(Flushes::paths, std::vector<std::string>{t.path("new")});
}

TEST_F(SyncFolders, SparesTheVolumeWhoseJournalBringsTheMovesToTheDiskWithTheRecord) {
    if (!hasOneJournal()) GTEST_SKIP() << "NOT TESTED: wants ext4 or xfs";
    t.makeFolder("records");
    EXPECT_TRUE(syncMoves(std::vector{t.write("new/a", "")}, {}, t.path("records")));
    EXPECT_THAT(Flushes::paths, IsEmpty());
    EXPECT_TRUE(syncMoves(std::vector{t.write("new/a", "")}, {}, t.path("missing")));
    EXPECT_EQ(Flushes::paths, std::vector<std::string>{t.path("new")});
}

TEST_F(SyncFolders, FlushesAVolumeThatIsNotTheRecords) {
    if (!SecondVolume::available()) GTEST_SKIP() << SecondVolume::unavailable;
    const SecondVolume other(1 << 20);  // in memory, which keeps no journal
    other.root().write("new/a", "");
    t.write("new/a", "");
    for (const std::string& records : {t.path(), other.path()}) {
        Flushes::reset();
        EXPECT_TRUE(syncMoves(std::vector{t.url("new/a"), other.root().url("new/a")}, {}, records));
        EXPECT_THAT(Flushes::paths, ::testing::Contains(other.root().path("new"))) << records;
    }
    EXPECT_THAT(Flushes::paths, ::testing::Contains(t.path("new")));
}

TEST_F(SyncFolders, FlushesTheVolumeOnceForManyFolders) {
    std::vector<Url> items;
    fill(t, 32, items);
    EXPECT_TRUE(syncMoves(items));
    EXPECT_THAT(Flushes::paths, SizeIs(32));
    EXPECT_THAT(volumes, IsEmpty());
    items.push_back(t.write("one more/a", ""));
    Flushes::reset();
    EXPECT_TRUE(syncMoves(items));
    EXPECT_THAT(volumes, SizeIs(1));
    EXPECT_EQ(Flushes::paths, volumes) << "it is asked whether that was possible";
}

TEST_F(SyncFolders, FlushesEachVolumeOfManyFolders) {
    if (!SecondVolume::available()) GTEST_SKIP() << SecondVolume::unavailable;
    const SecondVolume other(1 << 20);
    std::vector<Url> items;
    fill(t, 20, items);
    fill(other.root(), 20, items);
    EXPECT_TRUE(syncMoves(items));
    ASSERT_THAT(volumes, SizeIs(2));
    EXPECT_EQ(Flushes::paths, volumes);
    EXPECT_NE(volumes[0].starts_with(other.path()), volumes[1].starts_with(other.path()));
}

TEST_F(SyncFolders, TellsThatOneOfThemCouldNotBeFlushedAndFlushesTheOthers) {
    const std::vector items{t.write("x/a", ""), t.write("y/a", ""), t.write("z/a", "")};
    for (const int error : {EIO, EROFS, ENOSPC, EDQUOT}) {
        Flushes::reset();
        Flushes::failing = [&](const std::string& path) { return path == t.path("y") ? error : 0; };
        EXPECT_FALSE(syncMoves(items)) << error;
        EXPECT_THAT(Flushes::paths, UnorderedElementsAre(t.path("x"), t.path("y"), t.path("z")));
    }
}

TEST_F(SyncFolders, CountsFoldersThatNothingCanFlushAsFlushed) {
    const std::vector items{t.write("x/a", "")};
    for (const int error : {EINVAL, ENOTSUP, ENOSYS}) {
        Flushes::failing = [&](const std::string&) { return error; };
        EXPECT_TRUE(syncMoves(items)) << error;
    }
}

TEST_F(SyncFolders, TellsThatAVolumeCouldNotBeFlushed) {
    std::vector<Url> items;
    fill(t, 40, items);
    // Where an error has made the volume read-only, its flush is said to have gone well.
    Flushes::failing = [](const std::string&) { return EROFS; };
    EXPECT_FALSE(syncMoves(items));
    volumeError = ENOSYS;
    Flushes::failing = nullptr;
    EXPECT_TRUE(syncMoves(items));
}

TEST_F(SyncFolders, AsksEachFolderWhereTheFlushOfTheVolumeMayHaveFailedForAnotherProgramsFile) {
    std::vector<Url> items;
    fill(t, 40, items);
    volumeError = EIO;
    EXPECT_TRUE(syncMoves(items));
    EXPECT_THAT(Flushes::paths, SizeIs(40));
    Flushes::failing = [&](const std::string& path) { return path == t.path("39") ? EIO : 0; };
    EXPECT_FALSE(syncMoves(items));
}

TEST_F(SyncFolders, FlushesAgainAfterAnInterruptingSignal) {
    int times = 0;
    Flushes::failing = [&](const std::string&) { return ++times < 3 ? EINTR : 0; };
    EXPECT_TRUE(syncMoves(std::vector{t.write("x/a", "")}));
    EXPECT_EQ(times, 3);
}

TEST_F(SyncFolders, CanBeAskedForWhetherTheyWorkAtAll) {
    if (!SecondVolume::available()) GTEST_SKIP() << SecondVolume::unavailable;
    const SecondVolume other(1 << 20);  // in memory, which keeps no journal
    const std::vector folders{t.url("missing"), Url::file(other.path())};
    EXPECT_TRUE(ordovan::canFlush(folders));
    EXPECT_EQ(Flushes::paths, std::vector<std::string>{other.path()});
    Flushes::failing = [](const std::string&) { return EIO; };
    EXPECT_FALSE(ordovan::canFlush(folders));
    if (!hasOneJournal()) return;
    EXPECT_TRUE(ordovan::canFlush(std::vector{Url::file(t.path())})) << "it is not asked";
}

TEST_F(SyncFolders, TellsThatOneOfThemCouldNotBeLookedAt) {
    const std::vector here{t.write("x/a", "")}, gone{t.url("missing/a")};
    ::rlimit files{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &files), 0);
    const ::rlimit none{.rlim_cur = 0, .rlim_max = files.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
    const bool arrived = syncMoves(here), left = syncMoves({}, here), neither = syncMoves(gone, gone);
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &files), 0);
    EXPECT_FALSE(arrived);
    EXPECT_FALSE(left);
    EXPECT_FALSE(neither) << "nobody knows that it is gone";
    EXPECT_TRUE(syncMoves(gone, gone));
}

}  // namespace
