// What the disk of a run does beyond the contract of every port: what it hashed is what it moves.

#include "OrdovanCore/platform/ContentReader.h"
#include "tests/support/FailingCalls.h"
#include "tests/support/RunFixture.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <vector>

using ordovan::RunFileSystem;
using ordovan::test::error;
using ordovan::test::FailingCall;

// NOLINTNEXTLINE: the C library's name and signature
ORDOVAN_FAILING(ssize_t, pread, (int file, void* bytes, size_t count, off_t at), file, bytes, count, at)

namespace {

using RunHashed = ordovan::test::RunFixture;
using Entering = ordovan::ConfinedFolders::Entering;

INSTANTIATE_TEST_SUITE_P(BothWays, RunHashed, testing::Values(Entering::atOnce, Entering::stepByStep),
                         [](const auto& way) { return way.param == Entering::atOnce ? "AtOnce" : "StepByStep"; });

TEST_P(RunHashed, ActsOnNoFileThatTookThePlaceOfTheOneThatWasHashed) {
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

TEST_P(RunHashed, ActsOnNoFileThatChangedSinceItWasHashed) {
    write("a", "hashed");
    hash("a");
    touch("a");
    EXPECT_EQ(error(fs.move(at("a"), at("b"))), EBUSY);
    EXPECT_EQ(error(fs.remove(at("a"))), EBUSY);
    EXPECT_EQ(error(fs.trash(at("a"))), EBUSY);
    hash("a");
    EXPECT_EQ(error(fs.move(at("a"), at("b"))), 0);
}

TEST_P(RunHashed, MissesAFileThatIsGoneSinceItWasHashed) {
    write("a", "hashed");
    hash("a");
    std::filesystem::remove(t.path("root/a"));
    EXPECT_EQ(error(fs.move(at("a"), at("b"))), ENOENT);
    EXPECT_EQ(error(fs.remove(at("a"))), ENOENT);
}

TEST_P(RunHashed, TakesNoPathThatStepsUp) {
    write("a", "a");
    t.makeFolder("root/sub");
    hash("a");
    for (const char* way : {"../decoy/x", "sub/../x", ".."}) EXPECT_EQ(error(fs.move(at("a"), at(way))), EINVAL) << way;
    EXPECT_EQ(read("a"), "a");
    EXPECT_EQ(t.count("decoy"), 0u);
}

TEST_P(RunHashed, ComparesNothingThatWasNotHashed) {
    write("a", "a");
    write("b", "b");
    hash("b");
    touch("a");
    replace("a", "other");
    EXPECT_EQ(error(fs.move(at("a"), at("c"))), 0);
    EXPECT_EQ(error(fs.remove(at("c"))), 0);
}

TEST_P(RunHashed, BelievesWhoHashedForIt) {
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

TEST_P(RunHashed, AnnouncesMovesThatTakeMoreThanOneStep) {
    std::vector<std::string> announced;
    fs.tellTo({.begins = [&](const Url& item, const Url&) {
        EXPECT_TRUE(has("a"));
        EXPECT_FALSE(has("b"));
        announced.emplace_back(item.lastPathComponent());
    }});
    for (const char* name : {"a", "c"}) write(name, name);
    EXPECT_EQ(error(fs.move(at("c"), at("d"))), 0);
    EXPECT_TRUE(announced.empty()) << "in one";
    renameRefusal = EINVAL;
    EXPECT_EQ(error(fs.move(at("a"), at("b"))), 0);
    EXPECT_EQ(announced, std::vector<std::string>{"a"});
    fs.tellTo({.begins = [&](const Url& item, const Url&) { announced.emplace_back(item.lastPathComponent()); }});
    linkRefusal = EPERM;
    EXPECT_EQ(error(fs.move(at("b"), at("a"))), 0);
    EXPECT_EQ(error(fs.trash(at("a"))), 0);
    EXPECT_EQ(announced, (std::vector<std::string>{"a", "b", "a"}));
    fs.tellTo({});
    EXPECT_EQ(error(fs.move(at("d"), at("c"))), 0);
    EXPECT_EQ(announced.size(), 3U);
}

TEST_P(RunHashed, BelievesNobodyWhoHashedAnotherFile) {
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
    EXPECT_FALSE(fs.vouch(Url::file("relative"), facts));
}

TEST_P(RunHashed, BelievesWhatItReadInPiecesToTheEnd) {
    write("a", "abc");
    const auto content = fs.open(at("a")).value();
    EXPECT_EQ(content->identity(), SystemContentReader().open(at("a")).value()->identity());
    EXPECT_EQ(content->linkCount(), 1U);
    std::string bytes(10, '\0');
    EXPECT_EQ(error(content->read(-1, bytes)), EINVAL);
    const FailingCall interrupted("pread", EINTR);
    EXPECT_EQ(content->read(0, bytes), 3U);
    EXPECT_EQ(interrupted.calls(), 2);
    EXPECT_EQ(content->read(3, bytes), 0U);
    replace("a", "another one");
    EXPECT_EQ(error(fs.move(at("a"), at("b"))), EBUSY);
    EXPECT_EQ(error(content->read(3, bytes)), EBUSY);
}

TEST_P(RunHashed, TakesBackAFileThatSlippedInAtTheLastInstant) {
    write("a", "hashed");
    hash("a");
    bool leavesSomething = false;
    fs.tellTo({.leavesSomething = [&] { leavesSomething = true; }});
    beforeRename = [&] { replace("a", "another one"); };
    EXPECT_EQ(error(fs.move(at("a"), at("b"))), EBUSY);
    EXPECT_EQ(read("a"), "another one");
    EXPECT_FALSE(has("b"));
    hash("a");
    beforeRename = [&] {
        replace("a", "a third");
        beforeRename = [&] { std::filesystem::remove(t.path("root/b")); };  // when it is taken back
    };
    EXPECT_EQ(error(fs.move(at("a"), at("b"))), EBUSY);
    EXPECT_EQ(t.count("root"), 0U);
    EXPECT_FALSE(leavesSomething);
}

TEST_P(RunHashed, KeepsAFileThatSlippedInWhereItsOldNameIsTakenAndTellsOfIt) {
    write("a", "hashed");
    hash("a");
    bool leavesSomething = false;
    fs.tellTo({.leavesSomething = [&] { leavesSomething = true; }});
    beforeRename = [&] {
        replace("a", "another one");
        beforeRename = [&] { write("a", "a third"); };  // when it is taken back
    };
    EXPECT_EQ(error(fs.move(at("a"), at("b"))), EBUSY);
    EXPECT_EQ(read("a"), "a third");
    EXPECT_EQ(read("b"), "another one");
    EXPECT_TRUE(leavesSomething);
}

TEST_P(RunHashed, LeavesTheDecoyAloneWhenALinkTakesAFoldersNameAtTheLastInstant) {
    write("a", "hashed");
    t.makeFolder("root/sub");
    hash("a");
    beforeRename = [&] { exchangeSubForLink(); };
    EXPECT_EQ(error(fs.move(at("a"), at("sub/a"))), ELOOP);
    EXPECT_EQ(read("a"), "hashed") << "taken back";
    EXPECT_EQ(t.count("decoy"), 0u);
    EXPECT_EQ(t.count("root/aside"), 0u);
}

TEST_P(RunHashed, TakesFromTheFolderItselfWhenALinkTakesItsNameAtTheLastInstant) {
    write("sub/a", "hashed");
    t.write("decoy/a", "theirs");
    hash("sub/a");
    beforeRename = [&] { exchangeSubForLink(); };
    EXPECT_EQ(error(fs.move(at("sub/a"), at("a"))), 0);
    EXPECT_EQ(read("a"), "hashed");
    EXPECT_EQ(t.read("decoy/a"), "theirs");
}

TEST_P(RunHashed, TakesBackAFileWhoseNewFolderWentAtTheLastInstant) {
    write("a", "hashed");
    t.makeFolder("root/sub");
    hash("a");
    beforeRename = [&] { std::filesystem::rename(t.path("root/sub"), t.path("root/aside")); };
    EXPECT_EQ(error(fs.move(at("a"), at("sub/a"))), ENOENT);
    EXPECT_EQ(read("a"), "hashed");
}

TEST_P(RunHashed, MovesAFileThatItTookBackAtTheNextAttempt) {
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

TEST_P(RunHashed, MovesIntoAFolderThatWasMadeAnewWhileItHeldTheOldOne) {
    for (const char* name : {"a", "b", "c"}) write(name, name);
    t.makeFolder("root/sub");
    hash("a");
    ASSERT_EQ(error(fs.move(at("a"), at("sub/a"))), 0);
    std::filesystem::remove_all(t.path("root/sub"));
    t.makeFolder("root/sub");
    hash("b");
    EXPECT_EQ(error(fs.move(at("b"), at("sub/b"))), 0);
    EXPECT_EQ(read("sub/b"), "b");
    std::filesystem::remove_all(t.path("root/sub"));
    t.makeLink("root/sub", t.path("decoy"));
    hash("c");
    EXPECT_EQ(error(fs.move(at("c"), at("sub/c"))), ELOOP);
    EXPECT_EQ(read("c"), "c");
    EXPECT_EQ(t.count("decoy"), 0u);
}

TEST_P(RunHashed, TakesNoSightForNoProofThatAFileDidNotArrive) {
    write("a", "hashed");
    hash("a");
    beforeRename = [&] { hidden = t.path("root/b"); };
    EXPECT_EQ(error(fs.move(at("a"), at("b"))), 0);
    EXPECT_FALSE(fs.isRegularFile(at("b"))) << "looked at anew";
    EXPECT_EQ(read("b"), "hashed");
}

TEST_P(RunHashed, LeavesTheTrashAloneWhenAnotherFileSlipsIn) {
    write("a", "hashed");
    hash("a");
    beforeRename = [&] { replace("a", "another one"); };
    EXPECT_FALSE(fs.trash(at("a")));
    EXPECT_EQ(read("a"), "another one");
    EXPECT_EQ(t.count("data/Trash/files"), 0u);
    EXPECT_EQ(t.count("data/Trash/info"), 0u);
}

TEST_P(RunHashed, KnowsAFileUnderItsNewNameToo) {
    write("a", "hashed");
    hash("a");
    ASSERT_EQ(error(fs.move(at("a"), at("b"))), 0);
    replace("b", "another one");
    EXPECT_EQ(error(fs.remove(at("b"))), EBUSY);
    write("a", "fresh");
    EXPECT_EQ(error(fs.move(at("a"), at("c"))), 0) << "another file under the old name was not hashed";
}

TEST_P(RunHashed, MovesTheOtherFileOnceThatIsHashed) {
    write("a", "hashed");
    hash("a");
    replace("a", "another one");
    EXPECT_EQ(fs.contentHash(at("a")), SystemFileSystem().contentHash(at("a")));
    EXPECT_EQ(error(fs.move(at("a"), at("b"))), 0);
    EXPECT_EQ(read("b"), "another one");
}

}  // namespace
