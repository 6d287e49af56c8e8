#include "OrdovanCore/FolderCleanup.h"
#include "OrdovanCore/testing/TreeBuilder.h"
#include "tests/support/TempFolder.h"
#include "tests/support/Unprivileged.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <initializer_list>
#include <string>
#include <vector>

using ordovan::test::TempFolder;
using ordovan::testing::buildOnDisk;
using OrdovanFolderCleanup::removeEmptyFolders;

namespace {

class FolderCleanup : public ::testing::Test {
protected:
    void tree(std::initializer_list<std::string_view> items) { buildOnDisk(folder.path(), items); }

    /// Cleans up within "out" after files at these places.
    std::size_t clean(std::initializer_list<std::string_view> thatHeld) {
        std::vector<Url> urls;
        for (const std::string_view name : thatHeld) urls.push_back(folder.url(name));
        return removeEmptyFolders(urls, folder.url("out"));
    }

    TempFolder folder;
};

}  // namespace

TEST_F(FolderCleanup, RemovesTheFolderThatAFileLeftEmpty) {
    tree({"out/Images/", "out/Documents/"});
    EXPECT_EQ(clean({"out/Images/a.png"}), 1u);
    EXPECT_FALSE(folder.has("out/Images"));
    EXPECT_TRUE(folder.has("out/Documents"));
}

TEST_F(FolderCleanup, RemovesNestedFoldersInOneCall) {
    tree({"out/Images/2024/raw/"});
    EXPECT_EQ(clean({"out/Images/2024/raw/a.png", "out/Images/2024/raw/b.png"}), 3u);
    EXPECT_TRUE(folder.has("out"));
    EXPECT_EQ(folder.count("out"), 0u);
}

TEST_F(FolderCleanup, RemovesSiblingsBeforeTheFolderThatHoldsThem) {
    tree({"out/Images/2024-01/", "out/Images/2024-02/"});
    EXPECT_EQ(clean({"out/Images/2024-01/a", "out/Images/2024-02/b", "out/Images/2024-01/c"}), 3u);
    EXPECT_EQ(folder.count("out"), 0u);
}

TEST_F(FolderCleanup, NeverRemovesTheRoot) {
    tree({"out/"});
    EXPECT_EQ(clean({"out/a.png"}), 0u);
    EXPECT_TRUE(folder.has("out"));
}

TEST_F(FolderCleanup, TakesTheFileBrowsersSettingsFileWithTheFolder) {
    tree({"out/Images/.DS_Store = x"});
    EXPECT_EQ(clean({"out/Images/a.png"}), 1u);
    EXPECT_FALSE(folder.has("out/Images"));
}

TEST_F(FolderCleanup, LeavesTheSettingsFileBesideAnotherFile) {
    tree({"out/Images/.DS_Store = x", "out/Images/b.png = y"});
    EXPECT_EQ(clean({"out/Images/a.png"}), 0u);
    EXPECT_EQ(folder.read("out/Images/.DS_Store"), "x");
    EXPECT_EQ(folder.read("out/Images/b.png"), "y");
}

TEST_F(FolderCleanup, LeavesAFolderWhoseSettingsFileIsNoRegularFile) {
    tree({"target = t", "out/Links/.DS_Store -> ../../target", "out/Folders/.DS_Store/", "out/Pipes/.DS_Store|"});
    EXPECT_EQ(clean({"out/Links/a", "out/Folders/a", "out/Pipes/a"}), 0u);
    EXPECT_TRUE(folder.has("out/Links/.DS_Store"));
    EXPECT_TRUE(folder.has("out/Folders/.DS_Store"));
    EXPECT_TRUE(folder.has("out/Pipes/.DS_Store"));
}

TEST_F(FolderCleanup, LeavesAFolderThatHoldsAHiddenFileOrAFolder) {
    tree({"out/Images/.keep", "out/Videos/old/"});
    EXPECT_EQ(clean({"out/Images/a", "out/Videos/a"}), 0u);
    EXPECT_TRUE(folder.has("out/Images/.keep"));
    EXPECT_TRUE(folder.has("out/Videos/old"));
}

TEST_F(FolderCleanup, StopsBelowAFolderThatIsNotEmpty) {
    tree({"out/Images/2024/", "out/Images/keep.png"});
    EXPECT_EQ(clean({"out/Images/2024/a.png"}), 1u);
    EXPECT_TRUE(folder.has("out/Images/keep.png"));
    EXPECT_FALSE(folder.has("out/Images/2024"));
}

TEST_F(FolderCleanup, RemovesNeitherALinkNorItsTarget) {
    tree({"elsewhere/", "out/", "out/Images -> ../elsewhere"});
    EXPECT_EQ(clean({"out/Images/a.png"}), 0u);
    EXPECT_TRUE(folder.has("out/Images"));
    EXPECT_TRUE(folder.has("elsewhere"));
}

TEST_F(FolderCleanup, NeverReachesThroughALinkOnTheWay) {
    tree({"elsewhere/empty/", "out/", "out/Images -> ../elsewhere"});
    EXPECT_EQ(clean({"out/Images/empty/a.png"}), 0u);
    EXPECT_TRUE(folder.has("elsewhere/empty"));
}

TEST_F(FolderCleanup, NeverReachesThroughARootThatIsALink) {
    tree({"elsewhere/Images/", "out -> elsewhere"});
    EXPECT_EQ(clean({"out/Images/a.png"}), 0u);
    EXPECT_TRUE(folder.has("elsewhere/Images"));
}

TEST_F(FolderCleanup, LeavesFoldersOutsideTheRoot) {
    tree({"out/empty/", "other/empty/", "outer/empty/"});
    EXPECT_EQ(clean({"other/empty/a", "outer/empty/a"}), 0u);
    EXPECT_TRUE(folder.has("other/empty"));
    EXPECT_TRUE(folder.has("outer/empty"));
    EXPECT_TRUE(folder.has("out/empty"));
}

TEST_F(FolderCleanup, RefusesPathsThatStepUp) {
    tree({"out/Images/", "other/", "out/link -> ../other", "empty/"});
    EXPECT_EQ(clean({"out/Images/../../other/a", "out/link/../Images/a", "out/../empty/a"}), 0u);
    EXPECT_TRUE(folder.has("out/Images"));
    EXPECT_TRUE(folder.has("other"));
    EXPECT_TRUE(folder.has("empty"));
}

TEST_F(FolderCleanup, RefusesARootThatStepsUp) {
    tree({"out/Images/", "away/x/", "link -> away/x"});
    EXPECT_EQ(removeEmptyFolders(std::vector{folder.url("out/Images/a")}, folder.url("link/../out")), 0u);
    EXPECT_TRUE(folder.has("out/Images"));
}

TEST_F(FolderCleanup, RefusesRelativeAndForeignLocations) {
    tree({"out/Images/"});
    const std::vector<Url> odd{Url::file("out/Images/a"), Url::file(""), Url::parse("https://host/out/Images/a")};
    EXPECT_EQ(removeEmptyFolders(odd, folder.url("out")), 0u);
    EXPECT_EQ(removeEmptyFolders(std::vector{folder.url("out/Images/a")}, Url::file("out")), 0u);
    EXPECT_TRUE(folder.has("out/Images"));
}

TEST_F(FolderCleanup, TakesAFileOrNothingInPlaceOfAFolderForDone) {
    tree({"out/Images = a file"});
    EXPECT_EQ(clean({"out/Images/a.png", "out/Missing/b.png"}), 0u);
    EXPECT_EQ(folder.read("out/Images"), "a file");
}

TEST_F(FolderCleanup, FindsFoldersSpelledWithSuperfluousSlashesAndDots) {
    tree({"out/Images/2024/"});
    EXPECT_EQ(removeEmptyFolders(std::vector{folder.url("out/.//Images/2024/a")}, folder.url("out/")), 2u);
    EXPECT_EQ(folder.count("out"), 0u);
}

TEST_F(FolderCleanup, FindsFoldersWithDecomposedNames) {
    tree({"out/Bu\u0308cher/", "out/B\u00fccher/keep"});
    EXPECT_EQ(clean({"out/Bu\u0308cher/a.epub"}), 1u);
    EXPECT_FALSE(folder.has("out/Bu\u0308cher"));
    EXPECT_TRUE(folder.has("out/B\u00fccher/keep"));
}

TEST_F(FolderCleanup, LeavesFoldersItMayNotChange) {
    tree({"out/Images/2024/", "out/Secret/"});
    ::chmod(folder.path("out/Images").c_str(), 0555);
    ::chmod(folder.path("out/Secret").c_str(), 0);
    ordovan::test::giveToUnprivileged(folder.path());
    EXPECT_EQ(ordovan::test::unprivileged([&] { return clean({"out/Images/2024/a", "out/Secret/a"}); }), 0u);
    EXPECT_TRUE(folder.has("out/Images/2024"));
    EXPECT_TRUE(folder.has("out/Secret"));
}

TEST_F(FolderCleanup, CountsNothingForNoFiles) {
    tree({"out/Images/"});
    EXPECT_EQ(clean({}), 0u);
    EXPECT_TRUE(folder.has("out/Images"));
}
