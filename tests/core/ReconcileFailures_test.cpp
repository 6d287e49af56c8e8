// What can not be looked at or changed after an interruption: nothing is decided then, the user is told, and the next
// time makes it good.

#include "tests/support/ReconcileFixture.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <string_view>
#include <vector>

using ordovan::ReconcilePorts;
using ordovan::TrashedFile;
using ordovan::test::ReconcileFixture;
using ordovan::testing::digestOf;
using ordovan::testing::Operation;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using namespace ordovan::test::interrupted;

namespace {

constexpr const char* notRemoved =
    "What the interrupted run left of this file could not be removed; the file is whole.";

class ReconcileFailures : public ReconcileFixture {
protected:
    ReconcileFailures() {
        tree({"a = one"});
        intend("/r/a", "/r/ordovan+/a");
    }

    /// The ports, but for one place, which can not be looked at.
    ReconcilePorts blindTo(std::string_view place) {
        ReconcilePorts half = ports();
        half.facts = [this, place](const Url& url) -> OrdovanResult<ordovan::FileFacts> {
            if (url.path() == place) return std::unexpected(OrdovanSystemError::posix(EACCES));
            return ordovan::test::factsIn(memory, url);
        };
        return half;
    }

    /// Nothing is moved, removed or recorded, the file is spoken of in this sentence, and the record of the run stays.
    void expectNothingDone(const ReconcilePorts& ports, const char* sentence) {
        const auto before = memory.snapshot();
        const auto found = OrdovanReconciler::reconcile(run, ports);
        EXPECT_THAT(counts(found), ElementsAre(0, 0, 0, 1));
        EXPECT_THAT(sentences(found), ElementsAre(sentence));
        EXPECT_FALSE(found.isComplete);
        EXPECT_THAT(found.journal.entries, IsEmpty());
        EXPECT_THAT(found.trashed.entries, IsEmpty());
        EXPECT_EQ(memory.snapshot(), before);
    }
    void expectNothingDoneWhenFails(Operation operation, const char* sentence, std::size_t number = 1) {
        fs.reset();
        fs.failCall(operation, number, EIO);
        expectNothingDone(ports(), sentence);
        EXPECT_EQ(fs.faultsDone(), 1U);
        fs.reset();
    }
    /// finished, untouched, put right, unsettled, once everything works again
    std::vector<std::size_t> nextTime() { return counts(OrdovanReconciler::reconcile(run, ports())); }
};

// Within a volume.

TEST_F(ReconcileFailures, ASecondNameThatCanNotBeRemovedStaysForTheNextTime) {
    memory.hardLink("/r/ordovan+/a", "/r/a");
    expectNothingDoneWhenFails(Operation::remove, notRemoved);
    EXPECT_THAT(nextTime(), ElementsAre(0, 0, 1, 0));
}

TEST_F(ReconcileFailures, AnEmptyFileThatCanNotBeRemovedStaysForTheNextTime) {
    note(NoteKind::claimed, "one");
    memory.write("/r/ordovan+/a", "");
    memory.setModified("/r/ordovan+/a", 100'000'000'000);
    expectNothingDoneWhenFails(Operation::remove, notRemoved);
    EXPECT_THAT(nextTime(), ElementsAre(0, 0, 1, 0));
}

TEST_F(ReconcileFailures, AFileThatMayBeTheOneButCanNotBeReadIsLeftAsItIs) {
    note(NoteKind::begun, "one");
    memory.replace("/r/a", "two");
    expectNothingDoneWhenFails(Operation::contentHash, notExamined);
    EXPECT_THAT(nextTime(), ElementsAre(0, 1, 0, 0));
}

// Across volumes.

class ReconcileCopyFailures : public ReconcileFailures {
protected:
    ReconcileCopyFailures() {
        memory.removeTree("/r");
        run = {};
        memory.addVolume("/r/ordovan+");
        tree({"a = one"});
        intend("/r/a", "/r/ordovan+/a");
        note(NoteKind::begun, "one", partial, false);
    }
};

TEST_F(ReconcileCopyFailures, APartialCopyThatCanNotBeLookedAtStays) {
    memory.write(partial, "on");
    expectNothingDone(blindTo(partial), notExamined);
    EXPECT_THAT(nextTime(), ElementsAre(0, 0, 1, 0));
}

TEST_F(ReconcileCopyFailures, APartialCopyThatCanNotBeRemovedStays) {
    memory.write(partial, "on");
    expectNothingDoneWhenFails(Operation::remove, notRemoved);
    EXPECT_THAT(nextTime(), ElementsAre(0, 0, 1, 0));
}

TEST_F(ReconcileCopyFailures, APartialCopyOfAFileThatChangedStaysWhileEitherCanNotBeRead) {
    memory.write(partial, "one");
    memory.write("/r/a", "new");
    expectNothingDoneWhenFails(Operation::contentHash, notExamined);
    expectNothingDoneWhenFails(Operation::contentHash, notExamined, 2);
    EXPECT_THAT(nextTime(), ElementsAre(0, 0, 0, 1));
}

TEST_F(ReconcileCopyFailures, APublishedCopyStaysWhileItsPartialNameCanNotBeLookedAt) {
    copy("/r/a", "/r/ordovan+/a");
    expectNothingDone(blindTo(partial), notExamined);
    EXPECT_THAT(nextTime(), ElementsAre(0, 0, 1, 0));
}

TEST_F(ReconcileCopyFailures, APublishedCopyThatCanNotBeReadOrRemovedStays) {
    copy("/r/a", "/r/ordovan+/a");
    expectNothingDoneWhenFails(Operation::contentHash, notExamined);
    expectNothingDoneWhenFails(Operation::contentHash, notExamined, 2);
    expectNothingDoneWhenFails(Operation::remove, notRemoved);
    EXPECT_THAT(nextTime(), ElementsAre(0, 0, 1, 0));
}

TEST_F(ReconcileCopyFailures, AFileThatArrivedGetsItsEntryOnceItsPartialCopyIsGone) {
    copy("/r/a", "/r/ordovan+/a");
    memory.write(partial, "one");
    memory.removeTree("/r/a");
    expectNothingDone(blindTo(partial), notRemoved);
    expectNothingDoneWhenFails(Operation::remove, notRemoved);
    EXPECT_THAT(nextTime(), ElementsAre(1, 0, 0, 0));
    EXPECT_FALSE(memory.item(partial));
}

TEST_F(ReconcileCopyFailures, ACopyWithoutItsOriginalWaitsUntilItCanBeLookedAtReadAndMoved) {
    memory.write(partial, "one");
    memory.removeTree("/r/a");
    expectNothingDone(blindTo(partial), notExamined);
    expectNothingDoneWhenFails(Operation::contentHash, notExamined);
    expectNothingDoneWhenFails(Operation::move, notExamined);
    EXPECT_THAT(nextTime(), ElementsAre(0, 0, 1, 0));
    EXPECT_EQ(memory.read("/r/ordovan+/a"), "one");
}

/// The copy is in place, and the original under its hidden name.
class ReconcileAsideFailures : public ReconcileCopyFailures {
protected:
    ReconcileAsideFailures() {
        copy("/r/a", "/r/ordovan+/a");
        move("/r/a", aside);
    }
};

TEST_F(ReconcileAsideFailures, AnOriginalStaysUnderItsHiddenNameWhileItOrItsPlaceCanNotBeLookedAt) {
    for (const char* place : {aside, "/r/a"}) expectNothingDone(blindTo(place), notExamined);
    EXPECT_THAT(nextTime(), ElementsAre(0, 0, 1, 0));
    EXPECT_EQ(memory.read("/r/a"), "one");
}

TEST_F(ReconcileAsideFailures, AnOriginalStaysWhileItOrItsCopyCanNotBeExaminedAndAnotherFileHasItsName) {
    memory.write("/r/a", "new");
    expectNothingDone(blindTo("/r/ordovan+/a"), notExamined);
    expectNothingDoneWhenFails(Operation::contentHash, notExamined);
    expectNothingDoneWhenFails(Operation::contentHash, notExamined, 2);
    expectNothingDoneWhenFails(Operation::remove, notRemoved);
    EXPECT_THAT(nextTime(), ElementsAre(1, 0, 0, 0));
    EXPECT_FALSE(memory.item(aside));
}

// To the Trash.

class ReconcileTrashFailures : public ReconcileFailures {
protected:
    ReconcileTrashFailures() {
        run = {};
        intend("/r/a", "", Kind::trash);
    }
    void leaveInfo() { memory.write(info, "[Trash Info]\nPath=/r/a\nDeletionDate=2026-11-21T00:00:00\n"); }
    void placeholderInTrash() {
        memory.write(inTrash, "");
        memory.setModified(inTrash, 100'000'000'000);
        note(NoteKind::claimed, "one");
    }
    /// The ports, but info files can not be removed.
    ReconcilePorts withoutRemovingInfo() {
        ReconcilePorts half = ports();
        half.removeTrashInfo = [](const TrashedFile&) { return std::unexpected(OrdovanSystemError::posix(EROFS)); };
        return half;
    }
};

TEST_F(ReconcileTrashFailures, AFileThatCanNotBeLookedAtIsLeftAsItIs) {
    expectNothingDone(blindTo("/r/a"), notExamined);
    EXPECT_THAT(nextTime(), ElementsAre(0, 1, 0, 0));
}

TEST_F(ReconcileTrashFailures, ATrashedFileGetsItsEntryOnceItCanBeLookedAtAndRead) {
    ASSERT_TRUE(memory.trash(Url::file("/r/a")));
    expectNothingDone(blindTo(inTrash), notExamined);
    expectNothingDoneWhenFails(Operation::contentHash, notExamined);
    const auto found = reconcile();
    EXPECT_THAT(found.trashed.entries, ElementsAre(OrdovanTrashEntry("/r/a", inTrash, 3, digestOf("one"))));
}

TEST_F(ReconcileTrashFailures, AnInfoFileThatCanNotBeRemovedStaysForTheNextTime) {
    leaveInfo();
    expectNothingDone(withoutRemovingInfo(), notRemoved);
    EXPECT_THAT(nextTime(), ElementsAre(0, 0, 1, 0));
}

TEST_F(ReconcileTrashFailures, ASecondNameInTheTrashStaysWhileItCanNotBeLookedAtOrRemoved) {
    leaveInfo();
    memory.hardLink(inTrash, "/r/a");
    expectNothingDone(blindTo(inTrash), notExamined);
    expectNothingDoneWhenFails(Operation::remove, notRemoved);
    EXPECT_THAT(nextTime(), ElementsAre(0, 0, 1, 0));
}

TEST_F(ReconcileTrashFailures, AnEmptyFileInTheTrashStaysWhileItCanNotBeReadOrRemoved) {
    leaveInfo();
    placeholderInTrash();
    expectNothingDoneWhenFails(Operation::contentHash, notExamined);
    expectNothingDoneWhenFails(Operation::remove, notRemoved);
    EXPECT_THAT(nextTime(), ElementsAre(0, 0, 1, 0));
}

TEST_F(ReconcileTrashFailures, AnInfoFileThatMayStillBeThereKeepsTheRecord) {
    leaveInfo();
    placeholderInTrash();
    ReconcilePorts half = withoutRemovingInfo();
    half.facts = blindTo(info).facts;
    const auto found = OrdovanReconciler::reconcile(run, half);
    EXPECT_THAT(sentences(found), ElementsAre(notRemoved));
    EXPECT_FALSE(found.isComplete);
    EXPECT_TRUE(OrdovanReconciler::reconcile(run, ports()).isComplete);
}

// Where the folder may be another.

TEST_F(ReconcileFailures, AnyFileOfTheRunInSightTellsThatTheFolderIsTheRuns) {
    intend("/elsewhere", "/r/ordovan+/b");
    std::swap(run.intent.items[0], run.intent.items[1]);
    run.intent.rootIdentity = "9:9";
    EXPECT_FALSE(reconcile().isElsewhere);
    memory.removeTree("/r/a");
    EXPECT_TRUE(reconcile().isElsewhere);
}

TEST_F(ReconcileTrashFailures, AFileOfTheRunInTheTrashTellsThatTheFolderIsTheRuns) {
    ASSERT_TRUE(memory.trash(Url::file("/r/a")));
    run.intent.rootIdentity = "9:9";
    EXPECT_FALSE(reconcile().isElsewhere);
    note(NoteKind::done, "one", inTrash);
    ReconcilePorts withoutTrash = ports();
    withoutTrash.findInTrash = [](std::span<const Url>) { return std::unexpected(OrdovanSystemError::posix(EIO)); };
    EXPECT_FALSE(OrdovanReconciler::reconcile(run, withoutTrash).isElsewhere) << "noted";
}

}  // namespace
