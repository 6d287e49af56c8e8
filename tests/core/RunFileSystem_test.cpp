// What the disk of a run does beyond the contract of every port: it stays below its root, and looks no more than it
// must.

#include "tests/support/RunFixture.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <vector>

using ordovan::test::error;
using ordovan::test::Flushes;

namespace {

using RunDisk = ordovan::test::RunFixture;
using Entering = ordovan::ConfinedFolders::Entering;

INSTANTIATE_TEST_SUITE_P(BothWays, RunDisk, testing::Values(Entering::atOnce, Entering::stepByStep),
                         [](const auto& way) { return way.param == Entering::atOnce ? "AtOnce" : "StepByStep"; });

// Confined.

TEST_P(RunDisk, GoesThroughNoLinkOnTheWay) {
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

TEST_P(RunDisk, NoticesALinkInPlaceOfAFolderThatItHolds) {
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

TEST_P(RunDisk, TakesNoPathThatStepsUp) {
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

TEST_P(RunDisk, ReachesWhatIsNotBelowItsRootByThePath) {
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

TEST_P(RunDisk, TrashesAndPutsBackThroughTheFolderThatItHolds) {
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

TEST_P(RunDisk, GoesThroughNoLinkInATrash) {
    write("a", "mine");
    const Url trashed = fs.trash(at("a")).value();
    t.write("decoy/a", "theirs");
    std::filesystem::rename(t.path("data/Trash/files"), t.path("data/Trash/aside"));
    t.makeLink("data/Trash/files", t.path("decoy"));
    EXPECT_EQ(error(fs.contentHash(trashed)), ELOOP);
    EXPECT_EQ(error(fs.move(trashed, at("a"))), ELOOP);
    EXPECT_EQ(error(fs.copy(trashed, at("a"))), ELOOP);
    EXPECT_EQ(error(fs.remove(trashed)), ELOOP);
    EXPECT_EQ(t.read("decoy/a"), "theirs");
    EXPECT_EQ(t.read("data/Trash/aside/a"), "mine");
}

TEST_P(RunDisk, TakesFromTheTrashWhatItHashedThoughALinkTakesTheNameOfItsFolder) {
    write("a", "mine");
    const Url trashed = fs.trash(at("a")).value();
    ASSERT_EQ(error(fs.contentHash(trashed)), 0);
    t.write("decoy/a", "theirs");
    beforeRename = [&] {
        std::filesystem::rename(t.path("data/Trash/files"), t.path("data/Trash/aside"));
        t.makeLink("data/Trash/files", t.path("decoy"));
    };
    EXPECT_EQ(error(fs.move(trashed, at("a"))), 0);
    EXPECT_EQ(read("a"), "mine");
    EXPECT_EQ(t.read("decoy/a"), "theirs");
}

TEST_P(RunDisk, GoesFromTrashToTrash) {
    for (const std::string trash : {"one", "two", "three"}) t.makeFolder(trash + "/Trash/files");
    t.write("one/Trash/files/a", "a");
    const auto in = [&](const std::string& trash) { return t.url(trash + "/Trash/files/a"); };
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(error(fs.move(in("one"), in("two"))), 0);
        EXPECT_EQ(error(fs.move(in("two"), in("one"))), 0);
        EXPECT_EQ(error(fs.move(in("one"), in("three"))), 0);
        EXPECT_EQ(error(fs.move(in("three"), in("one"))), 0);
    }
    EXPECT_EQ(error(fs.move(in("one"), at("a"))), 0);
    EXPECT_EQ(read("a"), "a");
}

TEST_P(RunDisk, FindsInTheTrashWhatWentThereThoughAnotherFileTakesItsNameAtOnce) {
    write("a", "old");
    afterRename = [&] { write("a", "new"); };
    EXPECT_EQ(fs.trash(at("a")), t.url("data/Trash/files/a"));
    EXPECT_EQ(t.read("data/Trash/files/a"), "old");
    EXPECT_EQ(read("a"), "new");
}

TEST_P(RunDisk, FindsInTheTrashWhatWentThereThoughTheReplyWasLost) {
    write("a", "old");
    renameReply = EIO;
    EXPECT_EQ(fs.trash(at("a")), t.url("data/Trash/files/a"));
    EXPECT_EQ(t.read("data/Trash/files/a"), "old");
    EXPECT_EQ(t.count("data/Trash/info"), 1U);
    EXPECT_FALSE(has("a"));
    renameReply = 0;
    renameRefusal = EIO;
    write("b", "refused");
    EXPECT_EQ(error(fs.trash(at("b"))), EIO);
    EXPECT_EQ(read("b"), "refused");
    EXPECT_EQ(t.count("data/Trash/info"), 1U);
}

TEST_P(RunDisk, HasTheOtherWaysToMoveInItsFoldersToo) {
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

TEST_P(RunDisk, PutsAPartialCopysFinalNameOnDisk) {
    const Url partial = OrdovanPartialName::beside(at("sub/file"));
    write("sub/" + std::string(partial.lastPathComponent()), "abc");
    Flushes::reset();
    hash("sub/" + std::string(partial.lastPathComponent()));
    EXPECT_EQ(error(fs.move(partial, at("sub/file"))), 0);
    EXPECT_EQ(Flushes::paths, std::vector{t.path("root/sub")});
}

TEST_P(RunDisk, GivesAPartialCopyItsNameBackWhenTheFolderCanNotBeFlushed) {
    const Url partial = OrdovanPartialName::beside(at("file"));
    write(partial.lastPathComponent(), "abc");
    hash(partial.lastPathComponent());
    Flushes::failing = [](const std::string&) { return EIO; };
    EXPECT_EQ(error(fs.move(partial, at("file"))), EIO);
    EXPECT_FALSE(fs.isRegularFile(at("file")));
    EXPECT_EQ(read(partial.lastPathComponent()), "abc");
    EXPECT_EQ(t.count("root"), 1u);
}

// Looks.

TEST_P(RunDisk, LooksOnceForQuestionsThatFollowOneAnother) {
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

TEST_P(RunDisk, EntersAWayOnceForQuestionsThatFollowItUpwards) {
    t.makeFolder("root/sub/deep");
    write("sub/deep/a", "12345");
    looks = 0;
    EXPECT_FALSE(fs.isSymlink(at("sub/deep")));
    EXPECT_FALSE(fs.isSymlink(at("sub")));
    EXPECT_EQ(looks, 0);
    EXPECT_FALSE(fs.exists(at("sub/deep/free")));
    EXPECT_EQ(looks, 1);
}

TEST_P(RunDisk, EntersAWayAgainForTheSameQuestionAndAfterAnotherItemOrAct) {
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

TEST_P(RunDisk, EntersAWayAgainForAFolderAboveThatIsAskedForTwice) {
    t.makeFolder("root/sub/deep");
    EXPECT_FALSE(fs.isSymlink(at("sub/deep")));
    EXPECT_FALSE(fs.isSymlink(at("sub")));
    exchangeSubForLink();
    EXPECT_TRUE(fs.isSymlink(at("sub")));
}

TEST_P(RunDisk, LooksAgainForTheSameQuestionAndAfterAnotherItemOrAct) {
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

TEST_P(RunDisk, SeesAFileArriveByTheMoveItself) {
    write("a", "abc");
    hash("a");
    ASSERT_EQ(error(fs.move(at("a"), at("b"))), 0);
    looks = 0;
    EXPECT_TRUE(fs.isRegularFile(at("b")));
    EXPECT_EQ(looks, 0);
    std::filesystem::remove(t.path("root/b"));
    EXPECT_FALSE(fs.isRegularFile(at("b"))) << "asked again";
}

TEST_P(RunDisk, KnowsTheVolumeOfWhatItJustSaw) {
    write("a", "abc");
    t.makeFolder("root/sub");
    hash("a");
    EXPECT_TRUE(fs.sameVolume(at("a"), at("sub")));
    EXPECT_TRUE(fs.sameVolume(at("a"), at("missing/folder")));
    EXPECT_FALSE(fs.sameVolume(at("a"), Url::file("/proc/missing")));
    EXPECT_FALSE(fs.sameVolume(Url::file("/proc"), at("sub")));
}

}  // namespace
