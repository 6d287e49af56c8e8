// Records of runs that have to wait, for a volume that is away or one that can not be flushed, while later runs have to
// do with the same places. What those have done and recorded stays.

#include "tests/support/QtTestMain.h"
#include "tests/support/UnflushedWorld.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <functional>
#include <span>
#include <string>
#include <string_view>

using ordovan::test::Killed;
using World = ordovan::test::UnflushedWorld;
using Call = ordovan::testing::FaultyFileSystem::Call;
using Operation = ordovan::testing::Operation;
using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;

namespace {

/// The program ends before a run copies its first file.
void endBeforeTheCopy(World& world) {
    world.fs.setBeforeCall([](const Call& call) {
        if (call.operation == Operation::copy) throw Killed();
    });
    EXPECT_THROW(world.organize(), Killed);
    world.fs.setBeforeCall({});
}

/// The program ends right behind the move by which a run puts its copy in place.
void endBehindTheCopy(World& world) {
    world.fs.setAfterCall([](const Call& call) {
        if (call.operation == Operation::move && call.second.path() == "/r/ordovan+/Archives/w.zip") throw Killed();
    });
    EXPECT_THROW(world.organize(), Killed);
    world.fs.setAfterCall({});
    ASSERT_TRUE(world.memory.item("/r/ordovan+/Archives/w.zip"));
}

/// A world in which duplicates of the folder and of one inside it were moved to the Trash.
class TrashWorld : public World {
public:
    explicit TrashWorld(std::string_view brokenMeanwhile = {}) {
        tree({"sub/b.txt = 33", "sub/c.txt = 33"});
        start();
        search();
        broken = brokenMeanwhile;
        trash();
    }
    /// That of the file that lay in the folder itself.
    [[nodiscard]] OrdovanTrashEntry entry() {
        const auto record = storedTrash();
        const auto found = std::ranges::find_if(
            record->entries, [](const OrdovanTrashEntry& each) { return !each.original().starts_with("/r/sub/"); });
        EXPECT_NE(found, record->entries.end());
        return *found;
    }
    /// Another file of the same place goes there too, by a run that has nothing to do with the inner folder.
    void trashAnother(const OrdovanTrashEntry& first) {
        if (memory.item(first.original())) memory.removeTree(first.original());
        for (const char* inner : {"/r/sub/b.txt", "/r/sub/c.txt"}) {
            if (memory.item(inner)) memory.write(inner, inner);
        }
        tree({std::string(first.original().substr(3)) + " = another", "other.txt = another"});
        memory.setModified("/r/other.txt", 1);
        start();
        search();
        trash();
        EXPECT_EQ(entry().original(), first.original());
        EXPECT_NE(entry(), first);
    }
};

TEST(TidyOvertaken, AnUndoThatWaitsLeavesTheEntryOfAFileThatCameToTheSamePlace) {
    World world("/r/sub");
    world.tree({"sub/w.zip = 4"});
    world.start();
    world.organize();
    world.pulledAtFlush = "/r/sub";
    world.undo();
    world.pullOut("/r/sub");
    world.tree({"w.zip = 999"});
    world.start();
    ASSERT_TRUE(world.hasRunRecord());
    EXPECT_THAT(*world.runRecord(), HasSubstr("w.zip"));
    EXPECT_THAT(*world.runRecord(), Not(HasSubstr("x.pdf"))) << "that is settled";
    world.organize();
    ASSERT_EQ(world.memory.read("/r/ordovan+/Archives/w.zip"), "999");
    world.startAgain();
    EXPECT_FALSE(world.hasRunRecord());
    EXPECT_THAT(world.stored(), Contains("w.zip -> ordovan+/Archives/w.zip"));
    world.undo();
    EXPECT_EQ(world.memory.read("/r/w.zip"), "999");
    EXPECT_EQ(world.memory.read("/r/sub/w.zip"), "4");
}

TEST(TidyOvertaken, AnUndoThatCouldNotBeFlushedLeavesTheEntriesOfLaterRuns) {
    World world("/r/sub");
    world.tree({"sub/w.zip = 4"});
    world.start();
    world.organize();
    world.broken = "/r/sub";
    world.undo();
    EXPECT_TRUE(world.hasRunRecord());
    world.memory.replace("/r/x.pdf", "another");
    world.start();
    world.organize();
    ASSERT_EQ(world.memory.read("/r/ordovan+/Documents/x.pdf"), "another");
    world.broken = {};
    world.start();
    EXPECT_FALSE(world.hasRunRecord());
    EXPECT_THAT(world.stored(), Contains("x.pdf -> ordovan+/Documents/x.pdf"));
    world.undo();
    EXPECT_EQ(world.memory.read("/r/x.pdf"), "another");
}

TEST(TidyOvertaken, ARecordThatCouldNotBeCutDownLeavesTheEntriesOfLaterRuns) {
    World world("/r/sub");
    world.tree({"sub/w.zip = 4"});
    world.start();
    world.organize();
    world.pulledAtFlush = "/r/sub";
    world.undo();
    world.pullOut("/r/sub");
    world.memory.replace("/r/x.pdf", "another");
    world.runStorage.failAll("write", ENOSPC);
    world.start();
    world.organize();
    ASSERT_EQ(world.memory.read("/r/ordovan+/Documents/x.pdf"), "another");
    world.runStorage.failAll("", 0);
    world.startAgain();
    EXPECT_FALSE(world.hasRunRecord());
    EXPECT_THAT(world.stored(), Contains("x.pdf -> ordovan+/Documents/x.pdf"));
}

TEST(TidyOvertaken, ARestoreThatCouldNotBeFlushedLeavesTheEntryOfAFileThatCameToTheSamePlace) {
    TrashWorld world;
    const OrdovanTrashEntry first = world.entry();
    world.broken = "/r/sub";
    world.restore();
    EXPECT_TRUE(world.hasRunRecord());
    world.trashAnother(first);
    ASSERT_EQ(world.entry().trashed(), first.trashed());
    world.broken = {};
    world.startAgain();
    EXPECT_FALSE(world.hasRunRecord());
    world.restore();
    EXPECT_EQ(world.memory.read(first.original()), "another");
}

TEST(TidyOvertaken, AnOrganizeRunThatWaitsPutsNoEntryInThePlaceOfALaterOne) {
    World world("/r/sub");
    world.tree({"sub/w.zip = 4"});
    world.start();
    world.pulledAtFlush = "/r/sub";
    world.organize();
    EXPECT_THAT(world.stored(), Contains("sub/w.zip -> ordovan+/Archives/w.zip"));
    world.pullOut("/r/sub");
    world.start();
    EXPECT_TRUE(world.hasRunRecord());
    world.memory.removeTree("/r/ordovan+/Archives/w.zip");
    world.tree({"w.zip = 999"});
    world.start();
    world.organize();
    ASSERT_EQ(world.memory.read("/r/ordovan+/Archives/w.zip"), "999");
    world.startAgain();
    EXPECT_FALSE(world.hasRunRecord());
    EXPECT_THAT(world.stored(), Contains("w.zip -> ordovan+/Archives/w.zip"));
    EXPECT_THAT(world.stored(), Not(Contains("sub/w.zip -> ordovan+/Archives/w.zip")));
    world.undo();
    EXPECT_EQ(world.memory.read("/r/w.zip"), "999");
}

TEST(TidyOvertaken, ATrashRunThatWaitsPutsNoEntryInThePlaceOfALaterOne) {
    TrashWorld world("/r/sub");
    const OrdovanTrashEntry first = world.entry();
    EXPECT_TRUE(world.hasRunRecord());
    // The Trash is emptied, and another file goes there from the same place.
    world.memory.removeTree(first.trashed());
    world.trashAnother(first);
    world.broken = {};
    world.startAgain();
    EXPECT_FALSE(world.hasRunRecord());
    world.restore();
    EXPECT_EQ(world.memory.read(first.original()), "another");
}

TEST(TidyOvertaken, AFileThatALaterRunHasRecordedIsNotTakenForTheCopyOfOneThatWaits) {
    World world("/r/sub");
    world.tree({"sub/w.zip = 4"});
    const auto modified = world.memory.item("/r/sub/w.zip")->modifiedNs;
    world.start();
    endBeforeTheCopy(world);
    world.pullOut("/r/sub");
    world.tree({"w.zip = 4"});  // the same file, from a backup
    world.memory.setModified("/r/w.zip", modified);
    world.start();
    world.organize();
    ASSERT_TRUE(world.memory.item("/r/ordovan+/Archives/w.zip"));
    world.startAgain();
    EXPECT_FALSE(world.hasRunRecord());
    EXPECT_TRUE(world.memory.item("/r/ordovan+/Archives/w.zip"));
    EXPECT_TRUE(world.memory.item("/r/sub/w.zip"));
    world.undo();
    EXPECT_TRUE(world.memory.item("/r/w.zip"));
}

TEST(TidyOvertaken, ACopyIsTakenAwayThoughTheJournalTellsOfAnotherFileThatLayThere) {
    World world("/r/sub");
    world.tree({"w.zip = 4"});
    world.start();
    world.organize();
    EXPECT_THAT(world.stored(), Contains("w.zip -> ordovan+/Archives/w.zip"));
    world.memory.removeTree("/r/ordovan+/Archives/w.zip");
    world.tree({"sub/w.zip = 4"});
    world.start();
    endBehindTheCopy(world);
    world.start();
    EXPECT_FALSE(world.memory.item("/r/ordovan+/Archives/w.zip"));
    EXPECT_TRUE(world.memory.item("/r/sub/w.zip"));
}

TEST(TidyOvertaken, ACopyIsTakenAwayThoughTheJournalTellsOfOneWithAnotherContent) {
    for (const bool keepsIdentities : {true, false}) {
        World world("/r/sub");
        world.keepsIdentities = [&](const Url&) { return keepsIdentities; };
        world.tree({keepsIdentities ? "sub/w.zip = 4" : "w.zip = 4"});
        world.start();
        world.organize();
        world.memory.removeTree("/r/ordovan+/Archives/w.zip");
        world.tree({"sub/w.zip = 5555"});
        world.start();
        endBehindTheCopy(world);
        world.start();
        EXPECT_FALSE(world.memory.item("/r/ordovan+/Archives/w.zip"));
        EXPECT_EQ(world.memory.read("/r/sub/w.zip"), "5555");
    }
}

TEST(TidyOvertaken, ACopyIsTakenAwayWhoseOriginalIsBackThoughTheRunHadItsEntry) {
    World world("/r/sub");
    world.tree({"sub/w.zip = 4"});
    const auto modified = world.memory.item("/r/sub/w.zip")->modifiedNs;
    world.start();
    world.broken = "/r/sub";
    world.organize();
    EXPECT_THAT(world.stored(), Contains("sub/w.zip -> ordovan+/Archives/w.zip"));
    EXPECT_TRUE(world.hasRunRecord());
    // Its removal did not last.
    world.tree({"sub/w.zip = 4"});
    world.memory.setModified("/r/sub/w.zip", modified);
    world.broken = {};
    world.startAgain();
    EXPECT_FALSE(world.memory.item("/r/ordovan+/Archives/w.zip"));
    EXPECT_EQ(world.memory.read("/r/sub/w.zip"), "4");
}

TEST(TidyOvertaken, AnOrganizeRunThatWaitsPutsNoEntryInThePlaceOfALaterOneForAnEqualFile) {
    World world("/r/sub");
    world.tree({"sub/w.zip = 4"});
    world.start();
    world.pulledAtFlush = "/r/sub";
    world.organize();
    world.pullOut("/r/sub");
    world.start();
    world.memory.removeTree("/r/ordovan+/Archives/w.zip");
    world.tree({"w.zip = 4"});
    world.start();
    world.organize();
    world.startAgain();
    EXPECT_FALSE(world.hasRunRecord());
    EXPECT_THAT(world.stored(), Contains("w.zip -> ordovan+/Archives/w.zip"));
    world.undo();
    EXPECT_EQ(world.memory.read("/r/w.zip"), "4");
}

TEST(TidyOvertaken, ARunBehindALinkPutsNoEntryInThePlaceOfALaterOne) {
    World world;
    world.keepsIdentities = [](const Url&) { return false; };
    world.tree({"sub/w.zip = 4"});
    world.start();
    world.broken = "/r/sub";
    world.organize();
    EXPECT_TRUE(world.hasRunRecord());
    world.memory.removeTree("/r/ordovan+/Archives/w.zip");
    world.tree({"w.zip = 999"});
    world.start();
    world.organize();
    world.memory.removeTree("/r/sub");
    world.memory.makeDirectory("/elsewhere/sub");
    world.memory.link("/r/sub", "/elsewhere/sub");
    world.broken = {};
    world.startAgain();
    EXPECT_THAT(world.stored(), Contains("w.zip -> ordovan+/Archives/w.zip"));
    world.undo();
    EXPECT_EQ(world.memory.read("/r/w.zip"), "999");
}

TEST(TidyOvertaken, TheEntryOfAFileThatIsAwayForAMomentComesInThePlaceOfOneWhoseFileIsGone) {
    World world;
    world.organize();
    world.memory.removeTree("/r/ordovan+/Documents/x.pdf");
    world.tree({"sub/x.pdf = 55", "sub/zz.png = 8"});
    world.start();
    world.organizeUpToMove(2);
    world.moveBack("/r/ordovan+/Documents/x.pdf", "/desktop/x.pdf");
    world.start();
    world.moveBack("/desktop/x.pdf", "/r/ordovan+/Documents/x.pdf");
    world.start();
    world.undo();
    EXPECT_EQ(world.memory.read("/r/sub/x.pdf"), "55");
}

TEST(TidyOvertaken, TheEntryOfAnInterruptedRunComesInThePlaceOfOneWhoseFileIsGone) {
    World world;
    world.organize();
    world.memory.removeTree("/r/ordovan+/Documents/x.pdf");
    world.tree({"sub/x.pdf = 55"});
    world.start();
    world.fs.setAfterCall([](const Call& call) {
        if (call.operation == Operation::move) throw Killed();
    });
    EXPECT_THROW(world.organize(), Killed);
    world.fs.setAfterCall({});
    world.start();
    EXPECT_THAT(world.stored(), Contains("sub/x.pdf -> ordovan+/Documents/x.pdf"));
    EXPECT_THAT(world.stored(), Not(Contains("x.pdf -> ordovan+/Documents/x.pdf")));
}

TEST(TidyOvertaken, RecordsThatStandTogetherAreSettledInTheOrderOfTheirRuns) {
    World world;
    world.organizeUpToMove(2);
    const std::string first = world.runRecord().value();
    world.isFlushed = false;
    world.start();
    world.now += 100;
    world.organizeUpToMove(2);
    const auto second = world.memory.read(world.locations.runRecord(Url::file("/r"), 2).path());
    ASSERT_TRUE(second);
    // As if the first place had been free when the later run began.
    world.memory.replace(world.locations.runRecord(Url::file("/r"), 1).path(), *second);
    world.memory.replace(world.locations.runRecord(Url::file("/r"), 2).path(), first);
    world.startAgain();
    EXPECT_FALSE(world.hasRunRecord());
    ASSERT_THAT(world.model->history().records, SizeIs(2));
    EXPECT_GT(world.model->history().records[0].epoch, world.model->history().records[1].epoch);
    ASSERT_TRUE(world.model->interruptedRun());
    EXPECT_EQ(world.model->interruptedRun()->startedAtEpoch, world.model->history().records[1].epoch);
}

TEST(TidyOvertaken, AVolumeThatRefusesToBeFlushedHidesNoneThatBroke) {
    World world("/r/fuse");
    world.tree({"fuse/w.zip = 4"});
    world.canFlush = [](std::span<const Url> folders) {
        return std::ranges::find(folders, Url::file("/r/fuse")) == folders.end();
    };
    world.start();
    world.organize();
    const std::size_t count = world.stored().size();
    world.broken = "/r/ordovan+";
    world.undo();
    EXPECT_TRUE(world.model->journalWarning());
    EXPECT_THAT(world.stored(), SizeIs(count));
    EXPECT_TRUE(world.hasRunRecord());
    world.broken = "/r/fuse";
    world.start();
    EXPECT_THAT(world.stored(), IsEmpty());
    EXPECT_FALSE(world.hasRunRecord());
}

TEST(TidyOvertaken, AVolumeThatARunDidNotTouchKeepsNothingFromBeingRecorded) {
    World world("/r/zsub");
    world.tree({"zsub/q.png = 4"});
    world.start();
    world.organizeUpToMove(2);
    world.broken = "/r/zsub";
    world.start();
    EXPECT_THAT(world.stored(), Contains("x.pdf -> ordovan+/Documents/x.pdf"));
    EXPECT_FALSE(world.hasRunRecord());
}

TEST(TidyOvertaken, TheUserIsToldThatARunCouldNotBeRecordedYet) {
    World world;
    world.organizeUpToMove(3);
    world.isFlushed = false;
    world.start();
    ASSERT_TRUE(world.model->interruptedRun());
    EXPECT_THAT(world.model->interruptedRun()->summary(), HasSubstr("could not be recorded yet"));
    world.startAgain();
    ASSERT_TRUE(world.model->interruptedRun());
    EXPECT_TRUE(world.model->interruptedRun()->isRecorded);
}

/// What else told of the folder was settled and is not in the record any more.
TEST(TidyOvertaken, ARecordThatWaitsForAVolumeIsToldAtEachPreviewAndEndsWhenThatIsBack) {
    World world("/r/sub");
    world.keepsIdentities = [](const Url&) { return false; };
    world.tree({"sub/w.zip = 4"});
    world.start();
    endBeforeTheCopy(world);
    world.pullOut("/r/sub");
    for (int times = 0; times < 3; ++times) {
        world.start();
        EXPECT_TRUE(world.hasRunRecord());
        ASSERT_TRUE(world.model->interruptedRun()) << times;
        EXPECT_GT(world.model->interruptedRun()->unsettled, 0U);
    }
    world.memory.removeTree("/r/sub/w.zip");
    world.startAgain();
    EXPECT_FALSE(world.hasRunRecord());
}

TEST(TidyOvertaken, AFileMovedWithoutANoteIsFoundWhenTheLinkOnItsWayIsGone) {
    World world;
    world.fs.setAfterCall([&](const Call& call) {
        if (call.operation != Operation::move) return;
        world.runStorage.failAll("append", EIO);
        throw Killed();
    });
    EXPECT_THROW(world.organize(), Killed);
    world.fs.setAfterCall({});
    world.runStorage.failAll("", 0);
    world.moveBack("/r/ordovan+", "/elsewhere/organized");
    world.memory.link("/r/ordovan+", "/elsewhere/organized");
    world.start();
    EXPECT_TRUE(world.hasRunRecord());
    world.memory.removeTree("/r/ordovan+");
    world.moveBack("/elsewhere/organized", "/r/ordovan+");
    world.start();
    EXPECT_FALSE(world.hasRunRecord());
    EXPECT_THAT(world.stored(), SizeIs(1));
}

TEST(TidyOvertaken, FilesSeenWhereTheyWereNeedNoRecordThoughALinkIsOnTheWay) {
    World world;
    world.organizeUpToMove(1);
    world.moveBack("/r/ordovan+", "/elsewhere/organized");
    world.memory.link("/r/ordovan+", "/elsewhere/organized");
    world.start();
    EXPECT_FALSE(world.hasRunRecord());
    EXPECT_THAT(world.files(), SizeIs(3));
}

}  // namespace
