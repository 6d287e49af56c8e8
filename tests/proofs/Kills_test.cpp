// The program is killed before and after every system call by which a run changes something: then it is started again,
// and everything must be in order.

#include "tests/proofs/Flows.h"
#include "tests/proofs/Proof.h"

#include <gtest/gtest.h>

using namespace ordovan::proofs;
using ordovan::test::SecondVolume;

namespace {

enum class Moment { before, after };

class Kills : public ::testing::TestWithParam<Flow> {
protected:
    void SetUp() override {
        if (GetParam().needsVolumes && !SecondVolume::available()) {
            tellSkipped(std::string("kill: ") + GetParam().name, SecondVolume::unavailable);
            GTEST_SKIP() << SecondVolume::unavailable;
        }
    }
};

/// Kills a process at its n-th call. False when it ended before that.
template <class Action>
bool killedAt(const Disk& disk, std::size_t number, Moment moment, bool changesOnly, const Action& action) {
    return wasKilled([&] {
        SystemCallPlan plan{.below = disk.path(""), .changesOnly = changesOnly, .at = number};
        (moment == Moment::before ? plan.before : plan.after) = die;
        SystemCalls::watch(plan);
        action();
    });
}

/// What puts an interrupted run in order is interrupted itself, at every call, for every call at which the run was.
TEST_P(Kills, OfWhatPutsARunInOrderLoseNothing) {
    const std::vector<std::string> calls = callsOf(GetParam(), true);
    std::size_t points = 0;
    for (std::size_t number = rounds(3, 1); number <= calls.size(); number += rounds(7, 1)) {
        for (std::size_t again = rounds(1 + number % 3, 1);; again += rounds(4, 1)) {
            SCOPED_TRACE("killed after call " + std::to_string(number) + ": " + calls[number - 1] +
                         ", and then again after call " + std::to_string(again) + " of the new start");
            Scene scene(GetParam());
            ASSERT_TRUE(killedAt(scene.disk, number, Moment::after, true, [&] { scene.act(); }));
            if (!killedAt(scene.disk, again, Moment::after, true, [&] { Program reopened(scene.disk); })) break;
            scene.expectOrder();
            ++points;
            if (HasFailure()) return;
        }
    }
    tell(std::string("kill twice: ") + GetParam().name, points, "pairs of points, each in order afterwards");
}

/// Also at the calls that only look.
TEST_P(Kills, AtEveryCallAtAllLoseNothing) {
    if (!isLong()) GTEST_SKIP() << "a part of the long run";
    const std::size_t count = callsOf(GetParam(), false).size();
    std::size_t points = 0;
    for (const Moment moment : {Moment::before, Moment::after}) {
        for (std::size_t number = 1; number <= count + 50; ++number, ++points) {
            SCOPED_TRACE("killed at call " + std::to_string(number));
            Scene scene(GetParam());
            if (!killedAt(scene.disk, number, moment, false, [&] { scene.act(); })) break;
            scene.expectOrder();
            if (HasFailure()) return;
        }
    }
    EXPECT_GE(points, count);
    tell(std::string("kill, looks included: ") + GetParam().name, points, "points, each in order afterwards");
}

TEST_P(Kills, AtEveryCallThatChangesSomethingLoseNothing) {
    const std::vector<std::string> calls = callsOf(GetParam(), true);
    Scene::runsTold = 0;
    std::size_t points = 0;
    for (const Moment moment : {Moment::after, Moment::before}) {
        // What is on the disk before a call is what was there after the one in front of it.
        if (moment == Moment::before && !isLong()) continue;
        for (std::size_t number = 1;; ++number) {
            SCOPED_TRACE(std::string("killed ") + (moment == Moment::before ? "before" : "after") + " call " +
                         std::to_string(number) + ": " + (number <= calls.size() ? calls[number - 1] : ""));
            Scene scene(GetParam());
            if (!killedAt(scene.disk, number, moment, true, [&] { scene.act(); })) break;
            scene.expectOrder();
            ++points;
            if (HasFailure()) return;
        }
    }
    EXPECT_GE(points, calls.size());
    EXPECT_GE(Scene::runsTold, calls.size() / 4) << "hardly a run was found interrupted";
    tell(std::string("kill: ") + GetParam().name, points, "points, each with a new start and everything taken back");
}

/// Two folders whose names differ only in how an accented letter is put together share the name of their records.
TEST(KilledRun, IsNotPutInOrderInAFolderWhoseNameIsOnlySpelledAlike) {
    Disk disk;
    disk.write("re\u0301sume/a.pdf", "one");
    disk.write("re\u0301sume/b.pdf", "two");
    disk.write("r\u00e9sume/c.pdf", "three");
    const Url own = Url::file(disk.path("re\u0301sume")), other = Url::file(disk.path("r\u00e9sume"));
    ASSERT_TRUE(wasKilled([&] {
        SystemCalls::watch(
            {.below = disk.path(""), .at = 1, .forGood = true, .after = die, .applies = [](std::string_view name) {
                 return name == "renameat2";
             }});
        Program(disk, own).organize();
    }));
    {
        Program program(disk, other);
        EXPECT_FALSE(program.model().interruptedRun());
        EXPECT_FALSE(program.model().recoverableJournal());
    }
    Program program(disk, own);
    ASSERT_TRUE(program.model().interruptedRun());
    EXPECT_EQ(program.model().interruptedRun()->finished, 1U);
    EXPECT_EQ(program.model().recoverableJournal()->entries.size(), 1U);
}

std::string nameOf(const ::testing::TestParamInfo<Flow>& of) {
    std::string name(of.param.name);
    std::ranges::replace(name, ' ', '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(Of, Kills, ::testing::ValuesIn(allFlows), nameOf);
INSTANTIATE_TEST_SUITE_P(InSteps, Kills, ::testing::ValuesIn(stepwiseFlows), nameOf);

}  // namespace
