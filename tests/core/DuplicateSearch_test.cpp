#include "OrdovanCore/Duplicates.h"
#include "OrdovanCore/testing/MemoryContentReader.h"
#include "OrdovanCore/testing/MemoryFileSystem.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <random>
#include <set>
#include <string>
#include <utility>

using ordovan::testing::digestOf;
using ordovan::testing::HashingFileSystem;
using ordovan::testing::MemoryContentReader;
using Entries = std::vector<OrdovanInventoryEntry>;
using Paths = std::vector<std::string>;

namespace {

OrdovanInventoryEntry entry(const std::string& path, std::size_t byteSize) {
    return {.url = Url::file(path), .byteSize = static_cast<std::int64_t>(byteSize)};
}

/// Files in memory, with the inventory that a scan would have made of them.
struct World {
    MemoryContentReader contents;
    Entries entries;

    void add(const std::string& path, const std::string& content) {
        contents.write(path, content);
        entries.push_back(entry(path, content.size()));
    }
    OrdovanDuplicateReport inTurn() {
        HashingFileSystem fs(contents);
        return OrdovanDuplicateFinder::find(entries, fs);
    }
    std::optional<OrdovanDuplicateReport> search(const OrdovanDuplicateSearchControl& control = {}) {
        return OrdovanDuplicateFinder::find(entries, contents, control);
    }
};

class Random {
public:
    explicit Random(unsigned seed) : generator_(seed) {}
    std::size_t below(std::size_t count) { return generator_() % count; }
    bool once(std::size_t in) { return below(in) == 0; }

private:
    std::mt19937 generator_;
};

/// A content of this size: one of a few, that part early, late or not at all.
std::string someContent(std::size_t size, Random& random) {
    std::string content(size, static_cast<char>('a' + random.below(2)));
    if (size > 0 && random.once(2)) content[random.once(2) ? size - 1 : random.below(size)] = 'x';
    return content;
}

/// A tree of files with all that can be odd about them.
void fill(World& world, std::size_t files, const std::vector<std::size_t>& sizes, Random& random) {
    for (std::size_t i = 0; i < files; ++i) {
        const std::string path = "/f" + std::to_string(random.below(3)) + "/File " + std::to_string(i);
        const std::size_t size = sizes[random.below(sizes.size())];
        if (i > 0 && random.once(8)) {
            const OrdovanInventoryEntry& other = world.entries[random.below(world.entries.size())];
            world.contents.hardLink(path, other.url.path());
            world.entries.push_back(entry(path, static_cast<std::size_t>(other.byteSize)));
        } else {
            world.add(path, someContent(size, random));
        }
        if (random.once(12)) world.contents.write(path, someContent(size + random.below(3), random));
        if (random.once(15)) world.contents.failReading(path, random.below(size + 1), EIO);
        if (random.once(15)) world.contents.failOpening(path, EACCES);
        if (random.once(20)) world.entries.back().isSymbolicLink = true;
        if (random.once(20)) world.entries.push_back(world.entries.back());
    }
    if (random.once(3)) world.contents.setCold();
    if (random.once(2)) world.contents.setLongestRead(1 + random.below(2 * sizes.back() + 1));
}

/// The report without some files, and without the groups that are none any more.
OrdovanDuplicateReport without(OrdovanDuplicateReport report, const std::set<std::string>& paths) {
    for (OrdovanDuplicateGroup& group : report.groups) {
        std::erase_if(group.files, [&](const Url& file) { return paths.contains(std::string(file.path())); });
    }
    std::erase_if(report.groups, [](const OrdovanDuplicateGroup& group) { return group.files.size() < 2; });
    std::ranges::sort(report.groups, {}, &OrdovanDuplicateGroup::id);
    return report;
}

std::vector<std::size_t> sizesOf(bool large, Random& random) {
    if (!large) return {0, 1, 64, 65, 1 + random.below(300)};
    return {262'145 + random.below(300'000), 524'288, 524'288 * 2 + random.below(2)};
}

}  // namespace

TEST(DuplicateSearch, ReportsWhatHashingInTurnReportsOnThousandsOfTrees) {
    for (unsigned seed = 0; seed < 4000; ++seed) {
        Random random(seed);
        World world;
        fill(world, random.below(40), sizesOf(false, random), random);
        const auto workers = static_cast<unsigned>(1 + random.below(3));
        ASSERT_EQ(world.search({.workers = workers}), world.inTurn()) << "seed " << seed;
    }
}

TEST(DuplicateSearch, ReportsTheSameOnTreesOfLargeFiles) {
    for (unsigned seed = 0; seed < 60; ++seed) {
        Random random(seed);
        World world;
        fill(world, 2 + random.below(12), sizesOf(true, random), random);
        world.contents.setLongestRead(200'000);
        ASSERT_EQ(world.search({.workers = 2}), world.inTurn()) << "seed " << seed;
    }
}

TEST(DuplicateSearch, ReportsTheSameOfBucketsThatAreComparedInSlices) {
    for (const std::size_t size : {0U, 10U, 100'000U, 530'000U}) {
        Random random(static_cast<unsigned>(size));
        World world;
        const std::size_t files = size > 200'000 ? 150 : 400;
        for (std::size_t i = 0; i < files; ++i) world.add("/" + std::to_string(i), someContent(size, random));
        world.contents.hardLink("/link", "/7");
        world.entries.push_back(entry("/link", size));
        world.contents.failReading("/9", 0, EIO);
        const OrdovanDuplicateReport expected = world.inTurn();
        EXPECT_EQ(world.search({.workers = 1}), expected) << size;
        EXPECT_EQ(world.search({.workers = 3}), expected) << size;
    }
}

TEST(DuplicateSearch, ReportsTheSameWhenMoreContentsDifferThanFitInMemory) {
    World world;
    for (std::size_t i = 0; i < 60; ++i) {
        std::string content(100'000, 's');
        content[i * 1000] = static_cast<char>('0' + i % 20);
        world.add("/a" + std::to_string(i), content);
        world.add("/b" + std::to_string(i), content);
    }
    EXPECT_EQ(world.search(), world.inTurn());
    EXPECT_EQ(world.inTurn().groups.size(), 60U);
}

TEST(DuplicateSearch, IsRightAboutAllFilesThatDoNotChangeMeanwhile) {
    for (unsigned seed = 0; seed < 2500; ++seed) {
        Random random(seed);
        World world;
        const std::vector<std::size_t> sizes = sizesOf(seed % 25 == 0, random);
        fill(world, 3 + random.below(20), sizes, random);
        std::vector<std::string> changing;
        for (const OrdovanInventoryEntry& file : world.entries) {
            if (random.once(3)) changing.emplace_back(file.url.path());
        }
        const std::set<std::string> unreliable(changing.begin(), changing.end());
        const OrdovanDuplicateReport before = world.inTurn();
        std::size_t reads = 0;
        world.contents.setBeforeRead([&](std::string_view, std::int64_t) {
            if (changing.empty() || ++reads % 3 != 0) return;
            const std::string& path = changing[random.below(changing.size())];
            world.contents.replace(path, someContent(sizes[random.below(sizes.size())], random));
        });
        const OrdovanDuplicateReport report = world.search({.workers = 1}).value();
        ASSERT_EQ(without(report, unreliable), without(before, unreliable)) << "seed " << seed;
    }
}

TEST(DuplicateSearch, GoesOnByAnotherNameOfAFileWhenOneIsReplaced) {
    for (const bool gone : {false, true}) {
        World world;
        const std::string content(2'000'000, 's');
        world.add("/a", content);
        world.contents.hardLink("/b", "/a");
        world.contents.hardLink("/c", "/a");
        for (const char* path : {"/b", "/c"}) world.entries.push_back(entry(path, content.size()));
        world.add("/d", content);
        bool done = false;
        world.contents.setBeforeRead([&](std::string_view, std::int64_t offset) {
            if (offset < 1'000'000 || std::exchange(done, true)) return;
            gone ? world.contents.remove("/a") : world.contents.replace("/a", "another");
        });
        const OrdovanDuplicateReport report = world.search({.workers = 1}).value();
        ASSERT_EQ(report.groups.size(), 1U);
        EXPECT_EQ(report.groups[0].files, (std::vector{Url::file("/b"), Url::file("/c"), Url::file("/d")}));
    }
}

TEST(DuplicateSearch, NeverReportsAHashThatNoContentEverHad) {
    for (unsigned seed = 0; seed < 1500; ++seed) {
        Random random(seed);
        World world;
        const std::size_t size = seed % 25 == 0 ? 700'000 : 40;
        std::set<std::string> digests;
        const auto content = [&] {
            std::string some = someContent(size, random);
            digests.insert(digestOf(some));
            return some;
        };
        for (std::size_t i = 0; i < 8; ++i) world.add("/" + std::to_string(i), content());
        std::size_t reads = 0;
        world.contents.setBeforeRead([&](std::string_view, std::int64_t) {
            if (++reads % 3 == 0) world.contents.replace("/" + std::to_string(random.below(8)), content());
        });
        const OrdovanDuplicateReport report = world.search({.workers = 1}).value();
        for (const OrdovanDuplicateGroup& group : report.groups) {
            ASSERT_TRUE(digests.contains(group.contentHash)) << "seed " << seed;
        }
    }
}

TEST(DuplicateSearch, ReadsHardLinksOnce) {
    for (const std::size_t size : {100U, 700'000U}) {
        World world;
        world.add("/a", std::string(size, 's'));
        for (const char* path : {"/b", "/c"}) {
            world.contents.hardLink(path, "/a");
            world.entries.push_back(entry(path, size));
        }
        ASSERT_EQ(world.search()->duplicateFileCount(), 3);
        EXPECT_EQ(world.contents.bytesRead(), size > 262'144 ? size + 8192 : size);
    }
}

TEST(DuplicateSearch, ReadsLargeFilesNoFurtherThanTheirEndsWhereThosePart) {
    World world;
    std::string content(4'000'000, 's');
    world.add("/a", content);
    content.back() = 't';
    world.add("/b", content);
    content.front() = 't';
    world.add("/c", content);
    EXPECT_EQ(world.search(), OrdovanDuplicateReport{});
    EXPECT_EQ(world.contents.bytesRead(), 3 * 8192U);
}

TEST(DuplicateSearch, ReadsLargeFilesNoFurtherThanThePieceWhereTheyPart) {
    World world;
    std::string content(20'000'000, 's');
    for (int i = 0; i < 3; ++i) {
        content[1'000'000] = static_cast<char>('0' + i);
        world.add("/" + std::to_string(i), content);
    }
    EXPECT_EQ(world.search(), OrdovanDuplicateReport{});
    EXPECT_LT(world.contents.bytesRead(), 3 * 1'100'000U);
}

TEST(DuplicateSearch, ReadsNoByteOfAFileTwiceButTheSamples) {
    World world;
    for (const char* path : {"/a", "/b", "/c"}) world.add(path, std::string(3'000'000, 's'));
    for (const char* path : {"/d", "/e"}) world.add(path, std::string(200'000, 's'));
    ASSERT_EQ(world.search()->groups.size(), 2U);
    EXPECT_EQ(world.contents.bytesRead(), 3 * (3'000'000U + 8192U) + 2 * 200'000U);
}

TEST(DuplicateSearch, HasNoMoreFilesOpenThanThreads) {
    World world;
    for (int i = 0; i < 300; ++i) world.add("/" + std::to_string(i), std::string(i < 20 ? 600'000 : 50, 's'));
    world.contents.setMostOpen(2);
    EXPECT_EQ(world.search({.workers = 2})->duplicateFileCount(), 300);
    EXPECT_LE(world.contents.mostOpenAtOnce(), 2U);
}

TEST(DuplicateSearch, ReadsNothingWhenItIsStoppedBeforeItBegins) {
    World world;
    world.add("/a", "same");
    world.add("/b", "same");
    EXPECT_EQ(world.search({.shouldContinue = [] { return false; }}), std::nullopt);
    EXPECT_EQ(world.contents.opens(), 0U);
}

TEST(DuplicateSearch, ReportsNothingWhereverItIsStopped) {
    World world;
    for (const char* path : {"/a", "/b", "/c"}) world.add(path, std::string(1'500'000, 's'));
    for (const char* path : {"/d", "/e", "/f"}) world.add(path, "small");
    for (const char* path : {"/g", "/h"}) {
        world.contents.write(path, "another size");
        world.entries.push_back(entry(path, 3));
    }
    const OrdovanDuplicateReport all = world.inTurn();
    for (std::size_t allowed = 0;; ++allowed) {
        std::size_t asked = 0;
        const auto report = world.search({.shouldContinue = [&] { return ++asked <= allowed; }, .workers = 1});
        if (asked <= allowed) {
            EXPECT_EQ(report, all);
            EXPECT_GT(allowed, 20U);
            return;
        }
        ASSERT_EQ(report, std::nullopt) << allowed;
        ASSERT_EQ(asked, allowed + 1) << "asked again after it was told to stop";
    }
}

TEST(DuplicateSearch, StopsBetweenThePiecesOfALargeFile) {
    World world;
    for (const char* path : {"/a", "/b"}) world.add(path, std::string(50'000'000, 's'));
    bool stop = false;
    world.contents.setBeforeRead(
        [&](std::string_view, std::int64_t offset) { stop = offset > 2'000'000 && offset < 40'000'000; });
    EXPECT_EQ(world.search({.shouldContinue = [&] { return !stop; }, .workers = 1}), std::nullopt);
    EXPECT_LT(world.contents.bytesRead(), 7'000'000U);
}

TEST(DuplicateSearch, TellsItsProgressUpToAllThatSharesItsSize) {
    World world;
    for (int i = 0; i < 200; ++i)
        world.add("/" + std::to_string(i), std::string(i % 3 == 0 ? 10 : 900'000, i % 2 == 0 ? 'a' : 'b'));
    world.add("/alone", "x");
    world.contents.failOpening("/7", EACCES);
    world.contents.hardLink("/link", "/8");
    world.entries.push_back(entry("/link", 900'000));
    OrdovanDuplicateProgress last;
    std::size_t told = 0;
    const auto progressed = [&](const OrdovanDuplicateProgress& progress) {
        ++told;
        EXPECT_GE(progress.filesDone, last.filesDone);
        EXPECT_GE(progress.bytesDone, last.bytesDone);
        EXPECT_LE(progress.bytesDone, progress.bytesTotal);
        last = progress;
    };
    ASSERT_TRUE(world.search({.progressed = progressed, .workers = 2}));
    EXPECT_GT(told, 5U);
    EXPECT_EQ(last.filesTotal, 201U);
    EXPECT_EQ(last.filesDone, 201U);
    EXPECT_EQ(last.bytesTotal, 67U * 10U + 134U * 900'000U);
    EXPECT_EQ(last.bytesDone, last.bytesTotal);
}

TEST(DuplicateSearch, FindsAHundredThousandEqualTinyFiles) {
    World world;
    for (int i = 0; i < 100'000; ++i) world.add("/" + std::to_string(i), "tiny");
    const OrdovanDuplicateReport report = world.search().value();
    ASSERT_EQ(report.groups.size(), 1U);
    EXPECT_EQ(report.groups[0].files.size(), 100'000U);
    EXPECT_EQ(report.reclaimableBytes(), 4 * 99'999);
    EXPECT_EQ(report.groups[0].files[10], Url::file("/10"));
}
