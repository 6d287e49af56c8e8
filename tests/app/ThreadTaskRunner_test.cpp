#include "OrdovanApp/controller/ThreadTaskRunner.h"

#include "OrdovanApp/controller/CancelFlag.h"
#include "tests/support/QtTestMain.h"

#include <gmock/gmock.h>

#include <QEventLoop>

#include <chrono>
#include <latch>
#include <memory>
#include <string>
#include <thread>
#include <vector>

using ordovan::ThreadTaskRunner;
using ::testing::ElementsAre;

namespace {

/// Runs the event loop until `isDone`, which something that arrives makes true.
template <class Condition>
void processUntil(Condition isDone) {
    while (!isDone()) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

TEST(ThreadTaskRunner, WorksElsewhereAndDeliversHere) {
    ThreadTaskRunner runner;
    std::thread::id workedOn, deliveredOn;
    std::string result;
    runner.compute(
        [&] {
            workedOn = std::this_thread::get_id();
            return std::make_unique<std::string>("done");
        },
        [&](std::unique_ptr<std::string> text) {
            deliveredOn = std::this_thread::get_id();
            result = *text;
        });
    processUntil([&] { return !result.empty(); });
    EXPECT_EQ(result, "done");
    EXPECT_NE(workedOn, std::this_thread::get_id());
    EXPECT_EQ(deliveredOn, std::this_thread::get_id());
}

TEST(ThreadTaskRunner, WaitsForWorkWithinBounds) {
    ThreadTaskRunner runner;
    EXPECT_TRUE(runner.waitForWork(std::chrono::milliseconds(0)));
    std::latch mayEnd(1);
    bool isWorkDone = false;
    runner.run(
        [&] {
            mayEnd.wait();
            isWorkDone = true;
        },
        [] {});
    EXPECT_FALSE(runner.waitForWork(std::chrono::milliseconds(1)));
    mayEnd.count_down();
    EXPECT_TRUE(runner.waitForWork(std::chrono::hours(1)));
    EXPECT_TRUE(isWorkDone);
}

TEST(ThreadTaskRunner, RunsTasksSideBySide) {
    ThreadTaskRunner runner;
    std::latch both(2);
    int done = 0;
    for (int i = 0; i < 2; ++i) runner.run([&] { both.arrive_and_wait(); }, [&] { ++done; });
    processUntil([&] { return done == 2; });
}

TEST(ThreadTaskRunner, DeliversWhatATaskPostsInOrderAndBeforeItsEnd) {
    ThreadTaskRunner runner;
    std::vector<int> arrived;
    runner.run(
        [&] {
            for (int i = 0; i < 1'000; ++i) runner.post([&arrived, i] { arrived.push_back(i); });
        },
        [&] { arrived.push_back(-1); });
    processUntil([&] { return !arrived.empty() && arrived.back() == -1; });
    ASSERT_EQ(arrived.size(), 1'001u);
    for (int i = 0; i < 1'000; ++i) EXPECT_EQ(arrived[static_cast<std::size_t>(i)], i);
}

TEST(ThreadTaskRunner, TakesNewTasksFromADelivery) {
    ThreadTaskRunner runner;
    std::vector<int> done;
    runner.run([] {},
               [&] {
                   done.push_back(1);
                   runner.run([] {}, [&] { done.push_back(2); });
               });
    processUntil([&] { return done.size() == 2; });
    EXPECT_THAT(done, ElementsAre(1, 2));
}

TEST(ThreadTaskRunner, WaitsForWorkAndDropsItsResultWhenDestroyed) {
    bool worked = false;
    bool delivered = false;
    {
        ThreadTaskRunner runner;
        const auto started = std::make_shared<std::latch>(1);
        runner.run(
            [&worked, started] {
                started->count_down();
                std::this_thread::yield();
                worked = true;
            },
            [&] { delivered = true; });
        started->wait();
    }
    QCoreApplication::processEvents();
    EXPECT_TRUE(worked);
    EXPECT_FALSE(delivered);
}

TEST(ThreadTaskRunner, FreesWhatATaskHeldOnceItIsDone) {
    ThreadTaskRunner runner;
    auto held = std::make_shared<int>(1);
    const std::weak_ptr<int> watched = held;
    bool done = false;
    runner.run([held] {}, [held, &done] { done = true; });
    held.reset();
    processUntil([&] { return done; });
    EXPECT_TRUE(watched.expired());
}

TEST(CancelFlag, IsSeenOnAnotherThread) {
    const auto flag = std::make_shared<CancelFlag>();
    EXPECT_FALSE(flag->isCancelled());
    std::latch stopped(1);
    std::jthread waiting([flag, &stopped] {
        while (!flag->isCancelled()) std::this_thread::yield();
        stopped.count_down();
    });
    flag->cancel();
    stopped.wait();
    EXPECT_TRUE(flag->isCancelled());
}

}  // namespace
