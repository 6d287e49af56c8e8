// What the in-memory file system offers beyond the port; the port's operations themselves are tested with the
// contract that every implementation has to fulfill.

#include "OrdovanCore/testing/MemoryFileSystem.h"

#include "OrdovanCore/testing/TreeBuilder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <string>

namespace {

using ordovan::testing::build;
using ordovan::testing::ItemType;
using ordovan::testing::MemoryFileSystem;
using testing::ElementsAre;
using testing::IsEmpty;

using Snapshot = std::map<std::string, std::string>;

Url at(std::string_view path) {
    return Url::file(path);
}

template <class T>
int errorOf(const OrdovanResult<T>& result) {
    return result ? 0 : result.error().code;
}

TEST(MemoryFileSystem, BeginsWithNothingButTheHomeFolder) {
    EXPECT_EQ(MemoryFileSystem().snapshot(), (Snapshot{{"home", "folder 0755"}, {"home/user", "folder 0755"}}));
}

TEST(MemoryFileSystem, WritingAgainKeepsTheIdentityAndAdvancesTheTime) {
    MemoryFileSystem fs;
    fs.write("/d/file", "one");
    const auto first = fs.item("/d/file").value();
    fs.write("/d/file", "two");
    const auto second = fs.item("/d/file").value();
    EXPECT_EQ(second.inode, first.inode);
    EXPECT_GT(second.modifiedNs, first.modifiedNs);
    EXPECT_EQ(fs.read("/d/file"), "two");
}

TEST(MemoryFileSystem, ReplacingGivesANewIdentity) {
    MemoryFileSystem fs;
    fs.write("/file", "one");
    const auto identity = fs.fileIdentity(at("/file"));
    fs.replace("/file", "one");
    EXPECT_NE(fs.fileIdentity(at("/file")), identity);
}

TEST(MemoryFileSystem, HardLinksShareContentThatIsWrittenLater) {
    MemoryFileSystem fs;
    build(fs, "/d", {"a = one", "b == a"});
    fs.write("/d/b", "two");
    EXPECT_EQ(fs.read("/d/a"), "two");
    EXPECT_EQ(fs.item("/d/a").value().links, 2U);
}

TEST(MemoryFileSystem, TellsWhatALinkPointsToAndWhereAPathReallyLeads) {
    MemoryFileSystem fs;
    build(fs, "/d", {"real/file = a", "link -> real", "dangling -> nowhere"});
    EXPECT_EQ(fs.linkTarget("/d/link"), "real");
    EXPECT_EQ(fs.linkTarget("/d/real"), std::nullopt);
    EXPECT_EQ(fs.realPath("/d/link/../link/file"), "/d/real/file");
    EXPECT_EQ(fs.realPath("/d/dangling"), std::nullopt);
    EXPECT_EQ(fs.realPath("/"), "/");
    EXPECT_EQ(fs.item("/d/link").value().type, ItemType::link);
    EXPECT_EQ(fs.read("/d/link/file"), "a");
    EXPECT_EQ(fs.read("/d/link"), std::nullopt);
}

TEST(MemoryFileSystem, ListsAFolderByNameOrSaysWhyNot) {
    MemoryFileSystem fs;
    build(fs, "/d", {"b = 22", "a/", "link -> a"});
    const auto items = fs.list("/d").value();
    ASSERT_EQ(items.size(), 3U);
    EXPECT_EQ(items[0].name, "a");
    EXPECT_EQ(items[1].byteSize, 2);
    EXPECT_EQ(items[2].byteSize, 1);
    EXPECT_THAT(fs.list("/d/link").value(), IsEmpty());
    fs.setMode("/d/a", 0300);
    EXPECT_EQ(errorOf(fs.list("/d/a")), EACCES);
    EXPECT_EQ(errorOf(fs.list("/d/b")), ENOTDIR);
    EXPECT_EQ(errorOf(fs.list("/d/missing")), ENOENT);
}

TEST(MemoryFileSystem, SnapshotsTellEverythingThatAMoveMustKeep) {
    MemoryFileSystem fs;
    build(fs, "/d", {"a/", "a/file = hello", "name == a/file", "link -> a/file", "fifo|", "binary = \x01"});
    fs.setMode("/d/a/file", 0600);
    fs.setModified("/d/a/file", 1'500'000'000'000'000'007);
    fs.setModified("/d/binary", 0);
    EXPECT_EQ(fs.snapshot("/d"), (Snapshot{{"a", "folder 0755"},
                                           {"a/file", "file 0600 1500000000.000000007 x2 = hello"},
                                           {"binary",
                                            "file 0644 0.000000000 x1 = sha256 "
                                            "4bf5122f344554c53bde2ebb8cd2b7e3d1600ad631c385a5d7cce23c7785459a"},
                                           {"fifo", "fifo 0644"},
                                           {"link", "link -> a/file"},
                                           {"name", "file 0600 1500000000.000000007 x2 = hello"}}));
}

TEST(MemoryFileSystem, ContentsCountEveryFileOnceAndNoTrashInfo) {
    MemoryFileSystem fs;
    build(fs, "/d", {"a = x", "twin = x", "name == a", "link -> a"});
    const auto before = fs.contents();
    EXPECT_EQ(before, (std::multiset<std::string>{ordovan::testing::digestOf("x"), ordovan::testing::digestOf("x")}));
    ASSERT_TRUE(fs.trash(at("/d/twin")));
    EXPECT_EQ(fs.contents(), before);
}

TEST(MemoryFileSystem, LogsEveryCallOfThePortAndNoSetUp) {
    MemoryFileSystem fs;
    fs.write("/a", "x");
    (void)fs.exists(at("/a"));
    (void)fs.sameVolume(at("/a"), at("/b"));
    (void)fs.move(at("/a"), at("/b"));
    (void)fs.remove(at("/b"));
    EXPECT_THAT(fs.log(), ElementsAre("exists /a", "sameVolume /a -> /b", "move /a -> /b", "remove /b"));
    EXPECT_THAT(fs.changes(), ElementsAre("move /a -> /b", "remove /b"));
    fs.clearLog();
    EXPECT_THAT(fs.log(), IsEmpty());
}

TEST(MemoryFileSystem, AVolumesFreeSpaceFollowsItsFiles) {
    MemoryFileSystem fs;
    fs.addVolume("/mnt/usb", 10);
    fs.write("/mnt/usb/a", "1234");
    EXPECT_EQ(fs.freeBytes("/mnt/usb/a"), 6);
    fs.write("/source", "1234567");
    EXPECT_EQ(errorOf(fs.copy(at("/source"), at("/mnt/usb/b"))), ENOSPC);
    EXPECT_EQ(fs.item("/mnt/usb/b"), std::nullopt);
    EXPECT_EQ(fs.freeBytes("/mnt/usb"), 6);
    ASSERT_TRUE(fs.remove(at("/mnt/usb/a")));
    EXPECT_EQ(fs.freeBytes("/mnt/usb"), 10);
    EXPECT_EQ(errorOf(fs.copy(at("/source"), at("/mnt/usb/b"))), 0);
}

TEST(MemoryFileSystem, SpaceIsFreedWithAFilesLastName) {
    MemoryFileSystem fs;
    fs.addVolume("/mnt", 10);
    build(fs, "/mnt", {"a = 1234", "b == a"});
    ASSERT_TRUE(fs.remove(at("/mnt/a")));
    EXPECT_EQ(fs.freeBytes("/mnt"), 6);
    fs.removeTree("/mnt/b");
    EXPECT_EQ(fs.freeBytes("/mnt"), 10);
}

TEST(MemoryFileSystem, AMountPointCanNotBeMovedOrTrashed) {
    MemoryFileSystem fs;
    fs.addVolume("/mnt/usb");
    EXPECT_EQ(errorOf(fs.move(at("/mnt/usb"), at("/mnt/other"))), EBUSY);
    EXPECT_EQ(errorOf(fs.trash(at("/mnt/usb"))), EBUSY);
    EXPECT_EQ(errorOf(fs.trash(at("/"))), EBUSY);
}

TEST(MemoryFileSystem, EveryVolumeHasATrashOfItsOwn) {
    MemoryFileSystem fs;
    fs.addVolume("/mnt/usb");
    fs.write("/d/file", "a");
    fs.write("/mnt/usb/d/file", "b");
    EXPECT_EQ(fs.trash(at("/d/file")).value().path(), "/home/user/.local/share/Trash/files/file");
    EXPECT_EQ(fs.trash(at("/mnt/usb/d/file")).value().path(), "/mnt/usb/.Trash-1000/files/file");
    EXPECT_TRUE(fs.read("/home/user/.local/share/Trash/info/file.trashinfo").value().contains("\nPath=/d/file\n"));
    EXPECT_TRUE(fs.read("/mnt/usb/.Trash-1000/info/file.trashinfo").value().contains("\nPath=d/file\n"));
}

TEST(MemoryFileSystem, ATrashThatMayNotBeWrittenLeavesTheFileInPlace) {
    MemoryFileSystem fs;
    fs.makeDirectory("/home/user/.local/share/Trash/files");
    fs.setMode("/home/user/.local/share/Trash/files", 0500);
    fs.write("/d/file", "a");
    EXPECT_EQ(errorOf(fs.trash(at("/d/file"))), EACCES);
    EXPECT_EQ(fs.read("/d/file"), "a");
    EXPECT_THAT(fs.snapshot("/home/user/.local/share/Trash/info"), IsEmpty());
}

TEST(MemoryFileSystem, RemovingATreeTakesAllOfItAway) {
    MemoryFileSystem fs;
    build(fs, "/d", {"a/b/file = x", "a/link -> b"});
    fs.setMode("/d/a", 0);
    fs.removeTree("/d/a");
    EXPECT_THAT(fs.snapshot("/d"), IsEmpty());
}

TEST(MemoryFileSystemDeathTest, ATreeThatCanNotBeEndsTheProcess) {
    MemoryFileSystem fs;
    fs.write("/file", "a");
    EXPECT_DEATH(fs.write("/file/below", "b"), "can not set up");
    EXPECT_DEATH(fs.link("/file", "target"), "can not set up");
    EXPECT_DEATH(fs.setMode("/missing", 0600), "can not set up");
}

}  // namespace
