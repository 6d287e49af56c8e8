#include "OrdovanApp/controller/SerialTasks.h"

#include "OrdovanApp/controller/ThreadTaskRunner.h"
#include "tests/support/ManualTaskRunner.h"
#include "tests/support/QtTestMain.h"

#include <gmock/gmock.h>

#include <chrono>
#include <string>
#include <vector>

using ordovan::SerialTasks;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

class SerialTasksTest : public ::testing::Test {
protected:
    void run(SerialTasks& tasks, const std::string& name) {
        tasks.run([this, name] { calls.push_back(name + " works"); },
                  [this, name] { calls.push_back(name + " done"); });
    }

    std::vector<std::string> calls;
};

TEST_F(SerialTasksTest, DoOneThingAfterTheOther) {
    ordovan::test::ManualTaskRunner runner;
    SerialTasks tasks(runner);
    run(tasks, "a");
    run(tasks, "b");
    EXPECT_EQ(runner.waiting(), 1U);
    EXPECT_THAT(calls, IsEmpty());
    runner.work();
    EXPECT_THAT(calls, ElementsAre("a works", "b works"));
    runner.deliver();
    EXPECT_THAT(calls, ElementsAre("a works", "b works", "a done", "b done"));
    run(tasks, "c");
    runner.finish();
    EXPECT_THAT(calls, ElementsAre("a works", "b works", "a done", "b done", "c works", "c done"));
}

TEST_F(SerialTasksTest, DoWhatTheyWereGivenBeforeTheirRunnerIsGone) {
    std::vector<std::string> expected;
    {
        ordovan::ThreadTaskRunner runner;
        SerialTasks tasks(runner);
        for (int i = 0; i < 100; ++i) {
            run(tasks, std::to_string(i));
            expected.push_back(std::to_string(i) + " works");
        }
    }
    EXPECT_EQ(calls, expected);
}

}  // namespace
