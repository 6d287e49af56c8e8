// What holds while trashing and putting back whatever goes wrong: the N-th call of the port fails, for every N, before
// or after its effect, with every errno; questions are answered wrongly; volumes claim what they did not do.

#include "OrdovanCore/DuplicateTrasher.h"
#include "OrdovanCore/FileTrasher.h"
#include "OrdovanCore/testing/TreeBuilder.h"
#include "tests/support/Faults.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
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
using ordovan::testing::digestOf;
using ordovan::testing::FaultyFileSystem;
using ordovan::testing::MemoryFileSystem;
using ordovan::testing::Operation;
using Lasting = FaultyFileSystem::Lasting;
using Moment = FaultyFileSystem::Moment;
using Status = OrdovanExecutionStatus;

namespace {

/// A folder with three copies of one content and two files of others, all of which go to the Trash but one copy.
class World {
public:
    World() {
        build(memory, "/r", {"a = same", "sub/b = same", "sub/deep/c = same", "film = long film", "disk = disk image"});
        before = files();
        contents = memory.contents();
        fs.setAfterCall([this](const auto& call) {
            if (keeping) expectACopyOutside(call);
        });
    }

    void set(const Fault& fault, std::size_t number) {
        fs.reset();
        fault.setIn(fs, number);
    }

    OrdovanTrashReport trashExtras() {
        const OrdovanDuplicateGroup group{
            digestOf("same"), 4, {Url::file("/r/a"), Url::file("/r/sub/b"), Url::file("/r/sub/deep/c")}};
        return OrdovanDuplicateTrasher::trashExtras(group, Url::file("/r/sub/b"), Url::file("/r"), fs);
    }
    OrdovanTrashReport trashFiles() {
        const std::vector<OrdovanFileTrasher::Item> items{{Url::file("/r/film"), 9}, {Url::file("/r/disk"), 10}};
        return OrdovanFileTrasher::trash(items, Url::file("/r"), fs);
    }
    OrdovanTrashReport restore(const OrdovanTrashRecord& record) {
        return OrdovanDuplicateTrasher::restore(record, Url::file("/r"), fs);
    }

    /// Every file with all that a move must keep, by its absolute path; of the Trash its items alone.
    std::map<std::string, std::string> files() const {
        std::map<std::string, std::string> all;
        for (const auto& [path, description] : memory.snapshot("/")) {
            if (description.starts_with("file") && !path.ends_with(".trashinfo")) all["/" + path] = description;
        }
        return all;
    }

    /// Each content is there as often as before, and under a proper name.
    void expectEachContentOnce() const {
        EXPECT_EQ(memory.contents(), contents);
        for (const auto& [path, description] : files()) EXPECT_FALSE(OrdovanPartialName::isPartial(path)) << path;
    }
    /// Each content is there at least as often as before.
    void expectEveryContent() const {
        const std::multiset<std::string> now = memory.contents();
        for (const std::string& content : contents) EXPECT_GE(now.count(content), contents.count(content));
    }
    /// Each item of the Trash has its info file, and each info file its item.
    void expectNoOrphans() const {
        if (!memory.item(MemoryFileSystem::homeTrashPath)) return;
        std::set<std::string> items, infos;
        for (const auto& [path, description] : memory.snapshot(MemoryFileSystem::homeTrashPath)) {
            if (path.starts_with("files/")) items.insert(path.substr(6));
            if (path.starts_with("info/")) infos.insert(path.substr(5, path.size() - 5 - 10));
        }
        EXPECT_EQ(items, infos);
    }
    void expectACopyOutside(const FaultyFileSystem::Call& call) const {
        const bool found = std::ranges::any_of(std::array{"/r/a", "/r/sub/b", "/r/sub/deep/c"},
                                               [&](const char* path) { return memory.read(path) == "same"; });
        EXPECT_TRUE(found) << "after call " << call.number << " about " << call.url;
    }
    bool has(const Url& url) const { return memory.item(url.path()).has_value(); }

    MemoryFileSystem memory;
    FaultyFileSystem fs{memory};
    bool keeping = true;  // every call of the run is checked to leave a copy outside the Trash
    std::map<std::string, std::string> before;
    std::multiset<std::string> contents;
};

/// "moved" means in the Trash, in the record and no more in place; anything else means in place. Of a file that is said
/// to be missing nothing is claimed: a Trash that took a file and then denied it, or a wrong answer, makes it so.
void expectTrue(const World& world, const OrdovanTrashReport& report) {
    std::vector<std::string> expected, recorded;
    for (const OrdovanExecutionOutcome& outcome : report.outcomes) {
        const bool isMoved = outcome.status == Status::moved;
        const bool isMissing = outcome.message == "Missing or no longer a regular file; left untouched.";
        EXPECT_TRUE(isMissing || world.has(outcome.source) != isMoved) << outcome.source << ": " << outcome.message;
        if (!isMoved) continue;
        EXPECT_TRUE(world.has(outcome.destination)) << outcome.destination;
        expected.push_back(outcome.id());
    }
    for (const OrdovanTrashEntry& entry : report.record.entries) {
        recorded.push_back(std::string(entry.original()) + "->" + std::string(entry.trashed()));
        EXPECT_EQ(digestOf(world.memory.read(entry.trashed()).value_or("")), entry.contentHash());
    }
    EXPECT_EQ(recorded, expected);
}

/// Trashes with one fault, and puts back what is recorded without one. Only what the Trash took and denied to have
/// taken is not back then.
bool trashWithFault(OrdovanTrashReport (World::*run)(), const Fault& fault, std::size_t number) {
    World world;
    world.set(fault, number);
    const OrdovanTrashReport report = (world.*run)();
    const bool happened = world.fs.faultsDone() > 0;
    EXPECT_EQ(report.outcomes.size(), 2U);
    world.expectEachContentOnce();
    world.expectNoOrphans();
    world.fs.reset();
    if (fault.lasting == Lasting::once) expectTrue(world, report);
    const OrdovanTrashReport back = world.restore(report.record);
    EXPECT_EQ(back.movedCount(), report.movedCount());
    const bool isLost = fault.moment == Moment::afterEffect && !(world.files() == world.before);
    if (isLost) {
        world.expectEachContentOnce();
    } else {
        EXPECT_EQ(world.files(), world.before);
    }
    return happened;
}

/// Puts back with one fault; what was not put back then is put back the second time.
bool restoreWithFault(bool acrossVolumes, const Fault& fault, std::size_t number) {
    World world;
    world.keeping = false;
    OrdovanTrashRecord record = world.trashExtras().record.appending(world.trashFiles().record);
    EXPECT_EQ(record.entries.size(), 4U);
    if (acrossVolumes) {
        world.memory.removeTree("/r");
        world.memory.addVolume("/r");
        build(world.memory, "/r", {"sub/b = same"});
        world.contents = world.memory.contents();
    }
    world.set(fault, number);
    const OrdovanTrashReport report = world.restore(record);
    const bool happened = world.fs.faultsDone() > 0;
    world.fs.reset();
    EXPECT_EQ(report.outcomes.size(), 4U);
    EXPECT_EQ(report.record.entries.size() + report.movedCount(), 4U);
    world.expectEveryContent();
    if (fault.lasting == Lasting::forGood) return happened;
    world.expectEachContentOnce();
    for (const OrdovanExecutionOutcome& outcome : report.outcomes) {
        const bool isBack = outcome.status == Status::moved;
        EXPECT_EQ(world.has(outcome.destination), isBack) << outcome.destination << ": " << outcome.message;
        EXPECT_EQ(world.has(outcome.source), !isBack) << outcome.source << ": " << outcome.message;
    }
    EXPECT_EQ(world.restore(report.record).record.entries.size(), 0U);
    std::set<std::string> back, wanted;
    for (const auto& [path, description] : world.files()) back.insert(path);
    for (const auto& [path, description] : world.before) wanted.insert(path);
    EXPECT_EQ(back, wanted);
    return happened;
}

constexpr std::array trashings = {&World::trashExtras, &World::trashFiles};

TEST(TrashFaults, LoseAndDoubleNothingWhenACallFailsWhileTrashing) {
    for (const Moment moment : {Moment::beforeEffect, Moment::afterEffect}) {
        for (const int error : errors) {
            const Fault fault{std::nullopt, error, moment, Lasting::once};
            for (const auto run : trashings) ASSERT_GE(forEachCall(trashWithFault, run, fault), 10U);
        }
    }
}

TEST(TrashFaults, LoseAndDoubleNothingWhenACallAndAllLaterOnesFailWhileTrashing) {
    for (const Moment moment : {Moment::beforeEffect, Moment::afterEffect}) {
        for (const int error : {EIO, EROFS, ENOENT, EEXIST}) {
            const Fault fault{std::nullopt, error, moment, Lasting::forGood};
            for (const auto run : trashings) ASSERT_GE(forEachCall(trashWithFault, run, fault), 6U);
        }
    }
}

TEST(TrashFaults, LoseAndDoubleNothingWhenAQuestionIsAnsweredWronglyWhileTrashing) {
    std::size_t wrong = 0;
    for (const auto run : trashings) {
        for (const Operation question : {Operation::isRegularFile, Operation::isSymlink}) {
            wrong += forEachCall(trashWithFault, run, {question, 0, Moment::beforeEffect, Lasting::once});
        }
    }
    EXPECT_GT(wrong, 15U);
}

TEST(TrashFaults, LoseAndDoubleNothingWhenTheTrashClaimsWhatItDidNot) {
    for (const auto run : trashings) {
        EXPECT_EQ(forEachCall(trashWithFault, run, {Operation::trash, 0, Moment::insteadOfEffect, Lasting::once}), 2U);
    }
}

TEST(TrashFaults, KeepACopyOutsideTheTrashWhenAnythingGoesWrongTwice) {
    for (std::size_t first = 1; first <= 30; ++first) {
        for (std::size_t second = first + 1; second <= first + 12; ++second) {
            for (const Moment moment : {Moment::beforeEffect, Moment::afterEffect}) {
                SCOPED_TRACE("calls " + std::to_string(first) + " and " + std::to_string(second));
                World world;
                world.fs.failCall(first, EIO, moment);
                world.fs.failCall(second, EIO, moment);
                (void)world.trashExtras();
                world.expectEachContentOnce();
                world.expectNoOrphans();
                if (HasFailure()) return;
            }
        }
    }
}

TEST(TrashFaults, KeepACopyOutsideTheTrashWhenTheKeptOneVanishesAtAnyCall) {
    for (std::size_t number = 1;; ++number) {
        SCOPED_TRACE("the kept copy vanishes before call " + std::to_string(number));
        World world;
        world.keeping = false;
        bool vanished = false;
        world.fs.setBeforeCall([&](const auto& call) {
            if (call.number != number) return;
            world.memory.removeTree("/r/sub/b");
            vanished = true;
        });
        const OrdovanTrashReport report = world.trashExtras();
        if (!vanished) {
            EXPECT_GT(number, 20U);
            EXPECT_EQ(report.movedCount(), 2U);
            return;
        }
        // What was trashed before is recorded, and the next extra stays; the last one is put back at the latest.
        const bool someoneLeft = world.has(Url::file("/r/a")) || world.has(Url::file("/r/sub/deep/c"));
        EXPECT_TRUE(someoneLeft || report.movedCount() == 2);
        EXPECT_EQ(world.restore(report.record).movedCount(), report.movedCount());
        EXPECT_TRUE(world.has(Url::file("/r/a")) && world.has(Url::file("/r/sub/deep/c")));
    }
}

class RestoreFaults : public ::testing::TestWithParam<bool> {};

TEST_P(RestoreFaults, LoseAndDoubleNothingWhenACallFails) {
    for (const Moment moment : {Moment::beforeEffect, Moment::afterEffect}) {
        for (const int error : errors) {
            const Fault fault{std::nullopt, error, moment, Lasting::once};
            ASSERT_GE(forEachCall(restoreWithFault, GetParam(), fault), 16U);
        }
    }
}

TEST_P(RestoreFaults, LoseNothingWhenACallAndAllLaterOnesFail) {
    for (const Moment moment : {Moment::beforeEffect, Moment::afterEffect}) {
        for (const int error : {EIO, EROFS, ENOENT, EEXIST}) {
            const Fault fault{std::nullopt, error, moment, Lasting::forGood};
            ASSERT_GE(forEachCall(restoreWithFault, GetParam(), fault), 16U);
        }
    }
}

TEST_P(RestoreFaults, LoseAndDoubleNothingWhenAQuestionIsAnsweredWrongly) {
    for (const Operation question :
         {Operation::exists, Operation::isRegularFile, Operation::isSymlink, Operation::sameVolume}) {
        ASSERT_GT(forEachCall(restoreWithFault, GetParam(), {question, 0, Moment::beforeEffect, Lasting::once}), 2U);
    }
}

TEST_P(RestoreFaults, LoseAndDoubleNothingWhenAVolumeClaimsWhatItDidNot) {
    for (const Operation claim : {Operation::createDirectory, Operation::move, Operation::copy, Operation::remove}) {
        const bool isCalled = GetParam() || claim == Operation::createDirectory || claim == Operation::move;
        const Fault lie{claim, 0, Moment::insteadOfEffect, Lasting::once};
        EXPECT_EQ(forEachCall(restoreWithFault, GetParam(), lie) > 0, isCalled);
    }
}

INSTANTIATE_TEST_SUITE_P(WithinAVolume, RestoreFaults, ::testing::Values(false));
INSTANTIATE_TEST_SUITE_P(AcrossVolumes, RestoreFaults, ::testing::Values(true));

}  // namespace
