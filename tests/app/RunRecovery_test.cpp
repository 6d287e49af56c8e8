#include "OrdovanApp/controller/RunRecovery.h"

#include "tests/support/InterruptedWorld.h"
#include "tests/support/QtTestMain.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <optional>
#include <span>
#include <string>
#include <vector>

using ordovan::test::InterruptedWorld;
using ordovan::test::KillableWorld;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::SizeIs;

namespace {

TEST(RunRecovery, PutsWhatTheRunHasMovedOnTheDiskBeforeItIsRecorded) {
    InterruptedWorld world;
    std::vector<std::string> calls, arrived, left;
    TidyPorts ports = world.ports();
    ports.recording.syncMoves = [&](std::span<const Url> arrivals, std::span<const Url> departures) {
        for (const Url& url : arrivals) arrived.emplace_back(url.path());
        for (const Url& url : departures) left.emplace_back(url.path());
        calls.emplace_back("flush");
        return true;
    };
    world.records.observer = world.runStorage.observer = [&](const std::string& call) {
        if (call.starts_with("write") || call.starts_with("remove")) calls.push_back(call);
    };
    RecordsInMemory known;
    const Url root = Url::file("/r");
    EXPECT_THAT(RunRecovery::settle(ports, root, known, 100, RunRecovery::Occasion::preview, {}).runs, SizeIs(1));
    EXPECT_THAT(arrived, Contains("/r/ordovan+/Documents/x.pdf"));
    EXPECT_THAT(left, Contains("/r/x.pdf"));
    EXPECT_THAT(calls, ElementsAre("flush", "write " + world.journalPath(),
                                   "write " + std::string(world.locations.history().path()),
                                   "remove " + std::string(world.locations.runRecord(root).path())));
}

TEST(RunRecovery, LeavesARunOfThisProgramToTheNextRun) {
    KillableWorld world;
    world.start();
    world.records.failAll("write", ENOSPC);
    world.organize();
    world.records.failAll("", 0);
    ASSERT_TRUE(world.hasRunRecord());
    world.model->preview();
    world.tasks.finish();
    EXPECT_TRUE(world.hasRunRecord());
    EXPECT_EQ(world.storedJournal(), std::nullopt);
    world.memory.write("/r/new.pdf", "3");
    world.model->preview();
    world.tasks.finish();
    world.organize();
    EXPECT_FALSE(world.hasRunRecord());
    EXPECT_THAT(world.storedJournal()->entries, SizeIs(4));
}

}  // namespace
