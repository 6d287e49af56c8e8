#include "tests/support/QtTestMain.h"
#include "tests/support/TidyWorld.h"
#include "tests/support/TrashSentences.h"

#include <gmock/gmock.h>

#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <vector>

using ordovan::test::trashNotRecorded;
using ordovan::test::trashRecordNotUpdated;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::IsSupersetOf;

namespace {

/// A folder from which an earlier run has trashed old, and in which the duplicates a and b were found.
class World : public ordovan::test::TidyWorld {
public:
    World() {
        tree({"a = 1", "b = 1", "old = 0"});
        files = memory.contents();
        auto earlier = previewed();
        earlier->trashBigFiles({{Url::file("/r/old"), 1}});
        tasks.finish();
        model = previewed({.repreviewsAfterRuns = false});
        model->findDuplicates();
        tasks.finish();
        records.observer = [this](const std::string& call) { calls.push_back(call); };
    }
    void TestBody() override {}

    void trash() {
        model->trashExtras();
        tasks.finish();
    }
    void restore() {
        model->restore();
        tasks.finish();
    }
    /// Runs `run` with its n-th call of the record storage failing; false when it makes fewer calls.
    bool failing(std::size_t number, void (World::*run)()) {
        calls.clear();
        const std::size_t before = records.calls();
        records.failCall(number, EIO);
        (this->*run)();
        return records.calls() - before >= number;
    }
    /// Whether the user's files are all there, each once, wherever they lie.
    [[nodiscard]] bool nothingLost() const {
        std::multiset<std::string> left = memory.contents();
        std::erase_if(left, [this](const std::string& content) { return !files.contains(content); });
        return left == files;
    }
    std::vector<std::string> restorable() { return originals(*model->trashRecord()); }

    std::multiset<std::string> files;
    std::unique_ptr<TidyViewModel> model;
    std::vector<std::string> calls;
};

/// The warning after a run during which one call failed: about the record, or else about the history.
std::optional<std::string> warningAfter(const std::string& call, bool recordFailed, const char* warning) {
    if (recordFailed) return warning;
    if (call != "write /records/history.json") return std::nullopt;
    return "This run couldn't be added to the history on disk. It is listed until you quit.";
}

TEST(TidyTrashFaults, OfAnyRecordCallWhileTrashingLoseNothing) {
    std::size_t number = 1;
    for (;; ++number) {
        World world;
        if (!world.failing(number, &World::trash)) break;
        const std::string call = world.calls.at(number - 1);
        SCOPED_TRACE("call " + std::to_string(number) + ": " + call);
        EXPECT_TRUE(world.nothingLost());
        EXPECT_THAT(world.restorable(), ElementsAre("old", "b"));
        const bool writeFailed = call == "write /records/trash-record.json";
        EXPECT_EQ(world.model->journalWarning(), warningAfter(call, writeFailed, trashNotRecorded));
        ASSERT_TRUE(world.storedTrash());
        EXPECT_THAT(World::originals(*world.storedTrash()), Contains("old"));
        EXPECT_EQ(world.model->history().records.front().kind, OrdovanRunRecord::Kind::trash);

        world.restore();
        EXPECT_EQ(world.model->lastTrashReport()->movedCount(), 2u);
        EXPECT_FALSE(world.model->journalWarning());
        EXPECT_EQ(world.memory.read("/r/b"), "1");
        EXPECT_EQ(world.memory.read("/r/old"), "0");
        EXPECT_TRUE(world.nothingLost());
        EXPECT_TRUE(world.storedTrash()->entries.empty());
        EXPECT_EQ(world.history.load().records.at(1).kind, OrdovanRunRecord::Kind::trash);
    }
    EXPECT_GT(number, 4u);  // read and write of the record and of the history
}

TEST(TidyTrashFaults, OfAnyRecordCallWhileRestoringLoseNothing) {
    std::size_t number = 1;
    for (;; ++number) {
        World world;
        world.trash();
        world.memory.write("/r/b", "1");  // in the way: one entry remains
        world.files.insert(world.memory.contentHash(Url::file("/r/b")).value());
        if (!world.failing(number, &World::restore)) break;
        const std::string call = world.calls.at(number - 1);
        SCOPED_TRACE("call " + std::to_string(number) + ": " + call);
        EXPECT_TRUE(world.nothingLost());
        EXPECT_EQ(world.memory.read("/r/old"), "0");
        EXPECT_THAT(world.restorable(), ElementsAre("b"));
        const bool writeFailed = call == "write /records/trash-record.json";
        EXPECT_EQ(world.model->journalWarning(), warningAfter(call, writeFailed, trashRecordNotUpdated));
        ASSERT_TRUE(world.storedTrash());
        EXPECT_THAT(World::originals(*world.storedTrash()), Contains("b"));

        world.memory.removeTree("/r/b");
        world.restore();
        EXPECT_EQ(world.memory.read("/r/b"), "1");
        // A record that could not be updated was brought up to date by the run after.
        EXPECT_THAT(world.restorable(), IsEmpty());
        EXPECT_EQ(*world.storedTrash(), *world.model->trashRecord());
    }
    EXPECT_GT(number, 4u);
}

TEST(TidyTrashFaults, OfEveryRecordCallWhileTrashingLeaveRestoringInMemory) {
    for (const auto& [kind, warning] : {std::pair<const char*, std::optional<std::string>>("read", std::nullopt),
                                        {"write", trashNotRecorded},
                                        {"setAside", trashNotRecorded}}) {
        SCOPED_TRACE(kind);
        World world;
        world.memory.write("/records/trash-record.json", "garbage");
        world.records.failAll(kind, EIO);
        world.trash();
        EXPECT_EQ(world.model->journalWarning(), warning);
        EXPECT_THAT(world.restorable(), IsSupersetOf({"old", "b"}));
        world.restore();
        EXPECT_EQ(world.model->lastTrashReport()->movedCount(), 2u);
        EXPECT_EQ(world.memory.read("/r/b"), "1");
        EXPECT_TRUE(world.nothingLost());
    }
}

/// A run whose file operations fail, one after the other: what is in the Trash is in the record, and nowhere else.
TEST(TidyTrashFaults, OfAnyFileOperationLeaveARecordOfWhatLiesInTheTrash) {
    std::size_t number = 1;
    for (;; ++number) {
        World world;
        world.fs.reset();
        world.fs.failCall(number, EIO);
        world.trash();
        if (world.fs.faultsDone() == 0) break;
        SCOPED_TRACE("call " + std::to_string(number));
        EXPECT_TRUE(world.nothingLost());
        const bool isTrashed = !world.memory.item("/r/b");
        EXPECT_EQ(World::originals(*world.storedTrash()),
                  isTrashed ? std::vector<std::string>({"old", "b"}) : std::vector<std::string>({"old"}));
        world.fs.reset();
        world.restore();
        EXPECT_EQ(world.memory.read("/r/a"), "1");
        EXPECT_EQ(world.memory.read("/r/b"), "1");
        EXPECT_EQ(world.memory.read("/r/old"), "0");
    }
    EXPECT_GT(number, 5u);
}

}  // namespace
