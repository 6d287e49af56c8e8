// Runs whose volume could not put on the disk what they moved: it met an error and turned read-only, or was pulled out.
// Once it is mounted anew the files may be back where they were, and whatever they are, something has to tell of them.

#include "tests/support/InterruptedWorld.h"
#include "tests/support/QtTestMain.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <string>
#include <vector>

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

namespace {

constexpr const char* notUpdated =
    "The undo record could not be updated. Files that were restored may be listed again; restoring them again is "
    "refused safely.";
constexpr const char* trashNotUpdated =
    "The restore record couldn't be updated on disk. Files already put back may be listed again; putting them back "
    "again is refused safely.";

class World : public ordovan::test::KillableWorld {
public:
    World() {
        syncMoves = [this](std::span<const Url>, std::span<const Url>) {
            isPulledOut = !pulledAtFlush.empty();
            return isFlushed;
        };
        facts = [this](const Url& url) -> OrdovanResult<ordovan::FileFacts> {
            auto found = ordovan::test::factsIn(memory, url);
            if (!isPulledOut || !url.path().starts_with(pulledAtFlush)) return found;
            if (!isReadable) return std::unexpected(OrdovanSystemError::posix(EIO));
            if (found) found->identity.insert(0, "9");
            return found;
        };
        start();
    }
    /// The volume is mounted anew, and the program started.
    void startAgain() {
        isFlushed = true;
        pulledAtFlush = {};
        isPulledOut = false;
        start();
    }
    void moveBack(const std::string& from, const std::string& to) {
        memory.makeDirectory(Url::file(to).deletingLastPathComponent().path());
        ASSERT_TRUE(memory.move(Url::file(from), Url::file(to)));
    }
    void undoUpToItsSecondMove() {
        std::size_t moves = 0;
        fs.setBeforeCall([&](const ordovan::testing::FaultyFileSystem::Call& call) {
            if (call.operation == ordovan::testing::Operation::move && ++moves == 2) throw ordovan::test::Killed();
        });
        EXPECT_THROW(undo(), ordovan::test::Killed);
        fs.setBeforeCall({});
    }

    bool isFlushed = true;
    /// The place of a volume that is pulled out right before the next flush, which then has nothing to do; and what
    /// is found there: another device, or nothing that can be told.
    std::string_view pulledAtFlush;
    bool isReadable = true;

private:
    bool isPulledOut = false;
};

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
    EXPECT_EQ(world.model->journalWarning(), trashNotUpdated);
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
    world.undoUpToItsSecondMove();
    world.isFlushed = false;
    for (int times = 0; times < 2; ++times) {
        world.start();
        EXPECT_EQ(world.model->journalWarning(), notUpdated);
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
    EXPECT_EQ(world.model->journalWarning(), trashNotUpdated);
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
        EXPECT_EQ(world.model->journalWarning(), std::nullopt);
        EXPECT_THAT(world.storedJournal()->entries, SizeIs(2)) << "each once";
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

INSTANTIATE_TEST_SUITE_P(Of, VolumePulledOut, ::testing::Values("/r", "/r/ordovan+"),
                         [](const auto& of) { return of.param == std::string("/r") ? "TheFolder" : "TheOutput"; });

TEST_P(VolumePulledOut, InTheMiddleOfAnUndoKeepsTheRecordsUntilItIsBack) {
    for (const bool isReadable : {true, false}) {
        World world;
        world.organize();
        world.pulledAtFlush = GetParam();
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

TEST_P(VolumePulledOut, WhileARunIsPutInOrderKeepsTheRecordsUntilItIsBack) {
    World world;
    world.organize();
    world.undoUpToItsSecondMove();
    world.pulledAtFlush = GetParam();
    world.start();
    EXPECT_EQ(world.model->journalWarning(), notUpdated);
    EXPECT_THAT(world.storedJournal()->entries, SizeIs(3));
    EXPECT_TRUE(world.hasRunRecord());
    world.startAgain();
    EXPECT_THAT(world.storedJournal()->entries, SizeIs(2));
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
