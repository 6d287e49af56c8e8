// The original of a file that a recorded run carries to another volume.

#include "tests/support/RecordedRun.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

using ordovan::testing::digestOf;
using ordovan::testing::FaultyFileSystem;
using ordovan::testing::Operation;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

/// A file that is carried to another volume, up to the removal of its original.
class RecordedOriginal : public ordovan::test::RecordedRun {
protected:
    RecordedOriginal() {
        memory.addVolume("/r/ordovan+");
        tree({"a.pdf = one"});
        intend("/r/a.pdf", "/r/ordovan+/a.pdf");
        fs();
    }
    /// Whether the file exists once, and where; no hidden name is left.
    void expectOnlyAt(std::string_view path, std::string_view content = "one") {
        const char* const other = path == from ? to : from;
        EXPECT_EQ(memory.read(path), content);
        EXPECT_FALSE(memory.item(other));
        EXPECT_THAT(hidden(), IsEmpty());
        EXPECT_FALSE(fs().leavesSomething());
    }
    /// What lies under hidden names.
    [[nodiscard]] std::vector<std::string> hidden() const {
        std::vector<std::string> contents;
        for (const auto& [path, what] : memory.snapshot()) {
            if (OrdovanPartialName::isPartial(path)) contents.push_back(memory.read("/" + path).value_or("nothing"));
        }
        return contents;
    }
    /// Organizes the one file; what is said of it.
    std::string message() {
        const auto report = organize();
        EXPECT_EQ(report.journal.entries.size(), report.movedCount());
        return report.outcomes.at(0).message;
    }
    /// Does something before or after the original is hashed under its hidden name, with that.
    template <class Action>
    void whenHashedAside(const Action& action) {
        disk.setBeforeCall([action](const FaultyFileSystem::Call& call) {
            const bool isAside = OrdovanPartialName::isPartial(call.url.path()) && call.url.path().starts_with("/r/.a");
            if (call.operation == Operation::contentHash && isAside) action(call.url.path());
        });
    }
    /// Does something before the n-th rename.
    template <class Action>
    void beforeMove(std::size_t number, const Action& action) {
        disk.setBeforeCall([this, number, action](const FaultyFileSystem::Call& call) {
            if (call.operation == Operation::move && disk.callCount(Operation::move) == number) action();
        });
    }

    static constexpr const char* from = "/r/a.pdf";
    static constexpr const char* to = "/r/ordovan+/a.pdf";
    static constexpr const char* changed = "Copy verification failed; source kept, copy removed.";
    static constexpr const char* stays =
        "Copied and verified, but the original could not be removed; copy discarded to avoid a duplicate.";
    static constexpr std::size_t toAside = 2;  // its number among the renames
    static constexpr std::size_t back = 3;
};

TEST_F(RecordedOriginal, IsRemovedUnderAHiddenNameSoThatNothingElseIs) {
    disk.setBeforeCall([this](const FaultyFileSystem::Call& call) {
        if (call.operation == Operation::remove) memory.write("/r/a.pdf", "new");
    });
    EXPECT_EQ(organize().movedCount(), 1U);
    EXPECT_EQ(memory.read("/r/a.pdf"), "new");
    memory.removeTree("/r/a.pdf");
    expectOnlyAt("/r/ordovan+/a.pdf");
    EXPECT_EQ(disk.callCount(Operation::contentHash), 3U) << "before it is copied, the copy, and before it goes";
}

TEST_F(RecordedOriginal, StaysWhenItIsWrittenToBeforeItIsHidden) {
    beforeMove(toAside, [this] { memory.write(from, "two"); });  // the same size, in the same file
    EXPECT_EQ(message(), changed);
    expectOnlyAt(from, "two");
}

TEST_F(RecordedOriginal, StaysWhenItIsWrittenToUnderItsHiddenName) {
    whenHashedAside([this](std::string_view aside) { memory.write(aside, "grown"); });
    EXPECT_EQ(message(), changed);
    expectOnlyAt(from, "grown");
}

TEST_F(RecordedOriginal, StaysWhenItCanNotBeReadAnyMore) {
    disk.failCall(Operation::contentHash, 3, EIO);
    EXPECT_EQ(message(), changed);
    expectOnlyAt(from);
}

TEST_F(RecordedOriginal, StaysWhenItsCopyGoesWhileItIsHashed) {
    whenHashedAside([this](std::string_view) { memory.removeTree(to); });
    EXPECT_EQ(message(), stays);
    EXPECT_EQ(memory.read(from), "one");
    EXPECT_THAT(hidden(), IsEmpty());
}

TEST_F(RecordedOriginal, StaysWhenItsCopyIsReplacedWhileItIsHashed) {
    whenHashedAside([this](std::string_view) { memory.replace(to, "new"); });
    EXPECT_EQ(message(), stays);
    EXPECT_EQ(memory.read(from), "one");
    EXPECT_EQ(memory.read(to), "new");
    EXPECT_THAT(hidden(), IsEmpty());
}

TEST_F(RecordedOriginal, StaysWithItsCopyWhenItsVolumeTurnsReadOnly) {
    disk.failCall(Operation::remove, 1, EROFS);
    disk.failCall(Operation::move, back, EROFS);
    EXPECT_EQ(message(), stays);
    EXPECT_EQ(memory.read(to), "one");
    EXPECT_THAT(hidden(), ElementsAre("one"));
    EXPECT_TRUE(fs().leavesSomething());
}

TEST_F(RecordedOriginal, StaysWithItsCopyWhenItChangedAndItsNameIsTaken) {
    whenHashedAside([this](std::string_view aside) {
        memory.write(aside, "two");
        memory.write(from, "new");
    });
    EXPECT_EQ(message(), stays);
    EXPECT_EQ(memory.read(from), "new");
    EXPECT_EQ(memory.read(to), "one");
    EXPECT_THAT(hidden(), ElementsAre("two"));
    EXPECT_TRUE(fs().leavesSomething());
}

TEST_F(RecordedOriginal, GetsItsNameBackThoughTheReplyToThatIsLost) {
    disk.failCall(Operation::remove, 1, EACCES);
    disk.failCall(Operation::move, back, EIO, FaultyFileSystem::Moment::afterEffect);
    EXPECT_EQ(message(), stays);
    expectOnlyAt(from);
}

TEST_F(RecordedOriginal, GetsItsNameBackWhenItIsNotWhatWasHashedLast) {
    disk.failCall(Operation::remove, 1, EBUSY);
    disk.failCall(Operation::move, back, EBUSY);  // as the disk of a run says of a file that it has hashed
    EXPECT_EQ(message(), changed);
    expectOnlyAt(from);
}

TEST_F(RecordedOriginal, CountsAsRemovedThoughTheReplyToThatIsLost) {
    disk.failCall(Operation::remove, 1, EIO, FaultyFileSystem::Moment::afterEffect);
    EXPECT_EQ(message(), "Copied, verified and moved.");
    expectOnlyAt(to);
}

TEST_F(RecordedOriginal, StaysWhenItChangedWhereItCanNotBeRenamed) {
    disk.failCall(Operation::move, toAside, ENOSPC);
    beforeMove(toAside, [this] { memory.write(from, "two"); });
    EXPECT_EQ(message(), changed);
    expectOnlyAt(from, "two");
}

TEST_F(RecordedOriginal, StaysWhereItCanNotBeRenamedForAnyOtherReason) {
    disk.failCall(Operation::move, toAside, EACCES);
    EXPECT_EQ(message(), stays);
    expectOnlyAt(from);
}

TEST_F(RecordedOriginal, StaysWhenItChangedAndTheReplyToItsRenameIsLost) {
    disk.failCall(Operation::move, toAside, EIO, FaultyFileSystem::Moment::afterEffect);
    beforeMove(toAside, [this] { memory.write(from, "two"); });
    EXPECT_EQ(message(), changed);
    expectOnlyAt(from, "two");
}

TEST_F(RecordedOriginal, StaysWithItsCopyWhileItCanNotBeToldWhatBecameOfItsRename) {
    disk.failCall(Operation::move, toAside, EIO, FaultyFileSystem::Moment::afterEffect);
    disk.setAfterCall([this](const FaultyFileSystem::Call& call) {
        if (call.operation != Operation::move || disk.callCount(Operation::move) != toAside) return;
        disk.failCall(Operation::contentHash, 3, EIO, FaultyFileSystem::Moment::beforeEffect);
        const std::size_t next = disk.callCount(Operation::isRegularFile) + 1;
        for (std::size_t i = next; i < next + 3; ++i) disk.failCall(Operation::isRegularFile, i, EIO);
    });
    EXPECT_EQ(message(), stays);
    EXPECT_EQ(memory.read(to), "one");
    EXPECT_THAT(hidden(), ElementsAre("one"));
    EXPECT_TRUE(fs().leavesSomething());
}

TEST_F(RecordedOriginal, GoesFromTheTrashUnderItsOwnNameAndOnlyWhileItsCopyStands) {
    memory.makeDirectory("/r/Trash/files");
    memory.write("/r/Trash/files/a.pdf", "one");
    intent.items[0].source = std::string_view("/r/Trash/files/a.pdf");
    const Url trashed = Url::file("/r/Trash/files/a.pdf"), partial = OrdovanPartialName::beside(Url::file(to));
    ASSERT_TRUE(fs().contentHash(trashed) && fs().fileSize(trashed) && fs().fileIdentity(trashed));
    ASSERT_TRUE(fs().copy(trashed, partial) && fs().fileIdentity(partial) && fs().move(partial, Url::file(to)));
    memory.write(trashed.path(), "two");
    EXPECT_EQ(fs().contentHash(trashed), digestOf("two")) << "it is hashed when that is asked for";
    memory.removeTree(to);
    EXPECT_FALSE(fs().remove(trashed));
    EXPECT_EQ(memory.read(trashed.path()), "two");
    EXPECT_EQ(disk.callCount(Operation::move), 1U) << "it keeps its name";
}

// The copy, when it has to go again.

TEST_F(RecordedOriginal, LeavesAnotherFileThatTakesItsCopysPlaceInARollback) {
    disk.failCall(Operation::remove, 1, EACCES);
    beforeMove(back + 1, [this] { memory.replace(to, "theirs"); });  // after it has got its name back
    EXPECT_EQ(message(), stays);
    EXPECT_EQ(memory.read(from), "one");
    EXPECT_EQ(memory.read(to), "theirs");
    EXPECT_THAT(hidden(), IsEmpty());
}

TEST_F(RecordedOriginal, TellsOfACopyThatCanNotBeTakenAway) {
    disk.failCall(Operation::remove, 1, EACCES, FaultyFileSystem::Moment::beforeEffect,
                  FaultyFileSystem::Lasting::forGood);
    EXPECT_EQ(message(), stays);
    EXPECT_EQ(memory.read(from), "one");
    EXPECT_THAT(hidden(), ElementsAre("one"));
    EXPECT_TRUE(fs().leavesSomething());
}

TEST_F(RecordedOriginal, LosesItsCopyUnderItsNameWhereThatCanNotBeRenamed) {
    disk.failCall(Operation::remove, 1, EACCES);
    disk.failCall(Operation::move, back + 1, ENOSPC);
    EXPECT_EQ(message(), stays);
    expectOnlyAt(from);
}

TEST_F(RecordedOriginal, TellsOfACopyThatCanNotBeRenamedToBeTakenAway) {
    disk.failCall(Operation::remove, 1, EACCES);
    disk.failCall(Operation::move, back + 1, EIO);
    EXPECT_EQ(message(), stays);
    EXPECT_EQ(memory.read(from), "one");
    EXPECT_EQ(memory.read(to), "one");
    EXPECT_THAT(hidden(), IsEmpty());
    EXPECT_TRUE(fs().leavesSomething());
}

TEST_F(RecordedOriginal, KeepsOneNameOfACopyWhoseRenameInStepsFailedWithTwo) {
    disk.failCall(Operation::remove, 1, EACCES);
    disk.failCall(Operation::move, back + 1, EIO);
    std::size_t moves = 0;
    disk.setBeforeCall([&](const FaultyFileSystem::Call& call) {
        if (call.operation != Operation::move || ++moves != back + 1) return;
        memory.hardLink(std::string(call.second.path()), to);
    });
    EXPECT_EQ(message(), stays);
    EXPECT_EQ(memory.read(from), "one");
    EXPECT_EQ(memory.read(to), "one");
    EXPECT_THAT(hidden(), IsEmpty());
    EXPECT_TRUE(fs().leavesSomething());
}

TEST_F(RecordedOriginal, LeavesAnotherFileThatHasThePartialNameOfItsCopy) {
    disk.failCall(Operation::remove, 1, EACCES);
    std::size_t moves = 0;
    disk.setBeforeCall([&](const FaultyFileSystem::Call& call) {
        if (call.operation != Operation::move || ++moves != back + 1) return;
        memory.write(call.second.path(), "theirs");
    });
    EXPECT_EQ(message(), stays);
    EXPECT_EQ(memory.read(from), "one");
    EXPECT_EQ(memory.read(to), "one");
    EXPECT_THAT(hidden(), ElementsAre("theirs"));
    EXPECT_TRUE(fs().leavesSomething());
}

TEST_F(RecordedOriginal, TellsOfAPartialCopyThatCanNotBeTakenAway) {
    disk.lieAboutHash(2);
    disk.failCall(Operation::remove, 1, EROFS);
    EXPECT_EQ(message(), changed);
    EXPECT_THAT(hidden(), ElementsAre("one"));
    EXPECT_TRUE(fs().leavesSomething());
}

TEST_F(RecordedOriginal, LeavesNothingWhenItsCopyFails) {
    disk.failCall(Operation::copy, 1, EROFS);
    disk.failCall(Operation::remove, 1, EROFS);
    EXPECT_EQ(organize().failedCount(), 1U);
    expectOnlyAt(from);
}

TEST_F(RecordedOriginal, LeavesNothingWhenItGoesAwayByItself) {
    disk.setAfterCall([this](const FaultyFileSystem::Call& call) {
        if (call.operation == Operation::copy) memory.removeTree(from);
    });
    EXPECT_EQ(organize().movedCount(), 1U);
    expectOnlyAt(to);
}

TEST_F(RecordedOriginal, IsKnownByItsContentWhereARenameNumbersFilesAnew) {
    disk.setAfterCall([this](const FaultyFileSystem::Call& call) {
        if (call.operation == Operation::move) memory.replace(call.second.path(), "one");
    });
    EXPECT_EQ(message(), "Copied, verified and moved.");
    expectOnlyAt(to);
}

TEST_F(RecordedOriginal, GetsItsNameBackWhenItCanNotBeRemoved) {
    disk.failCall(Operation::remove, 1, EACCES);
    EXPECT_EQ(organize().failedCount(), 1U);
    expectOnlyAt("/r/a.pdf");
}

TEST_F(RecordedOriginal, StaysWhenItChanged) {
    disk.failCall(Operation::move, toAside, EBUSY);
    EXPECT_EQ(organize().failedCount(), 1U);
    expectOnlyAt("/r/a.pdf");
}

TEST_F(RecordedOriginal, IsRemovedWhereItCanNotBeRenamed) {
    disk.failCall(Operation::move, toAside, ENOSPC);
    EXPECT_EQ(organize().movedCount(), 1U);
    expectOnlyAt("/r/ordovan+/a.pdf");
}

TEST_F(RecordedOriginal, IsRemovedThoughTheReplyToItsRenameIsLost) {
    disk.failCall(Operation::move, toAside, EIO, FaultyFileSystem::Moment::afterEffect);
    EXPECT_EQ(organize().movedCount(), 1U);
    expectOnlyAt("/r/ordovan+/a.pdf");
}

TEST_F(RecordedOriginal, LosesASecondNameThatItsRenameInStepsLeft) {
    disk.failCall(Operation::move, toAside, EIO);
    std::size_t moves = 0;
    disk.setBeforeCall([&](const FaultyFileSystem::Call& call) {
        if (call.operation != Operation::move || ++moves != toAside) return;
        memory.hardLink(std::string(call.second.path()), "/r/a.pdf");
    });
    EXPECT_EQ(organize().failedCount(), 1U);
    expectOnlyAt("/r/a.pdf");
}

TEST_F(RecordedOriginal, LeavesAnotherFileThatHasItsHiddenName) {
    disk.setBeforeCall([this](const FaultyFileSystem::Call& call) {
        const bool isHiding = call.operation == Operation::move && call.url == Url::file(from);
        if (isHiding) memory.write(call.second.path(), "theirs");
    });
    EXPECT_EQ(message(), stays);
    EXPECT_EQ(memory.read(from), "one");
    EXPECT_FALSE(memory.item(to));
    EXPECT_THAT(hidden(), ElementsAre("theirs"));
}

}  // namespace
