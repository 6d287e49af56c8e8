#include "OrdovanCore/testing/MemoryDirectoryReader.h"

#include "OrdovanCore/testing/TreeBuilder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <vector>

namespace {

using ordovan::testing::MemoryDirectoryReader;
using ordovan::testing::MemoryFileSystem;
using testing::ElementsAre;

OrdovanInventoryEntry entryFor(const OrdovanResult<std::vector<OrdovanInventoryEntry>>& entries,
                               std::string_view name) {
    for (const OrdovanInventoryEntry& entry : entries.value()) {
        if (entry.url.lastPathComponent() == name) return entry;
    }
    return {};
}

TEST(MemoryDirectoryReader, ListsAFoldersChildrenWithTheirAttributes) {
    MemoryFileSystem fs;
    ordovan::testing::build(fs, "/d", {".hidden", "file = hello", "folder/", "link -> folder"});
    fs.setModified("/d/file", 1'500'000'000'500'000'000);
    MemoryDirectoryReader reader(fs);
    const auto children = reader.children(Url::file("/d"));
    ASSERT_EQ(children->size(), 4U);
    EXPECT_EQ(entryFor(children, "file"),
              (OrdovanInventoryEntry{.url = Url::file("/d/file"), .byteSize = 5, .modifiedEpoch = 1'500'000'000.5}));
    EXPECT_TRUE(entryFor(children, ".hidden").isHidden);
    EXPECT_TRUE(entryFor(children, "folder").isDirectory);
    EXPECT_TRUE(entryFor(children, "link").isSymbolicLink);
    EXPECT_FALSE(entryFor(children, "link").isDirectory);
}

TEST(MemoryDirectoryReader, RemembersWhatWasReadAndFailsAsTold) {
    MemoryDirectoryReader reader({"a/", "b/"});
    reader.setUnreadable("/root/a", EIO);
    EXPECT_EQ(reader.children(Url::file("/root/a")).error(), OrdovanSystemError::posix(EIO));
    EXPECT_TRUE(reader.children(Url::file("/root/b")));
    EXPECT_EQ(reader.children(Url::file("/root/c")).error(), OrdovanSystemError::posix(ENOENT));
    EXPECT_THAT(reader.directoriesRead(), ElementsAre("/root/a", "/root/b", "/root/c"));
}

TEST(MemoryDirectoryReader, MisreportsAsTold) {
    MemoryDirectoryReader reader({"Mail.app/", "unknown = hello", "link -> Mail.app", "huge = x"});
    reader.setPackage("/root/Mail.app");
    reader.setWithoutAttributes("/root/unknown");
    reader.setPlainDirectory("/root/link");
    reader.setByteSize("/root/huge", std::int64_t{1} << 40);
    const auto children = reader.children(Url::file("/root"));
    EXPECT_TRUE(entryFor(children, "Mail.app").isPackage);
    EXPECT_TRUE(entryFor(children, "Mail.app").isDirectory);
    EXPECT_EQ(entryFor(children, "unknown"), (OrdovanInventoryEntry{.url = Url::file("/root/unknown")}));
    EXPECT_TRUE(entryFor(children, "link").isDirectory);
    EXPECT_FALSE(entryFor(children, "link").isSymbolicLink);
    EXPECT_EQ(entryFor(children, "huge").byteSize, std::int64_t{1} << 40);
}

TEST(MemoryDirectoryReader, ResolvesLinksUnlessToldOtherwise) {
    MemoryDirectoryReader reader({"real/deep/", "link -> real"});
    EXPECT_EQ(reader.resolvedPath(Url::file("/root/link/deep/.")), "/root/real/deep");
    EXPECT_EQ(reader.resolvedPath(Url::file("/root/missing/../gone")), "/root/gone");
    reader.setResolvedPath("/root/link", "/elsewhere");
    EXPECT_EQ(reader.resolvedPath(Url::file("/root/link")), "/elsewhere");
}

}  // namespace
