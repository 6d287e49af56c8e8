#include "tests/support/ReconcileFixture.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <string>
#include <string_view>
#include <vector>

using ordovan::testing::Operation;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using namespace ordovan::test::interrupted;

namespace {

using Reconcile = ordovan::test::ReconcileFixture;

// How far it is, and stopping.

TEST_F(Reconcile, TellsHowFarItIsAndDecidesNothingOnceItIsStopped) {
    tree({"a = one", "b = two", "c = three"});
    for (const char* name : {"a", "b", "c"}) intend("/r/" + std::string(name), "/r/ordovan+/" + std::string(name));
    move("/r/a", "/r/ordovan+/a");
    move("/r/c", "/r/ordovan+/c");
    std::vector<std::size_t> done;
    const auto found = OrdovanReconciler::reconcile(run, ports(),
                                                    {.shouldContinue = [&] { return done.size() < 2; },
                                                     .progressed =
                                                         [&](auto files, auto all) {
                                                             EXPECT_EQ(all, 3U);
                                                             done.push_back(files);
                                                         }});
    EXPECT_TRUE(found.isStopped);
    EXPECT_FALSE(found.isComplete);
    EXPECT_THAT(found.journal.entries, IsEmpty());
    EXPECT_THAT(counts(found), ElementsAre(0, 0, 0, 0));
    EXPECT_THAT(done, ElementsAre(1, 2));
    EXPECT_THAT(counts(reconcile()), ElementsAre(2, 1, 0, 0));
}

TEST_F(Reconcile, StoppedBehindItsLastFileDecidesNothingEither) {
    tree({"a = one"});
    intend("/r/a", "/r/ordovan+/a");
    int asked = 0;
    const auto found =
        OrdovanReconciler::reconcile(run, ports(), {.shouldContinue = [&] { return ++asked < 2; }, .progressed = {}});
    EXPECT_TRUE(found.isStopped);
    EXPECT_EQ(asked, 2);
}

TEST_F(Reconcile, StoppedWhileItsFolderIsLookedForIsNotElsewhere) {
    tree({"a = one"});
    intend("/r/a", "/r/ordovan+/a");
    run.intent.rootIdentity = "7:7";
    memory.removeTree("/r/a");
    const auto found =
        OrdovanReconciler::reconcile(run, ports(), {.shouldContinue = [] { return false; }, .progressed = {}});
    EXPECT_TRUE(found.isStopped);
    EXPECT_FALSE(found.isElsewhere);
    EXPECT_TRUE(OrdovanReconciler::reconcile(run, ports()).isElsewhere);
}

// A move within a volume.

TEST_F(Reconcile, AFileThatStandsWhereItWasIsUntouched) {
    tree({"a = one"});
    intend("/r/a", "/r/ordovan+/a");
    const auto before = memory.snapshot();
    const auto found = reconcile();
    EXPECT_THAT(counts(found), ElementsAre(0, 1, 0, 0));
    EXPECT_THAT(sentences(found), IsEmpty());
    EXPECT_THAT(found.journal.entries, IsEmpty());
    EXPECT_TRUE(found.isComplete);
    EXPECT_EQ(memory.snapshot(), before);
}

TEST_F(Reconcile, AMovedFileIsRecognizedByItsIdentityAndGetsItsEntry) {
    tree({"a = one"});
    intend("/r/a", "/r/ordovan+/a");
    move("/r/a", "/r/ordovan+/a");
    const auto found = reconcile();
    EXPECT_THAT(counts(found), ElementsAre(1, 0, 0, 0));
    EXPECT_THAT(sentences(found), ElementsAre("Moved."));
    EXPECT_THAT(found.journal.entries, ElementsAre(entry(true, "one", identity("/r/ordovan+/a"))));
    EXPECT_EQ(found.journal.createdAtEpoch, 100);
}

TEST_F(Reconcile, WhatWasNotedAboutAMovedFileIsNotHashedAgain) {
    tree({"a = one"});
    intend("/r/a", "/r/ordovan+/a");
    move("/r/a", "/r/ordovan+/a");
    note(NoteKind::done, "one");
    memory.write("/r/ordovan+/a", "edited since");
    const auto found = reconcile();
    EXPECT_THAT(found.journal.entries, ElementsAre(entry(true, "one", identity("/r/ordovan+/a"))));
    EXPECT_EQ(fs.callCount(Operation::contentHash), 0U);
}

TEST_F(Reconcile, AMovedFileIsRecognizedAfterItsDeviceGotAnotherNumber) {
    tree({"a = one"});
    intend("/r/a", "/r/ordovan+/a");
    run.intent.items[0].identity = "9" + run.intent.items[0].identity;
    run.intent.rootIdentity = "9" + run.intent.rootIdentity;
    move("/r/a", "/r/ordovan+/a");
    EXPECT_THAT(reconcile().journal.entries, ElementsAre(entry(true, "one", identity("/r/ordovan+/a"))));
}

TEST_F(Reconcile, WithoutAnIdentityAFileIsRecognizedBySizeAndTime) {
    tree({"a = one"});
    intend("/r/a", "/r/ordovan+/a");
    run.intent.items[0].identity.clear();
    EXPECT_THAT(counts(reconcile()), ElementsAre(0, 1, 0, 0));
    move("/r/a", "/r/ordovan+/a");
    EXPECT_THAT(counts(reconcile()), ElementsAre(1, 0, 0, 0));
    memory.setModified("/r/ordovan+/a", 5);
    EXPECT_THAT(counts(reconcile()), ElementsAre(0, 0, 0, 1));
}

TEST_F(Reconcile, AFileThatWasAnotherWhenItsTurnCameIsRecognizedByTheNote) {
    tree({"a = one"});
    intend("/r/a", "/r/ordovan+/a");
    memory.replace("/r/a", "other");
    note(NoteKind::begun, "other");
    run.notes[0].identity = identity("/r/a");
    EXPECT_THAT(counts(reconcile()), ElementsAre(0, 1, 0, 0));
    move("/r/a", "/r/ordovan+/a");
    EXPECT_THAT(reconcile().journal.entries, ElementsAre(entry(true, "other", identity("/r/ordovan+/a"))));
}

TEST_F(Reconcile, SomebodyElsesFileAtTheDestinationGetsNoEntryAndStays) {
    tree({"a = one"});
    intend("/r/a", "/r/ordovan+/a");
    memory.removeTree("/r/a");
    memory.write("/r/ordovan+/a", "one");
    const auto found = reconcile();
    EXPECT_THAT(counts(found), ElementsAre(0, 0, 0, 1));
    EXPECT_THAT(sentences(found),
                ElementsAre("The file was moved or deleted while organizing, and another is at its destination."));
    EXPECT_THAT(found.journal.entries, IsEmpty());
    EXPECT_EQ(memory.read("/r/ordovan+/a"), "one");
}

TEST_F(Reconcile, AFileThatIsNowhereIsSaidAndGetsNoEntry) {
    tree({"a = one"});
    intend("/r/a", "/r/ordovan+/a");
    memory.removeTree("/r/a");
    const auto found = reconcile();
    EXPECT_THAT(sentences(found), ElementsAre(lost));
    EXPECT_THAT(found.journal.entries, IsEmpty());
    EXPECT_TRUE(found.isComplete);
}

TEST_F(Reconcile, AFileThatWasNotThereWhenTheRunBeganIsNotSpokenOf) {
    for (const auto& [destination, kind] : {std::pair{"/r/ordovan+/a", Kind::organize}, std::pair{"", Kind::trash}}) {
        tree({"b = two"});
        run = {};
        intend("/r/a", destination, kind);
        const auto found = reconcile();
        EXPECT_THAT(counts(found), ElementsAre(0, 1, 0, 0));
        EXPECT_THAT(sentences(found), IsEmpty());
    }
}

TEST_F(Reconcile, WhatTheRunHadMovedKeepsItsEntryWhateverBecameOfItSince) {
    tree({"a = one"});
    intend("/r/a", "/r/ordovan+/a");
    note(NoteKind::done, "one");
    memory.removeTree("/r/a");
    const auto found = reconcile();
    EXPECT_THAT(counts(found), ElementsAre(1, 0, 0, 0));
    EXPECT_THAT(found.journal.entries, ElementsAre(entry(true, "one", run.intent.items[0].identity)));
}

TEST_F(Reconcile, ANoteOfAMoveThatDidNotReachTheDiskProvesNothing) {
    tree({"a = one"});
    intend("/r/a", "/r/ordovan+/a");
    note(NoteKind::done, "one");
    const auto found = reconcile();
    EXPECT_THAT(counts(found), ElementsAre(0, 1, 0, 0));
    EXPECT_THAT(found.journal.entries, IsEmpty());
}

TEST_F(Reconcile, ASecondNameOfTheFileIsTakenAwayAgain) {
    tree({"a = one"});
    intend("/r/a", "/r/ordovan+/a");
    memory.hardLink("/r/ordovan+/a", "/r/a");
    const auto found = OrdovanReconciler::reconcile(run, ports());
    EXPECT_THAT(counts(found), ElementsAre(0, 0, 1, 0));
    EXPECT_THAT(sentences(found), ElementsAre("Its second name was taken away again; the file is where it was."));
    EXPECT_EQ(memory.read("/r/a"), "one");
    EXPECT_FALSE(memory.item("/r/ordovan+/a"));
    EXPECT_THAT(counts(reconcile()), ElementsAre(0, 1, 0, 0));
}

TEST_F(Reconcile, AnotherFileOfTheSameSizeAndTimeAtTheDestinationGetsNoEntry) {
    tree({"a = one"});
    intend("/r/a", "/r/ordovan+/a");
    memory.write("/r/ordovan+/a", "two");
    memory.setModified("/r/ordovan+/a", run.intent.items[0].modifiedNs);
    memory.removeTree("/r/a");
    const auto found = reconcile();
    EXPECT_THAT(counts(found), ElementsAre(0, 0, 0, 1));
    EXPECT_THAT(found.journal.entries, IsEmpty());
}

TEST_F(Reconcile, AHardLinkThatTheUserMadeStaysWhereverItIs) {
    constexpr const char* sentence = "The file has another name at the destination; left untouched.";
    tree({"a = one"});
    memory.hardLink("/r/ordovan+/a", "/r/a");
    intend("/r/a", "/r/ordovan+/a");
    EXPECT_THAT(sentences(reconcile()), ElementsAre(sentence));
    memory.hardLink("/r/b", "/r/a");
    EXPECT_THAT(sentences(reconcile()), ElementsAre(sentence));
    run.intent.items[0].names = 1;  // two names more
    EXPECT_THAT(sentences(reconcile()), ElementsAre(sentence));
    EXPECT_EQ(memory.read("/r/ordovan+/a"), "one");
}

TEST_F(Reconcile, APlaceThatLeadsToTheVerySameNameIsLeftAlone) {
    tree({"a = one", "ordovan+/"});
    intend("/r/a", "/r/ordovan+/a");
    ordovan::ReconcilePorts aliased = ports();
    aliased.facts = [this](const Url&) { return ordovan::test::factsIn(memory, Url::file("/r/a")); };
    const auto found = OrdovanReconciler::reconcile(run, aliased);
    EXPECT_THAT(counts(found), ElementsAre(0, 1, 0, 0));
    run.intent.items[0].names = 0;  // not known
    EXPECT_THAT(counts(OrdovanReconciler::reconcile(run, aliased)), ElementsAre(0, 1, 0, 0));
    EXPECT_EQ(memory.read("/r/a"), "one");
}

TEST_F(Reconcile, ASecondNameOfAnotherFileOfTheSameContentStays) {
    tree({"a = one"});
    intend("/r/a", "/r/ordovan+/a", OrdovanRunRecord::Kind::organize, "one");
    memory.replace("/r/a", "one");
    memory.hardLink("/r/ordovan+/a", "/r/a");
    EXPECT_THAT(sentences(reconcile()), ElementsAre("The file has another name at the destination; left untouched."));
    EXPECT_EQ(memory.read("/r/ordovan+/a"), "one");
}

TEST_F(Reconcile, ATakenDestinationIsSaidAndBothStay) {
    tree({"a = one", "ordovan+/a = other"});
    intend("/r/a", "/r/ordovan+/a");
    const auto found = reconcile();
    EXPECT_THAT(counts(found), ElementsAre(0, 1, 0, 0));
    EXPECT_THAT(sentences(found), ElementsAre("A file already exists at the destination; left untouched."));
    EXPECT_EQ(memory.read("/r/ordovan+/a"), "other");
}

// Scope.

TEST_F(Reconcile, NothingOutsideTheFolderIsTouchedWhateverTheRecordSays) {
    tree({"a = one"});
    memory.write("/s/b", "x");
    memory.write("/s/.b.ordovan-partial-00000000-0000-4000-8000-000000000000", "x");
    intend("/r/a", "/s/b");
    note(NoteKind::begun, "x", "/s/.b.ordovan-partial-00000000-0000-4000-8000-000000000000", false);
    intend("/s/b", "/r/ordovan+/b");
    const auto before = memory.snapshot();
    const auto found = reconcile();
    EXPECT_THAT(sentences(found), ElementsAre("Path no longer within the authorized scope.",
                                              "Path no longer within the authorized scope."));
    EXPECT_THAT(found.journal.entries, IsEmpty());
    EXPECT_EQ(memory.snapshot(), before);
}

TEST_F(Reconcile, NothingBehindALinkIsTouched) {
    tree({"a = one"});
    intend("/r/a", "/r/ordovan+/sub/a");
    note(NoteKind::begun, "one", "/r/ordovan+/sub/.a.ordovan-partial-00000000-0000-4000-8000-000000000000", false);
    memory.write("/s/.a.ordovan-partial-00000000-0000-4000-8000-000000000000", "one");
    memory.link("/r/ordovan+/sub", "/s");
    const auto before = memory.snapshot();
    EXPECT_THAT(sentences(reconcile()), ElementsAre("A parent folder is a symlink; skipped to stay in scope."));
    EXPECT_EQ(memory.snapshot(), before);
}

TEST_F(Reconcile, AFolderThatIsNotThereDecidesNothing) {
    tree({"a = one", "b = two"});
    intend("/r/a", "/r/ordovan+/a");
    note(NoteKind::done, "one");
    memory.removeTree("/r");
    EXPECT_TRUE(reconcile().isElsewhere);
    memory.makeDirectory("/r");  // the empty mount point of a volume, say
    const auto found = reconcile();
    EXPECT_TRUE(found.isElsewhere);
    EXPECT_FALSE(found.isComplete);
    EXPECT_THAT(found.journal.entries, IsEmpty());
}

TEST_F(Reconcile, AnotherVolumeAtThatPlaceDecidesNothing) {
    tree({"a = one", "ordovan+/a = two"});
    intend("/r/a", "/r/ordovan+/a");
    run.intent.rootIdentity = "9" + run.intent.rootIdentity;  // the top of a volume has the same inode on each
    run.intent.items[0].identity = "9" + run.intent.items[0].identity;
    memory.write("/r/a", "of another size");
    EXPECT_TRUE(reconcile().isElsewhere);
    memory.write(partial, "on");
    note(NoteKind::begun, "one", partial, false);
    EXPECT_FALSE(reconcile().isElsewhere);
}

TEST_F(Reconcile, AnotherVolumeOfTheSameNumberDecidesNothing) {
    memory.addVolume("/r");
    tree({"a = one"});
    intend("/r/a", "/r/ordovan+/a");
    run.intent.rootIdentity = identity("/r");
    memory.removeTree("/r/a");
    EXPECT_TRUE(reconcile().isElsewhere);
    tree({"a = one"});
    EXPECT_TRUE(reconcile().isElsewhere) << "another file of that name";
}

// Undo.

TEST_F(Reconcile, AnUndoneMoveTakesItsEntryOut) {
    tree({"ordovan+/a = one", "ordovan+/b = two"});
    intend("/r/ordovan+/a", "/r/a", Kind::undo, "one");
    intend("/r/ordovan+/b", "/r/b", Kind::undo, "two");
    move("/r/ordovan+/a", "/r/a");
    const auto found = reconcile();
    EXPECT_THAT(counts(found), ElementsAre(1, 1, 0, 0));
    EXPECT_THAT(found.restored, ElementsAre("/r/ordovan+/a"));
    EXPECT_THAT(sentences(found), ElementsAre("Restored."));
    EXPECT_THAT(found.journal.entries, IsEmpty());
}

TEST_F(Reconcile, AFileThatWasToGoBackInTwoStepsIsFollowed) {
    tree({"ordovan+/c = one"});
    intend("/r/ordovan+/c", "/r/ordovan+/b", Kind::undo, "one");
    intend("/r/ordovan+/b", "/r/a", Kind::undo, "one");
    run.intent.outputRoots = {Url::file("/r/ordovan+")};
    move("/r/ordovan+/c", "/r/ordovan+/b");
    EXPECT_THAT(reconcile().restored, ElementsAre("/r/ordovan+/c"));
    move("/r/ordovan+/b", "/r/a");
    EXPECT_THAT(reconcile().restored, ElementsAre("/r/ordovan+/c", "/r/ordovan+/b"));
}

// What can not be looked at or changed.

TEST_F(Reconcile, WhatCanNotBeLookedAtIsNotDecided) {
    tree({"a = one"});
    intend("/r/a", "/r/ordovan+/a");
    move("/r/a", "/r/ordovan+/a");
    for (const std::string_view blind : {"/r/a", "/r/ordovan+/a"}) {
        ordovan::ReconcilePorts half = ports();
        half.facts = [this, blind](const Url& url) -> OrdovanResult<ordovan::FileFacts> {
            if (url.path() == blind) return std::unexpected(OrdovanSystemError::posix(EACCES));
            return ordovan::test::factsIn(memory, url);
        };
        const auto found = OrdovanReconciler::reconcile(run, half);
        EXPECT_FALSE(found.isComplete);
        EXPECT_THAT(sentences(found), ElementsAre(notExamined));
        EXPECT_THAT(found.journal.entries, IsEmpty());
    }
}

TEST_F(Reconcile, AHashThatFailsDecidesNothing) {
    tree({"a = one"});
    intend("/r/a", "/r/ordovan+/a");
    move("/r/a", "/r/ordovan+/a");
    fs.failCall(Operation::contentHash, 1, EIO);
    const auto found = OrdovanReconciler::reconcile(run, ports());
    EXPECT_FALSE(found.isComplete);
    EXPECT_THAT(found.journal.entries, IsEmpty());
    EXPECT_TRUE(reconcile().isComplete);
}

// What is said.

TEST(InterruptedRun, IsSummedUpInOneSentence) {
    const auto summary = [](std::size_t finished, std::size_t untouched, std::size_t putRight, std::size_t unsettled) {
        OrdovanInterruptedRun run;
        run.finished = finished;
        run.untouched = untouched;
        run.putRight = putRight;
        run.unsettled = unsettled;
        return run.summary();
    };
    EXPECT_EQ(summary(3, 5, 1, 0),
              "An earlier run was interrupted. 3 files were finished, 5 were left untouched and 1 was put right.");
    EXPECT_EQ(summary(1, 0, 0, 0), "An earlier run was interrupted. 1 file was finished.");
    EXPECT_EQ(summary(0, 1, 2, 0), "An earlier run was interrupted. 1 file was left untouched and 2 were put right.");
    EXPECT_EQ(summary(1, 1, 1, 2),
              "An earlier run was interrupted. 1 file was finished, 1 was left untouched, 1 was "
              "put right and 2 need a look.");
    EXPECT_EQ(summary(0, 0, 0, 1), "An earlier run was interrupted. 1 file needs a look.");
    EXPECT_EQ(summary(0, 0, 0, 0), "An earlier run was interrupted.");
}

TEST(InterruptedRun, SaysThatItCouldNotBeRecordedYet) {
    OrdovanInterruptedRun run;
    run.finished = 2;
    run.isRecorded = false;
    EXPECT_EQ(run.summary(),
              "An earlier run was interrupted. 2 files were finished. It could not be recorded yet and will be looked "
              "at again.");
}

TEST(InterruptedRun, SaysThatItsRecordCouldNotBeRead) {
    OrdovanInterruptedRun run;
    run.isUnreadable = true;
    EXPECT_EQ(run.summary(), "An earlier run was interrupted, and its record could not be read. It was set aside.");
}

TEST_F(Reconcile, CountsItselfInTheHistory) {
    tree({"a = one", "b = two", "c = three"});
    intend("/r/a", "/r/ordovan+/a");
    intend("/r/b", "/r/ordovan+/b");
    intend("/r/c", "/r/ordovan+/c");
    run.intent.id = ordovan::Uuid::random();
    move("/r/a", "/r/ordovan+/a");
    memory.removeTree("/r/c");
    const auto record = reconcile().historyRecord(run.intent);
    EXPECT_EQ(record, (OrdovanRunRecord{run.intent.id, Kind::organize, 100, "r", 1, 1, 1}));
}

}  // namespace
