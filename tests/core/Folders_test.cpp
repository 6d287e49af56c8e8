#include "OrdovanCore/platform/Folders.h"

#include "tests/support/Flushes.h"
#include "tests/support/SecondVolume.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>
#include <linux/magic.h>
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

/// The folders by which volumes were flushed.
std::vector<std::string> volumes;

}  // namespace

// Takes the place of the C library's, which would wait for everything that this machine has not written yet.
extern "C" int syncfs(int file) noexcept {
    volumes.push_back(std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(file)).string());
    return 0;
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
    syncMoves(std::vector{t.write("x/a", ""), t.write("x/b", ""), t.write("y/c", "")});
    EXPECT_THAT(Flushes::paths, UnorderedElementsAre(t.path("x"), t.path("y")));
    EXPECT_THAT(volumes, IsEmpty());
}

TEST_F(SyncFolders, FlushesNothingForFoldersThatAreNotThere) {
    syncMoves(std::vector{t.url("missing/b"), t.write("x/a", ""), Url::file("")});
    EXPECT_THAT(Flushes::paths, UnorderedElementsAre(t.path("x")));
    EXPECT_THAT(volumes, IsEmpty());
}

TEST_F(SyncFolders, FlushesTheFolderFromWhichACopyMayHaveBeenTakenAwayAgain) {
    t.makeFolder("y");
    syncMoves(std::vector{t.write("x/a", ""), t.url("y/a")});
    EXPECT_THAT(Flushes::paths, UnorderedElementsAre(t.path("x"), t.path("y")));
}

TEST_F(SyncFolders, FlushesTheFolderToWhichAnItemMayHaveComeBack) {
    if (!hasOneJournal()) GTEST_SKIP() << "NOT TESTED: wants ext4 or xfs";
    syncMoves(std::vector{t.write("new/a", "")}, std::vector{t.url("old/a"), t.write("old/b", "")});
    EXPECT_EQ(Flushes::paths, (std::vector<std::string>{t.path("new"), t.path("old")}));
}

TEST_F(SyncFolders, FlushesTheFoldersThatItemsLeftWhereOthersArrivedOnAnotherVolume) {
    if (!hasOneJournal()) GTEST_SKIP() << "NOT TESTED: wants ext4 or xfs";
    if (!SecondVolume::available()) GTEST_SKIP() << SecondVolume::unavailable;
    const SecondVolume other(1 << 20);
    t.makeFolder("old");
    syncMoves(std::vector{t.write("new/a", ""), other.root().write("new/b", "")},
              std::vector{t.url("old/a"), t.url("old/b")});
    EXPECT_EQ(Flushes::paths, (std::vector<std::string>{t.path("new"), other.root().path("new"), t.path("old")}));
}

TEST_F(SyncFolders, FlushesTheFoldersThatItemsLeftForAnotherVolume) {
    if (!SecondVolume::available()) GTEST_SKIP() << SecondVolume::unavailable;
    const SecondVolume other(1 << 20);
    other.root().write("new/a", "");
    t.makeFolder("old");
    syncMoves(std::vector{other.root().url("new/a")},
              std::vector{t.url("old/a"), t.url("old/b"), t.url("gone/since/c")});
    EXPECT_EQ(Flushes::paths, (std::vector<std::string>{other.root().path("new"), t.path("old"), t.path()}));
}

TEST_F(SyncFolders, FlushesTheFoldersThatItemsLeftWhereARenameIsMoreThanOneChange) {
    if (!SecondVolume::available()) GTEST_SKIP() << SecondVolume::unavailable;
    const SecondVolume other(1 << 20);  // in memory, which keeps no journal
    other.root().write("new/a", "");
    other.root().makeFolder("old");
    syncMoves(std::vector{other.root().url("new/a")}, std::vector{other.root().url("old/a")});
    EXPECT_EQ(Flushes::paths, (std::vector<std::string>{other.root().path("new"), other.root().path("old")}));
}

TEST_F(SyncFolders, SparesTheFoldersThatItemsLeftWhereARenameIsOneChange) {
    if (!hasOneJournal()) GTEST_SKIP() << "NOT TESTED: wants ext4 or xfs";
    t.makeFolder("old");
    syncMoves(std::vector{t.write("new/a", "")}, std::vector{t.url("old/a")});
    EXPECT_EQ(Flushes::paths, std::vector<std::string>{t.path("new")});
}

TEST_F(SyncFolders, SparesTheVolumeWhoseJournalBringsTheMovesToTheDiskWithTheRecord) {
    if (!hasOneJournal()) GTEST_SKIP() << "NOT TESTED: wants ext4 or xfs";
    t.makeFolder("records");
    syncMoves(std::vector{t.write("new/a", "")}, {}, t.path("records"));
    EXPECT_THAT(Flushes::paths, IsEmpty());
    syncMoves(std::vector{t.write("new/a", "")}, {}, t.path("missing"));
    EXPECT_EQ(Flushes::paths, std::vector<std::string>{t.path("new")});
}

TEST_F(SyncFolders, FlushesAVolumeThatIsNotTheRecords) {
    if (!SecondVolume::available()) GTEST_SKIP() << SecondVolume::unavailable;
    const SecondVolume other(1 << 20);  // in memory, which keeps no journal
    other.root().write("new/a", "");
    t.write("new/a", "");
    for (const std::string& records : {t.path(), other.path()}) {
        Flushes::reset();
        syncMoves(std::vector{t.url("new/a"), other.root().url("new/a")}, {}, records);
        EXPECT_THAT(Flushes::paths, ::testing::Contains(other.root().path("new"))) << records;
    }
    EXPECT_THAT(Flushes::paths, ::testing::Contains(t.path("new")));
}

TEST_F(SyncFolders, FlushesTheVolumeOnceForManyFolders) {
    std::vector<Url> items;
    fill(t, 32, items);
    syncMoves(items);
    EXPECT_THAT(Flushes::paths, SizeIs(32));
    EXPECT_THAT(volumes, IsEmpty());
    items.push_back(t.write("one more/a", ""));
    Flushes::reset();
    syncMoves(items);
    EXPECT_THAT(Flushes::paths, IsEmpty());
    EXPECT_THAT(volumes, SizeIs(1));
}

TEST_F(SyncFolders, FlushesEachVolumeOfManyFolders) {
    if (!SecondVolume::available()) GTEST_SKIP() << SecondVolume::unavailable;
    const SecondVolume other(1 << 20);
    std::vector<Url> items;
    fill(t, 20, items);
    fill(other.root(), 20, items);
    syncMoves(items);
    EXPECT_THAT(Flushes::paths, IsEmpty());
    ASSERT_THAT(volumes, SizeIs(2));
    EXPECT_NE(volumes[0].starts_with(other.path()), volumes[1].starts_with(other.path()));
}

}  // namespace
