#include "OrdovanCore/platform/TrashSearch.h"

#include "OrdovanCore/platform/SystemFileSystem.h"
#include "OrdovanCore/testing/TreeBuilder.h"
#include "tests/support/FailingCalls.h"
#include "tests/support/Results.h"
#include "tests/support/SecondVolume.h"
#include "tests/support/TempFolder.h"
#include "tests/support/Unprivileged.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

using ordovan::findInTrash;
using ordovan::removeTrashInfo;
using ordovan::TrashedFile;
using ordovan::test::error;
using ordovan::test::FailingCall;
using ordovan::test::SecondVolume;
using ordovan::test::TempFolder;
using ordovan::testing::describeTree;
using ::testing::IsEmpty;
using ::testing::SizeIs;

namespace {

/// What another program does right before the next file is removed.
std::function<void()> beforeUnlink;

}  // namespace

// Takes the place of the C library's.
extern "C" int unlink(const char* path) noexcept {
    if (beforeUnlink) std::exchange(beforeUnlink, nullptr)();
    return static_cast<int>(::syscall(SYS_unlinkat, AT_FDCWD, path, 0));
}
// NOLINTNEXTLINE: the C library's name and signature
ORDOVAN_FAILING(ssize_t, write, (int file, const void* bytes, size_t count), file, bytes, count)

namespace {

class TrashSearch : public ::testing::Test {
protected:
    TrashSearch() { ::setenv("XDG_DATA_HOME", home.path("data").c_str(), 1); }
    ~TrashSearch() override { ::unsetenv("XDG_DATA_HOME"); }

    /// Where the item of each info file found lies.
    static std::vector<std::string> items(const std::vector<Url>& originals) {
        std::vector<std::string> result;
        const auto found = findInTrash(originals);
        EXPECT_EQ(error(found), 0);
        for (const TrashedFile& file : found.value_or(std::vector<TrashedFile>())) {
            EXPECT_NE(std::ranges::find(originals, file.original), originals.end());
            result.emplace_back(file.item.path());
        }
        std::ranges::sort(result);
        return result;
    }

    TempFolder home;
    SystemFileSystem fs;
};

TEST_F(TrashSearch, OffersItemsWhoseInfoFilesLostTheirTextsByTheirNames) {
    ASSERT_TRUE(fs.trash(home.write("a.pdf", "one")));
    ASSERT_TRUE(fs.trash(home.write("sub/a.pdf", "two")));
    ASSERT_TRUE(fs.trash(home.write("b 7", "three")));
    const auto lose = [&](const std::string& item, std::size_t zerosLeft) {
        const std::string info = home.path("data/Trash/info/" + item + ".trashinfo");
        std::filesystem::resize_file(info, 0);
        std::filesystem::resize_file(info, zerosLeft);
    };
    lose("a.pdf", 0);
    lose("a 2.pdf", 80);  // its size was on the disk already
    lose("b 7", 0);
    const std::string files = home.path("data/Trash/files/");
    EXPECT_THAT(items({home.url("a.pdf")}), ::testing::ElementsAre(files + "a 2.pdf", files + "a.pdf"));
    EXPECT_THAT(items({home.url("b 7")}), ::testing::ElementsAre(files + "b 7"));
    EXPECT_THAT(items({home.url("b")}), ::testing::ElementsAre(files + "b 7"));
    EXPECT_THAT(items({home.url("c.pdf"), home.url("a")}), IsEmpty());
    std::filesystem::remove(files + "b 7");
    EXPECT_THAT(items({home.url("b 7")}), IsEmpty()) << "an empty info file alone is nobody's";
}

TEST_F(TrashSearch, FindsEveryItemOfAPlaceAndOfNoOther) {
    std::vector<std::string> places;
    for (const char* content : {"one", "two"}) {
        places.emplace_back(fs.trash(home.write("sub/a b%.txt", content))->path());
    }
    ASSERT_TRUE(fs.trash(home.write("other/a b%.txt", "three")));
    std::ranges::sort(places);
    EXPECT_EQ(items({home.url("sub/a b%.txt"), home.url("sub/b")}), places);
    EXPECT_THAT(items({home.url("sub/b")}), IsEmpty());
    EXPECT_THAT(items({}), IsEmpty());
}

TEST_F(TrashSearch, FindsWhatLiesInTheTrashOfAnotherVolume) {
    if (!SecondVolume::available()) GTEST_SKIP() << SecondVolume::unavailable;
    const SecondVolume volume(1 << 20);
    ordovan::testing::buildOnDisk(volume.path(), {"sub/a = one"});
    const Url file = Url::file(volume.path() + "/sub/a");
    const auto place = fs.trash(file);
    ASSERT_TRUE(place);
    EXPECT_EQ(items({file}), std::vector{std::string(place->path())});
}

TEST_F(TrashSearch, FindsAPlaceThatIsReachedByALink) {
    home.makeFolder("real");
    home.makeLink("link", "real");
    const auto place = fs.trash(home.write("real/a", "one"));
    ASSERT_TRUE(place);
    EXPECT_EQ(items({home.url("link/a")}), std::vector{std::string(place->path())});
}

TEST_F(TrashSearch, FindsAPlaceWhoseFolderIsGone) {
    const auto place = fs.trash(home.write("gone/a", "one"));
    ASSERT_TRUE(place);
    std::filesystem::remove(home.path("gone"));
    EXPECT_EQ(items({home.url("gone/a")}), std::vector{std::string(place->path())});
}

TEST_F(TrashSearch, PassesOverWhatIsNoInfoFile) {
    home.write("data/Trash/info/a.trashinfo", "Path=" + home.path("a"));
    home.write("data/Trash/info/b.trashinfo", "");
    home.write("data/Trash/info/c.trashinfo.1A2B", "[Trash Info]\nPath=" + home.path("a") + "\n");
    home.makeFolder("data/Trash/info/d.trashinfo");
    home.makeLink("data/Trash/info/e.trashinfo", home.path("data/Trash/info/c.trashinfo.1A2B"));
    ASSERT_EQ(::mkfifo(home.path("data/Trash/info/f.trashinfo").c_str(), 0600), 0);
    EXPECT_THAT(items({home.url("a")}), IsEmpty());
}

TEST_F(TrashSearch, MakesAndChangesNothing) {
    home.write("a", "one");
    const auto before = describeTree(home.path());
    EXPECT_THAT(items({home.url("a")}), IsEmpty());
    EXPECT_EQ(describeTree(home.path()), before);
}

TEST_F(TrashSearch, SaysWhenATrashCanNotBeRead) {
    ASSERT_TRUE(fs.trash(home.write("a", "one")));
    ASSERT_EQ(::chmod(home.path("data/Trash/info").c_str(), 0), 0);
    ordovan::test::giveToUnprivileged(home.path());
    const std::vector<Url> originals = {home.url("a")};
    EXPECT_EQ(ordovan::test::unprivileged([&] { return error(findInTrash(originals)); }), EACCES);
}

/// A volume with a place of a file that was trashed, and what a Trash would tell of it.
class TrashSearchAtATop : public TrashSearch {
protected:
    void SetUp() override {
        if (!SecondVolume::available()) GTEST_SKIP() << SecondVolume::unavailable;
        volume.emplace(1 << 20);
        file = Url::file(volume->path() + "/a");
    }
    void put(const std::string& trash) const {
        const TempFolder& top = volume->root();
        top.makeFolder(trash + "/files");
        top.write(trash + "/info/a.trashinfo", "[Trash Info]\nPath=" + top.path("a") + "\n");
    }

    std::optional<SecondVolume> volume;
    Url file;
    const std::string user = std::to_string(::geteuid());
};

TEST_F(TrashSearchAtATop, PassesOverATrashOfAnotherUser) {
    if (::geteuid() != 0) GTEST_SKIP() << "NOT TESTED: wants root, to be two users";
    const std::string trash = ".Trash-" + std::to_string(ordovan::test::unprivilegedUser);
    put(trash);
    home.write("data/Trash/info/a.trashinfo", "[Trash Info]\nPath=" + std::string(file.path()) + "\n");
    ordovan::test::giveToUnprivileged(home.path());
    for (const std::string& closed : {trash + "/info", trash}) {
        ASSERT_EQ(::chmod(volume->path(closed).c_str(), 0700), 0);
        EXPECT_EQ(ordovan::test::unprivileged([&] { return items({file}).size(); }), 1u) << closed;
    }
}

TEST_F(TrashSearchAtATop, PassesOverAFolderForAllThatIsNotSticky) {
    put(".Trash/" + user);
    ASSERT_EQ(::chmod(volume->path(".Trash").c_str(), 0777), 0);
    EXPECT_THAT(items({file}), IsEmpty());
    ASSERT_EQ(::chmod(volume->path(".Trash").c_str(), 01777), 0);
    EXPECT_THAT(items({file}), SizeIs(1));
}

TEST_F(TrashSearchAtATop, PassesOverAFolderForAllThatLetsNobodyIn) {
    if (::geteuid() != 0) GTEST_SKIP() << "NOT TESTED: wants root, to be two users";
    put(".Trash/" + std::to_string(ordovan::test::unprivilegedUser));
    ASSERT_EQ(::chmod(volume->path(".Trash").c_str(), 01700), 0);
    EXPECT_EQ(ordovan::test::unprivileged([&] { return error(findInTrash(std::vector{file})); }), 0);
}

TEST_F(TrashSearchAtATop, PassesOverALink) {
    put("elsewhere");
    volume->root().makeLink(".Trash-" + user, "elsewhere");
    EXPECT_THAT(items({file}), IsEmpty());
}

TEST_F(TrashSearch, RemovesTheInfoFileOfAnItemThatIsGone) {
    const auto place = fs.trash(home.write("a", "one"));
    ASSERT_TRUE(place);
    const auto found = findInTrash(std::vector{home.url("a")});
    ASSERT_EQ(error(found), 0);
    ASSERT_THAT(*found, SizeIs(1));
    EXPECT_EQ(error(removeTrashInfo(found->front())), ENOTEMPTY);
    EXPECT_TRUE(home.has("data/Trash/info/a.trashinfo"));
    ASSERT_TRUE(fs.remove(*place));
    EXPECT_EQ(error(removeTrashInfo(found->front())), 0);
    EXPECT_FALSE(home.has("data/Trash/info/a.trashinfo"));
    EXPECT_EQ(error(removeTrashInfo(found->front())), 0);
}

TEST_F(TrashSearch, LeavesAnInfoFileThatTellsOfAnotherFileByNow) {
    const TrashedFile orphan{home.url("a"), home.url("data/Trash/info/a.trashinfo"), home.url("data/Trash/files/a")};
    const std::string others = "[Trash Info]\nPath=/somewhere/else\nDeletionDate=2026-11-21T00:00:00\n";
    home.write("data/Trash/info/a.trashinfo", others);
    EXPECT_EQ(error(removeTrashInfo(orphan)), ENOTEMPTY);
    EXPECT_EQ(home.read("data/Trash/info/a.trashinfo"), others);
}

TEST_F(TrashSearch, DoesNotTouchTheInfoFileOfAnItemThatIsThere) {
    const TrashedFile there{home.url("a"), home.url("data/Trash/info/a.trashinfo"), home.url("data/Trash/files/a")};
    home.write("data/Trash/info/a.trashinfo", "[Trash Info]\nPath=" + home.path("a") + "\n");
    home.write("data/Trash/files/a", "item");
    std::filesystem::create_hard_link(home.path("data/Trash/info/a.trashinfo"), home.path("another name of it"));
    EXPECT_EQ(error(removeTrashInfo(there)), ENOTEMPTY);
    EXPECT_EQ(std::filesystem::hard_link_count(home.path("data/Trash/info/a.trashinfo")), 2U);
}

TEST_F(TrashSearch, LeavesAnInfoFileWhoseItemCanNotBeLookedAt) {
    const TrashedFile orphan{home.url("a"), home.url("data/Trash/info/a.trashinfo"), home.url("data/Trash/files/a")};
    home.write("data/Trash/info/a.trashinfo", "[Trash Info]\nPath=" + home.path("a") + "\n");
    home.write("data/Trash/files", "no folder");
    EXPECT_EQ(error(removeTrashInfo(orphan)), ENOTDIR);
    EXPECT_TRUE(home.has("data/Trash/info/a.trashinfo"));
}

TEST_F(TrashSearch, RemovesNothingAtAPathThatIsNone) {
    const Url info = home.write("data/Trash/info/a.trashinfo", "[Trash Info]\nPath=/a\n");
    EXPECT_EQ(error(removeTrashInfo({Url::file("/a"), info, Url::file("relative")})), EINVAL);
    EXPECT_TRUE(home.has("data/Trash/info/a.trashinfo"));
}

TEST_F(TrashSearch, SaysWhenAnInfoFileCanNotBeGivenBack) {
    const TrashedFile orphan{home.url("a"), home.url("data/Trash/info/a.trashinfo"), home.url("data/Trash/files/a")};
    home.write("data/Trash/info/a.trashinfo", "[Trash Info]\nPath=" + home.path("a") + "\n");
    beforeUnlink = [&] { home.makeFolder("data/Trash/files/a"); };
    const FailingCall full("write", ENOSPC);
    EXPECT_EQ(error(removeTrashInfo(orphan)), ENOSPC);
    EXPECT_TRUE(home.has("data/Trash/files/a"));
}

TEST_F(TrashSearch, GivesAnInfoFileBackToAnItemThatArrivesAtTheLastInstant) {
    const TrashedFile orphan{home.url("a"), home.url("data/Trash/info/a.trashinfo"), home.url("data/Trash/files/a")};
    const std::string text = "[Trash Info]\nPath=" + home.path("a") + "\nDeletionDate=2026-11-21T00:00:00\n";
    home.write("data/Trash/info/a.trashinfo", text);
    beforeUnlink = [&] { home.write("data/Trash/files/a", "one"); };
    EXPECT_EQ(error(removeTrashInfo(orphan)), ENOTEMPTY);
    EXPECT_EQ(home.read("data/Trash/info/a.trashinfo"), text);
    EXPECT_EQ(home.read("data/Trash/files/a"), "one");
}

}  // namespace
