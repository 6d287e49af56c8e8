// A run across volumes that comes to its end and yet has to leave something behind: the next preview puts it right.

#include "tests/support/QtTestMain.h"
#include "tests/support/TidyWorld.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

using ordovan::test::TidyWorld;
using ordovan::testing::FaultyFileSystem;
using ordovan::testing::Operation;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

constexpr const char* moved = "Copied, verified and moved.";
constexpr const char* stays =
    "Copied and verified, but the original could not be removed; copy discarded to avoid a duplicate.";

/// A folder whose output folder is another volume.
class TidyLeftovers : public TidyWorld {
public:
    TidyLeftovers() {
        tree({"x.pdf = one"});
        memory.addVolume("/r/ordovan+");
        model = previewed({.repreviewsAfterRuns = false});
        fs.reset();
    }
    /// Organizes the file; what is said of it.
    std::string organize() {
        model->organize();
        tasks.finish();
        return messages(*model).at(0);
    }
    /// The program is started anew and previews the folder.
    void start() {
        fs.reset();
        fs.setBeforeCall({});
        model = previewed({.repreviewsAfterRuns = false});
    }
    [[nodiscard]] bool hasRunRecord() const {
        return memory.item(locations.runRecord(Url::file("/r")).path()).has_value();
    }
    [[nodiscard]] std::vector<std::string> hidden() const {
        std::vector<std::string> found;
        for (const auto& [path, what] : memory.snapshot()) {
            if (OrdovanPartialName::isPartial(path)) found.push_back(memory.read("/" + path).value_or("nothing"));
        }
        return found;
    }

    static constexpr const char* from = "/r/x.pdf";
    static constexpr const char* to = "/r/ordovan+/Documents/x.pdf";
    static constexpr std::size_t back = 3;  // the rename that gives an original its name back
    std::unique_ptr<TidyViewModel> model;
};

/// The same, once for each call at which the program ends.
struct Killable : TidyLeftovers {
    struct Killed {};
    void TestBody() override {}

    /// Organizes, and ends the program before or after the n-th call of the disk. False when there are fewer.
    bool isKilledAt(std::size_t number, bool before) {
        std::size_t count = 0;
        const auto onCall = [&](const FaultyFileSystem::Call&) {
            if (++count == number) throw Killed();
        };
        before ? fs.setBeforeCall(onCall) : fs.setAfterCall(onCall);
        bool isKilled = false;
        try {
            organize();
        } catch (const Killed&) {
            isKilled = true;
        }
        fs.setAfterCall({});
        return isKilled;
    }
    void expectOnlyTheOriginal() {
        EXPECT_EQ(memory.read(from), "one");
        EXPECT_FALSE(memory.item(to));
        EXPECT_THAT(hidden(), IsEmpty());
        EXPECT_FALSE(hasRunRecord());
    }
};

}  // namespace

TEST_F(TidyLeftovers, OfAProgramThatEndsWhileItTakesAMoveBackArePutRight) {
    for (const bool before : {true, false}) {
        for (std::size_t number = 1;; ++number) {
            SCOPED_TRACE("ended at call " + std::to_string(number));
            Killable world;
            world.fs.failCall(Operation::remove, 1, EACCES);  // the original's: it gets its name back, the copy goes
            if (!world.isKilledAt(number, before)) {
                EXPECT_GT(number, 30U);
                world.expectOnlyTheOriginal();
                break;
            }
            world.start();
            world.expectOnlyTheOriginal();
            if (HasFailure()) return;
        }
    }
}

TEST_F(TidyLeftovers, AreNoneWhenAllGoesWell) {
    EXPECT_EQ(organize(), moved);
    EXPECT_FALSE(hasRunRecord());
    EXPECT_THAT(hidden(), IsEmpty());
}

TEST_F(TidyLeftovers, OfAnOriginalThatStayedHiddenArePutRight) {
    fs.failCall(Operation::remove, 1, EROFS);
    fs.failCall(Operation::move, back, EROFS);
    EXPECT_EQ(organize(), stays);
    EXPECT_EQ(memory.read(to), "one");
    EXPECT_THAT(hidden(), ElementsAre("one"));
    EXPECT_TRUE(hasRunRecord());
    start();
    EXPECT_TRUE(model->interruptedRun());
    EXPECT_EQ(memory.read(from), "one");
    EXPECT_FALSE(memory.item(to));
    EXPECT_THAT(hidden(), IsEmpty());
    EXPECT_FALSE(hasRunRecord());
}

TEST_F(TidyLeftovers, OfACopyThatCouldNotBeTakenAwayArePutRight) {
    fs.failCall(Operation::remove, 1, EACCES, FaultyFileSystem::Moment::beforeEffect,
                FaultyFileSystem::Lasting::forGood);
    EXPECT_EQ(organize(), stays);
    EXPECT_THAT(hidden(), ElementsAre("one"));
    start();
    EXPECT_EQ(memory.read(from), "one");
    EXPECT_THAT(hidden(), IsEmpty());
    EXPECT_FALSE(hasRunRecord());
}

TEST_F(TidyLeftovers, OfAnOriginalWhoseNameIsTakenAreToldOf) {
    fs.setBeforeCall([this](const FaultyFileSystem::Call& call) {
        if (call.operation != Operation::contentHash || !call.url.path().starts_with("/r/.x")) return;
        memory.write(call.url.path(), "two");
        memory.write(from, "new");
    });
    EXPECT_EQ(organize(), stays);
    start();
    ASSERT_TRUE(model->interruptedRun());
    EXPECT_EQ(model->interruptedRun()->unsettled, 1U);
    EXPECT_THAT(model->interruptedRun()->outcomes.at(0).message,
                ::testing::HasSubstr(" lies at /r/.x.pdf.ordovan-partial-"));
    EXPECT_EQ(memory.read(from), "new");
    EXPECT_EQ(memory.read(to), "one");
    EXPECT_THAT(hidden(), ElementsAre("two"));
}

TEST_F(TidyLeftovers, AreNoneOfARunWithoutARecordEither) {
    runStorage.failAll("write", ENOSPC);
    fs.setBeforeCall([this](const FaultyFileSystem::Call& call) {
        if (call.operation == Operation::remove) memory.write(from, "new");  // saved again at the last instant
    });
    EXPECT_EQ(organize(), moved);
    EXPECT_EQ(memory.read(from), "new");
    EXPECT_EQ(memory.read(to), "one");
    EXPECT_THAT(hidden(), IsEmpty());
    EXPECT_FALSE(hasRunRecord());
}
