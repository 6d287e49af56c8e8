// What the disk of a run does beyond the contract of every port: it stays below its root, and what it hashed is what it
// moves.

#include "OrdovanCore/platform/RunFileSystem.h"

#include "tests/support/Flushes.h"
#include "tests/support/Results.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

using ordovan::ConfinedFolders;
using ordovan::RunFileSystem;
using ordovan::test::error;
using ordovan::test::Flushes;
using ordovan::test::TempFolder;
using Entering = ConfinedFolders::Entering;

namespace {

/// What another program does right before the next rename, and with which errno renames and links are refused then.
std::function<void()> beforeRename;
int renameRefusal = 0;
int linkRefusal = 0;

/// How many times an item was looked at, and the path that can not be looked at, if any.
int looks = 0;
std::string hidden;

int refusedOr(int refusal, const std::function<long()>& call) {
    if (refusal == 0) return static_cast<int>(call());
    errno = refusal;
    return -1;
}

}  // namespace

// Take the place of the C library's.
extern "C" int renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags) noexcept {
    if (beforeRename) std::exchange(beforeRename, nullptr)();
    return refusedOr(renameRefusal, [=] { return ::syscall(SYS_renameat2, fromFolder, from, toFolder, to, flags); });
}
extern "C" int linkat(int fromFolder, const char* from, int toFolder, const char* to, int flags) noexcept {
    return refusedOr(linkRefusal, [=] { return ::syscall(SYS_linkat, fromFolder, from, toFolder, to, flags); });
}
extern "C" int fstatat(int folder, const char* path, struct stat* facts, int flags) noexcept {
    ++looks;
    if (hidden == path) {
        errno = EIO;
        return -1;
    }
    return static_cast<int>(::syscall(SYS_newfstatat, folder, path, facts, flags));
}

namespace {

/// A run in "root"; "decoy" is beside it, and so is what the home Trash is made in.
class Run : public testing::TestWithParam<Entering> {
protected:
    Run() {
        ::setenv("XDG_DATA_HOME", t.path("data").c_str(), 1);
        t.makeFolder("root");
        t.makeFolder("decoy");
    }
    ~Run() override {
        ::unsetenv("XDG_DATA_HOME");
        beforeRename = nullptr;
        renameRefusal = linkRefusal = 0;
        hidden.clear();
        Flushes::reset();
    }

    [[nodiscard]] Url at(std::string_view name) const { return t.url("root/" + std::string(name)); }
    void write(std::string_view name, std::string_view content) const { t.write(inRoot(name), content); }
    [[nodiscard]] std::string read(std::string_view name) const { return t.read(inRoot(name)); }
    [[nodiscard]] bool has(std::string_view name) const { return t.has(inRoot(name)); }
    static std::string inRoot(std::string_view name) { return "root/" + std::string(name); }

    /// Another folder or link takes the name of "root/sub", which is "root/aside" from then on.
    void exchangeSubForLink() const {
        std::filesystem::rename(t.path("root/sub"), t.path("root/aside"));
        t.makeLink("root/sub", t.path("decoy"));
    }
    /// Another file takes the name of one.
    void replace(std::string_view name, std::string_view content) const {
        t.write("root/.fresh", content);
        std::filesystem::rename(t.path("root/.fresh"), t.path(inRoot(name)));
    }
    /// A program touches a file: only its time of status change tells.
    void touch(std::string_view name) const {
        struct ::stat before{}, now{};
        const std::string path = t.path(inRoot(name));
        ASSERT_EQ(::lstat(path.c_str(), &before), 0);
        const ::timespec times[2] = {before.st_atim, before.st_mtim};
        do {  // until a tick of the file system's clock later
            ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
            ASSERT_EQ(::lstat(path.c_str(), &now), 0);
        } while (now.st_ctim.tv_nsec == before.st_ctim.tv_nsec);
    }
    void hash(std::string_view name) { ASSERT_EQ(error(fs.contentHash(at(name))), 0); }

    TempFolder t;
    RunFileSystem fs{t.url("root"), GetParam()};
};

INSTANTIATE_TEST_SUITE_P(BothWays, Run, testing::Values(Entering::atOnce, Entering::stepByStep),
                         [](const auto& way) { return way.param == Entering::atOnce ? "AtOnce" : "StepByStep"; });

// Confined.

TEST_P(Run, GoesThroughNoLinkOnTheWay) {
    t.write("decoy/theirs", "theirs");
    write("mine", "mine");
    t.makeLink("root/link", t.path("decoy"));
    t.makeLink("root/inside", ".");
    for (const std::string way : {"link", "inside/link", "inside"}) {
        const Url theirs = at(way + "/theirs"), fresh = at(way + "/fresh");
        EXPECT_EQ(error(fs.createDirectory(at(way + "/new"))), ELOOP) << way;
        EXPECT_EQ(error(fs.move(at("mine"), fresh)), ELOOP) << way;
        EXPECT_EQ(error(fs.move(theirs, at("free"))), ELOOP) << way;
        EXPECT_EQ(error(fs.copy(at("mine"), fresh)), ELOOP) << way;
        EXPECT_EQ(error(fs.copy(theirs, at("free"))), ELOOP) << way;
        EXPECT_EQ(error(fs.remove(theirs)), ELOOP) << way;
        EXPECT_EQ(error(fs.contentHash(theirs)), ELOOP) << way;
        EXPECT_EQ(error(fs.trash(theirs)), ELOOP) << way;
    }
    EXPECT_EQ(t.count("root"), 3u);
    EXPECT_EQ(t.count("decoy"), 1u);
    EXPECT_EQ(t.read("decoy/theirs"), "theirs");
    EXPECT_FALSE(t.has("data"));
}

TEST_P(Run, NoticesALinkInPlaceOfAFolderThatItHolds) {
    write("a", "a");
    write("b", "b");
    write("sub/c", "c");
    ASSERT_EQ(error(fs.move(at("a"), at("sub/a"))), 0);
    hash("sub/a");
    exchangeSubForLink();
    t.write("decoy/c", "theirs");
    EXPECT_EQ(error(fs.move(at("b"), at("sub/b"))), ELOOP);
    EXPECT_EQ(error(fs.move(at("sub/c"), at("c"))), ELOOP);
    EXPECT_EQ(error(fs.move(at("sub/a"), at("a"))), ELOOP) << "hashed";
    EXPECT_EQ(error(fs.remove(at("sub/a"))), ELOOP);
    EXPECT_EQ(error(fs.remove(at("sub/c"))), ELOOP);
    EXPECT_EQ(error(fs.trash(at("sub/c"))), ELOOP);
    EXPECT_EQ(error(fs.createDirectory(at("sub/d"))), ELOOP);
    EXPECT_EQ(read("b"), "b");
    EXPECT_EQ(t.count("root/aside"), 2u);
    EXPECT_EQ(t.count("decoy"), 1u);
}

TEST_P(Run, TakesNoPathThatStepsUp) {
    write("a", "a");
    t.makeFolder("root/sub");
    for (const std::string way : {"../decoy/x", "sub/../x", ".."}) {
        EXPECT_EQ(error(fs.createDirectory(at(way))), EINVAL) << way;
        EXPECT_EQ(error(fs.move(at("a"), at(way))), EINVAL) << way;
        EXPECT_EQ(error(fs.move(at(way), at("free"))), EINVAL) << way;
        EXPECT_EQ(error(fs.copy(at("a"), at(way))), EINVAL) << way;
        EXPECT_EQ(error(fs.remove(at(way))), EINVAL) << way;
        EXPECT_EQ(error(fs.trash(at(way))), EINVAL) << way;
        EXPECT_EQ(error(fs.contentHash(at(way))), EINVAL) << way;
    }
    EXPECT_EQ(error(fs.move(at("a"), at("..a"))), 0) << "a name that only begins so";
    EXPECT_EQ(t.count("root"), 2u);
}

TEST_P(Run, ReachesWhatIsNotBelowItsRootByThePath) {
    t.write("elsewhere/file", "abc");
    t.makeLink("way", "elsewhere");
    EXPECT_EQ(error(fs.contentHash(t.url("way/file"))), 0);
    EXPECT_EQ(error(fs.move(t.url("way/file"), at("back"))), 0);
    EXPECT_EQ(error(fs.copy(at("back"), t.url("way/copy"))), 0);
    EXPECT_EQ(error(fs.createDirectory(t.url("way/new"))), 0);
    EXPECT_EQ(error(fs.remove(t.url("way/copy"))), 0);
    EXPECT_EQ(read("back"), "abc");
    EXPECT_EQ(t.count("elsewhere"), 1u);
}

TEST_P(Run, TrashesAndPutsBackThroughTheFolderThatItHolds) {
    write("sub/a", "a");
    write("sub/b", "b");
    const Url a = fs.trash(at("sub/a")).value(), b = fs.trash(at("sub/b")).value();
    EXPECT_EQ(t.count("root/sub"), 0u);
    EXPECT_EQ(t.read("data/Trash/info/a.trashinfo").find("Path=" + t.path("root/sub/a")), 13u);
    EXPECT_EQ(error(fs.move(a, at("sub/a"))), 0);
    EXPECT_EQ(error(fs.move(b, at("sub/b"))), 0);
    EXPECT_EQ(read("sub/b"), "b");
    EXPECT_EQ(t.count("data/Trash/info"), 0u);
}

TEST_P(Run, HasTheOtherWaysToMoveInItsFoldersToo) {
    write("a", "a");
    write("taken", "theirs");
    t.makeFolder("root/sub");
    renameRefusal = EINVAL;
    EXPECT_EQ(error(fs.move(at("a"), at("taken"))), EEXIST);
    EXPECT_EQ(error(fs.move(at("a"), at("sub/a"))), 0) << "by a link";
    linkRefusal = EPERM;
    EXPECT_EQ(error(fs.move(at("sub/a"), at("taken"))), EEXIST);
    EXPECT_EQ(error(fs.move(at("sub/a"), at("b"))), 0) << "over a placeholder";
    EXPECT_EQ(read("b"), "a");
    EXPECT_EQ(read("taken"), "theirs");
    EXPECT_EQ(t.count("root"), 3u);
}

TEST_P(Run, PutsAPartialCopysFinalNameOnDisk) {
    const Url partial = OrdovanPartialName::beside(at("sub/file"));
    write("sub/" + std::string(partial.lastPathComponent()), "abc");
    Flushes::reset();
    hash("sub/" + std::string(partial.lastPathComponent()));
    EXPECT_EQ(error(fs.move(partial, at("sub/file"))), 0);
    EXPECT_EQ(Flushes::paths, std::vector{t.path("root/sub")});
}

TEST_P(Run, GivesAPartialCopyItsNameBackWhenTheFolderCanNotBeFlushed) {
    const Url partial = OrdovanPartialName::beside(at("file"));
    write(partial.lastPathComponent(), "abc");
    hash(partial.lastPathComponent());
    Flushes::failing = [](const std::string&) { return EIO; };
    EXPECT_EQ(error(fs.move(partial, at("file"))), EIO);
    EXPECT_FALSE(fs.isRegularFile(at("file")));
    EXPECT_EQ(read(partial.lastPathComponent()), "abc");
    EXPECT_EQ(t.count("root"), 1u);
}

// What was hashed is what is moved.

TEST_P(Run, ActsOnNoFileThatTookThePlaceOfTheOneThatWasHashed) {
    write("a", "hashed");
    hash("a");
    replace("a", "another one");
    EXPECT_EQ(error(fs.move(at("a"), at("b"))), EBUSY);
    EXPECT_EQ(error(fs.copy(at("a"), at("b"))), EBUSY);
    EXPECT_EQ(error(fs.remove(at("a"))), EBUSY);
    EXPECT_EQ(error(fs.trash(at("a"))), EBUSY);
    EXPECT_EQ(read("a"), "another one");
    EXPECT_EQ(t.count("root"), 1u);
    EXPECT_FALSE(t.has("data"));
}

TEST_P(Run, ActsOnNoFileThatChangedSinceItWasHashed) {
    write("a", "hashed");
    hash("a");
    touch("a");
    EXPECT_EQ(error(fs.move(at("a"), at("b"))), EBUSY);
    EXPECT_EQ(error(fs.remove(at("a"))), EBUSY);
    EXPECT_EQ(error(fs.trash(at("a"))), EBUSY);
    hash("a");
    EXPECT_EQ(error(fs.move(at("a"), at("b"))), 0);
}

TEST_P(Run, MissesAFileThatIsGoneSinceItWasHashed) {
    write("a", "hashed");
    hash("a");
    std::filesystem::remove(t.path("root/a"));
    EXPECT_EQ(error(fs.move(at("a"), at("b"))), ENOENT);
    EXPECT_EQ(error(fs.remove(at("a"))), ENOENT);
}

TEST_P(Run, ComparesNothingThatWasNotHashed) {
    write("a", "a");
    write("b", "b");
    hash("b");
    touch("a");
    replace("a", "other");
    EXPECT_EQ(error(fs.move(at("a"), at("c"))), 0);
    EXPECT_EQ(error(fs.remove(at("c"))), 0);
}

TEST_P(Run, BelievesWhoHashedForIt) {
    write("a", "a");
    struct ::stat facts{};
    ASSERT_EQ(::lstat(t.path("root/a").c_str(), &facts), 0);
    const auto vouch = RunFileSystem::voucher(fs);
    EXPECT_TRUE(vouch(at("a"), facts));
    replace("a", "other");
    EXPECT_EQ(error(fs.move(at("a"), at("b"))), EBUSY);
    ASSERT_EQ(::lstat(t.path("root/a").c_str(), &facts), 0);
    EXPECT_TRUE(vouch(at("a"), facts));
    EXPECT_EQ(error(fs.move(at("a"), at("b"))), 0);
    EXPECT_EQ(RunFileSystem::rootOf(fs), t.path("root"));
    SystemFileSystem other;
    EXPECT_FALSE(RunFileSystem::voucher(other));
    EXPECT_EQ(RunFileSystem::rootOf(other), "");
}

TEST_P(Run, AnnouncesMovesThatTakeMoreThanOneStep) {
    std::vector<std::string> announced;
    fs.announceTo([&](const Url& item) {
        EXPECT_TRUE(has("a"));
        EXPECT_FALSE(has("b"));
        announced.emplace_back(item.lastPathComponent());
    });
    for (const char* name : {"a", "c"}) write(name, name);
    EXPECT_EQ(error(fs.move(at("c"), at("d"))), 0);
    EXPECT_TRUE(announced.empty()) << "in one";
    renameRefusal = EINVAL;
    EXPECT_EQ(error(fs.move(at("a"), at("b"))), 0);
    EXPECT_EQ(announced, std::vector<std::string>{"a"});
    fs.announceTo([&](const Url& item) { announced.emplace_back(item.lastPathComponent()); });
    linkRefusal = EPERM;
    EXPECT_EQ(error(fs.move(at("b"), at("a"))), 0);
    EXPECT_EQ(error(fs.trash(at("a"))), 0);
    EXPECT_EQ(announced, (std::vector<std::string>{"a", "b", "a"}));
    fs.announceTo({});
    EXPECT_EQ(error(fs.move(at("d"), at("c"))), 0);
    EXPECT_EQ(announced.size(), 3U);
}

TEST_P(Run, BelievesNobodyWhoHashedAnotherFile) {
    write("a", "a");
    write("b", "b");
    struct ::stat facts{};
    ASSERT_EQ(::lstat(t.path("root/a").c_str(), &facts), 0);
    EXPECT_TRUE(fs.isRegularFile(at("b")));
    EXPECT_FALSE(fs.vouch(at("b"), facts)) << "as it was seen last";
    EXPECT_FALSE(fs.vouch(at("b"), facts)) << "as it is seen now";
    touch("a");
    EXPECT_FALSE(fs.vouch(at("a"), facts));
    EXPECT_FALSE(fs.vouch(at("missing"), facts));
}

TEST_P(Run, TakesBackAFileThatSlippedInAtTheLastInstant) {
    write("a", "hashed");
    hash("a");
    beforeRename = [&] { replace("a", "another one"); };
    EXPECT_EQ(error(fs.move(at("a"), at("b"))), EBUSY);
    EXPECT_EQ(read("a"), "another one");
    EXPECT_FALSE(has("b"));
}

TEST_P(Run, KeepsAFileThatSlippedInWhereItsOldNameIsTaken) {
    write("a", "hashed");
    hash("a");
    beforeRename = [&] {
        replace("a", "another one");
        beforeRename = [&] { write("a", "a third"); };  // when it is taken back
    };
    EXPECT_EQ(error(fs.move(at("a"), at("b"))), EBUSY);
    EXPECT_EQ(read("a"), "a third");
    EXPECT_EQ(read("b"), "another one");
}

TEST_P(Run, LeavesTheDecoyAloneWhenALinkTakesAFoldersNameAtTheLastInstant) {
    write("a", "hashed");
    t.makeFolder("root/sub");
    hash("a");
    beforeRename = [&] { exchangeSubForLink(); };
    EXPECT_EQ(error(fs.move(at("a"), at("sub/a"))), ELOOP);
    EXPECT_EQ(read("a"), "hashed") << "taken back";
    EXPECT_EQ(t.count("decoy"), 0u);
    EXPECT_EQ(t.count("root/aside"), 0u);
}

TEST_P(Run, TakesFromTheFolderItselfWhenALinkTakesItsNameAtTheLastInstant) {
    write("sub/a", "hashed");
    t.write("decoy/a", "theirs");
    hash("sub/a");
    beforeRename = [&] { exchangeSubForLink(); };
    EXPECT_EQ(error(fs.move(at("sub/a"), at("a"))), 0);
    EXPECT_EQ(read("a"), "hashed");
    EXPECT_EQ(t.read("decoy/a"), "theirs");
}

TEST_P(Run, TakesBackAFileWhoseNewFolderWentAtTheLastInstant) {
    write("a", "hashed");
    t.makeFolder("root/sub");
    hash("a");
    beforeRename = [&] { std::filesystem::rename(t.path("root/sub"), t.path("root/aside")); };
    EXPECT_EQ(error(fs.move(at("a"), at("sub/a"))), ENOENT);
    EXPECT_EQ(read("a"), "hashed");
}

TEST_P(Run, MovesAFileThatItTookBackAtTheNextAttempt) {
    write("a", "hashed");
    t.makeFolder("root/sub");
    hash("a");
    beforeRename = [&] { std::filesystem::rename(t.path("root/sub"), t.path("root/aside")); };
    EXPECT_EQ(error(fs.move(at("a"), at("sub/a"))), ENOENT);
    EXPECT_EQ(error(fs.createDirectory(at("sub"))), 0);
    touch("a");
    EXPECT_EQ(error(fs.move(at("a"), at("sub/a"))), EBUSY) << "changed meanwhile";
    hash("a");
    beforeRename = [&] { std::filesystem::rename(t.path("root/sub"), t.path("root/aside too")); };
    EXPECT_EQ(error(fs.move(at("a"), at("sub/a"))), ENOENT);
    EXPECT_EQ(error(fs.createDirectory(at("sub"))), 0);
    EXPECT_EQ(error(fs.move(at("a"), at("sub/a"))), 0);
    EXPECT_EQ(read("sub/a"), "hashed");
}

TEST_P(Run, TakesNoSightForNoProofThatAFileDidNotArrive) {
    write("a", "hashed");
    hash("a");
    beforeRename = [&] { hidden = t.path("root/b"); };
    EXPECT_EQ(error(fs.move(at("a"), at("b"))), 0);
    EXPECT_FALSE(fs.isRegularFile(at("b"))) << "looked at anew";
    EXPECT_EQ(read("b"), "hashed");
}

TEST_P(Run, LeavesTheTrashAloneWhenAnotherFileSlipsIn) {
    write("a", "hashed");
    hash("a");
    beforeRename = [&] { replace("a", "another one"); };
    EXPECT_FALSE(fs.trash(at("a")));
    EXPECT_EQ(read("a"), "another one");
    EXPECT_EQ(t.count("data/Trash/files"), 0u);
    EXPECT_EQ(t.count("data/Trash/info"), 0u);
}

TEST_P(Run, KnowsAFileUnderItsNewNameToo) {
    write("a", "hashed");
    hash("a");
    ASSERT_EQ(error(fs.move(at("a"), at("b"))), 0);
    replace("b", "another one");
    EXPECT_EQ(error(fs.remove(at("b"))), EBUSY);
    write("a", "fresh");
    EXPECT_EQ(error(fs.move(at("a"), at("c"))), 0) << "another file under the old name was not hashed";
}

TEST_P(Run, MovesTheOtherFileOnceThatIsHashed) {
    write("a", "hashed");
    hash("a");
    replace("a", "another one");
    EXPECT_EQ(fs.contentHash(at("a")), SystemFileSystem().contentHash(at("a")));
    EXPECT_EQ(error(fs.move(at("a"), at("b"))), 0);
    EXPECT_EQ(read("b"), "another one");
}

// Looks.

TEST_P(Run, LooksOnceForQuestionsThatFollowOneAnother) {
    write("a", "12345");
    looks = 0;
    EXPECT_TRUE(fs.exists(at("a")));
    EXPECT_TRUE(fs.isRegularFile(at("a")));
    EXPECT_FALSE(fs.isSymlink(at("a")));
    EXPECT_EQ(fs.fileSize(at("a")), 5);
    EXPECT_EQ(fs.fileIdentity(at("a")), SystemFileSystem().fileIdentity(at("a")));
    EXPECT_EQ(looks, 1);
    EXPECT_FALSE(fs.exists(at("free")));
    EXPECT_FALSE(fs.isSymlink(at("free")));
    EXPECT_EQ(looks, 2);
}

TEST_P(Run, EntersAWayOnceForQuestionsThatFollowItUpwards) {
    t.makeFolder("root/sub/deep");
    write("sub/deep/a", "12345");
    looks = 0;
    EXPECT_FALSE(fs.isSymlink(at("sub/deep")));
    EXPECT_FALSE(fs.isSymlink(at("sub")));
    EXPECT_EQ(looks, 0);
    EXPECT_FALSE(fs.exists(at("sub/deep/free")));
    EXPECT_EQ(looks, 1);
}

TEST_P(Run, EntersAWayAgainForTheSameQuestionAndAfterAnotherItemOrAct) {
    t.makeFolder("root/sub/deep");
    const auto isLink = [&](const char* name) { return fs.isSymlink(at(name)); };
    EXPECT_FALSE(isLink("sub/deep"));
    exchangeSubForLink();
    t.makeFolder("decoy/deep");
    EXPECT_FALSE(isLink("sub/deep")) << "itself is none";
    EXPECT_TRUE(isLink("sub"));
    EXPECT_TRUE(isLink("sub")) << "asked again";
    EXPECT_FALSE(isLink("aside/deep"));
    std::filesystem::rename(t.path("root/aside"), t.path("root/old"));
    t.makeLink("root/aside", t.path("decoy"));
    EXPECT_FALSE(fs.exists(at("other")));
    EXPECT_TRUE(isLink("aside")) << "asked after another item";
}

TEST_P(Run, LooksAgainForTheSameQuestionAndAfterAnotherItemOrAct) {
    write("a", "12345");
    EXPECT_EQ(fs.fileSize(at("a")), 5);
    write("a", "1");
    EXPECT_EQ(fs.fileSize(at("a")), 1);
    write("a", "12");
    EXPECT_FALSE(fs.exists(at("b")));
    EXPECT_TRUE(fs.isRegularFile(at("a")));
    write("a", "123");
    EXPECT_EQ(error(fs.createDirectory(at("sub"))), 0);
    EXPECT_EQ(fs.fileSize(at("a")), 3);
}

TEST_P(Run, SeesAFileArriveByTheMoveItself) {
    write("a", "abc");
    hash("a");
    ASSERT_EQ(error(fs.move(at("a"), at("b"))), 0);
    looks = 0;
    EXPECT_TRUE(fs.isRegularFile(at("b")));
    EXPECT_EQ(looks, 0);
    std::filesystem::remove(t.path("root/b"));
    EXPECT_FALSE(fs.isRegularFile(at("b"))) << "asked again";
}

TEST_P(Run, KnowsTheVolumeOfWhatItJustSaw) {
    write("a", "abc");
    t.makeFolder("root/sub");
    hash("a");
    EXPECT_TRUE(fs.sameVolume(at("a"), at("sub")));
    EXPECT_TRUE(fs.sameVolume(at("a"), at("missing/folder")));
    EXPECT_FALSE(fs.sameVolume(at("a"), Url::file("/proc/missing")));
    EXPECT_FALSE(fs.sameVolume(Url::file("/proc"), at("sub")));
}

}  // namespace
