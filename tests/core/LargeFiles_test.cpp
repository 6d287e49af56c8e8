#include "OrdovanCore/LargeFiles.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

using Paths = std::vector<std::string>;

namespace {

constexpr std::int64_t all = std::numeric_limits<std::int64_t>::max();

OrdovanInventoryEntry file(const std::string& path, std::int64_t byteSize) {
    return {.url = Url::file(path), .byteSize = byteSize};
}

Paths top(const std::vector<OrdovanInventoryEntry>& entries, std::int64_t limit, std::int64_t minimumBytes = 0) {
    Paths paths;
    for (const auto& entry : OrdovanLargeFiles::top(entries, limit, minimumBytes)) {
        paths.emplace_back(entry.url.path());
    }
    return paths;
}

}  // namespace

TEST(LargeFiles, ComeLargestFirstAndAtMostAsManyAsAsked) {
    const std::vector entries = {file("/a", 1), file("/b", 30), file("/c", 2), file("/d", 30), file("/e", 7)};
    EXPECT_EQ(top(entries, 3), (Paths{"/b", "/d", "/e"}));
    EXPECT_EQ(top(entries, 1), Paths{"/b"});
    EXPECT_EQ(top(entries, 5), (Paths{"/b", "/d", "/e", "/c", "/a"}));
    EXPECT_EQ(top(entries, all), (Paths{"/b", "/d", "/e", "/c", "/a"}));
}

TEST(LargeFiles, AreNoneForALimitOfZeroOrLess) {
    for (const std::int64_t limit : {std::int64_t{0}, std::int64_t{-1}, std::numeric_limits<std::int64_t>::min()}) {
        EXPECT_EQ(top({file("/a", 1)}, limit), Paths{});
    }
    EXPECT_EQ(top({}, 5), Paths{});
}

TEST(LargeFiles, OfOneSizeComeByNameInStandardOrder) {
    EXPECT_EQ(top({file("/file10.bin", 5), file("/z/file9.bin", 5), file("/FILE1.bin", 5)}, 3),
              (Paths{"/FILE1.bin", "/z/file9.bin", "/file10.bin"}));
    EXPECT_EQ(top({file("/file10.bin", 5), file("/file9.bin", 5), file("/x", 9)}, 2), (Paths{"/x", "/file9.bin"}));
}

TEST(LargeFiles, OfOneSizeAndNameKeepTheirOrder) {
    EXPECT_EQ(top({file("/c/A", 5), file("/a/a", 5), file("/b/A", 5)}, 2), (Paths{"/c/A", "/a/a"}));
}

TEST(LargeFiles, HoldOneOfExactlyTheMinimumAndNoneBelow) {
    EXPECT_EQ(top({file("/a", 9), file("/b", 10), file("/c", 11)}, 9, 10), (Paths{"/c", "/b"}));
    EXPECT_EQ(top({file("/a", 0)}, 9, 0), Paths{"/a"});
}

TEST(LargeFiles, AreNeverDirectoriesPackagesOrLinksButHiddenOnes) {
    std::vector entries = {file("/folder", 99), file("/package.app", 98), file("/link", 97), file("/.hidden", 3)};
    entries[0].isDirectory = true;
    entries[1].isDirectory = entries[1].isPackage = true;
    entries[2].isSymbolicLink = true;
    entries[3].isHidden = true;
    EXPECT_EQ(top(entries, 9), Paths{"/.hidden"});
    entries[1].isDirectory = false;
    EXPECT_EQ(top(entries, 9), Paths{"/.hidden"});
}

TEST(LargeFiles, AreTheEntriesAsTheyWere) {
    OrdovanInventoryEntry entry = file("/a", 5);
    entry.modifiedEpoch = 7.5;
    EXPECT_EQ(OrdovanLargeFiles::top(std::vector{entry}, 1, 0), std::vector{entry});
}

TEST(LargeFiles, OfManyAreTheSameAsThoseOfSortingThemAll) {
    std::vector<OrdovanInventoryEntry> entries;
    for (unsigned i = 0; i < 2000; ++i) entries.push_back(file("/" + std::to_string(i * 7919U % 2003U), i * 31U % 50U));
    const Paths sorted = top(entries, all);
    EXPECT_EQ(sorted.size(), entries.size());
    for (const std::size_t limit : {1U, 39U, 40U, 41U, 777U, 1999U}) {
        const Paths some = top(entries, static_cast<std::int64_t>(limit));
        EXPECT_EQ(some, Paths(sorted.begin(), sorted.begin() + static_cast<std::ptrdiff_t>(limit)));
    }
}
