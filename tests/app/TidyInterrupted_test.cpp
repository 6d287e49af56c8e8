// What the program that is started after one that ended in the middle of a run tells, and when it settles that run.

#include "tests/support/InterruptedWorld.h"
#include "tests/support/QtTestMain.h"

#include <gmock/gmock.h>

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

using ordovan::test::InterruptedWorld;
using ordovan::test::Moment;
using ordovan::test::Notes;
using ordovan::test::SignalCount;
using ::testing::ElementsAre;
using ::testing::Pair;
using ::testing::SizeIs;

namespace {

using World = ordovan::test::KillableWorld;
using Kind = OrdovanRunRecord::Kind;

// What is told.

TEST(TidyInterrupted, IsToldOnceWithItsCountsAndItsPlaceInTheHistory) {
    World world;
    world.start();
    const double startedAt = world.now;
    world.organizeUpToMove(3);
    world.now += 1000;
    world.start();
    const auto told = world.model->interruptedRun();
    ASSERT_TRUE(told);
    EXPECT_EQ(told->summary(), "An earlier run was interrupted. 2 files were finished and 1 was left untouched.");
    EXPECT_EQ(told->kind, Kind::organize);
    EXPECT_EQ(told->startedAtEpoch, startedAt);
    EXPECT_EQ(told->root, Url::file("/r"));
    EXPECT_THAT(told->outcomes, SizeIs(2));
    EXPECT_THAT(World::recoverable(*world.model),
                ElementsAre("x.pdf -> ordovan+/Documents/x.pdf", "z.txt -> ordovan+/Documents/z.txt"));
    EXPECT_THAT(World::proposed(*world.model), SizeIs(1));
    ASSERT_THAT(world.model->history().records, SizeIs(1));
    EXPECT_EQ(world.model->history().records[0].summary(), "Organized 2 files in r");
    EXPECT_EQ(world.model->history().records[0].epoch, startedAt);
    EXPECT_EQ(world.model->history().records[0].skipped, 1);

    const SignalCount changes(*world.model, &TidyViewModel::interruptedRunChanged);
    world.model->preview();
    world.tasks.finish();
    EXPECT_EQ(world.model->interruptedRun(), told);
    world.model->dismissInterruptedRun();
    world.model->dismissInterruptedRun();
    EXPECT_FALSE(world.model->interruptedRun());
    EXPECT_EQ(changes, 1);
    world.start();
    EXPECT_FALSE(world.model->interruptedRun());
}

TEST(TidyInterrupted, IsSettledByAPreviewOfAnyDepth) {
    for (const PreviewDepth depth : {PreviewDepth::records, PreviewDepth::files, PreviewDepth::plan}) {
        InterruptedWorld world;
        const auto model = world.make();
        model->chooseFolder(Url::file("/r"), depth);
        world.tasks.finish();
        EXPECT_TRUE(model->interruptedRun());
        EXPECT_THAT(World::recoverable(*model), SizeIs(1));
    }
}

TEST(TidyInterrupted, WaitsToBeToldUntilTheOneBeforeItIsDismissed) {
    InterruptedWorld world;
    world.start();
    const auto first = world.model->interruptedRun();
    ASSERT_TRUE(first);
    world.organizeUpToMove(2);
    world.model->preview();
    world.tasks.finish();
    EXPECT_EQ(world.model->interruptedRun(), first);
    const SignalCount changes(*world.model, &TidyViewModel::interruptedRunChanged);
    world.model->dismissInterruptedRun();
    ASSERT_TRUE(world.model->interruptedRun());
    EXPECT_NE(world.model->interruptedRun()->id, first->id);
    world.model->dismissInterruptedRun();
    EXPECT_FALSE(world.model->interruptedRun());
    EXPECT_EQ(changes, 2);
}

TEST(TidyInterrupted, IsToldAlsoWhenThePreviewThatFoundItIsDropped) {
    InterruptedWorld world;
    const auto model = world.make();
    model->chooseFolder(Url::file("/r"));
    world.tasks.work();
    model->cancelPreview();
    world.tasks.finish();
    EXPECT_TRUE(model->interruptedRun());
    EXPECT_THAT(World::recoverable(*model), SizeIs(1));
}

// Progress and stopping.

TEST(TidyInterrupted, TellsHowFarPuttingItInOrderIs) {
    InterruptedWorld world;
    const auto model = world.make();
    std::vector<std::pair<quint64, quint64>> told;
    QObject::connect(model.get(), &TidyViewModel::recoveryProgressed,
                     [&](quint64 done, quint64 total) { told.emplace_back(done, total); });
    world.clockStep = 1;
    model->chooseFolder(Url::file("/r"));
    world.tasks.finish();
    EXPECT_THAT(told, ElementsAre(Pair(0, 3), Pair(1, 3), Pair(2, 3), Pair(3, 3)));
}

TEST(TidyInterrupted, IsLeftForTheNextTimeByARunThatIsStopped) {
    World world;
    world.start();
    const auto other = world.previewed({.repreviewsAfterRuns = false});  // a second program
    ASSERT_TRUE(world.isKilledAt(30, Moment::after, Notes::none, &World::organize));
    const auto record = world.runRecord();
    const auto isReached = world.atCall(3, [&] { other->cancelRun(); });
    EXPECT_TRUE(other->organize());
    world.tasks.finish();
    EXPECT_TRUE(*isReached);
    EXPECT_EQ(other->lastReport()->skippedCount(), 3U);
    EXPECT_EQ(World::messages(*other)[0], "The run was stopped before this file; left untouched.");
    EXPECT_FALSE(other->interruptedRun());
    EXPECT_EQ(world.runRecord(), record);
    world.fs.setBeforeCall({});
    world.start();
    EXPECT_TRUE(world.model->interruptedRun());
    EXPECT_FALSE(world.hasRunRecord());
    world.undo();
    EXPECT_THAT(world.files(), ElementsAre("x.pdf", "y.jpg", "z.txt"));
}

TEST(TidyInterrupted, GoesOnWhenItsFolderIsPreviewedAnewMeanwhile) {
    InterruptedWorld world;
    const auto model = world.make();
    const auto isReached = world.atCall(3, [&] { model->preview(); });
    model->chooseFolder(Url::file("/r"));
    world.tasks.work();
    EXPECT_TRUE(*isReached);
    EXPECT_FALSE(world.hasRunRecord());
    world.tasks.finish();
    EXPECT_TRUE(model->interruptedRun());
    EXPECT_THAT(World::recoverable(*model), SizeIs(1));
    EXPECT_EQ(model->phase().kind, TidyViewModel::Phase::Case::ready);
}

TEST(TidyInterrupted, WaitsWhenAnotherFolderIsChosenMeanwhile) {
    InterruptedWorld world;
    world.memory.makeDirectory("/other");
    const auto model = world.make();
    const auto isReached = world.atCall(3, [&] { model->chooseFolder(Url::file("/other")); });
    model->chooseFolder(Url::file("/r"));
    world.tasks.finish();
    EXPECT_TRUE(*isReached);
    EXPECT_TRUE(world.hasRunRecord());
    EXPECT_FALSE(model->interruptedRun());
    EXPECT_EQ(model->planRoot(), Url::file("/other"));
}

TEST(TidyInterrupted, APreviewBegunMeanwhileDoesNotBringBackWhatWasUnsaved) {
    InterruptedWorld world;
    world.records.failAll("write", ENOSPC);
    world.start();
    ASSERT_TRUE(world.model->journalUnsaved());
    world.records.failAll("", 0);
    const auto isReached = world.atCall(3, [&] { world.model->preview(); });
    world.model->preview();
    world.tasks.finish();
    EXPECT_TRUE(*isReached);
    EXPECT_THAT(world.storedJournal()->entries, SizeIs(1));
    EXPECT_THAT(World::recoverable(*world.model), SizeIs(1));
    EXPECT_FALSE(world.model->journalUnsaved());
}

// When it is settled.

TEST(TidyInterrupted, IsSettledBeforeTheNextRunWhereNoPreviewCameBetween) {
    World world;
    world.start();
    auto other = world.previewed({.repreviewsAfterRuns = false});  // a second program
    world.organizeUpToMove(2);
    EXPECT_TRUE(other->organize());
    world.tasks.finish();
    EXPECT_EQ(other->interruptedRun()->summary(),
              "An earlier run was interrupted. 1 file was finished and 2 were left untouched.");
    EXPECT_EQ(other->lastReport()->movedCount(), 2U);
    EXPECT_THAT(World::recoverable(*other), SizeIs(3));
    EXPECT_THAT(world.storedJournal()->entries, SizeIs(3));
    EXPECT_THAT(other->history().records, SizeIs(2));
    EXPECT_FALSE(world.hasRunRecord());
}

TEST(TidyInterrupted, IsLeftAloneWhileItGoesOnElsewhere) {
    InterruptedWorld world;
    world.heldElsewhere = {"/r"};
    world.start();
    EXPECT_FALSE(world.model->interruptedRun());
    EXPECT_TRUE(world.hasRunRecord());
    world.heldElsewhere.clear();
    world.start();
    EXPECT_TRUE(world.model->interruptedRun());
}

TEST(TidyInterrupted, IsSettledUnderTheLockOfItsFolder) {
    InterruptedWorld world;
    world.events.clear();
    world.start();
    EXPECT_THAT(world.events, ElementsAre("lock /r", "lock /records", "unlock /records", "lock /records",
                                          "unlock /records", "unlock /r"));
}

TEST(TidyInterrupted, WaitsForItsVolume) {
    InterruptedWorld world;
    const std::string record = *world.memory.read(world.locations.runRecord(Url::file("/r")).path());
    world.memory.removeTree("/r");
    world.memory.makeDirectory("/r");
    world.start();
    EXPECT_FALSE(world.model->interruptedRun());
    EXPECT_EQ(world.memory.read(world.locations.runRecord(Url::file("/r")).path()), record);
}

TEST(TidyInterrupted, IsLeftAloneByAPreviewThatCanNotLockItsFolder) {
    InterruptedWorld world;
    world.lockError = EACCES;
    world.start();
    EXPECT_FALSE(world.model->interruptedRun());
    EXPECT_TRUE(world.hasRunRecord());
    world.lockError = 0;
    world.start();
    EXPECT_TRUE(world.model->interruptedRun());
}

TEST(TidyInterrupted, IsToldAgainOnlyWhenThereIsMoreToTell) {
    InterruptedWorld world;
    world.records.failAll("write", ENOSPC);
    world.start();
    world.model->dismissInterruptedRun();
    world.model->preview();
    world.tasks.finish();
    EXPECT_FALSE(world.model->interruptedRun());
    world.memory.removeTree("/r/y.jpg");
    world.model->preview();
    world.tasks.finish();
    ASSERT_TRUE(world.model->interruptedRun());
    EXPECT_EQ(world.model->interruptedRun()->unsettled, 1U);
}

}  // namespace
