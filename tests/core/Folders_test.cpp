#include "OrdovanCore/platform/Folders.h"

#include "tests/support/Flushes.h"
#include "tests/support/SecondVolume.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>
#include <linux/magic.h>
#include <sys/vfs.h>

#include <filesystem>
#include <string>
#include <vector>

using ordovan::syncFoldersOf;
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

class SyncFolders : public testing::Test {
protected:
    void SetUp() override {
        struct ::statfs volume;
        ASSERT_EQ(::statfs(t.path().c_str(), &volume), 0);
        if (volume.f_type == BTRFS_SUPER_MAGIC) GTEST_SKIP() << "NOT TESTED: btrfs, where whole volumes are flushed";
        Flushes::reset();
        volumes.clear();
    }
    /// A file in each of so many folders.
    static void fill(const TempFolder& top, int folders, std::vector<Url>& items) {
        for (int i = 0; i < folders; ++i) items.push_back(top.write(std::to_string(i) + "/a", ""));
    }
    TempFolder t;
};

TEST_F(SyncFolders, FlushesEachOfAFewFoldersOnce) {
    syncFoldersOf(std::vector{t.write("x/a", ""), t.write("x/b", ""), t.write("y/c", "")});
    EXPECT_THAT(Flushes::paths, UnorderedElementsAre(t.path("x"), t.path("y")));
    EXPECT_THAT(volumes, IsEmpty());
}

TEST_F(SyncFolders, FlushesNothingForItemsThatAreNotThere) {
    t.makeFolder("y");
    syncFoldersOf(std::vector{t.url("y/a"), t.url("missing/b"), t.write("x/a", ""), Url::file("")});
    EXPECT_THAT(Flushes::paths, UnorderedElementsAre(t.path("x")));
    EXPECT_THAT(volumes, IsEmpty());
}

TEST_F(SyncFolders, FlushesTheVolumeOnceForManyFolders) {
    std::vector<Url> items;
    fill(t, 32, items);
    syncFoldersOf(items);
    EXPECT_THAT(Flushes::paths, SizeIs(32));
    EXPECT_THAT(volumes, IsEmpty());
    items.push_back(t.write("one more/a", ""));
    Flushes::reset();
    syncFoldersOf(items);
    EXPECT_THAT(Flushes::paths, IsEmpty());
    EXPECT_THAT(volumes, SizeIs(1));
}

TEST_F(SyncFolders, FlushesEachVolumeOfManyFolders) {
    if (!SecondVolume::available()) GTEST_SKIP() << SecondVolume::unavailable;
    const SecondVolume other(1 << 20);
    std::vector<Url> items;
    fill(t, 20, items);
    fill(other.root(), 20, items);
    syncFoldersOf(items);
    EXPECT_THAT(Flushes::paths, IsEmpty());
    ASSERT_THAT(volumes, SizeIs(2));
    EXPECT_NE(volumes[0].starts_with(other.path()), volumes[1].starts_with(other.path()));
}

}  // namespace
