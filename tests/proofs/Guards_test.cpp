// Guards that another guard behind them covers as a rule, each on its own.

#include "OrdovanCore/DuplicateTrasher.h"
#include "OrdovanCore/Executor.h"
#include "OrdovanCore/Reconcile.h"
#include "OrdovanCore/platform/RunFileSystem.h"
#include "OrdovanCore/testing/TreeBuilder.h"
#include "tests/proofs/SystemCalls.h"
#include "tests/support/ApplyFixture.h"
#include "tests/support/MemoryReconcile.h"
#include "tests/support/Results.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <fstream>
#include <string>

using namespace ordovan::proofs;

namespace {

using Guards = ordovan::test::ApplyFixture;

TEST_F(Guards, ARenameThatTheSystemRefusesBetweenTwoMountsBecomesACopy) {
    tree({"a.pdf = 1"});
    memory.addMountOfRootDevice("/r/ordovan+/Documents");
    EXPECT_EQ(fate(toDocuments("a.pdf")), "moved: Copied, verified and moved.");
    EXPECT_EQ(memory.read("/r/ordovan+/Documents/a.pdf"), "1");
    EXPECT_FALSE(memory.item("/r/a.pdf"));
}

TEST_F(Guards, AGroupThatTellsAnotherSizeThanItsFilesHaveIsLeftAlone) {
    tree({"a = same", "b = same"});
    const OrdovanDuplicateGroup group{ordovan::testing::digestOf("same"), 5, {Url::file("/r/a"), Url::file("/r/b")}};
    const auto report = OrdovanDuplicateTrasher::trashExtras(group, Url::file("/r/a"), Url::file("/r"), fs);
    ASSERT_EQ(report.outcomes.size(), 1U);
    EXPECT_EQ(report.outcomes[0].message, "The copy you chose to keep changed or is missing; nothing was moved.");
}

/// A run was interrupted that had copied "one" from "/r/a.pdf"; what stands at its two places by now is this.
class InterruptedCopy : public ordovan::test::ApplyFixture {
protected:
    void reconcile(std::string_view source, std::string_view destination) {
        memory.write("/r/a.pdf", source);
        memory.write("/r/ordovan+/Documents/a.pdf", destination);
        for (const char* path : {"/r/a.pdf", "/r/ordovan+/Documents/a.pdf"}) memory.setModified(path, 5);
        OrdovanRunItem item;
        item.source = std::string_view("/r/a.pdf");
        item.destination = std::string_view("/r/ordovan+/Documents/a.pdf");
        item.byteSize = 3;
        item.modifiedNs = 5;
        item.identity = memory.fileIdentity(Url::file("/r/a.pdf")).value();
        OrdovanRunNote note;
        note.byteSize = 3;
        note.contentHash = ordovan::testing::digestOf("one");
        note.identity = item.identity;
        note.path = OrdovanPartialName::beside(Url::file(item.destination)).sharedPath();
        OrdovanUnfinishedRun run;
        run.intent.id = ordovan::Uuid::random();
        run.intent.root = Url::file("/r");
        run.intent.outputRoots = {Url::file("/r/ordovan+")};
        run.intent.items = {item};
        run.notes = {note};
        (void)OrdovanReconciler::reconcile(run, ordovan::test::reconcilePorts(memory, fs));
    }
    [[nodiscard]] std::string at(std::string_view path) const { return memory.read(path).value_or("nothing"); }
};

TEST_F(InterruptedCopy, IsTakenAwayWhereItIsProvedToBeOne) {
    reconcile("one", "one");
    EXPECT_EQ(at("/r/a.pdf"), "one");
    EXPECT_EQ(at("/r/ordovan+/Documents/a.pdf"), "nothing");
}

TEST_F(InterruptedCopy, IsNotTakenForAFileThatTakesItsPlaceAtTheLastInstant) {
    fs.setBeforeCall([&](const ordovan::testing::FaultyFileSystem::Call& call) {
        if (call.operation == ordovan::testing::Operation::move && call.url.path().ends_with("/a.pdf")) {
            memory.replace(call.url.path(), "theirs");
        }
    });
    reconcile("one", "one");
    EXPECT_EQ(at("/r/a.pdf"), "one");
    EXPECT_EQ(at("/r/ordovan+/Documents/a.pdf"), "theirs");
    EXPECT_EQ(memory.list("/r/ordovan+/Documents")->size(), 1U);
}

TEST_F(InterruptedCopy, StaysWhereItIsAnotherFileOfTheSameSizeAndTime) {
    reconcile("one", "two");
    EXPECT_EQ(at("/r/a.pdf"), "one");
    EXPECT_EQ(at("/r/ordovan+/Documents/a.pdf"), "two");
}

TEST_F(InterruptedCopy, StaysWhereItsSourceHasAnotherContentByNow) {
    reconcile("two", "one");
    EXPECT_EQ(at("/r/a.pdf"), "two");
    EXPECT_EQ(at("/r/ordovan+/Documents/a.pdf"), "one");
}

TEST_F(Guards, AFileThatChangesWhileItIsHashedHasNoHash) {
    const ordovan::test::TempFolder folder;
    const Url file = folder.write("a.pdf", "content");
    ordovan::RunFileSystem disk(folder.url());
    bool isChanged = false;
    SystemCalls::watch({.below = folder.path("a.pdf"),
                        .changesOnly = false,
                        .at = 1,
                        .forGood = true,
                        .after =
                            [&] {
                                if (isChanged) return;
                                isChanged = true;
                                std::ofstream(folder.path("a.pdf"), std::ios::app) << "!";
                            },
                        .applies = [](std::string_view name) { return name == "read"; }});
    const auto hash = disk.contentHash(file);
    SystemCalls::ignore();
    EXPECT_TRUE(isChanged);
    EXPECT_EQ(ordovan::test::error(hash), EBUSY);
}

}  // namespace
