// How an original goes once its copy is in place, on a disk with programs that do something at the last instant.

#include "OrdovanCore/Executor.h"
#include "OrdovanCore/RecordedFileSystem.h"
#include "tests/support/RunFixture.h"
#include "tests/support/SecondVolume.h"
#include "tests/support/Writers.h"

#include <gtest/gtest.h>

#include <sys/syscall.h>
#include <unistd.h>

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

using ordovan::Descriptor;
using ordovan::RecordedFileSystem;
using ordovan::test::SecondVolume;

namespace {

/// What another program does right before the next file is removed.
std::function<void()> beforeUnlink;

}  // namespace

extern "C" int unlinkat(int folder, const char* name, int flags) noexcept {
    if (beforeUnlink) std::exchange(beforeUnlink, nullptr)();
    return static_cast<int>(::syscall(SYS_unlinkat, folder, name, flags));
}

namespace {

class NoNotes final : public ordovan::RunNotes {
public:
    OrdovanResult<void> append(std::string_view) override { return {}; }
    OrdovanResult<void> sync() override { return {}; }
};

/// The file "a" of the run's folder, which goes to another volume.
class RecordedDisk : public ordovan::test::RunFixture {
protected:
    void SetUp() override {
        if (!SecondVolume::available()) GTEST_SKIP() << SecondVolume::unavailable;
        other.emplace();
        write("a", "content");
    }
    void TearDown() override { beforeUnlink = nullptr; }

    /// Organizes the file; what is said of it.
    std::string organize() {
        OrdovanRunIntent intent;
        intent.root = t.url("root");
        intent.items.push_back({.source = at("a").sharedPath(),
                                .destination = other->url("a").sharedPath(),
                                .identity = {},
                                .contentHash = {}});
        NoNotes notes;
        RecordedFileSystem recorded(fs, intent, notes, &fs);
        OrdovanFileProposal proposal;
        proposal.source = at("a");
        proposal.destination = other->url("a");
        const auto report = OrdovanExecutor::apply({{proposal}}, intent.root, other->root().url(), recorded, 1.0);
        leaves = recorded.leavesSomething();
        return report.outcomes.at(0).message;
    }
    /// Does something right before the original is renamed to its hidden name: the second rename, behind the copy's.
    static void beforeHiding(std::function<void()> action) {
        beforeRename = [action = std::move(action)] { beforeRename = action; };
    }

    static constexpr const char* changed = "Copy verification failed; source kept, copy removed.";
    static constexpr const char* moved = "Copied, verified and moved.";
    std::optional<SecondVolume> other;
    bool leaves = false;
};

using Entering = ordovan::ConfinedFolders::Entering;
INSTANTIATE_TEST_SUITE_P(BothWays, RecordedDisk, testing::Values(Entering::atOnce, Entering::stepByStep),
                         [](const auto& way) { return way.param == Entering::atOnce ? "AtOnce" : "StepByStep"; });

TEST_P(RecordedDisk, LosesAnOriginalThatStaysAsItIs) {
    EXPECT_EQ(organize(), moved);
    EXPECT_EQ(t.count("root"), 0U);
    EXPECT_EQ(other->root().read("a"), "content");
    EXPECT_EQ(other->root().count(), 1U);
    EXPECT_FALSE(leaves);
}

TEST_P(RecordedDisk, KeepsAnOriginalThatIsOpenedForWritingBeforeItIsHidden) {
    if (!ordovan::test::hasLeases(t.path())) GTEST_SKIP() << ordovan::test::withoutLeases;
    Descriptor writer;
    beforeHiding([&] { writer = Descriptor::open(t.path("root/a").c_str(), O_WRONLY); });
    EXPECT_EQ(organize(), changed);
    ASSERT_EQ(::write(writer.get(), "CON", 3), 3);
    EXPECT_EQ(read("a"), "CONtent");
    EXPECT_EQ(t.count("root"), 1U);
    EXPECT_EQ(other->root().count(), 0U);
    EXPECT_FALSE(leaves);
}

TEST_P(RecordedDisk, KeepsAnOriginalThatIsWrittenToBeforeItIsHidden) {
    beforeHiding([&] { write("a", "CONTENT"); });
    EXPECT_EQ(organize(), changed);
    EXPECT_EQ(read("a"), "CONTENT");
    EXPECT_EQ(t.count("root"), 1U);
    EXPECT_EQ(other->root().count(), 0U);
}

TEST_P(RecordedDisk, KeepsAFileThatIsSavedInPlaceOfTheOriginalAtTheLastInstant) {
    beforeUnlink = [&] { replace("a", "new"); };
    EXPECT_EQ(organize(), moved);
    EXPECT_EQ(read("a"), "new");
    EXPECT_EQ(t.count("root"), 1U);
    EXPECT_EQ(other->root().read("a"), "content");
}

TEST_P(RecordedDisk, KeepsAFileThatIsSavedInPlaceOfTheOriginalBeforeItIsHidden) {
    beforeHiding([&] { replace("a", "new"); });
    EXPECT_EQ(organize(), changed);
    EXPECT_EQ(read("a"), "new");
    EXPECT_EQ(t.count("root"), 1U);
}

TEST_P(RecordedDisk, KeepsAnOriginalWhoseCopyGoesBeforeItIsHidden) {
    beforeHiding([&] { ASSERT_EQ(::unlink(other->path("a").c_str()), 0); });
    EXPECT_EQ(organize(),
              "Copied and verified, but the original could not be removed; copy discarded to avoid a duplicate.");
    EXPECT_EQ(read("a"), "content");
    EXPECT_EQ(t.count("root"), 1U);
}

}  // namespace
