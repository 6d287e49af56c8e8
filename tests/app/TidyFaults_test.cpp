#include "tests/support/QtTestMain.h"
#include "tests/support/TidyWorld.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::IsSupersetOf;

namespace {

constexpr const char* old = "old.pdf -> ordovan+/Documents/old.pdf";
constexpr const char* x = "x.pdf -> ordovan+/Documents/x.pdf";
constexpr const char* y = "y.jpg -> ordovan+/Images/y.jpg";
constexpr const char* notWritten =
    "Files were organized, but the undo record could not be saved to disk. Undo is available until you quit.";
constexpr const char* notSetAside =
    "Files were organized, but the existing undo record could not be read or set aside, so this run's undo record was "
    "not saved. Undo is available until you quit.";
constexpr const char* notUpdated =
    "The undo record could not be updated. Files that were restored may be listed again; restoring them again is "
    "refused safely.";

/// A folder in which an earlier run has organized old.pdf, and x.pdf and y.jpg have come since.
class World : public ordovan::test::TidyWorld {
public:
    World() {
        tree({"old.pdf = 0"});
        auto earlier = previewed();
        earlier->organize();
        tasks.finish();
        memory.write("/r/x.pdf", "1");
        memory.write("/r/y.jpg", "2");
        model = previewed({.repreviewsAfterRuns = false});
        records.observer = [this](const std::string& call) { calls.push_back(call); };
    }
    void TestBody() override {}

    void organize() {
        model->organize();
        tasks.finish();
    }
    void undo() {
        model->undo();
        tasks.finish();
    }
    /// Runs `run` with its n-th call of the record storage failing; false when it makes fewer calls.
    bool failing(std::size_t number, void (World::*run)()) {
        const std::size_t before = records.calls();
        records.failCall(number, EIO);
        (this->*run)();
        return records.calls() - before >= number;
    }
    /// The contents of the user's files, each as often as it lies somewhere in the folder.
    [[nodiscard]] std::vector<std::string> contents() const {
        std::vector<std::string> found;
        for (const auto& [path, description] : memory.snapshot("/r")) {
            if (description.starts_with("file")) found.push_back(description.substr(description.find(" = ") + 3));
        }
        std::ranges::sort(found);
        return found;
    }

    std::unique_ptr<TidyViewModel> model;
    std::vector<std::string> calls;
};

const std::vector<std::string> everyFileOnce = {"0", "1", "2"};

/// The warning after a run during which one call failed: about the record, or else about the history.
std::optional<std::string> warningAfter(const std::string& call, bool recordFailed, const char* warning) {
    if (recordFailed) return warning;
    if (call != "write /records/history.json") return std::nullopt;
    return "This run couldn't be added to the history on disk. It is listed until you quit.";
}

TEST(TidyFaults, OfAnyRecordCallWhileOrganizingLoseNothing) {
    std::size_t number = 1;
    for (;; ++number) {
        World world;
        if (!world.failing(number, &World::organize)) break;
        SCOPED_TRACE("call " + std::to_string(number) + ": " + world.calls.at(number - 1));
        EXPECT_EQ(world.contents(), everyFileOnce);
        EXPECT_EQ(world.model->lastReport()->movedCount(), 2u);
        EXPECT_THAT(World::recoverable(*world.model), ElementsAre(old, x, y));
        const bool writeFailed = world.calls.at(number - 1) == "write " + world.journalPath();
        EXPECT_EQ(world.model->journalWarning(), warningAfter(world.calls.at(number - 1), writeFailed, notWritten));
        ASSERT_TRUE(world.storedJournal());
        EXPECT_THAT(World::lines(*world.storedJournal()), Contains(old));
        EXPECT_EQ(world.model->history().records.front().kind, OrdovanRunRecord::Kind::organize);

        world.undo();
        EXPECT_EQ(world.model->lastReport()->movedCount(), 3u);
        EXPECT_EQ(world.contents(), everyFileOnce);
        EXPECT_TRUE(world.memory.exists(Url::file("/r/x.pdf")));
        EXPECT_FALSE(world.storedJournal());
        const auto& records = world.history.load().records;
        ASSERT_GE(records.size(), 2u);
        EXPECT_EQ(records[0].kind, OrdovanRunRecord::Kind::undo);
        EXPECT_EQ(records[1].kind, OrdovanRunRecord::Kind::organize);
    }
    EXPECT_GT(number, 4u);  // read and write of the journal and of the history
}

TEST(TidyFaults, OfAnyRecordCallWhileUndoingLoseNothing) {
    std::size_t number = 1;
    for (;; ++number) {
        World world;
        world.organize();
        world.memory.write("/r/x.pdf", "3");  // in the way: one entry remains
        world.calls.clear();
        if (!world.failing(number, &World::undo)) break;
        SCOPED_TRACE("call " + std::to_string(number) + ": " + world.calls.at(number - 1));
        EXPECT_EQ(world.contents(), (std::vector<std::string>{"0", "1", "2", "3"}));
        EXPECT_EQ(world.model->lastReport()->movedCount(), 2u);
        EXPECT_THAT(World::recoverable(*world.model), ElementsAre(x));
        const bool writeFailed = world.calls.at(number - 1) == "write " + world.journalPath();
        EXPECT_EQ(world.model->journalWarning(), warningAfter(world.calls.at(number - 1), writeFailed, notUpdated));
        EXPECT_THAT(World::lines(*world.storedJournal()), Contains(x));

        world.memory.removeTree("/r/x.pdf");
        world.undo();
        EXPECT_EQ(world.contents(), everyFileOnce);
        EXPECT_TRUE(world.memory.exists(Url::file("/r/x.pdf")));
        // A record that could not be updated was brought up to date by the run after.
        EXPECT_THAT(World::recoverable(*world.model), IsEmpty());
        EXPECT_FALSE(world.storedJournal());
    }
    EXPECT_GT(number, 4u);
}

TEST(TidyFaults, OfEveryRecordCallWhileOrganizingLeaveUndoInMemory) {
    const std::vector<std::pair<const char*, std::optional<std::string>>> kinds = {
        {"read", std::nullopt}, {"write", notWritten}, {"setAside", notSetAside}};
    for (const auto& [kind, warning] : kinds) {
        World world;
        world.memory.write(world.journalPath(), "garbage");
        world.records.failAll(kind, EIO);
        world.organize();
        EXPECT_EQ(world.model->journalWarning(), warning) << kind;
        EXPECT_THAT(World::recoverable(*world.model), IsSupersetOf({x, y})) << kind;
        world.undo();
        EXPECT_TRUE(world.memory.exists(Url::file("/r/x.pdf"))) << kind;
        EXPECT_TRUE(world.memory.exists(Url::file("/r/y.jpg"))) << kind;
    }
}

}  // namespace
