#include "OrdovanCore/testing/TreeBuilder.h"

#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <string>

namespace {

using ordovan::test::TempFolder;
using ordovan::testing::build;
using ordovan::testing::buildOnDisk;
using ordovan::testing::describeTree;
using ordovan::testing::MemoryFileSystem;
using ordovan::testing::TreeItem;

/// Descriptions without times, which are this moment's on a disk.
std::map<std::string, std::string> withoutTimes(std::map<std::string, std::string> tree) {
    for (auto& [path, text] : tree) {
        if (!text.starts_with("file ")) continue;
        const std::size_t time = text.find(' ', 5) + 1;
        text.erase(time, text.find(' ', time) + 1 - time);
    }
    return tree;
}

TEST(TreeBuilder, BuildsTheSameTreeInMemoryAndOnADisk) {
    const std::initializer_list<std::string_view> items = {
        "a/", "a/x.pdf = hello = world", "a/l -> ../x", "fifo|", "b == a/x.pdf", "deep/er/empty", "o -> a -> b"};
    MemoryFileSystem memory;
    const TempFolder disk;
    build(memory, "/d", items);
    buildOnDisk(disk.path(), items);
    EXPECT_EQ(withoutTimes(describeTree(disk.path())), withoutTimes(memory.snapshot("/d")));
    EXPECT_EQ(withoutTimes(memory.snapshot("/d")), (std::map<std::string, std::string>{
                                                       {"a", "folder 0755"},
                                                       {"a/l", "link -> ../x"},
                                                       {"a/x.pdf", "file 0644 x2 = hello = world"},
                                                       {"b", "file 0644 x2 = hello = world"},
                                                       {"deep", "folder 0755"},
                                                       {"deep/er", "folder 0755"},
                                                       {"deep/er/empty", "file 0644 x1 = "},
                                                       {"fifo", "fifo 0644"},
                                                       {"o", "link -> a -> b"},
                                                   }));
}

TEST(TreeBuilder, TakesAnyBytesAsAName) {
    const TempFolder disk;
    const TreeItem odd{.path = "a = b\n\xff|", .content = "x"};
    buildOnDisk(disk.path(), std::span(&odd, 1));
    EXPECT_EQ(disk.read(odd.path), "x");
}

TEST(TreeBuilder, DescribesTimesToTheNanosecond) {
    const TempFolder disk;
    const std::string file(disk.write("file", "a").path());
    const ::timespec times[2] = {{1, 2}, {1'234'567'890, 123'456'789}};
    ASSERT_EQ(::utimensat(AT_FDCWD, file.c_str(), times, 0), 0);
    ::chmod(file.c_str(), 0600);
    EXPECT_EQ(describeTree(disk.path()).at("file"), "file 0600 1234567890.123456789 x1 = a");
}

}  // namespace
