// Runs whose volume could not put on the disk what they moved: it met an error and turned read-only, or was pulled out.
// Once it is mounted anew the files may be back where they were, and whatever they are, something has to tell of them.

#include "tests/support/QtTestMain.h"
#include "tests/support/TrashSentences.h"
#include "tests/support/UnflushedWorld.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <string>
#include <vector>

using ordovan::test::trashRecordNotUpdated;
using World = ordovan::test::UnflushedWorld;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::IsSupersetOf;
using ::testing::SizeIs;

namespace {

constexpr const char* notUpdated =
    "The undo record could not be updated. Files that were restored may be listed again; restoring them again is "
    "refused safely.";

TEST(TidyUnflushed, AnUndoIsTakenBackWithItsFilesWhenTheVolumeIsMountedAnew) {
    World world;
    world.organize();
    world.isFlushed = false;
    world.undo();
    EXPECT_EQ(world.model->journalWarning(), notUpdated);
    EXPECT_THAT(world.files(), ElementsAre("x.pdf", "y.jpg", "z.txt"));
    EXPECT_THAT(world.storedJournal()->entries, SizeIs(3));
    EXPECT_TRUE(world.hasRunRecord());

    world.moveBack("/r/x.pdf", "/r/ordovan+/Documents/x.pdf");
    world.startAgain();
    EXPECT_THAT(World::recoverable(*world.model), ElementsAre("x.pdf -> ordovan+/Documents/x.pdf"));
    EXPECT_FALSE(world.hasRunRecord());
    world.undo();
    EXPECT_THAT(world.files(), ElementsAre("x.pdf", "y.jpg", "z.txt"));
    EXPECT_FALSE(world.storedJournal());
}

TEST(TidyUnflushed, AnUndoThatLastedAllTheSameIsTakenOutOfTheRecordLater) {
    World world;
    world.organize();
    world.isFlushed = false;
    world.undo();
    world.startAgain();
    EXPECT_FALSE(world.storedJournal());
    EXPECT_FALSE(world.hasRunRecord());
    EXPECT_EQ(world.runsOf(OrdovanRunRecord::Kind::undo), 1);
}

TEST(TidyUnflushed, AnUndoStaysThisProgramsOwnUntilItsNextRun) {
    World world;
    world.organize();
    world.isFlushed = false;
    world.undo();
    world.isFlushed = true;
    world.model->preview();
    world.tasks.finish();
    EXPECT_FALSE(world.model->interruptedRun());
    EXPECT_TRUE(world.hasRunRecord());
    world.organize();
    EXPECT_FALSE(world.model->interruptedRun());
    EXPECT_FALSE(world.hasRunRecord());
    EXPECT_THAT(world.storedJournal()->entries, SizeIs(3));
}

TEST(TidyUnflushed, ARestoreIsTakenBackWithItsFilesWhenTheVolumeIsMountedAnew) {
    World world;
    world.search();
    world.trash();
    ASSERT_THAT(world.storedTrash()->entries, SizeIs(1));
    const std::string original(world.storedTrash()->entries[0].original());
    const std::string trashed(world.storedTrash()->entries[0].trashed());
    world.isFlushed = false;
    world.restore();
    EXPECT_EQ(world.model->journalWarning(), trashRecordNotUpdated);
    EXPECT_TRUE(world.memory.item(original));
    EXPECT_THAT(world.storedTrash()->entries, SizeIs(1));
    EXPECT_TRUE(world.hasRunRecord());

    world.moveBack(original, trashed);
    world.startAgain();
    EXPECT_THAT(world.model->trashRecord()->entries, SizeIs(1));
    EXPECT_FALSE(world.hasRunRecord());
    world.restore();
    EXPECT_TRUE(world.memory.item(original));
    EXPECT_THAT(world.storedTrash()->entries, IsEmpty());
}

TEST(TidyUnflushed, WhatWasOrganizedIsRecordedAndLookedAtOnceMore) {
    World world;
    world.isFlushed = false;
    world.organize();
    EXPECT_EQ(world.model->journalWarning(), std::nullopt);
    EXPECT_THAT(world.storedJournal()->entries, SizeIs(3));
    EXPECT_TRUE(world.hasRunRecord());
    world.model->preview();
    world.tasks.finish();
    EXPECT_FALSE(world.model->interruptedRun());

    world.moveBack("/r/ordovan+/Documents/x.pdf", "/r/x.pdf");
    world.startAgain();
    ASSERT_TRUE(world.model->interruptedRun());
    EXPECT_EQ(world.model->interruptedRun()->finished, 2U);
    EXPECT_FALSE(world.hasRunRecord());
    EXPECT_THAT(World::proposed(*world.model), ElementsAre("x.pdf -> ordovan+/Documents/x.pdf"));
}

TEST(TidyUnflushed, WhatWasTrashedIsRecordedAndLookedAtOnceMore) {
    World world;
    world.search();
    world.isFlushed = false;
    world.trash();
    EXPECT_EQ(world.model->journalWarning(), std::nullopt);
    EXPECT_THAT(world.storedTrash()->entries, SizeIs(1));
    EXPECT_TRUE(world.hasRunRecord());
    world.startAgain();
    EXPECT_FALSE(world.hasRunRecord());
    EXPECT_THAT(world.storedTrash()->entries, SizeIs(1));
}

TEST(TidyUnflushed, ARunThatIsPutInOrderKeepsItsRecordsUntilThatIsOnTheDisk) {
    World world;
    world.organize();
    world.undoUpToMove(2);
    world.isFlushed = false;
    for (int times = 0; times < 2; ++times) {
        world.start();
        EXPECT_THAT(world.storedJournal()->entries, SizeIs(3));
        EXPECT_TRUE(world.hasRunRecord());
        EXPECT_THAT(world.model->history().records, SizeIs(1));
    }
    world.startAgain();
    EXPECT_THAT(world.storedJournal()->entries, SizeIs(2));
    EXPECT_FALSE(world.hasRunRecord());
    EXPECT_EQ(world.runsOf(OrdovanRunRecord::Kind::undo), 1);
}

TEST(TidyUnflushed, ARestoreThatIsPutInOrderKeepsItsRecordsUntilThatIsOnTheDisk) {
    World world;
    world.search();
    world.trash();
    world.fs.setAfterCall([&](const ordovan::testing::FaultyFileSystem::Call& call) {
        if (call.operation == ordovan::testing::Operation::move) throw ordovan::test::Killed();
    });
    EXPECT_THROW(world.restore(), ordovan::test::Killed);
    world.fs.setAfterCall({});
    world.isFlushed = false;
    world.start();
    EXPECT_THAT(world.storedTrash()->entries, SizeIs(1));
    EXPECT_TRUE(world.hasRunRecord());
    world.startAgain();
    EXPECT_THAT(world.storedTrash()->entries, IsEmpty());
    EXPECT_FALSE(world.hasRunRecord());
}

TEST(TidyUnflushed, WhatWasOrganizedAndPutInOrderKeepsItsRunRecordUntilThatIsOnTheDisk) {
    World world;
    world.organizeUpToMove(3);
    world.isFlushed = false;
    for (int times = 0; times < 2; ++times) {
        world.start();
        EXPECT_FALSE(world.storedJournal()) << "later runs may have to do with the same places";
        EXPECT_TRUE(world.hasRunRecord());
        EXPECT_THAT(world.model->history().records, IsEmpty());
    }
    world.startAgain();
    EXPECT_THAT(world.storedJournal()->entries, SizeIs(2));
    EXPECT_FALSE(world.hasRunRecord());
    EXPECT_EQ(world.runsOf(OrdovanRunRecord::Kind::organize), 1);
}

// A volume that was pulled out answers nothing, so that nothing seems to need a flush.

class VolumePulledOut : public ::testing::TestWithParam<const char*> {};

INSTANTIATE_TEST_SUITE_P(Of, VolumePulledOut, ::testing::Values("/r/ordovan+", "/r/ordovan+/Documents", "/r/sub"),
                         [](const auto& of) {
                             const std::string_view path = of.param;
                             return std::string(path.substr(path.find_last_of("/+") + 1)) +
                                    (path.ends_with("+") ? "TheOutput" : "");
                         });

TEST_P(VolumePulledOut, InTheMiddleOfAnUndoKeepsTheRecordsUntilItIsBack) {
    for (const bool leavesFolder : {true, false}) {
        World world(GetParam());
        world.tree({"sub/w.zip = 4", "x.pdf = 1"});
        world.start();
        world.organize();
        const std::size_t count = world.storedJournal()->entries.size();
        world.pulledAtFlush = GetParam();
        world.leavesFolder = leavesFolder;
        world.undo();
        EXPECT_EQ(world.model->journalWarning(), notUpdated);
        EXPECT_THAT(world.storedJournal()->entries, SizeIs(count));
        EXPECT_TRUE(world.hasRunRecord());
        // Looking at the folder while the volume is away decides nothing of what is on it.
        world.start();
        EXPECT_TRUE(world.storedJournal());
        EXPECT_TRUE(world.hasRunRecord());
        ASSERT_TRUE(world.model->interruptedRun());
        EXPECT_GT(world.model->interruptedRun()->unsettled, 0U);
        world.startAgain();
        EXPECT_FALSE(world.storedJournal());
        EXPECT_FALSE(world.hasRunRecord());
    }
}

TEST_P(VolumePulledOut, AfterTheProgramEndedInARunDecidesNothingOfWhatIsOnIt) {
    for (std::size_t number = 1; number <= 5; ++number) {
        World world(GetParam());
        world.tree({"sub/w.zip = 4", "x.pdf = 1"});
        world.start();
        world.organize();
        world.undoUpToMove(number);
        world.pullOut(GetParam());
        world.start();
        EXPECT_TRUE(world.hasRunRecord());
        world.startAgain();
        EXPECT_FALSE(world.hasRunRecord());
        const auto files = world.files();
        const auto organized = std::ranges::count_if(
            files, [](const std::string& file) { return file.starts_with("ordovan+/") && !file.ends_with(".kept"); });
        EXPECT_EQ(world.storedJournal() ? world.storedJournal()->entries.size() : 0U, organized) << number;
        world.undo();
        EXPECT_THAT(world.files(), IsSupersetOf({"sub/w.zip", "x.pdf", "y.jpg", "z.txt"}));
        EXPECT_THAT(world.contents(), ElementsAre("", "1", "2", "2", "4"));
    }
}

TEST(FolderPulledOut, KeepsTheRecordsUntilItIsBack) {
    for (const bool isReadable : {true, false}) {
        World world("/r");
        world.tree({"x.pdf = 1", "y.jpg = 2", "z.txt = 2"});
        world.start();
        world.organize();
        world.pulledAtFlush = "/r";
        world.isReadable = isReadable;
        world.undo();
        EXPECT_EQ(world.model->journalWarning(), notUpdated);
        EXPECT_THAT(world.storedJournal()->entries, SizeIs(3));
        EXPECT_TRUE(world.hasRunRecord());
        world.startAgain();
        EXPECT_FALSE(world.storedJournal());
        EXPECT_FALSE(world.hasRunRecord());
    }
}

TEST(FolderPulledOut, WhileARunIsPutInOrderKeepsTheRecordsUntilItIsBack) {
    World world("/r/ordovan+");
    world.organize();
    world.undoUpToMove(3);
    world.pulledAtFlush = "/r/ordovan+";
    world.start();
    EXPECT_THAT(world.storedJournal()->entries, SizeIs(3));
    EXPECT_TRUE(world.hasRunRecord());
    world.startAgain();
    EXPECT_THAT(world.storedJournal()->entries, SizeIs(2));
    EXPECT_FALSE(world.hasRunRecord());
}

// A volume that was broken before, where nothing could be changed any more.

TEST(VolumeBrokenBefore, LeavesNoRecordAndNoWarning) {
    World world;
    world.organize();
    world.isFlushed = false;
    using Fs = ordovan::testing::FaultyFileSystem;
    world.fs.failCall(ordovan::testing::Operation::move, 1, EROFS, Fs::Moment::beforeEffect, Fs::Lasting::forGood);
    world.undo();
    EXPECT_EQ(world.model->journalWarning(), std::nullopt);
    EXPECT_THAT(world.storedJournal()->entries, SizeIs(3));
    EXPECT_FALSE(world.hasRunRecord());
}

// Later runs have to do with the same places while the record of an earlier one waits.

TEST(VolumePulledOut, LeavesTheEntriesOfLaterRunsAlone) {
    World world("/r/sub");
    world.tree({"sub/w.zip = 4", "x.pdf = 1"});
    world.start();
    world.organize();
    world.pulledAtFlush = "/r/sub";
    world.undo();
    EXPECT_TRUE(world.hasRunRecord());
    // Away with the file; another of its name is organized, while the volume is not there.
    world.memory.replace("/r/x.pdf", "another");
    world.start();
    world.organize();
    EXPECT_EQ(world.memory.read("/r/ordovan+/Documents/x.pdf"), "another");
    world.start();
    EXPECT_THAT(World::recoverable(*world.model), Contains("x.pdf -> ordovan+/Documents/x.pdf"));
    world.undo();
    EXPECT_EQ(world.memory.read("/r/x.pdf"), "another");
    world.startAgain();
    EXPECT_FALSE(world.hasRunRecord());
    EXPECT_EQ(world.memory.read("/r/x.pdf"), "another");
}

TEST(VolumePulledOut, IsNoConcernOfARunThatChangedNothingOnIt) {
    World world("/r/sub");
    world.tree({"sub/w.zip = 4", "x.pdf = 1"});
    world.start();
    world.organize();
    world.memory.replace("/r/ordovan+/Archives/w.zip", "changed");
    world.pulledAtFlush = "/r/sub";
    world.undo();
    EXPECT_EQ(world.model->journalWarning(), std::nullopt);
    EXPECT_THAT(World::recoverable(*world.model), ElementsAre("sub/w.zip -> ordovan+/Archives/w.zip"));
    EXPECT_FALSE(world.hasRunRecord());
}

TEST(TidyUnflushed, KeepsTheFoldersThatAnUndoEmptiedForFilesThatMayBeBack) {
    World world;
    world.organize();
    world.isFlushed = false;
    world.undo();
    EXPECT_TRUE(world.memory.item("/r/ordovan+/Documents"));
    world.startAgain();
    EXPECT_FALSE(world.memory.item("/r/ordovan+/Documents"));
}

/// Some file systems in user space refuse to flush folders with whatever error.
TEST(FoldersThatCanNeverBeFlushed, TellNothing) {
    World world;
    world.canFlush = [](std::span<const Url> folders) {
        return std::ranges::find(folders, Url::file("/r")) == folders.end();
    };
    world.isFlushed = false;
    world.start();
    world.organize();
    EXPECT_FALSE(world.hasRunRecord());
    world.undo();
    EXPECT_EQ(world.model->journalWarning(), std::nullopt);
    EXPECT_FALSE(world.storedJournal());
    EXPECT_FALSE(world.hasRunRecord());
    world.organizeUpToMove(2);
    world.start();
    EXPECT_FALSE(world.hasRunRecord());
}

TEST(VolumesThatStay, AreKnownByTheirFoldersThoughAnUndoEmptiesThem) {
    World world;
    world.organize();
    world.undo();
    EXPECT_EQ(world.model->journalWarning(), std::nullopt);
    EXPECT_FALSE(world.storedJournal());
    EXPECT_FALSE(world.hasRunRecord());
}

}  // namespace
