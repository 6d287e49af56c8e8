// A program that ends at any point of a run, and the one that is started after it.

#include "tests/support/InterruptedWorld.h"
#include "tests/support/QtTestMain.h"

#include <gmock/gmock.h>

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

using ordovan::test::Moment;
using ordovan::test::Notes;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

using World = ordovan::test::KillableWorld;
using Kind = OrdovanRunRecord::Kind;

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

TEST(TidyInterruptedAnywhere, AtAnyCallOfAnyRunLeavesEveryFileInOneKnownPlace) {
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

TEST(TidyInterruptedAnywhere, AndAgainWhileThatIsBroughtToAnEndComesToTheSame) {
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

TEST(TidyInterruptedAnywhere, CancelledAtAnyCallWaitsForTheNextTime) {
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

}  // namespace
