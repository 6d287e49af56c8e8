#include "OrdovanCore/Duplicates.h"

#include "OrdovanCore/testing/MemoryContentReader.h"
#include "OrdovanCore/testing/MemoryFileSystem.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <limits>
#include <memory>

using ordovan::testing::digestOf;
using ordovan::testing::HashingFileSystem;
using ordovan::testing::MemoryContentReader;
using ordovan::testing::MemoryFileSystem;
using Lines = std::vector<std::string>;

namespace {

constexpr std::string_view hashOfNothing = "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855";

OrdovanInventoryEntry entry(const std::string& path, std::int64_t byteSize) {
    return {.url = Url::file(path), .byteSize = byteSize};
}

OrdovanDuplicateGroup group(const std::string& hash, std::int64_t byteSize, std::size_t files) {
    return {hash, byteSize, std::vector<Url>(files)};
}

/// The two ways to find duplicates, by one set of cases: they give the same report.
enum class Way { inTurn, sideBySide };

class Duplicates : public testing::TestWithParam<Way> {
protected:
    MemoryContentReader contents;
    HashingFileSystem hashing{contents};
    std::vector<OrdovanInventoryEntry> entries;

    void add(const std::string& path, const std::string& content) {
        contents.write(path, content);
        entries.push_back(entry(path, static_cast<std::int64_t>(content.size())));
    }

    OrdovanDuplicateReport find() {
        if (GetParam() == Way::inTurn) return OrdovanDuplicateFinder::find(entries, hashing);
        return OrdovanDuplicateFinder::find(entries, contents, {}).value();
    }

    /// Each group in one line: its size, and its files in order.
    Lines lines() {
        Lines lines;
        for (const OrdovanDuplicateGroup& group : find().groups) {
            lines.push_back(std::to_string(group.byteSize) + ":");
            for (const Url& file : group.files) lines.back() += " " + std::string(file.path());
        }
        return lines;
    }
};

}  // namespace

INSTANTIATE_TEST_SUITE_P(Ways, Duplicates, testing::Values(Way::inTurn, Way::sideBySide),
                         [](const auto& way) { return way.param == Way::inTurn ? "InTurn" : "SideBySide"; });

TEST_P(Duplicates, OfNothingAreNone) {
    const OrdovanDuplicateReport report = find();
    EXPECT_EQ(report, OrdovanDuplicateReport{});
    EXPECT_EQ(report.reclaimableBytes(), 0);
    EXPECT_EQ(report.duplicateFileCount(), 0);
}

TEST_P(Duplicates, ReadNoFileWhoseSizeIsItsAlone) {
    add("/a", "x");
    add("/b", "xx");
    add("/c", "");
    EXPECT_EQ(find(), OrdovanDuplicateReport{});
    EXPECT_EQ(contents.opens(), 0U);
}

TEST_P(Duplicates, ComeWithTheMostReclaimableBytesFirst) {
    for (const char* path : {"/a", "/b", "/c"}) add(path, std::string(10, 's'));
    for (const char* path : {"/d", "/e"}) add(path, std::string(100, 'l'));
    const OrdovanDuplicateReport report = find();
    ASSERT_EQ(report.groups.size(), 2U);
    EXPECT_EQ(report.groups[0],
              (OrdovanDuplicateGroup{digestOf(std::string(100, 'l')), 100, {Url::file("/d"), Url::file("/e")}}));
    EXPECT_EQ(report.groups[1].reclaimableBytes(), 20);
    EXPECT_EQ(report.duplicateFileCount(), 5);
    EXPECT_EQ(report.reclaimableBytes(), 120);
}

TEST_P(Duplicates, AreNotFilesOfOneSizeAndDifferentContent) {
    add("/a", "one");
    add("/b", "two");
    EXPECT_EQ(lines(), Lines{});
    add("/c", "one");
    EXPECT_EQ(lines(), Lines{"3: /a /c"});
}

TEST_P(Duplicates, OfEmptyFilesAreAGroupBehindAllThatFreeSpace) {
    add("/a", "");
    add("/b", "");
    add("/c", "x");
    add("/d", "x");
    EXPECT_EQ(lines(), (Lines{"1: /c /d", "0: /a /b"}));
    EXPECT_EQ(find().groups[1].id(), std::string(hashOfNothing) + ":0");
}

TEST_P(Duplicates, ThatFreeNothingComeByHash) {
    // Empty in the inventory, filled since.
    for (const char* path : {"/a", "/b", "/c", "/d"}) entries.push_back(entry(path, 0));
    for (const char* path : {"/a", "/d"}) contents.write(path, "1");
    for (const char* path : {"/b", "/c"}) contents.write(path, "");
    ASSERT_LT(digestOf("1"), hashOfNothing);
    EXPECT_EQ(lines(), (Lines{"0: /a /d", "0: /b /c"}));
}

TEST_P(Duplicates, OfEqualReclaimableBytesComeByHash) {
    add("/a1", "one");
    add("/a2", "one");
    add("/b1", "two");
    add("/b2", "two");
    ASSERT_LT(digestOf("two"), digestOf("one"));
    EXPECT_EQ(lines(), (Lines{"3: /b1 /b2", "3: /a1 /a2"}));
}

TEST_P(Duplicates, AreNeverDirectoriesPackagesOrLinks) {
    for (const char* path : {"/file", "/folder", "/package", "/link"}) add(path, "same");
    entries[1].isDirectory = true;
    entries[2].isPackage = true;
    entries[3].isSymbolicLink = true;
    EXPECT_EQ(lines(), Lines{});
    EXPECT_EQ(contents.opens(), 0U);
}

TEST_P(Duplicates, MayBeHidden) {
    add("/.a", "same");
    add("/b", "same");
    entries[0].isHidden = true;
    EXPECT_EQ(lines(), Lines{"4: /.a /b"});
}

TEST_P(Duplicates, OfAGroupComeByPathInStandardOrder) {
    for (const char* path : {"/f/a10.txt", "/f/B.txt", "/f/a9.txt"}) add(path, "same");
    EXPECT_EQ(lines(), Lines{"4: /f/a9.txt /f/a10.txt /f/B.txt"});
}

TEST_P(Duplicates, WhosePathsCompareAsEqualKeepTheirOrder) {
    for (const char* path : {"/A07", "/a7", "/A7", "/a07"}) add(path, "same");
    EXPECT_EQ(lines(), Lines{"4: /A07 /a7 /A7 /a07"});
}

TEST_P(Duplicates, AreNotFilesThatCanNotBeOpened) {
    for (const char* path : {"/a", "/b", "/c"}) add(path, "same");
    contents.failOpening("/b", EACCES);
    EXPECT_EQ(lines(), Lines{"4: /a /c"});
    contents.failOpening("/c", ENOENT);
    EXPECT_EQ(lines(), Lines{});
}

TEST_P(Duplicates, AreNotFilesThatCanNotBeReadToTheirEnd) {
    for (const char* path : {"/a", "/b", "/c"}) add(path, std::string(2'000'000, 's'));
    contents.failReading("/a", 1'999'990, EIO);
    EXPECT_EQ(lines(), Lines{"2000000: /b /c"});
    contents.failReading("/c", 2'000'000, EIO);
    EXPECT_EQ(lines(), Lines{});
}

TEST_P(Duplicates, AreFoundThroughShortReads) {
    contents.setLongestRead(777);
    add("/a", std::string(300'000, 's'));
    add("/b", std::string(300'000, 's'));
    add("/c", std::string(299'999, 's') + 't');
    EXPECT_EQ(lines(), Lines{"300000: /a /b"});
}

TEST_P(Duplicates, AreHardLinksOfOneFileToo) {
    add("/a", "same");
    contents.hardLink("/b", "/a");
    contents.hardLink("/c", "/a");
    for (const char* path : {"/b", "/c"}) entries.push_back(entry(path, 4));
    EXPECT_EQ(lines(), Lines{"4: /a /b /c"});
}

TEST_P(Duplicates, AreTheSameFileGivenTwice) {
    add("/a", "same");
    entries.push_back(entries[0]);
    EXPECT_EQ(lines(), Lines{"4: /a /a"});
}

TEST_P(Duplicates, GoByTheContentAndNotTheSizeOfTheInventory) {
    for (const char* path : {"/grown1", "/grown2", "/same1", "/same2", "/shrunk1", "/shrunk2", "/gone"}) {
        entries.push_back(entry(path, 600'000));
    }
    const std::string original(600'000, 'o');
    contents.write("/same1", original);
    contents.write("/same2", original);
    contents.write("/grown1", original + "+");
    contents.write("/grown2", original + "+");
    contents.write("/shrunk1", original.substr(0, 599'999));
    contents.write("/shrunk2", original.substr(0, 599'999));
    const OrdovanDuplicateReport report = find();
    ASSERT_EQ(report.groups.size(), 3U);
    EXPECT_EQ(report.reclaimableBytes(), 3 * 600'000);
    for (const OrdovanDuplicateGroup& found : report.groups) {
        EXPECT_EQ(found.files.size(), 2U);
        EXPECT_EQ(found.files[0].path().substr(0, 3), found.files[1].path().substr(0, 3));
    }
}

TEST_P(Duplicates, OfOneContentAndTwoInventorySizesAreTwoGroups) {
    for (const char* path : {"/a", "/b", "/c"}) {
        contents.write(path, "grown");
        entries.push_back(entry(path, 1));
    }
    for (const char* path : {"/d", "/e"}) {
        contents.write(path, "grown");
        entries.push_back(entry(path, 2));
    }
    EXPECT_EQ(lines(), (Lines{"1: /a /b /c", "2: /d /e"}));
}

TEST_P(Duplicates, HoldForSizesNoFileCanHave) {
    for (const std::int64_t size : {std::int64_t{-1}, std::int64_t{1} << 61}) {
        entries = {entry("/a", size), entry("/b", size)};
        contents.write("/a", "same");
        contents.write("/b", "same");
        const OrdovanDuplicateReport report = find();
        ASSERT_EQ(report.groups.size(), 1U);
        EXPECT_EQ(report.groups[0].id(), digestOf("same") + ":" + std::to_string(size));
    }
}

TEST_P(Duplicates, AreFoundWhereverContentsPart) {
    const std::string base(1'300'000, 'b');
    for (const std::size_t at : {0U, 4095U, 4096U, 524'287U, 524'288U, 800'000U, 1'048'576U, 1'295'904U, 1'299'999U}) {
        std::string other = base;
        other[at] = 'x';
        add("/x" + std::to_string(at), other);
        add("/y" + std::to_string(at), other);
    }
    add("/base1", base);
    add("/base2", base);
    const OrdovanDuplicateReport report = find();
    EXPECT_EQ(report.groups.size(), 10U);
    EXPECT_EQ(report.duplicateFileCount(), 20);
}

TEST(DuplicatesInTurn, AskForNothingButTheHashesOfFilesThatShareTheirSize) {
    MemoryFileSystem fs;
    std::vector<OrdovanInventoryEntry> entries;
    for (const char* path : {"/a", "/b", "/c"}) {
        fs.write(path, "same");
        entries.push_back(entry(path, 4));
    }
    fs.write("/d", "other");
    entries.push_back(entry("/d", 5));
    fs.clearLog();
    EXPECT_EQ(OrdovanDuplicateFinder::find(entries, fs).groups.size(), 1U);
    EXPECT_EQ(fs.log(), (Lines{"contentHash /a", "contentHash /b", "contentHash /c"}));
}

TEST(DuplicateGroup, CountsAllButOneFileAsRedundant) {
    EXPECT_EQ(group("h", 7, 0).redundantCount(), 0);
    EXPECT_EQ(group("h", 7, 0).reclaimableBytes(), 0);
    EXPECT_EQ(group("h", 7, 3).redundantCount(), 2);
    EXPECT_EQ(group("h", 7, 3).reclaimableBytes(), 14);
    EXPECT_EQ(group("abc", 7, 3).id(), "abc:7");
}

TEST(DuplicateGroup, IsEqualByHashSizeAndFilesInOrder) {
    OrdovanDuplicateGroup one{"h", 1, {Url::file("/a"), Url::file("/b")}};
    const OrdovanDuplicateGroup same = one;
    EXPECT_EQ(one, same);
    std::swap(one.files[0], one.files[1]);
    EXPECT_NE(one, same);
    EXPECT_NE(group("h", 1, 2), group("h", 2, 2));
    EXPECT_NE(group("h", 1, 2), group("i", 1, 2));
}

TEST(DuplicateReportDeathTest, EndsTheProcessRatherThanCountingWrong) {
    constexpr std::int64_t half = std::numeric_limits<std::int64_t>::max() / 2 + 1;
    EXPECT_DEATH((void)group("h", half, 3).reclaimableBytes(), "");
    EXPECT_EQ(group("h", half, 2).reclaimableBytes(), half);
    const OrdovanDuplicateReport report{{group("h", half, 2), group("i", half, 2)}};
    EXPECT_DEATH((void)report.reclaimableBytes(), "");
}
