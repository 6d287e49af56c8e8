// A program that ends in the middle of a run, and the one that is started after it.

#include "tests/support/QtTestMain.h"
#include "tests/support/TidyWorld.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

using ordovan::test::SignalCount;
using ordovan::test::TidyWorld;
using ordovan::testing::FaultyFileSystem;
using ordovan::testing::Operation;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;
using ::testing::SizeIs;

namespace {

using Kind = OrdovanRunRecord::Kind;

/// Thrown out of a run where the program shall end.
struct Killed {};

enum class Moment { before, after };

/// What has left the program of the notes that a run gathers.
enum class Notes { all, none };

/// A folder with three files and the program that works in it.
class World : public TidyWorld {
public:
    World() { tree({"x.pdf = 1", "y.jpg = 2", "z.txt = 2"}); }
    void TestBody() override {}

    /// The program is started and previews the folder.
    void start() { model = previewed({.repreviewsAfterRuns = false}); }
    void organize() {
        model->organize();
        tasks.finish();
    }
    void undo() {
        model->undo();
        tasks.finish();
    }
    void search() {
        model->findDuplicates();
        tasks.finish();
    }
    void trash() {
        model->trashExtras();
        tasks.finish();
    }
    void restore() {
        model->restore();
        tasks.finish();
    }

    /// Does something, and ends the program at the n-th call of the disk or of the storage of records. False when
    /// there are fewer.
    bool isKilledAt(std::size_t number, Moment moment, Notes notes, const std::function<void(World&)>& act) {
        std::size_t count = 0;
        const auto die = [&] {
            if (++count != number) return;
            if (notes == Notes::none) runStorage.failAll("append", EIO);
            throw Killed();
        };
        const auto onCall = [&](const FaultyFileSystem::Call&) { die(); };
        moment == Moment::before ? fs.setBeforeCall(onCall) : fs.setAfterCall(onCall);
        records.observer = runStorage.observer = [&](const std::string& call) {
            if (!call.starts_with("append")) die();  // the last ones are handed over by a program that goes on
        };
        bool killed = false;
        try {
            act(*this);
        } catch (const Killed&) {
            killed = true;
        }
        fs.setBeforeCall({});
        fs.setAfterCall({});
        records.observer = runStorage.observer = [](const std::string&) {};
        runStorage.failAll("", 0);
        return killed;
    }

    /// Does something at the n-th call of the disk from now on. The returned flag tells whether it came to that.
    std::shared_ptr<const bool> atCall(std::size_t number, std::function<void()> act) {
        auto isReached = std::make_shared<bool>(false);
        const auto count = std::make_shared<std::size_t>(0);
        fs.setBeforeCall([count, number, act = std::move(act), isReached](const auto&) {
            if (++*count != number) return;
            *isReached = true;
            act();
        });
        return isReached;
    }

    /// The program is started, and its preview cancelled at the n-th call of the disk. False when there are fewer.
    bool isCancelledAt(std::size_t number) {
        model = make({.repreviewsAfterRuns = false});
        const auto isReached = atCall(number, [this] { model->cancelPreview(); });
        model->chooseFolder(Url::file("/r"));
        tasks.finish();
        fs.setBeforeCall({});
        return *isReached;
    }

    [[nodiscard]] bool hasRunRecord() const { return runRecord().has_value(); }
    [[nodiscard]] std::optional<std::string> runRecord() const {
        return memory.read(locations.runRecord(Url::file("/r")).path());
    }
    /// Files in the folder, by their path below it.
    [[nodiscard]] std::vector<std::string> files() const {
        std::vector<std::string> found;
        for (const auto& [path, description] : memory.snapshot("/r")) {
            if (description.starts_with("file")) found.push_back(path);
        }
        return found;
    }
    /// What the user's files hold, in the folder and in the Trash, each name counted.
    [[nodiscard]] std::vector<std::string> contents() const {
        std::vector<std::string> found;
        for (const auto& [path, description] : memory.snapshot()) {
            const bool isUsers = !path.starts_with("records/") && !path.ends_with(".trashinfo");
            if (isUsers && description.starts_with("file")) found.push_back(*memory.read("/" + path));
        }
        std::ranges::sort(found);
        return found;
    }
    [[nodiscard]] std::ptrdiff_t runsOf(Kind kind) const {
        return std::ranges::count(model->history().records, kind, &OrdovanRunRecord::kind);
    }

    std::unique_ptr<TidyViewModel> model;
};

/// A run: what comes before it, the run itself, and what takes all of it back.
struct Flow {
    const char* name;
    Kind kind;
    std::function<void(World&)> prepare;
    std::function<void(World&)> run;
    std::function<void(World&)> takeBack;
};

void onTwoVolumes(World& world) {
    world.memory.addVolume("/r/ordovan+");
    world.start();
}

const std::vector<Flow> flows = {
    {"organize", Kind::organize, &World::start, &World::organize, &World::undo},
    {"organize across volumes", Kind::organize, onTwoVolumes, &World::organize, &World::undo},
    {"undo", Kind::undo,
     [](World& world) {
         world.start();
         world.organize();
     },
     &World::undo, &World::undo},
    {"undo across volumes", Kind::undo,
     [](World& world) {
         onTwoVolumes(world);
         world.organize();
     },
     &World::undo, &World::undo},
    {"trash", Kind::trash,
     [](World& world) {
         world.start();
         world.search();
     },
     &World::trash, &World::restore},
    {"restore", Kind::restoreTrash,
     [](World& world) {
         world.start();
         world.search();
         world.trash();
     },
     &World::restore, &World::restore},
};

/// What has to be true once the program was started again: each file is in one known place, and all can go back.
void expectAllIsWell(World& world, const Flow& flow) {
    EXPECT_THAT(world.contents(), ElementsAre("1", "2", "2"));
    EXPECT_FALSE(world.hasRunRecord());
    EXPECT_LE(world.runsOf(flow.kind), 1);
    for (const std::string& file : world.files()) EXPECT_FALSE(OrdovanPartialName::isPartial("/" + file)) << file;
    EXPECT_EQ(world.model->journalWarning(), std::nullopt);
    flow.takeBack(world);
    EXPECT_THAT(world.files(), ElementsAre("x.pdf", "y.jpg", "z.txt"));
    EXPECT_THAT(World::recoverable(*world.model), IsEmpty());
    EXPECT_THAT(world.model->trashRecord()->entries, IsEmpty());
    EXPECT_THAT(world.contents(), ElementsAre("1", "2", "2"));
}

TEST(TidyInterrupted, AtAnyCallOfAnyRunLeavesEveryFileInOneKnownPlace) {
    std::size_t points = 0;
    for (const Flow& flow : flows) {
        for (const Moment moment : {Moment::before, Moment::after}) {
            for (const Notes notes : {Notes::all, Notes::none}) {
                for (std::size_t number = 1;; ++number, ++points) {
                    World world;
                    flow.prepare(world);
                    if (!world.isKilledAt(number, moment, notes, flow.run)) break;
                    SCOPED_TRACE(std::string(flow.name) + (moment == Moment::before ? " before " : " after ") +
                                 std::to_string(number) + (notes == Notes::all ? "" : " without notes"));
                    const bool hadRecord = world.hasRunRecord();
                    world.start();
                    EXPECT_EQ(world.model->interruptedRun() != nullptr, hadRecord);
                    expectAllIsWell(world, flow);
                    if (::testing::Test::HasFailure()) return;
                }
            }
        }
    }
    EXPECT_GT(points, 500U);
}

TEST(TidyInterrupted, AndAgainWhileThatIsBroughtToAnEndComesToTheSame) {
    std::size_t points = 0;
    for (const Flow& flow : flows) {
        for (std::size_t first = 1;; first += 7) {
            World probe;
            flow.prepare(probe);
            if (!probe.isKilledAt(first, Moment::after, Notes::none, flow.run)) break;
            for (std::size_t second = 1;; ++second, ++points) {
                World world;
                flow.prepare(world);
                (void)world.isKilledAt(first, Moment::after, Notes::none, flow.run);
                if (!world.isKilledAt(second, Moment::after, Notes::none, &World::start)) break;
                SCOPED_TRACE(std::string(flow.name) + " after " + std::to_string(first) + " and " +
                             std::to_string(second));
                world.start();
                expectAllIsWell(world, flow);
                if (::testing::Test::HasFailure()) return;
            }
        }
    }
    EXPECT_GT(points, 200U);
}

// What is told.

TEST(TidyInterrupted, IsToldOnceWithItsCountsAndItsPlaceInTheHistory) {
    World world;
    world.start();
    const double startedAt = world.now;
    std::size_t moves = 0;
    world.fs.setBeforeCall([&](const FaultyFileSystem::Call& call) {
        if (call.operation == Operation::move && ++moves == 3) throw Killed();
    });
    EXPECT_THROW(world.organize(), Killed);
    world.fs.setBeforeCall({});
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

/// A world in which an organize run was interrupted after its first move.
class InterruptedWorld : public World {
public:
    InterruptedWorld() {
        start();
        std::size_t moves = 0;
        fs.setBeforeCall([&](const FaultyFileSystem::Call& call) {
            if (call.operation == Operation::move && ++moves == 2) throw Killed();
        });
        EXPECT_THROW(organize(), Killed);
        fs.setBeforeCall({});
    }
};

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
    std::size_t moves = 0;
    world.fs.setBeforeCall([&](const FaultyFileSystem::Call& call) {
        if (call.operation == Operation::move && ++moves == 2) throw Killed();
    });
    EXPECT_THROW(world.organize(), Killed);
    world.fs.setBeforeCall({});
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

TEST(TidyInterrupted, CancelledAtAnyCallWaitsForTheNextTime) {
    std::size_t waiting = 0;
    for (const Flow& flow : flows) {
        for (std::size_t first = 1;; first += 7) {
            World probe;
            flow.prepare(probe);
            if (!probe.isKilledAt(first, Moment::after, Notes::none, flow.run)) break;
            for (std::size_t second = 1;; ++second) {
                World world;
                flow.prepare(world);
                (void)world.isKilledAt(first, Moment::after, Notes::none, flow.run);
                const auto record = world.runRecord();
                if (!record || !world.isCancelledAt(second)) break;
                SCOPED_TRACE(std::string(flow.name) + " after " + std::to_string(first) + ", cancelled at " +
                             std::to_string(second));
                EXPECT_EQ(world.model->phase().kind, TidyViewModel::Phase::Case::idle);
                EXPECT_EQ(world.model->interruptedRun() == nullptr, world.hasRunRecord());
                if (world.hasRunRecord()) {
                    ++waiting;
                    EXPECT_EQ(world.runRecord(), record);
                    EXPECT_EQ(world.model->recoverableJournal(), nullptr);
                }
                world.start();
                expectAllIsWell(world, flow);
                if (::testing::Test::HasFailure()) return;
            }
        }
    }
    EXPECT_GT(waiting, 100U);
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

TEST(TidyInterrupted, IsSettledBeforeTheNextRunWhereNoPreviewCameBetween) {
    World world;
    world.start();
    auto other = world.previewed({.repreviewsAfterRuns = false});  // a second program
    std::size_t moves = 0;
    world.fs.setBeforeCall([&](const FaultyFileSystem::Call& call) {
        if (call.operation == Operation::move && ++moves == 2) throw Killed();
    });
    EXPECT_THROW(world.organize(), Killed);
    world.fs.setBeforeCall({});
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

TEST(TidyInterrupted, ARunIsInTheHistoryBeforeItsRecordGoes) {
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

// When records can not be stored.

TEST(TidyInterrupted, ItsWarningOutlastsARunThatHasNone) {
    World world;
    world.start();
    const auto other = world.previewed({.repreviewsAfterRuns = false});
    std::size_t moves = 0;
    world.fs.setBeforeCall([&](const FaultyFileSystem::Call& call) {
        if (call.operation == Operation::move && ++moves == 2) throw Killed();
    });
    EXPECT_THROW(world.organize(), Killed);
    world.fs.setBeforeCall({});
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

TEST(TidyInterrupted, StaysRecordedWhileTheJournalCanNotBeStored) {
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

TEST(TidyInterrupted, ARunWhoseRecordCouldNotBeSavedIsKnownAfterQuitting) {
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

TEST(TidyInterrupted, ARunThatCanNotBeRecordedGoesOnAsEver) {
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

TEST(TidyInterrupted, ADamagedRecordIsSetAsideAndSaid) {
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

TEST(TidyInterrupted, ARecordThatCanNotBeReadThisTimeStays) {
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

TEST(TidyInterrupted, ARecordThatIsStillNeededStaysUnderTheNextRun) {
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

TEST(TidyInterrupted, BesideARecordThatHasToStayIsBroughtToItsEndAsWell) {
    InterruptedWorld world;
    world.records.failAll("write", ENOSPC);
    world.start();
    std::size_t moves = 0;
    world.fs.setBeforeCall([&](const FaultyFileSystem::Call& call) {
        if (call.operation == Operation::move && ++moves == 2) throw Killed();
    });
    EXPECT_THROW(world.organize(), Killed);
    world.fs.setBeforeCall({});
    EXPECT_TRUE(world.memory.item(world.locations.runRecord(Url::file("/r"), 2).path()));
    world.records.failAll("", 0);
    world.start();
    EXPECT_THAT(world.storedJournal()->entries, SizeIs(2));
    EXPECT_FALSE(world.hasRunRecord());
    EXPECT_FALSE(world.memory.item(world.locations.runRecord(Url::file("/r"), 2).path()));
    world.undo();
    EXPECT_THAT(world.files(), ElementsAre("x.pdf", "y.jpg", "z.txt"));
}

TEST(TidyInterrupted, GoesWithoutARecordOnceAllPlacesAreTaken) {
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
TEST(TidyInterrupted, IsNoRunThatStillGoesOn) {
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

TEST(TidyInterrupted, IsLeftAloneWhileAnotherRunHoldsItsRecord) {
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

TEST(TidyInterrupted, KeepsItsRecordWhileAFileThatMovedCanNotBeRead) {
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

TEST(TidyInterrupted, ARecordThatMayNotBeOnTheDiskIsNotLeftBehind) {
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

TEST(TidyInterrupted, ARecordThatCanNotBeSetAsideIsNotWrittenOver) {
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

TEST(TidyInterrupted, VolumesThatDoNotKeepIdentitiesGetNoneInTheJournal) {
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

TEST(TidyInterrupted, VolumesThatKeepOnlyInodesHaveThemInTheRecordOfARunAlone) {
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

TEST(TidyInterrupted, OnVolumesThatDoNotKeepIdentitiesIsSettledAsWell) {
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
