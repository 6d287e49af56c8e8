// What a move leaves that takes more than one step: a second name, an empty file, an original under a hidden name.

#include "tests/support/ReconcileFixture.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <cstdint>
#include <string>
#include <string_view>

using ordovan::test::ReconcileFixture;
using ordovan::testing::digestOf;
using ordovan::testing::Operation;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using namespace ordovan::test::interrupted;

namespace {

constexpr std::int64_t second = 1'000'000'000;  // in nanoseconds; the runs begin at 100
constexpr const char* removed = "The empty file that kept its place was removed; the file is where it was.";
constexpr const char* occupied = "A file already exists at the destination; left untouched.";

class ReconcileClaims : public ReconcileFixture {
protected:
    ReconcileClaims() {
        tree({"a = one"});
        intend("/r/a", "/r/ordovan+/a");
    }
    void leave(std::string_view content) {
        memory.write("/r/ordovan+/a", content);
        memory.setModified("/r/ordovan+/a", 99 * second);
    }
};

TEST_F(ReconcileClaims, TheEmptyFileByWhichThePlaceWasTakenIsRemoved) {
    note(NoteKind::claimed, "one");
    leave("");
    const auto found = OrdovanReconciler::reconcile(run, ports());
    EXPECT_THAT(counts(found), ElementsAre(0, 0, 1, 0));
    EXPECT_THAT(sentences(found), ElementsAre(removed));
    EXPECT_FALSE(memory.item("/r/ordovan+/a"));
    EXPECT_EQ(memory.read("/r/a"), "one");
    EXPECT_THAT(counts(reconcile()), ElementsAre(0, 1, 0, 0));
}

TEST_F(ReconcileClaims, AnEmptyFileThatTheRunDidNotAnnounceStays) {
    leave("");
    EXPECT_THAT(sentences(reconcile()), ElementsAre(occupied));
    EXPECT_TRUE(memory.item("/r/ordovan+/a"));
}

TEST_F(ReconcileClaims, AFileThatIsNotEmptyAnyMoreStays) {
    note(NoteKind::claimed, "one");
    leave("theirs");
    EXPECT_THAT(sentences(reconcile()), ElementsAre(occupied));
    EXPECT_EQ(memory.read("/r/ordovan+/a"), "theirs");
}

TEST_F(ReconcileClaims, AFolderAtTheDestinationStays) {
    memory.makeDirectory("/r/ordovan+/a");
    EXPECT_THAT(sentences(reconcile()), ElementsAre(occupied));
    EXPECT_TRUE(memory.item("/r/ordovan+/a"));
    EXPECT_EQ(memory.read("/r/a"), "one");
}

TEST_F(ReconcileClaims, AnEmptyFileThatIsOlderThanTheRunStays) {
    note(NoteKind::claimed, "one");
    leave("");
    memory.setModified("/r/ordovan+/a", 97 * second);
    EXPECT_THAT(sentences(reconcile()), ElementsAre(occupied));
    EXPECT_TRUE(memory.item("/r/ordovan+/a"));
}

TEST_F(ReconcileClaims, AnEmptyFileWithASecondNameStays) {
    note(NoteKind::claimed, "one");
    leave("");
    memory.hardLink("/r/kept", "/r/ordovan+/a");
    EXPECT_THAT(sentences(reconcile()), ElementsAre(occupied));
    EXPECT_TRUE(memory.item("/r/ordovan+/a"));
}

TEST_F(ReconcileClaims, AnEmptyFileThatIsBeingWrittenStaysForTheNextTime) {
    note(NoteKind::claimed, "one");
    leave("");
    fs.failCall(Operation::contentHash, 1, EBUSY);
    const auto found = OrdovanReconciler::reconcile(run, ports());
    EXPECT_THAT(sentences(found), ElementsAre(notExamined));
    EXPECT_FALSE(found.isComplete);
    EXPECT_TRUE(memory.item("/r/ordovan+/a"));
}

TEST_F(ReconcileClaims, AnEmptyFileStaysWhereTheFileItselfIsGone) {
    note(NoteKind::claimed, "one");
    leave("");
    memory.removeTree("/r/a");
    EXPECT_THAT(counts(reconcile()), ElementsAre(0, 0, 0, 1));
    EXPECT_TRUE(memory.item("/r/ordovan+/a"));
}

TEST_F(ReconcileClaims, AVerifiedCopyTakesThePlaceThatWasKeptForIt) {
    note(NoteKind::begun, "one", partial, false);
    note(NoteKind::claimed, "one");
    leave("");
    memory.write(partial, "one");
    memory.removeTree("/r/a");
    const auto found = OrdovanReconciler::reconcile(run, ports());
    EXPECT_THAT(sentences(found), ElementsAre("Its verified copy was put in place."));
    EXPECT_EQ(memory.read("/r/ordovan+/a"), "one");
}

TEST_F(ReconcileClaims, ASecondNameIsTakenAwayWhereTheVolumeKeepsNoIdentities) {
    run.intent.items[0].identity.clear();
    memory.makeDirectory("/r/ordovan+");
    memory.hardLink("/r/ordovan+/a", "/r/a");
    EXPECT_THAT(counts(reconcile()), ElementsAre(0, 1, 0, 0)) << "not announced";
    EXPECT_TRUE(memory.item("/r/ordovan+/a"));
    note(NoteKind::claimed, "one");
    EXPECT_THAT(counts(OrdovanReconciler::reconcile(run, ports())), ElementsAre(0, 0, 1, 0));
    EXPECT_FALSE(memory.item("/r/ordovan+/a"));
    EXPECT_EQ(memory.read("/r/a"), "one");
}

TEST_F(ReconcileClaims, AnEmptyFileThatOthersMayReadStays) {
    note(NoteKind::claimed, "one");
    leave("");
    auto open = ports();
    open.facts = [&](const Url& url) {
        auto facts = ordovan::test::factsIn(memory, url);
        if (facts) facts->isPrivate = false;
        return facts;
    };
    EXPECT_THAT(sentences(OrdovanReconciler::reconcile(run, open)), ElementsAre(occupied));
    EXPECT_TRUE(memory.item("/r/ordovan+/a"));
    run.intent.items[0].identity.clear();
    EXPECT_THAT(sentences(OrdovanReconciler::reconcile(run, open)), ElementsAre(removed))
        << "the volume may store no such thing";
}

/// A move by a second name was cut behind the old one's turn to be hidden.
class ReconcileHidden : public ReconcileClaims {
protected:
    ReconcileHidden() {
        note(NoteKind::claimed, "one", aside);
        memory.makeDirectory("/r/ordovan+");
        memory.hardLink("/r/ordovan+/a", "/r/a");
        move("/r/a", aside);
    }
};

TEST_F(ReconcileHidden, TheFileGetsItsNameBackAndLosesTheSecond) {
    const auto found = reconcile();
    EXPECT_THAT(counts(found), ElementsAre(0, 0, 1, 0));
    EXPECT_EQ(memory.read("/r/a"), "one");
    EXPECT_FALSE(memory.item("/r/ordovan+/a"));
    EXPECT_FALSE(memory.item(aside));
}

TEST_F(ReconcileHidden, TheHiddenNameGoesOfAFileThatWasNotedAsMoved) {
    note(NoteKind::done, "one");
    EXPECT_THAT(counts(reconcile()), ElementsAre(1, 0, 0, 0));
    EXPECT_EQ(memory.read("/r/ordovan+/a"), "one");
    EXPECT_FALSE(memory.item("/r/a"));
    EXPECT_FALSE(memory.item(aside));
}

TEST_F(ReconcileHidden, TheHiddenNameOfAFileThatWasNotedAsMovedStaysWhereItHasLeftSince) {
    note(NoteKind::done, "one");
    memory.removeTree("/r/ordovan+/a");
    static_cast<void>(OrdovanReconciler::reconcile(run, ports()));
    EXPECT_EQ(memory.read("/r/a"), "one");
}

TEST_F(ReconcileHidden, AThirdNameGoes) {
    memory.hardLink("/r/a", aside);
    EXPECT_THAT(counts(OrdovanReconciler::reconcile(run, ports())), ElementsAre(0, 0, 1, 0));
    EXPECT_EQ(memory.read("/r/a"), "one");
    EXPECT_FALSE(memory.item("/r/ordovan+/a"));
    EXPECT_FALSE(memory.item(aside));
}

TEST_F(ReconcileHidden, TheHiddenNameGoesWhereAnotherFileHasTheOldOne) {
    memory.write("/r/a", "new");
    EXPECT_THAT(counts(reconcile()), ElementsAre(1, 0, 0, 0));
    EXPECT_EQ(memory.read("/r/a"), "new");
    EXPECT_EQ(memory.read("/r/ordovan+/a"), "one");
    EXPECT_FALSE(memory.item(aside));
}

TEST_F(ReconcileHidden, WhatAnotherProgramHadSavedGetsItsName) {
    memory.removeTree(aside);
    memory.write(aside, "theirs");
    EXPECT_THAT(counts(reconcile()), ElementsAre(1, 0, 0, 0));
    EXPECT_EQ(memory.read("/r/a"), "theirs");
    EXPECT_EQ(memory.read("/r/ordovan+/a"), "one");
}

TEST_F(ReconcileHidden, WhatAnotherProgramHadSavedStaysBesideWhatItSavedNext) {
    memory.removeTree(aside);
    memory.write(aside, "theirs");
    memory.write("/r/a", "newer");
    const auto found = reconcile();
    EXPECT_THAT(counts(found), ElementsAre(0, 0, 0, 1));
    EXPECT_EQ(memory.read(aside), "theirs");
    EXPECT_EQ(memory.read("/r/a"), "newer");
    EXPECT_EQ(found.journal.entries.size(), 1U) << "the file itself has arrived";
}

TEST_F(ReconcileHidden, WaitsWhileTheNameCanNotBeGivenBack) {
    fs.failCall(Operation::move, 1, EIO);
    const auto found = OrdovanReconciler::reconcile(run, ports());
    EXPECT_THAT(sentences(found), ElementsAre(notExamined));
    EXPECT_FALSE(found.isComplete);
    EXPECT_EQ(memory.read(aside), "one");
}

TEST_F(ReconcileHidden, WaitsWhileEitherOfItsNamesCanNotBeLookedAt) {
    const auto before = memory.snapshot();
    for (const std::string_view place : {std::string_view(aside), std::string_view("/r/a")}) {
        ordovan::ReconcilePorts blind = ports();
        blind.facts = [&](const Url& url) -> OrdovanResult<ordovan::FileFacts> {
            if (url.path() == place) return std::unexpected(OrdovanSystemError::posix(EACCES));
            return ordovan::test::factsIn(memory, url);
        };
        const auto found = OrdovanReconciler::reconcile(run, blind);
        EXPECT_THAT(sentences(found), ElementsAre(notExamined)) << place;
        EXPECT_FALSE(found.isComplete);
        EXPECT_EQ(memory.snapshot(), before);
    }
}

TEST_F(ReconcileHidden, WaitsWhileTheHiddenNameCanNotBeRemoved) {
    memory.write("/r/a", "new");
    fs.failCall(Operation::remove, 1, EIO);
    const auto found = OrdovanReconciler::reconcile(run, ports());
    EXPECT_FALSE(found.isComplete);
    EXPECT_EQ(memory.read(aside), "one");
}

/// The copy is in place, and the original on its way out.
class ReconcileAsides : public ReconcileFixture {
protected:
    ReconcileAsides() {
        memory.addVolume("/r/ordovan+");
        tree({"a = one"});
        intend("/r/a", "/r/ordovan+/a");
        note(NoteKind::begun, "one", partial, false);
        copy("/r/a", "/r/ordovan+/a");
        move("/r/a", aside);
    }
};

TEST_F(ReconcileAsides, AnOriginalUnderItsHiddenNameIsBackAndItsCopyGone) {
    const auto found = OrdovanReconciler::reconcile(run, ports());
    EXPECT_THAT(sentences(found), ElementsAre("Its verified copy was taken away again; the file is where it was."));
    EXPECT_EQ(memory.read("/r/a"), "one");
    EXPECT_FALSE(memory.item(aside));
    EXPECT_FALSE(memory.item("/r/ordovan+/a"));
}

TEST_F(ReconcileAsides, AnOriginalWhoseCopyIsGoneIsBack) {
    memory.removeTree("/r/ordovan+/a");
    EXPECT_THAT(counts(OrdovanReconciler::reconcile(run, ports())), ElementsAre(0, 1, 0, 0));
    EXPECT_EQ(memory.read("/r/a"), "one");
}

TEST_F(ReconcileAsides, AnotherFileThatSlippedInGetsItsNameBack) {
    memory.replace(aside, "somebody else's");
    memory.setModified(aside, 5);
    const auto found = OrdovanReconciler::reconcile(run, ports());
    EXPECT_EQ(memory.read("/r/a"), "somebody else's");
    EXPECT_EQ(memory.read("/r/ordovan+/a"), "one");
    EXPECT_THAT(found.journal.entries, ElementsAre(entry(false, "one", run.intent.items[0].identity)));
}

TEST_F(ReconcileAsides, AnOriginalIsRemovedWhereAnotherFileTookItsNameAndItsCopyStands) {
    memory.write("/r/a", "new");
    const auto found = OrdovanReconciler::reconcile(run, ports());
    EXPECT_THAT(counts(found), ElementsAre(1, 0, 0, 0));
    EXPECT_FALSE(memory.item(aside));
    EXPECT_EQ(memory.read("/r/a"), "new");
    EXPECT_EQ(memory.read("/r/ordovan+/a"), "one");
}

TEST_F(ReconcileAsides, AnOriginalStaysAndIsSaidWhereAnotherFileTookItsNameAndItsCopyIsNotThere) {
    memory.write("/r/a", "new");
    memory.write("/r/ordovan+/a", "edited");
    EXPECT_THAT(sentences(reconcile()), ElementsAre(std::string("A verified copy of it lies at ") + aside + "."));
    EXPECT_EQ(memory.read(aside), "one");
}

TEST_F(ReconcileAsides, AnotherFileThatSlippedInStaysAndIsSaidWhereItsNameIsTaken) {
    memory.replace(aside, "somebody else's");
    memory.write("/r/a", "new");
    EXPECT_THAT(sentences(reconcile()),
                ElementsAre(std::string("The file that was in its place lies at ") + aside + "."));
    EXPECT_EQ(memory.read(aside), "somebody else's");
    EXPECT_EQ(memory.read("/r/a"), "new");
}

TEST_F(ReconcileAsides, ARenameInStepsThatWasCutIsTakenBack) {
    memory.hardLink("/r/a", aside);
    EXPECT_THAT(sentences(OrdovanReconciler::reconcile(run, ports())),
                ElementsAre("Its verified copy was taken away again; the file is where it was."));
    EXPECT_EQ(memory.read("/r/a"), "one");
    EXPECT_FALSE(memory.item(aside));
    memory.write(aside, "");
    EXPECT_THAT(counts(OrdovanReconciler::reconcile(run, ports())), ElementsAre(0, 1, 0, 0));
    EXPECT_EQ(memory.read("/r/a"), "one");
    EXPECT_FALSE(memory.item(aside));
}

TEST_F(ReconcileAsides, AnOriginalThatCanNotBeBroughtBackKeepsTheRecord) {
    fs.failCall(Operation::move, 1, EACCES);
    const auto found = OrdovanReconciler::reconcile(run, ports());
    EXPECT_THAT(sentences(found), ElementsAre(notExamined));
    EXPECT_FALSE(found.isComplete);
    EXPECT_EQ(memory.read(aside), "one");
    EXPECT_EQ(memory.read("/r/ordovan+/a"), "one");
}

TEST_F(ReconcileFixture, AFileBehindALinkByNowKeepsTheEntryThatWasNoted) {
    tree({"a = one"});
    intend("/r/a", "/r/ordovan+/a");
    note(NoteKind::done, "one");
    memory.removeTree("/r/a");
    memory.link("/r/ordovan+", "/s");
    const auto found = reconcile();
    EXPECT_THAT(counts(found), ElementsAre(0, 0, 0, 1));
    EXPECT_THAT(found.journal.entries, ElementsAre(entry(true, "one", run.intent.items[0].identity)));
}

TEST_F(ReconcileFixture, AFileBehindALinkByNowKeepsNoRecordThatTellsNothingOfIt) {
    tree({"a = one"});
    intend("/r/a", "/r/ordovan+/a");
    memory.link("/r/ordovan+", "/s");
    const auto found = OrdovanReconciler::reconcile(run, ports());
    EXPECT_THAT(counts(found), ElementsAre(0, 0, 0, 1));
    EXPECT_TRUE(found.isComplete);
}

TEST_F(ReconcileFixture, AFileBehindALinkByNowKeepsTheRecordThatTellsOfItsHiddenName) {
    tree({"a = one"});
    intend("/r/a", "/r/ordovan+/a");
    note(NoteKind::claimed, "one", aside);
    memory.link("/r/ordovan+", "/s");
    EXPECT_FALSE(OrdovanReconciler::reconcile(run, ports()).isComplete);
}

TEST_F(ReconcileFixture, AFileBehindALinkByNowKeepsTheRecordThatTellsOfItsCopy) {
    tree({"a = one"});
    intend("/r/a", "/r/ordovan+/a");
    note(NoteKind::begun, "one", partial, false);
    memory.link("/r/ordovan+", "/s");
    const auto found = OrdovanReconciler::reconcile(run, ports());
    EXPECT_THAT(counts(found), ElementsAre(0, 0, 0, 1));
    EXPECT_FALSE(found.isComplete);
}

TEST_F(ReconcileFixture, AFileOutsideTheFolderGetsNoEntryWhateverWasNoted) {
    tree({"a = one"});
    intend("/s/a", "/r/ordovan+/a");
    note(NoteKind::done, "one");
    EXPECT_THAT(reconcile().journal.entries, IsEmpty());
}

TEST_F(ReconcileFixture, TheEmptyFileThatKeptAPlaceInTheTrashGoesWithItsInfoFile) {
    constexpr const char* item = "/home/user/.local/share/Trash/files/a";
    tree({"a = one"});
    intend("/r/a", "", Kind::trash);
    memory.write(info, "[Trash Info]\nPath=/r/a\nDeletionDate=2026-11-21T00:00:00\n");
    memory.write(item, "");
    memory.setModified(item, 100 * second);
    EXPECT_THAT(counts(reconcile()), ElementsAre(0, 1, 0, 0)) << "not announced";
    EXPECT_TRUE(memory.item(item));
    note(NoteKind::claimed, "one");
    const auto found = OrdovanReconciler::reconcile(run, ports());
    EXPECT_THAT(sentences(found), ElementsAre("It had not reached the Trash; the file is where it was."));
    EXPECT_FALSE(memory.item(item));
    EXPECT_FALSE(memory.item(info));
    EXPECT_THAT(counts(reconcile()), ElementsAre(0, 1, 0, 0));
}

}  // namespace
