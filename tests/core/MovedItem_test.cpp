#include "OrdovanCore/platform/MovedItem.h"

#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

#include <linux/magic.h>

#include <string>

using ordovan::isMoved;
using ordovan::test::TempFolder;

namespace {

struct ::stat file(::ino_t inode, ::off_t size, long modified) {
    struct ::stat facts{};
    facts.st_mode = S_IFREG | 0644;
    facts.st_ino = inode;
    facts.st_size = size;
    facts.st_mtim = {modified, 5};
    return facts;
}

TEST(MovedItem, IsTheOneThatWasExamined) {
    EXPECT_TRUE(isMoved(file(1, 2, 3), file(1, 2, 3), true));
    EXPECT_FALSE(isMoved(file(1, 2, 3), file(9, 2, 3), true));
    EXPECT_FALSE(isMoved(file(1, 2, 3), file(1, 9, 3), true));
    EXPECT_FALSE(isMoved(file(1, 2, 3), file(1, 2, 9), true));
}

TEST(MovedItem, MayHaveAnotherStatusChangeTime) {
    struct ::stat there = file(1, 2, 3);
    there.st_ctim = {99, 0};
    EXPECT_TRUE(isMoved(file(1, 2, 3), there, true));
}

TEST(MovedItem, IsToldBySizeAndTimeWhereInodeNumbersChange) {
    EXPECT_TRUE(isMoved(file(1, 2, 3), file(9, 2, 3), false));
    EXPECT_FALSE(isMoved(file(1, 2, 3), file(9, 9, 3), false));
    EXPECT_FALSE(isMoved(file(1, 2, 3), file(9, 2, 9), false));
}

TEST(MovedItem, IsOfItsOwnKind) {
    struct ::stat link = file(1, 2, 3);
    link.st_mode = S_IFLNK | 0777;
    EXPECT_FALSE(isMoved(file(1, 2, 3), link, true));
    EXPECT_FALSE(isMoved(file(1, 2, 3), link, false));
}

TEST(MovedItem, MayBeAFolderThatChangesMeanwhile) {
    struct ::stat folder = file(1, 2, 3), there = file(1, 9, 9);
    folder.st_mode = there.st_mode = S_IFDIR | 0755;
    EXPECT_TRUE(isMoved(folder, there, true));
}

TEST(MovedItem, KeepsItsNumberOnLocalDisksOnly) {
    for (const unsigned long type : {EXT4_SUPER_MAGIC, XFS_SUPER_MAGIC, TMPFS_MAGIC, NFS_SUPER_MAGIC}) {
        EXPECT_TRUE(ordovan::keepsInodeNumbers(type)) << type;
    }
    EXPECT_TRUE(ordovan::keepsInodeNumbers(BTRFS_SUPER_MAGIC));
    for (const unsigned long type : {FUSE_SUPER_MAGIC, MSDOS_SUPER_MAGIC, OVERLAYFS_SUPER_MAGIC, EXFAT_SUPER_MAGIC}) {
        EXPECT_FALSE(ordovan::keepsInodeNumbers(type)) << type;
    }
}

TEST(MovedItem, IsLookedForWhereItStands) {
    const TempFolder t;
    t.write("a", "same");
    t.write("b", "other");
    struct ::stat a{}, b{};
    const std::string pathOfA = t.path("a"), pathOfB = t.path("b");
    ASSERT_EQ(::lstat(pathOfA.c_str(), &a), 0);
    ASSERT_EQ(::lstat(pathOfB.c_str(), &b), 0);
    EXPECT_TRUE(isMoved(a, a, pathOfA.c_str()));
    EXPECT_FALSE(isMoved(a, b, pathOfB.c_str()));
}

}  // namespace
