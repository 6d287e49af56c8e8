// A move across volumes that was interrupted: the partial copy, the published one and the original.

#include "tests/support/ReconcileFixture.h"

#include <gmock/gmock.h>

#include <string>

using ordovan::test::ReconcileFixture;
using ::testing::ElementsAre;
using NoteKind = OrdovanRunNote::Kind;

namespace {

constexpr const char* lost = "The file was moved or deleted while organizing.";
constexpr const char* partial = "/r/ordovan+/.a.ordovan-partial-00000000-0000-4000-8000-000000000000";

class ReconcileCopies : public ReconcileFixture {
protected:
    void SetUp() override {
        memory.addVolume("/r/ordovan+");
        tree({"a = one"});
        intend("/r/a", "/r/ordovan+/a");
        note(NoteKind::begun, "one", partial, false);
    }
};

TEST_F(ReconcileCopies, AnUnfinishedCopyOfAWholeFileIsRemoved) {
    memory.write(partial, "on");
    const auto found = OrdovanReconciler::reconcile(run, ports());
    EXPECT_THAT(counts(found), ElementsAre(0, 0, 1, 0));
    EXPECT_THAT(sentences(found), ElementsAre("An unfinished copy of it was removed; the file is where it was."));
    EXPECT_FALSE(memory.item(partial));
    EXPECT_EQ(memory.read("/r/a"), "one");
    EXPECT_THAT(counts(reconcile()), ElementsAre(0, 1, 0, 0));
}

TEST_F(ReconcileCopies, OnlyCopiesThatWereNotedAreTouched) {
    const std::string other = "/r/ordovan+/.a.ordovan-partial-00000000-0000-4000-8000-000000000001";
    memory.write(other, "one");
    reconcile();
    EXPECT_EQ(memory.read(other), "one");
}

TEST_F(ReconcileCopies, APublishedCopyWhoseOriginalStandsIsTakenAwayAgain) {
    copy("/r/a", "/r/ordovan+/a");
    const auto found = OrdovanReconciler::reconcile(run, ports());
    EXPECT_THAT(counts(found), ElementsAre(0, 0, 1, 0));
    EXPECT_THAT(sentences(found), ElementsAre("Its verified copy was taken away again; the file is where it was."));
    EXPECT_FALSE(memory.item("/r/ordovan+/a"));
    EXPECT_EQ(memory.read("/r/a"), "one");
    EXPECT_THAT(counts(reconcile()), ElementsAre(0, 1, 0, 0));
}

TEST_F(ReconcileCopies, ACopyThatDiffersFromItsOriginalStays) {
    memory.write("/r/ordovan+/a", "two");
    EXPECT_THAT(sentences(reconcile()), ElementsAre("A file already exists at the destination; left untouched."));
    memory.write("/r/ordovan+/a", "one");
    memory.write("/r/a", "new");
    EXPECT_THAT(counts(reconcile()), ElementsAre(0, 1, 0, 0));
    EXPECT_EQ(memory.read("/r/ordovan+/a"), "one");
    EXPECT_EQ(memory.read("/r/a"), "new");
}

TEST_F(ReconcileCopies, AFileBesideItsOwnPartialCopyIsNotTheRunsAndStays) {
    copy("/r/a", "/r/ordovan+/a");
    memory.write(partial, "one");
    EXPECT_THAT(sentences(reconcile()), ElementsAre(std::string("A verified copy of it lies at ") + partial + "."));
    EXPECT_EQ(memory.read("/r/ordovan+/a"), "one");
    memory.setModified("/r/ordovan+/a", 5);
    EXPECT_THAT(counts(OrdovanReconciler::reconcile(run, ports())), ElementsAre(0, 0, 1, 0));
    EXPECT_FALSE(memory.item(partial));
    EXPECT_THAT(counts(reconcile()), ElementsAre(0, 1, 0, 0));
    EXPECT_EQ(memory.read("/r/ordovan+/a"), "one");
}

TEST_F(ReconcileCopies, AnEqualFileOfAnotherTimeIsNotTheRunsAndStays) {
    copy("/r/a", "/r/ordovan+/a");
    memory.setModified("/r/ordovan+/a", 5);
    EXPECT_THAT(sentences(reconcile()), ElementsAre("A file already exists at the destination; left untouched."));
    EXPECT_EQ(memory.read("/r/ordovan+/a"), "one");
}

TEST_F(ReconcileCopies, ACopyOfAFileThatWasEmptiedSinceStaysAndIsSaid) {
    memory.write(partial, "one");
    memory.write("/r/a", "");
    EXPECT_THAT(sentences(reconcile()), ElementsAre(std::string("A verified copy of it lies at ") + partial + "."));
    EXPECT_EQ(memory.read(partial), "one");
}

TEST_F(ReconcileCopies, AFileThatWasCarriedOverGetsItsEntry) {
    copy("/r/a", "/r/ordovan+/a");
    memory.removeTree("/r/a");
    const auto found = reconcile();
    EXPECT_THAT(counts(found), ElementsAre(1, 0, 0, 0));
    EXPECT_THAT(sentences(found), ElementsAre("Copied, verified and moved."));
    EXPECT_THAT(found.journal.entries, ElementsAre(entry(false, "one", run.intent.items[0].identity)));
    EXPECT_TRUE(found.unseen.empty());
}

TEST_F(ReconcileCopies, AVerifiedCopyWithoutItsOriginalIsPutInPlace) {
    memory.write(partial, "one");
    memory.removeTree("/r/a");
    const auto found = OrdovanReconciler::reconcile(run, ports());
    EXPECT_THAT(counts(found), ElementsAre(0, 0, 1, 0));
    EXPECT_THAT(sentences(found), ElementsAre("Its verified copy was put in place."));
    EXPECT_EQ(found.run.outcomes[0].status, OrdovanExecutionStatus::moved);
    EXPECT_EQ(memory.read("/r/ordovan+/a"), "one");
    EXPECT_THAT(found.journal.entries, ElementsAre(entry(false, "one", run.intent.items[0].identity)));
    EXPECT_EQ(reconcile().journal, found.journal);
}

TEST_F(ReconcileCopies, AnUnfinishedCopyWithoutItsOriginalStaysAndIsSaid) {
    memory.write(partial, "on");
    memory.removeTree("/r/a");
    const auto found = reconcile();
    EXPECT_THAT(sentences(found), ElementsAre(std::string("An unfinished copy of it lies at ") + partial + "."));
    EXPECT_EQ(memory.read(partial), "on");
    EXPECT_THAT(counts(found), ElementsAre(0, 0, 0, 1));
}

TEST_F(ReconcileCopies, AVerifiedCopyThatHasNoPlaceToGoStaysAndIsSaid) {
    memory.write(partial, "one");
    memory.removeTree("/r/a");
    memory.write("/r/ordovan+/a", "other");
    EXPECT_THAT(sentences(reconcile()), ElementsAre(std::string("A verified copy of it lies at ") + partial + "."));
    EXPECT_EQ(memory.read(partial), "one");
}

TEST_F(ReconcileCopies, ACopyThatIsOutOfSightWithItsOriginalKeepsAnEntry) {
    memory.removeTree("/r/a");
    const auto found = reconcile();
    EXPECT_THAT(sentences(found), ElementsAre(lost));
    EXPECT_THAT(found.journal.entries, ElementsAre(entry(false, "one", run.intent.items[0].identity)));
    EXPECT_TRUE(found.unseen.contains("/r/ordovan+/a"));
}

}  // namespace
