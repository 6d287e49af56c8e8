// Folders that are made where the file system does not bring changes of names to the disk in their order.

#include "OrdovanCore/platform/ConfinedFolders.h"
#include "OrdovanCore/platform/RunFileSystem.h"
#include "tests/support/Flushes.h"
#include "tests/support/Results.h"
#include "tests/support/SecondVolume.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>
#include <linux/magic.h>
#include <sys/syscall.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <initializer_list>
#include <string>

using ordovan::ConfinedFolders;
using ordovan::RunFileSystem;
using ordovan::TrashSession;
using ordovan::test::error;
using ordovan::test::Flushes;
using ordovan::test::SecondVolume;
using ordovan::test::TempFolder;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

/// The type of every file system.
long type = MSDOS_SUPER_MAGIC;

}  // namespace

// Takes the place of the C library's.
extern "C" int fstatfs(int file, struct statfs* facts) noexcept {
    if (::syscall(SYS_fstatfs, file, facts) != 0) return -1;
    facts->f_type = type;
    return 0;
}

namespace {

class MadeFolders : public testing::Test {
protected:
    MadeFolders() {
        type = MSDOS_SUPER_MAGIC;
        Flushes::reset();
    }
    ~MadeFolders() override { Flushes::reset(); }
    TempFolder t;
};

TEST_F(MadeFolders, AreOnTheDiskEachOnceBeforeAFileGoesThere) {
    ConfinedFolders folders(t.path());
    EXPECT_EQ(folders.make(t.path("ordovan+/Documents/2026"), 0777), 0);
    EXPECT_THAT(Flushes::paths, ElementsAre(t.path(), t.path("ordovan+"), t.path("ordovan+/Documents")));
    EXPECT_EQ(folders.make(t.path("ordovan+/Documents/2026"), 0777), 0);
    EXPECT_EQ(folders.make(t.path("ordovan+/Images"), 0777), 0);
    EXPECT_THAT(Flushes::paths,
                ElementsAre(t.path(), t.path("ordovan+"), t.path("ordovan+/Documents"), t.path("ordovan+")));
}

TEST_F(MadeFolders, AreLeftToTheJournalWhereThereIsOne) {
    ConfinedFolders folders(t.path());
    for (const long journaled :
         std::initializer_list<long>{EXT4_SUPER_MAGIC, XFS_SUPER_MAGIC, BTRFS_SUPER_MAGIC, F2FS_SUPER_MAGIC}) {
        type = journaled;
        EXPECT_EQ(folders.make(t.path(std::to_string(journaled) + "/Documents"), 0777), 0);
    }
    EXPECT_THAT(Flushes::paths, IsEmpty());
}

TEST_F(MadeFolders, AreNotUsedWhenTheyCanNotBeFlushed) {
    RunFileSystem fs(t.url());
    t.write("a", "one");
    Flushes::failing = [](const std::string&) { return EIO; };
    EXPECT_EQ(error(fs.createDirectory(t.url("ordovan+/Documents"))), EIO);
    EXPECT_FALSE(t.has("ordovan+/Documents"));
}

TEST_F(MadeFolders, OfATrashAreOnTheDiskBeforeAnItemGoesThere) {
    ::setenv("XDG_DATA_HOME", t.path("data").c_str(), 1);
    t.makeFolder("data");
    {
        TrashSession session;
        EXPECT_TRUE(session.move(t.write("a", "one")));
        EXPECT_THAT(Flushes::paths, ElementsAre(t.path("data"), t.path("data/Trash"), t.path("data/Trash")));
        EXPECT_TRUE(session.move(t.write("b", "two")));
    }
    EXPECT_EQ(Flushes::paths.size(), 3U);
    ::unsetenv("XDG_DATA_HOME");
}

TEST_F(MadeFolders, OfATrashAreNotUsedWhenTheyCanNotBeFlushed) {
    if (!SecondVolume::available()) GTEST_SKIP() << SecondVolume::unavailable;
    const SecondVolume volume;
    ::setenv("XDG_DATA_HOME", volume.path("data").c_str(), 1);
    volume.root().makeFolder("data");
    Flushes::failing = [](const std::string&) { return EIO; };
    const Url file = volume.root().write("a", "one");
    TrashSession session;
    for (const char* time : {"the first time", "the second time"}) {
        EXPECT_FALSE(session.move(file)) << time;
        EXPECT_EQ(volume.root().read("a"), "one");
        EXPECT_FALSE(volume.root().has("data/Trash")) << time;
        EXPECT_FALSE(volume.root().has(".Trash-" + std::to_string(::geteuid()))) << time;
    }
    ::unsetenv("XDG_DATA_HOME");
}

}  // namespace
