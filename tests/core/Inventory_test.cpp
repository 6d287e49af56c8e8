#include "OrdovanCore/Inventory.h"
#include "OrdovanCore/testing/MemoryDirectoryReader.h"

#include <gtest/gtest.h>

#include <limits>
#include <utility>

using ordovan::testing::MemoryDirectoryReader;
using Lines = std::vector<std::string>;

namespace {

const Url root = Url::file("/root");

OrdovanInventory scan(MemoryDirectoryReader& reader, const OrdovanInventoryLimits& limits = {},
                      std::vector<Url> excluded = {}) {
    return OrdovanInventoryScanner::scan(root, reader, limits, excluded, [] { return true; });
}

std::string relative(const Url& url) {
    return std::string(url.path().substr(std::min(url.path().size(), root.path().size() + 1)));
}

Lines names(const std::vector<OrdovanInventoryEntry>& entries) {
    Lines lines;
    for (const auto& entry : entries) lines.push_back(relative(entry.url));
    return lines;
}

Lines skips(const OrdovanInventory& inventory) {
    Lines lines;
    for (const auto& skip : inventory.skipped)
        lines.push_back(relative(skip.url) + ": " + std::string(rawValue(skip.reason)));
    return lines;
}

/// A reader whose every directory has the same children, wherever they are.
class ForeignReader final : public OrdovanDirectoryReading {
public:
    explicit ForeignReader(std::vector<OrdovanInventoryEntry> children) : children_(std::move(children)) {}
    OrdovanResult<std::vector<OrdovanInventoryEntry>> children(const Url&) override { return children_; }
    std::string resolvedPath(const Url& directory) override { return std::string(directory.path()); }

private:
    std::vector<OrdovanInventoryEntry> children_;
};

}  // namespace

TEST(Inventory, OfAnEmptyFolderIsEmptyAndReadable) {
    MemoryDirectoryReader reader({});
    const OrdovanInventory inventory = scan(reader);
    EXPECT_EQ(inventory, OrdovanInventory{});
    EXPECT_FALSE(inventory.rootWasUnreadable(root));
}

TEST(Inventory, WalksDepthFirstInStandardOrder) {
    MemoryDirectoryReader reader({"file10", "file9", "B/x", "a/z", "a/Y", "c"});
    const OrdovanInventory inventory = scan(reader);
    EXPECT_EQ(names(inventory.files), (Lines{"a/Y", "a/z", "B/x", "c", "file9", "file10"}));
    EXPECT_EQ(names(inventory.directories), (Lines{"a", "B"}));
}

TEST(Inventory, WithRoomForNoFileEndsAtTheFirstChildOfAnyKind) {
    MemoryDirectoryReader reader({"a/", "b"});
    const OrdovanInventory inventory = scan(reader, {.maxFiles = 0});
    EXPECT_TRUE(inventory.truncated);
    EXPECT_EQ(skips(inventory), Lines{"a: fileLimitReached"});
    EXPECT_TRUE(inventory.files.empty() && inventory.directories.empty());
}

TEST(Inventory, IsTruncatedOnlyWhenAChildFollowsTheLastFileTaken) {
    MemoryDirectoryReader exact({"a", "b"});
    EXPECT_FALSE(scan(exact, {.maxFiles = 2}).truncated);
    MemoryDirectoryReader more({"a", "b", "c/"});
    const OrdovanInventory inventory = scan(more, {.maxFiles = 2});
    EXPECT_TRUE(inventory.truncated);
    EXPECT_EQ(skips(inventory), Lines{"c: fileLimitReached"});
}

TEST(Inventory, RecordsOneSkipWhenALimitEndsTheWalkInsideAFolder) {
    MemoryDirectoryReader reader({"a/b/x", "a/b/y", "a/z", "q"});
    const OrdovanInventory inventory = scan(reader, {.maxFiles = 1});
    EXPECT_EQ(names(inventory.files), Lines{"a/b/x"});
    EXPECT_EQ(skips(inventory), Lines{"a/b/y: fileLimitReached"});
}

TEST(Inventory, EndsWhenADirectoryMoreIsMet) {
    MemoryDirectoryReader reader({"a/", "b/", "c"});
    const OrdovanInventory inventory = scan(reader, {.maxDirectories = 1});
    EXPECT_TRUE(inventory.truncated);
    EXPECT_EQ(names(inventory.directories), Lines{"a"});
    EXPECT_EQ(skips(inventory), Lines{"b: directoryLimitReached"});
}

TEST(Inventory, ListsButDoesNotReadADirectoryBelowTheDepthLimit) {
    MemoryDirectoryReader reader({"a/b/c/x", "a/y"});
    const OrdovanInventory inventory = scan(reader, {.maxDepth = 1});
    EXPECT_EQ(names(inventory.directories), (Lines{"a", "a/b"}));
    EXPECT_EQ(names(inventory.files), Lines{"a/y"});
    EXPECT_EQ(skips(inventory), Lines{"a/b: depthLimitReached"});
    EXPECT_FALSE(inventory.truncated);
}

TEST(Inventory, ReadsDownToDepthSixteenByDefault) {
    std::string path;
    for (int depth = 1; depth <= 17; ++depth) path += "d/";
    MemoryDirectoryReader reader({path + "deep", path.substr(2) + "seen"});
    const OrdovanInventory inventory = scan(reader);
    EXPECT_EQ(names(inventory.files), Lines{path.substr(2) + "seen"});
    EXPECT_EQ(inventory.directories.size(), 17U);
    EXPECT_EQ(reader.directoriesRead().size(), 17U);
}

TEST(Inventory, CallsAHiddenLinkHiddenUnlessHiddenItemsAreWanted) {
    MemoryDirectoryReader reader({".link -> /elsewhere", "link -> nowhere"});
    EXPECT_EQ(skips(scan(reader)), (Lines{".link: hidden", "link: symbolicLinkNotFollowed"}));
    EXPECT_EQ(skips(scan(reader, {.includeHidden = true})),
              (Lines{".link: symbolicLinkNotFollowed", "link: symbolicLinkNotFollowed"}));
}

TEST(Inventory, TakesHiddenFilesOnlyWhenAsked) {
    MemoryDirectoryReader reader({".a", ".d/x", "b"});
    EXPECT_EQ(names(scan(reader).files), Lines{"b"});
    EXPECT_EQ(names(scan(reader, {.includeHidden = true}).files), (Lines{".a", ".d/x", "b"}));
}

TEST(Inventory, NeitherEntersNorListsNorWeighsAPackage) {
    MemoryDirectoryReader reader({"Photos.photoslibrary/big = 123456", "b = 12"});
    reader.setPackage("/root/Photos.photoslibrary");
    const OrdovanInventory inventory = scan(reader);
    EXPECT_EQ(names(inventory.files), Lines{"b"});
    EXPECT_TRUE(inventory.directories.empty());
    EXPECT_EQ(skips(inventory), Lines{"Photos.photoslibrary: packageTreatedAsFile"});
    EXPECT_EQ(inventory.totalByteSize(), 2);
}

TEST(Inventory, LeavesOutExcludedSubtreesByTheirCanonicalPath) {
    MemoryDirectoryReader reader({"ordovan+/Documents/a.pdf", "e\u0301/x", "b"});
    const OrdovanInventory inventory = scan(reader, {}, {Url::file("/root/./ordovan+/"), Url::file("/root/\u00e9")});
    EXPECT_EQ(names(inventory.files), Lines{"b"});
    EXPECT_EQ(skips(inventory), (Lines{"e\u0301: excludedSubtree", "ordovan+: excludedSubtree"}));
    EXPECT_EQ(reader.directoriesRead(), Lines{"/root"});
}

TEST(Inventory, CallsAnExcludedItemExcludedWhateverElseItIs) {
    MemoryDirectoryReader reader({".hidden", "link -> nowhere", "Photos.app/x", "kept"});
    reader.setPackage("/root/Photos.app");
    const OrdovanInventory inventory =
        scan(reader, {}, {Url::file("/root/.hidden"), Url::file("/root/link"), Url::file("/root/Photos.app")});
    EXPECT_EQ(skips(inventory),
              (Lines{".hidden: excludedSubtree", "link: excludedSubtree", "Photos.app: excludedSubtree"}));
    EXPECT_EQ(names(inventory.files), Lines{"kept"});
}

TEST(Inventory, CallsAHiddenPackageHiddenAndALinkedPackageALink) {
    MemoryDirectoryReader reader({".Photos.app/x", "Photos.app -> elsewhere"});
    reader.setPackage("/root/.Photos.app");
    reader.setPackage("/root/Photos.app");
    EXPECT_EQ(skips(scan(reader)), (Lines{".Photos.app: hidden", "Photos.app: symbolicLinkNotFollowed"}));
}

TEST(Inventory, EndsAtTheFileLimitWhateverTheNextChildIs) {
    for (const char* next : {".hidden", "excluded", "link -> nowhere", "Photos.app/x", "folder/"}) {
        MemoryDirectoryReader reader({next});
        reader.setPackage("/root/Photos.app");
        const OrdovanInventory inventory = scan(reader, {.maxFiles = 0}, {Url::file("/root/excluded")});
        ASSERT_EQ(inventory.skipped.size(), 1U) << next;
        EXPECT_EQ(inventory.skipped[0].reason, OrdovanInventorySkip::Reason::fileLimitReached) << next;
        EXPECT_TRUE(inventory.truncated) << next;
    }
}

TEST(Inventory, EndsAtTheDirectoryLimitBeforeTheDepthLimit) {
    MemoryDirectoryReader reader({"a/"});
    const OrdovanInventory inventory = scan(reader, {.maxDepth = 0, .maxDirectories = 0});
    EXPECT_EQ(skips(inventory), Lines{"a: directoryLimitReached"});
    EXPECT_TRUE(inventory.directories.empty());
}

TEST(Inventory, ExcludesChildrenThatLieOutsideTheirDirectoryByTheirOwnPath) {
    const auto scanned = [](const char* excluded) {
        ForeignReader reader({{.url = Url::file("/elsewhere/a")},
                              {.url = Url::file("/elsewhere/./e\u0301/b")},
                              {.url = Url::file("/root/c")}});
        const OrdovanInventory inventory =
            OrdovanInventoryScanner::scan(root, reader, {}, std::vector{Url::file(excluded)}, [] { return true; });
        Lines left;
        for (const auto& file : inventory.files) left.emplace_back(file.url.lastPathComponent());
        EXPECT_EQ(inventory.skipped.size(), 3 - left.size());
        return left;
    };
    EXPECT_EQ(scanned("/elsewhere"), Lines{"c"});
    EXPECT_EQ(scanned("/elsewhere/a"), (Lines{"b", "c"}));
    EXPECT_EQ(scanned("/elsewhere/\u00e9"), (Lines{"a", "c"}));
    EXPECT_EQ(scanned("/root"), (Lines{"a", "b"}));
    EXPECT_EQ(scanned("/root/a"), (Lines{"a", "b", "c"}));
    EXPECT_EQ(scanned("/"), Lines{});
}

TEST(Inventory, ExcludesAFolderBelowTheFirstLevelAndNotItsNamesakes) {
    MemoryDirectoryReader reader({"a/keep/x", "a/keepers/x", "b/keep/x"});
    const OrdovanInventory inventory = scan(reader, {}, {Url::file("/root/a/keep")});
    EXPECT_EQ(names(inventory.files), (Lines{"a/keepers/x", "b/keep/x"}));
}

TEST(Inventory, ExcludesEveryChildButStillListsTheRootWhenEverythingIsExcluded) {
    for (const char* excluded : {"/", "/root"}) {
        MemoryDirectoryReader reader({"a", "b/c"});
        const OrdovanInventory inventory = scan(reader, {}, {Url::file(excluded)});
        EXPECT_EQ(skips(inventory), (Lines{"a: excludedSubtree", "b: excludedSubtree"}));
        EXPECT_EQ(reader.directoriesRead(), Lines{"/root"});
    }
}

TEST(Inventory, ReadsADirectoryOnceThatIsReachedByTwoPaths) {
    MemoryDirectoryReader reader({"a/x", "b -> a"});
    reader.setPlainDirectory("/root/b");
    reader.setResolvedPath("/root/b", "/root/a");
    const OrdovanInventory inventory = scan(reader);
    EXPECT_EQ(names(inventory.directories), (Lines{"a", "b"}));
    EXPECT_EQ(names(inventory.files), Lines{"a/x"});
    EXPECT_EQ(reader.directoriesRead(), (Lines{"/root", "/root/a"}));
}

TEST(Inventory, StopsBetweenDirectoriesAndIsThenNotTruncated) {
    MemoryDirectoryReader reader({"a/x", "b/y", "c"});
    int asked = 0;
    const OrdovanInventory inventory =
        OrdovanInventoryScanner::scan(root, reader, {}, {}, [&] { return ++asked <= 2; });
    EXPECT_EQ(names(inventory.files), Lines{"a/x"});
    EXPECT_EQ(names(inventory.directories), (Lines{"a", "b"}));
    EXPECT_FALSE(inventory.truncated);
    EXPECT_EQ(asked, 3);
}

TEST(Inventory, IsEmptyWhenStoppedAtOnce) {
    MemoryDirectoryReader reader({"a"});
    EXPECT_EQ(OrdovanInventoryScanner::scan(root, reader, {}, {}, [] { return false; }), OrdovanInventory{});
}

TEST(Inventory, GoesOnToTheEndWhereNobodyAsksItToStop) {
    MemoryDirectoryReader reader({"a/b", "c"});
    EXPECT_EQ(names(OrdovanInventoryScanner::scan(root, reader, {}, {}, {}).files), (Lines{"a/b", "c"}));
}

TEST(Inventory, ReportsAnUnreadableFolderAndWalksItsSiblings) {
    MemoryDirectoryReader reader({"a/x", "b/y"});
    reader.setUnreadable("/root/a", EACCES);
    const OrdovanInventory inventory = scan(reader);
    EXPECT_EQ(names(inventory.directories), (Lines{"a", "b"}));
    EXPECT_EQ(names(inventory.files), Lines{"b/y"});
    EXPECT_EQ(skips(inventory), Lines{"a: unreadableDirectory"});
    EXPECT_FALSE(inventory.rootWasUnreadable(root));
}

TEST(Inventory, TellsAnUnreadableRootFromAnEmptyOne) {
    MemoryDirectoryReader reader({"a"});
    reader.setUnreadable("/root", EACCES);
    const OrdovanInventory inventory = scan(reader);
    EXPECT_TRUE(inventory.rootWasUnreadable(root));
    EXPECT_TRUE(inventory.rootWasUnreadable(Url::file("/root/./x/..")));
    EXPECT_FALSE(inventory.rootWasUnreadable(Url::file("/elsewhere")));
}

TEST(Inventory, CallsTheRootUnreadableOnlyWhenNothingWasFoundAndItsOwnSkipSaysSo) {
    const OrdovanInventorySkip unreadable{root, OrdovanInventorySkip::Reason::unreadableDirectory};
    const OrdovanInventorySkip excluded{root, OrdovanInventorySkip::Reason::excludedSubtree};
    const OrdovanInventoryEntry item{.url = Url::file("/root/a")};
    EXPECT_TRUE((OrdovanInventory{{}, {}, {excluded, unreadable}}.rootWasUnreadable(root)));
    EXPECT_FALSE((OrdovanInventory{{item}, {}, {unreadable}}.rootWasUnreadable(root)));
    EXPECT_FALSE((OrdovanInventory{{}, {item}, {unreadable}}.rootWasUnreadable(root)));
    EXPECT_FALSE((OrdovanInventory{{}, {}, {excluded}}.rootWasUnreadable(root)));
    EXPECT_FALSE(OrdovanInventory{}.rootWasUnreadable(root));
}

TEST(Inventory, TakesAnItemWithoutAttributesForAPlainFile) {
    MemoryDirectoryReader reader({"odd/"});
    reader.setWithoutAttributes("/root/odd");
    const OrdovanInventory inventory = scan(reader);
    ASSERT_EQ(inventory.files.size(), 1U);
    EXPECT_TRUE(inventory.files[0].isRegularFile());
    EXPECT_EQ(inventory.files[0].byteSize, 0);
    EXPECT_EQ(inventory.files[0].modifiedEpoch, std::nullopt);
}

TEST(InventoryDeathTest, EndsTheProcessWhenTheTotalSizeOverflows) {
    OrdovanInventory inventory;
    inventory.files = {{.url = root, .byteSize = std::numeric_limits<std::int64_t>::max()},
                       {.url = root, .byteSize = 1}};
    EXPECT_DEATH(static_cast<void>(inventory.totalByteSize()), "");
}

TEST(InventoryEntry, IsARegularFileOnlyWithoutAnyOtherFlag) {
    EXPECT_TRUE(OrdovanInventoryEntry{}.isRegularFile());
    EXPECT_FALSE(OrdovanInventoryEntry{.isDirectory = true}.isRegularFile());
    EXPECT_FALSE(OrdovanInventoryEntry{.isSymbolicLink = true}.isRegularFile());
    EXPECT_FALSE(OrdovanInventoryEntry{.isPackage = true}.isRegularFile());
    EXPECT_EQ((OrdovanInventoryEntry{.url = root}.id()), "/root");
}
