#include "OrdovanCore/Executor.h"
#include "OrdovanCore/testing/TreeBuilder.h"
#include "tests/support/Faults.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

using ordovan::test::errors;
using ordovan::test::Fault;
using ordovan::test::forEachCall;
using ordovan::testing::build;
using ordovan::testing::FaultyFileSystem;
using ordovan::testing::MemoryFileSystem;
using ordovan::testing::Operation;
using Lasting = FaultyFileSystem::Lasting;
using Moment = FaultyFileSystem::Moment;
using Status = OrdovanExecutionStatus;

namespace {

/// A folder with files of distinct contents, one of whose places in the output folder is taken.
class World {
public:
    explicit World(bool acrossVolumes) {
        build(memory, "/r", {"a.pdf = first", "sub/b.pdf = second", "sub/deep/c.png = third", "taken = fourth"});
        if (acrossVolumes) memory.addVolume("/r/ordovan+");
        build(memory, "/r/ordovan+", {"Other/taken = was here before"});
        before = files();
        contents = memory.contents();
    }

    static std::vector<OrdovanFileProposal> proposals() {
        std::vector<OrdovanFileProposal> all;
        for (const auto& [from, to] : places()) {
            all.emplace_back();
            all.back().source = Url::file(from);
            all.back().destination = Url::file(to);
        }
        return all;
    }
    static std::vector<std::pair<std::string, std::string>> places() {
        return {{"/r/a.pdf", "/r/ordovan+/Documents/a.pdf"},
                {"/r/sub/b.pdf", "/r/ordovan+/Documents/b.pdf"},
                {"/r/taken", "/r/ordovan+/Other/taken"},
                {"/r/sub/deep/c.png", "/r/ordovan+/Images/2024-03/c.png"}};
    }

    OrdovanExecutionReport apply(OrdovanFileSystem& fs) {
        return OrdovanExecutor::apply(proposals(), Url::file("/r"), Url::file("/r/ordovan+"), fs, 17);
    }
    OrdovanExecutionReport undo(const OrdovanJournal& journal, OrdovanFileSystem& fs) {
        return OrdovanExecutor::undo(journal, Url::file("/r"), Url::file("/r/ordovan+"), fs);
    }

    /// Every file with all that a move must keep. Folders that were made may stay.
    std::map<std::string, std::string> files() const {
        std::map<std::string, std::string> all = memory.snapshot("/r");
        std::erase_if(all, [](const auto& item) { return item.second.starts_with("folder"); });
        return all;
    }
    bool has(std::string_view path) const { return memory.item(path).has_value(); }

    /// Each content exists once and under a proper name.
    void expectEachContentOnce() const {
        EXPECT_EQ(memory.contents(), contents);
        for (const auto& [path, description] : files()) EXPECT_FALSE(OrdovanPartialName::isPartial(path)) << path;
    }
    /// Each content exists at least once under a proper name.
    void expectEveryContent() const {
        std::set<std::string> found;
        for (const auto& [path, description] : files()) {
            if (!OrdovanPartialName::isPartial(path)) found.insert(memory.read("/r/" + path).value_or(""));
        }
        EXPECT_THAT(found, ::testing::IsSupersetOf({"first", "second", "third", "fourth", "was here before"}));
    }
    void expectNothingReplaced() const { EXPECT_EQ(memory.read("/r/ordovan+/Other/taken"), "was here before"); }

    /// "moved" means at the new place and no more at the old one; anything else means where it was.
    static void expectTrue(const World& world, const OrdovanExecutionReport& report, bool undone) {
        for (const OrdovanExecutionOutcome& outcome : report.outcomes) {
            const bool isMoved = outcome.status == Status::moved;
            const auto& from = undone ? outcome.destination : outcome.source;
            const auto& to = undone ? outcome.source : outcome.destination;
            EXPECT_EQ(world.has(from.path()), !isMoved) << from << ": " << outcome.message;
            const bool isTaken = to.path() == "/r/ordovan+/Other/taken";
            EXPECT_EQ(world.has(to.path()), isMoved || isTaken) << to << ": " << outcome.message;
        }
    }

    MemoryFileSystem memory;
    std::map<std::string, std::string> before;
    std::multiset<std::string> contents;
};

void expectJournalOfTheMoved(const OrdovanExecutionReport& report) {
    std::vector<std::string> moved;
    for (const auto& outcome : report.outcomes) {
        if (outcome.status == Status::moved) moved.push_back(outcome.id());
    }
    std::vector<std::string> recorded;
    for (const auto& entry : report.journal.entries) {
        recorded.push_back(std::string(entry.source()) + "->" + std::string(entry.destination()));
    }
    EXPECT_EQ(recorded, moved);
    EXPECT_EQ(report.outcomes.size(), World::places().size());
}

/// The whole sequence with one fault in its apply. True when the fault came about.
bool applyWithFault(bool acrossVolumes, const Fault& fault, std::size_t number) {
    World world(acrossVolumes);
    FaultyFileSystem fs(world.memory);
    fault.setIn(fs, number);
    const OrdovanExecutionReport report = world.apply(fs);
    world.expectNothingReplaced();
    world.expectEveryContent();
    expectJournalOfTheMoved(report);
    if (fault.lasting == Lasting::once) {
        world.expectEachContentOnce();
        World::expectTrue(world, report, false);
        EXPECT_EQ(world.undo(report.journal, world.memory).movedCount(), report.movedCount());
        EXPECT_EQ(world.files(), world.before);
    }
    return fs.faultsDone() > 0;
}

/// The whole sequence with one fault in its undo; what was not restored then is restored by a second undo.
bool undoWithFault(bool acrossVolumes, const Fault& fault, std::size_t number) {
    World world(acrossVolumes);
    const OrdovanJournal journal = world.apply(world.memory).journal;
    EXPECT_EQ(journal.entries.size(), 3u);
    FaultyFileSystem fs(world.memory);
    fault.setIn(fs, number);
    const OrdovanExecutionReport report = world.undo(journal, fs);
    world.expectNothingReplaced();
    world.expectEveryContent();
    EXPECT_EQ(report.outcomes.size(), journal.entries.size());
    EXPECT_EQ(report.journal.entries.size() + report.movedCount(), journal.entries.size());
    if (fault.lasting == Lasting::once) {
        world.expectEachContentOnce();
        World::expectTrue(world, report, true);
        EXPECT_EQ(world.undo(report.journal, world.memory).journal.entries.size(), 0u);
        EXPECT_EQ(world.files(), world.before);
    }
    return fs.faultsDone() > 0;
}

class Faults : public ::testing::TestWithParam<bool> {};

}  // namespace

TEST_P(Faults, LoseDoubleAndReplaceNothingWhenACallFails) {
    for (const Moment moment : {Moment::beforeEffect, Moment::afterEffect}) {
        for (const int error : errors) {
            const Fault fault{std::nullopt, error, moment, Lasting::once};
            ASSERT_GE(forEachCall(applyWithFault, GetParam(), fault), 14u);
            ASSERT_GE(forEachCall(undoWithFault, GetParam(), fault), 14u);
        }
    }
}

TEST_P(Faults, LoseAndReplaceNothingWhenACallAndAllLaterOnesFail) {
    for (const Moment moment : {Moment::beforeEffect, Moment::afterEffect}) {
        for (const int error : {EIO, EROFS, ENOENT, EEXIST}) {  // the last two are told apart from all others
            const Fault fault{std::nullopt, error, moment, Lasting::forGood};
            ASSERT_GE(forEachCall(applyWithFault, GetParam(), fault), 14u);
            ASSERT_GE(forEachCall(undoWithFault, GetParam(), fault), 14u);
        }
    }
}

TEST_P(Faults, LoseDoubleAndReplaceNothingWhenAQuestionIsAnsweredWrongly) {
    for (const Operation question :
         {Operation::exists, Operation::isRegularFile, Operation::isSymlink, Operation::sameVolume}) {
        ASSERT_GT(forEachCall(applyWithFault, GetParam(), {question, 0, Moment::beforeEffect, Lasting::once}), 2u);
        ASSERT_GT(forEachCall(undoWithFault, GetParam(), {question, 0, Moment::beforeEffect, Lasting::once}), 2u);
    }
}

TEST_P(Faults, LoseDoubleAndReplaceNothingWhenAVolumeClaimsWhatItDidNot) {
    for (const Operation claim : {Operation::createDirectory, Operation::move, Operation::copy, Operation::remove}) {
        const Fault lie{claim, 0, Moment::insteadOfEffect, Lasting::once};
        const bool isCalled = GetParam() || claim == Operation::createDirectory || claim == Operation::move;
        EXPECT_EQ(forEachCall(applyWithFault, GetParam(), lie) > 0, isCalled);
        EXPECT_EQ(forEachCall(undoWithFault, GetParam(), lie) > 0, isCalled);
    }
}

TEST_P(Faults, NeverLoseAFileWhenTwoCallsFail) {
    const auto breakDown = [](FaultyFileSystem& fs, std::size_t first, std::size_t second, Moment moment) {
        fs.reset();
        fs.failCall(first, EIO, moment);
        fs.failCall(second, EIO, moment);
    };
    std::size_t faults = 1;
    for (std::size_t first = 1; faults > 0; ++first) {
        faults = 0;
        for (std::size_t second = first + 1; second <= first + 6; ++second) {
            for (const Moment moment : {Moment::beforeEffect, Moment::afterEffect}) {
                SCOPED_TRACE("calls " + std::to_string(first) + " and " + std::to_string(second));
                World world(GetParam());
                FaultyFileSystem fs(world.memory);
                breakDown(fs, first, second, moment);
                const OrdovanExecutionReport report = world.apply(fs);
                world.expectEveryContent();
                faults += fs.faultsDone();
                breakDown(fs, first, second, moment);
                (void)world.undo(report.journal, fs);
                world.expectEveryContent();
                world.expectNothingReplaced();
                faults += fs.faultsDone();
                ASSERT_FALSE(HasFailure());
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(WithinAVolume, Faults, ::testing::Values(false));
INSTANTIATE_TEST_SUITE_P(AcrossVolumes, Faults, ::testing::Values(true));
