#include "tests/support/ReconcileFixture.h"

#include <gmock/gmock.h>

#include <string>

using ordovan::testing::digestOf;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using namespace ordovan::test::interrupted;

namespace {

using ReconcileTrash = ordovan::test::ReconcileFixture;

TEST_F(ReconcileTrash, ATrashedFileIsFoundInTheTrashAndGetsItsEntry) {
    tree({"a = one"});
    intend("/r/a", "", Kind::trash);
    ASSERT_TRUE(memory.trash(Url::file("/r/a")));
    const auto found = reconcile();
    EXPECT_THAT(counts(found), ElementsAre(1, 0, 0, 0));
    EXPECT_THAT(sentences(found), ElementsAre("Moved to the Trash."));
    EXPECT_THAT(found.trashed.entries, ElementsAre(OrdovanTrashEntry("/r/a", inTrash, 3, digestOf("one"))));
    EXPECT_EQ(found.run.outcomes[0].destination.path(), inTrash);
}

TEST_F(ReconcileTrash, ATrashedFileThatWasNotedNeedsNoSearch) {
    tree({"a = one"});
    intend("/r/a", "", Kind::trash);
    ASSERT_TRUE(memory.trash(Url::file("/r/a")));
    note(NoteKind::done, "one", inTrash);
    ordovan::ReconcilePorts blind = ports();
    blind.findInTrash = [](std::span<const Url>) { return std::unexpected(OrdovanSystemError::posix(EIO)); };
    const auto found = OrdovanReconciler::reconcile(run, blind);
    EXPECT_THAT(found.trashed.entries, ElementsAre(OrdovanTrashEntry("/r/a", inTrash, 3, digestOf("one"))));
    EXPECT_TRUE(found.isComplete);
}

TEST_F(ReconcileTrash, ATrashThatCanNotBeReadIsOfNoConcernToAFileThatStands) {
    tree({"a = one"});
    intend("/r/a", "", Kind::trash);
    ordovan::ReconcilePorts blind = ports();
    blind.findInTrash = [](std::span<const Url>) { return std::unexpected(OrdovanSystemError::posix(EACCES)); };
    const auto found = OrdovanReconciler::reconcile(run, blind);
    EXPECT_THAT(counts(found), ElementsAre(0, 1, 0, 0));
    EXPECT_TRUE(found.isComplete);
    memory.hardLink("/home/user/second name", "/r/a");
    EXPECT_FALSE(OrdovanReconciler::reconcile(run, blind).isComplete) << "it may be one in the Trash";
    memory.removeTree("/r/a");
    EXPECT_FALSE(OrdovanReconciler::reconcile(run, blind).isComplete) << "it may lie in the Trash";
}

TEST_F(ReconcileTrash, AFileThatIsOutOfReachByNowKeepsTheEntryThatWasNoted) {
    tree({"sub/a = one"});
    intend("/r/sub/a", "", Kind::trash);
    note(NoteKind::done, "one", inTrash);
    memory.removeTree("/r/sub");
    memory.link("/r/sub", "/s");
    const auto found = reconcile();
    EXPECT_THAT(counts(found), ElementsAre(0, 0, 0, 1));
    EXPECT_THAT(found.trashed.entries, ElementsAre(OrdovanTrashEntry("/r/sub/a", inTrash, 3, digestOf("one"))));
}

TEST_F(ReconcileTrash, OfATrashedFileThatAnotherReplacedTheNoteIsRecorded) {
    tree({"a = one"});
    intend("/r/a", "", Kind::trash);
    ASSERT_TRUE(memory.trash(Url::file("/r/a")));
    note(NoteKind::done, "one", inTrash);
    memory.replace(inTrash, "somebody else's");
    EXPECT_THAT(reconcile().trashed.entries, ElementsAre(OrdovanTrashEntry("/r/a", inTrash, 3, digestOf("one"))));
}

TEST_F(ReconcileTrash, AnotherFileOfThatPlaceInTheTrashIsNotTaken) {
    tree({"a = older"});
    ASSERT_TRUE(memory.trash(Url::file("/r/a")));
    tree({"a = one"});
    intend("/r/a", "", Kind::trash);
    memory.removeTree("/r/a");
    const auto found = reconcile();
    EXPECT_THAT(found.trashed.entries, IsEmpty());
    EXPECT_THAT(sentences(found), ElementsAre(lost));
}

TEST_F(ReconcileTrash, AnInfoFileWithoutAnItemIsRemovedWhileTheFileStands) {
    tree({"a = one"});
    intend("/r/a", "", Kind::trash);
    memory.write(info, "[Trash Info]\nPath=/r/a\nDeletionDate=2026-11-21T00:00:00\n");
    const auto found = OrdovanReconciler::reconcile(run, ports());
    EXPECT_THAT(counts(found), ElementsAre(0, 0, 1, 0));
    EXPECT_THAT(sentences(found), ElementsAre("It had not reached the Trash; the file is where it was."));
    EXPECT_FALSE(memory.item(info));
    EXPECT_THAT(counts(reconcile()), ElementsAre(0, 1, 0, 0));
}

TEST_F(ReconcileTrash, ASecondNameInTheTrashIsTakenAwayAgain) {
    tree({"a = one"});
    intend("/r/a", "", Kind::trash);
    memory.write(info, "[Trash Info]\nPath=/r/a\nDeletionDate=2026-11-21T00:00:00\n");
    memory.hardLink(inTrash, "/r/a");
    const auto found = OrdovanReconciler::reconcile(run, ports());
    EXPECT_THAT(counts(found), ElementsAre(0, 0, 1, 0));
    EXPECT_EQ(memory.read("/r/a"), "one");
    EXPECT_FALSE(memory.item(inTrash));
    EXPECT_FALSE(memory.item(info));
}

TEST_F(ReconcileTrash, AHardLinkThatWasInTheTrashBeforeStaysThere) {
    tree({"a = one"});
    memory.write(info, "[Trash Info]\nPath=/r/a\nDeletionDate=2026-11-21T00:00:00\n");
    memory.hardLink(inTrash, "/r/a");
    intend("/r/a", "", Kind::trash);
    EXPECT_THAT(sentences(reconcile()), ElementsAre("The file has another name in the Trash; left untouched."));
    EXPECT_EQ(memory.read(inTrash), "one");
}

TEST_F(ReconcileTrash, AFilePutBackTakesItsEntryAndItsInfoFileAway) {
    tree({"a = one"});
    ASSERT_TRUE(memory.trash(Url::file("/r/a")));
    intend(inTrash, "/r/a", Kind::restoreTrash, "one");
    const std::string text = *memory.read(info);
    ASSERT_TRUE(memory.move(Url::file(inTrash), Url::file("/r/a")));
    memory.write(info, text);
    const auto found = reconcile();
    EXPECT_THAT(found.putBack, ElementsAre(inTrash));
    EXPECT_THAT(sentences(found), ElementsAre("Put back."));
    EXPECT_FALSE(memory.item(info));
}

TEST_F(ReconcileTrash, AFileStillInTheTrashKeepsItsEntry) {
    tree({"a = one"});
    ASSERT_TRUE(memory.trash(Url::file("/r/a")));
    intend(inTrash, "/r/a", Kind::restoreTrash, "one");
    const auto found = reconcile();
    EXPECT_THAT(found.putBack, IsEmpty());
    EXPECT_THAT(counts(found), ElementsAre(0, 1, 0, 0));
    EXPECT_TRUE(memory.item(info));
}

TEST_F(ReconcileTrash, APutBackFromAPlaceThatIsNoTrashIsRefused) {
    tree({"a = one"});
    memory.write("/s/x", "one");
    intend("/s/x", "/r/b", Kind::restoreTrash, "one");
    EXPECT_THAT(sentences(reconcile()), ElementsAre("Path no longer within the authorized scope."));
}

}  // namespace
