// What becomes of the record of a run in the middle of which a program ended.

#include "tests/support/InterruptedWorld.h"
#include "tests/support/QtTestMain.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

using ordovan::test::InterruptedWorld;
using ordovan::test::Moment;
using ordovan::test::Notes;
using ordovan::testing::FaultyFileSystem;
using ordovan::testing::Operation;
using ::testing::ElementsAre;
using ::testing::SizeIs;

namespace {

using World = ordovan::test::KillableWorld;

TEST(TidyInterruptedRecords, ARunIsInTheHistoryBeforeItsRecordGoes) {
    World world;
    world.start();
    world.search();
    std::vector<std::string> calls;
    world.records.observer = world.runStorage.observer = [&](const std::string& call) { calls.push_back(call); };
    const std::string removal = "remove " + std::string(world.locations.runRecord(Url::file("/r")).path());
    world.organize();
    EXPECT_EQ(calls.back(), removal);
    world.undo();
    EXPECT_EQ(calls.back(), removal);
    world.search();
    world.trash();
    EXPECT_EQ(calls.back(), removal);
}

TEST(TidyInterruptedRecords, ItsWarningOutlastsARunThatHasNone) {
    World world;
    world.start();
    const auto other = world.previewed({.repreviewsAfterRuns = false});
    world.organizeUpToMove(2);
    world.memory.removeTree("/r/y.jpg");
    world.memory.removeTree("/r/z.txt");
    world.records.failAll("write", ENOSPC);
    EXPECT_TRUE(other->organize());
    world.tasks.finish();
    EXPECT_EQ(other->lastReport()->movedCount(), 0U);
    EXPECT_EQ(
        other->journalWarning(),
        "Files were organized, but the undo record could not be saved to disk. Undo is available until you quit.");
}

TEST(TidyInterruptedRecords, StaysRecordedWhileTheJournalCanNotBeStored) {
    InterruptedWorld world;
    world.records.failAll("write", ENOSPC);
    world.start();
    EXPECT_EQ(
        world.model->journalWarning(),
        "Files were organized, but the undo record could not be saved to disk. Undo is available until you quit.");
    EXPECT_THAT(World::recoverable(*world.model), SizeIs(1));
    EXPECT_TRUE(world.model->journalUnsaved());
    EXPECT_TRUE(world.hasRunRecord());
    world.records.failAll("", 0);
    world.start();
    EXPECT_THAT(world.storedJournal()->entries, SizeIs(1));
    EXPECT_THAT(world.model->history().records, SizeIs(1));
    EXPECT_FALSE(world.hasRunRecord());
}

TEST(TidyInterruptedRecords, ARunWhoseRecordCouldNotBeSavedIsKnownAfterQuitting) {
    World world;
    world.start();
    world.records.failAll("write", ENOSPC);
    world.organize();
    EXPECT_TRUE(world.hasRunRecord());
    world.model->preview();
    world.tasks.finish();
    EXPECT_FALSE(world.model->interruptedRun());  // it is this program's own
    world.records.failAll("", 0);
    world.start();
    EXPECT_THAT(World::recoverable(*world.model), SizeIs(3));
    EXPECT_THAT(world.storedJournal()->entries, SizeIs(3));
    EXPECT_THAT(world.model->history().records, SizeIs(1));
}

TEST(TidyInterruptedRecords, ARunWithTheTrashWhoseRecordCouldNotBeSavedIsKnownAfterQuitting) {
    World world;
    world.start();
    world.search();
    for (const auto& [run, left] : {std::pair{&World::trash, 1U}, std::pair{&World::restore, 0U}}) {
        world.records.failAll("write", ENOSPC);
        (world.*run)();
        EXPECT_TRUE(world.hasRunRecord());
        world.records.failAll("", 0);
        world.start();
        EXPECT_THAT(world.model->trashRecord()->entries, SizeIs(left));
        EXPECT_FALSE(world.hasRunRecord());
    }
    EXPECT_THAT(world.files(), ElementsAre("x.pdf", "y.jpg", "z.txt"));
}

TEST(TidyInterruptedRecords, ARunThatCanNotBeRecordedGoesOnAsEver) {
    for (const char* kind : {"write", "openNotes", "append", "sync", "remove"}) {
        World world;
        world.memory.addVolume("/r/ordovan+");
        world.start();
        world.runStorage.failAll(kind, ENOSPC);
        world.organize();
        EXPECT_EQ(world.model->lastReport()->movedCount(), 3U) << kind;
        EXPECT_EQ(world.model->journalWarning(), std::nullopt) << kind;
        EXPECT_THAT(world.storedJournal()->entries, SizeIs(3)) << kind;
        world.runStorage.failAll("", 0);
        world.model->preview();
        world.tasks.finish();
        EXPECT_FALSE(world.model->interruptedRun()) << kind;
        world.undo();
        EXPECT_EQ(world.model->lastReport()->movedCount(), 3U) << kind;
        EXPECT_FALSE(world.hasRunRecord()) << kind;
    }
}

TEST(TidyInterruptedRecords, ADamagedRecordIsSetAsideAndSaid) {
    World world;
    const Url record = world.locations.runRecord(Url::file("/r"));
    world.memory.write(record.path(), "garbage");
    world.start();
    EXPECT_EQ(world.model->interruptedRun()->summary(),
              "An earlier run was interrupted, and its record could not be read. It was set aside.");
    EXPECT_FALSE(world.hasRunRecord());
    EXPECT_EQ(world.memory.read(world.locations.unusableRunRecord(Url::file("/r"), world.now).path()), "garbage");
    world.start();
    EXPECT_FALSE(world.model->interruptedRun());
}

TEST(TidyInterruptedRecords, ARecordThatCanNotBeReadThisTimeStays) {
    for (const int error : {EMFILE, EIO, ESTALE}) {
        InterruptedWorld world;
        world.runStorage.failAll("read", error);
        world.start();
        EXPECT_FALSE(world.model->interruptedRun());
        world.organize();
        EXPECT_EQ(world.model->lastReport()->movedCount(), 2U);
        EXPECT_TRUE(world.hasRunRecord());
        world.runStorage.failAll("", 0);
        world.start();
        EXPECT_THAT(World::recoverable(*world.model), SizeIs(3));
        EXPECT_FALSE(world.hasRunRecord());
    }
}

TEST(TidyInterruptedRecords, ARecordThatIsStillNeededStaysUnderTheNextRun) {
    InterruptedWorld world;
    const std::string path(world.locations.runRecord(Url::file("/r")).path());
    const std::string record = *world.memory.read(path);
    world.records.failAll("write", ENOSPC);
    world.start();
    world.organize();
    EXPECT_EQ(world.model->lastReport()->movedCount(), 2U);
    EXPECT_EQ(world.memory.read(path), record);
    world.records.failAll("", 0);
    world.start();
    EXPECT_THAT(world.storedJournal()->entries, SizeIs(3));
    EXPECT_FALSE(world.hasRunRecord());
}

TEST(TidyInterruptedRecords, BesideARecordThatHasToStayIsBroughtToItsEndAsWell) {
    InterruptedWorld world;
    world.records.failAll("write", ENOSPC);
    world.start();
    world.organizeUpToMove(2);
    EXPECT_TRUE(world.memory.item(world.locations.runRecord(Url::file("/r"), 2).path()));
    world.records.failAll("", 0);
    world.start();
    EXPECT_THAT(world.storedJournal()->entries, SizeIs(2));
    EXPECT_FALSE(world.hasRunRecord());
    EXPECT_FALSE(world.memory.item(world.locations.runRecord(Url::file("/r"), 2).path()));
    world.undo();
    EXPECT_THAT(world.files(), ElementsAre("x.pdf", "y.jpg", "z.txt"));
}

TEST(TidyInterruptedRecords, GoesWithoutARecordOnceAllPlacesAreTaken) {
    World world;
    for (std::size_t place = 1; place <= ordovan::RunRecordStore::places; ++place) {
        world.memory.write(world.locations.runRecord(Url::file("/r"), place).path(), "garbage");
    }
    world.runStorage.failAll("setAside", EIO);
    world.start();
    world.organize();
    EXPECT_EQ(world.model->lastReport()->movedCount(), 3U);
    for (std::size_t place = 1; place <= ordovan::RunRecordStore::places; ++place) {
        EXPECT_EQ(world.memory.read(world.locations.runRecord(Url::file("/r"), place).path()), "garbage");
    }
}

/// As where the folder can not be locked and another process works in it.
TEST(TidyInterruptedRecords, IsNoRunThatStillGoesOn) {
    InterruptedWorld world;
    const Url record = world.locations.runRecord(Url::file("/r"));
    const std::string before = *world.memory.read(record.path());
    auto notes = world.runStorage.openNotes(record);
    ASSERT_TRUE(notes);
    const std::vector<std::string> files = world.files();
    world.start();
    EXPECT_FALSE(world.model->interruptedRun());
    world.organize();
    EXPECT_TRUE(world.model->runRefusal());
    EXPECT_EQ(world.files(), files);
    EXPECT_EQ(world.memory.read(record.path()), before);
    notes->reset();
    world.start();
    EXPECT_TRUE(world.model->interruptedRun());
    EXPECT_FALSE(world.hasRunRecord());
}

TEST(TidyInterruptedRecords, IsLeftAloneWhileAnotherRunHoldsItsRecord) {
    InterruptedWorld world;
    const Url held = world.locations.runRecord(Url::file("/r"));
    const Url waiting = world.locations.runRecord(Url::file("/r"), 2);
    world.memory.write(waiting.path(), *world.memory.read(held.path()));
    const auto notes = world.runStorage.openNotes(held);
    ASSERT_TRUE(notes);
    world.start();
    EXPECT_TRUE(world.memory.item(held.path()));
    EXPECT_TRUE(world.memory.item(waiting.path()));
}

TEST(TidyInterruptedRecords, KeepsItsRecordWhileAFileThatMovedCanNotBeRead) {
    std::unique_ptr<World> world;
    for (std::size_t number = 1; !world || !world->memory.item("/r/ordovan+/Documents/x.pdf"); ++number) {
        world = std::make_unique<World>();
        world->start();
        ASSERT_TRUE(world->isKilledAt(number, Moment::after, Notes::none, &World::organize));
    }
    world->fs.reset();
    world->fs.failCall(Operation::contentHash, 1, EIO);
    world->start();
    EXPECT_TRUE(world->hasRunRecord());
    world->start();
    EXPECT_FALSE(world->hasRunRecord());
    EXPECT_THAT(World::recoverable(*world->model), SizeIs(1));
}

TEST(TidyInterruptedRecords, ARecordThatMayNotBeOnTheDiskIsNotLeftBehind) {
    World world;
    world.start();
    world.runStorage.failAll("flush", EIO);
    std::size_t moves = 0;
    world.fs.setBeforeCall([&](const FaultyFileSystem::Call& call) {
        if (call.operation != Operation::move) return;
        ++moves;
        EXPECT_FALSE(world.hasRunRecord());
    });
    world.organize();
    EXPECT_EQ(moves, 3U);
}

TEST(TidyInterruptedRecords, ARecordThatCanNotBeSetAsideIsNotWrittenOver) {
    World world;
    const Url record = world.locations.runRecord(Url::file("/r"));
    world.start();
    world.memory.write(record.path(), "garbage");
    world.runStorage.failAll("setAside", EIO);
    world.organize();
    EXPECT_EQ(world.model->lastReport()->movedCount(), 3U);
    EXPECT_EQ(world.memory.read(record.path()), "garbage");
    EXPECT_FALSE(world.model->interruptedRun());
}

// Identities.

TEST(TidyInterruptedRecords, VolumesThatDoNotKeepIdentitiesGetNoneInTheJournal) {
    World world;
    std::vector<std::string> asked;
    world.keepsInodes = world.keepsIdentities = [&](const Url& item) {
        asked.emplace_back(item.path());
        return false;
    };
    world.start();
    world.organize();
    const OrdovanJournal journal = *world.storedJournal();
    for (const auto& entry : journal.entries) EXPECT_EQ(entry.fileID(), "");
    EXPECT_THAT(asked, SizeIs(3));  // once for the folder, once for the record of the run, once for the journal
    EXPECT_EQ(world.model->lastReport()->journal, journal);
    world.memory.replace("/r/ordovan+/Documents/x.pdf", "1");  // as after a remount: another number, the same file
    world.undo();
    EXPECT_EQ(world.model->lastReport()->movedCount(), 3U);
}

TEST(TidyInterruptedRecords, VolumesThatKeepOnlyInodesHaveThemInTheRecordOfARunAlone) {
    World world;
    world.keepsIdentities = [](const Url&) { return false; };
    world.start();
    ASSERT_TRUE(world.isKilledAt(30, Moment::after, Notes::none, &World::organize));
    EXPECT_EQ(world.runRecord()->find(R"("identity":"")"), std::string::npos);
    EXPECT_NE(world.runRecord()->find(R"("rootIdentity":"")"), std::string::npos);
    world.start();
    ASSERT_TRUE(world.model->recoverableJournal());
    for (const auto& entry : world.model->recoverableJournal()->entries) EXPECT_EQ(entry.fileID(), "");
}

TEST(TidyInterruptedRecords, OnVolumesThatDoNotKeepIdentitiesIsSettledAsWell) {
    World world;
    world.keepsInodes = world.keepsIdentities = [](const Url&) { return false; };
    world.start();
    ASSERT_TRUE(world.isKilledAt(30, Moment::after, Notes::none, &World::organize));
    world.start();
    EXPECT_THAT(world.contents(), ElementsAre("1", "2", "2"));
    for (const auto& entry : world.model->recoverableJournal()->entries) EXPECT_EQ(entry.fileID(), "");
    world.undo();
    EXPECT_THAT(world.files(), ElementsAre("x.pdf", "y.jpg", "z.txt"));
}

}  // namespace
