#include "tests/support/QtTestMain.h"
#include "tests/support/TidyWorld.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

using ordovan::test::SignalCount;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

namespace {

class TidyRecords : public ordovan::test::TidyWorld {
protected:
    TidyRecords() { tree({"x.pdf = 1", "y.jpg = 2"}); }

    /// Another process's run that moves one file to the Trash.
    void trashElsewhere(const std::string& path) {
        const auto other = previewed();
        EXPECT_TRUE(other->trashBigFiles({{Url::file(path), 1}}));
        tasks.finish();
    }
    static std::vector<std::string> summaries(const OrdovanRunHistory& history) {
        std::vector<std::string> lines;
        for (const auto& record : history.records) lines.push_back(record.summary());
        return lines;
    }
};

TEST_F(TidyRecords, AreReadAgainInTheBackground) {
    const auto model = make();
    trashElsewhere("/r/x.pdf");
    EXPECT_THAT(model->history().records, IsEmpty());
    const SignalCount histories(*model, &TidyViewModel::historyChanged);
    const SignalCount trash(*model, &TidyViewModel::trashRecordChanged);
    const SignalCount folders(*model, &TidyViewModel::recentFoldersChanged);
    model->refreshRecords();
    EXPECT_THAT(model->history().records, IsEmpty());
    tasks.finish();
    EXPECT_THAT(model->history().records, SizeIs(1));
    EXPECT_THAT(originals(*model->trashRecord()), ElementsAre("x.pdf"));
    EXPECT_THAT(model->recentFolders(), ElementsAre(Url::file("/r")));
    model->refreshRecords();
    tasks.finish();
    EXPECT_EQ(histories + trash + folders, 3);
}

TEST_F(TidyRecords, AreLoadedInTheBackgroundWhereThatIsAskedFor) {
    trashElsewhere("/r/x.pdf");
    const auto model = make({.loadsInBackground = true});
    EXPECT_THAT(model->history().records, IsEmpty());
    EXPECT_THAT(model->recentFolders(), IsEmpty());
    tasks.finish();
    EXPECT_THAT(model->history().records, SizeIs(1));
    EXPECT_THAT(originals(*model->trashRecord()), ElementsAre("x.pdf"));
    EXPECT_THAT(model->recentFolders(), ElementsAre(Url::file("/r")));
}

TEST_F(TidyRecords, ThatCanNotBeReadAgainStayAsTheyAre) {
    trashElsewhere("/r/x.pdf");
    const auto model = make();
    memory.write("/records/history.json", "garbage");
    memory.write("/records/trash-record.json", "garbage");
    model->refreshRecords();
    tasks.finish();
    EXPECT_THAT(model->history().records, SizeIs(1));
    EXPECT_THAT(originals(*model->trashRecord()), ElementsAre("x.pdf"));
}

TEST_F(TidyRecords, ReadBeforeARunEndedDoNotReplaceWhatItLeft) {
    const auto model = previewed();
    model->refreshRecords();
    tasks.work();  // read, and not yet arrived
    EXPECT_TRUE(model->trashBigFiles({{Url::file("/r/x.pdf"), 1}}));
    ordovan::test::ManualTaskRunner& runner = tasks;
    runner.work();
    const SignalCount histories(*model, &TidyViewModel::historyChanged);
    runner.finish();
    EXPECT_THAT(model->history().records, SizeIs(1));
    EXPECT_THAT(originals(*model->trashRecord()), ElementsAre("x.pdf"));
    EXPECT_EQ(histories, 1);
}

TEST_F(TidyRecords, KeepTheRunsThatCouldNotBeStoredInFront) {
    recordsRuns = false;
    const auto model = previewed();
    heldElsewhere = {"/records"};
    EXPECT_TRUE(model->organize());
    tasks.finish();
    heldElsewhere.clear();
    trashElsewhere("/r/ordovan+/Documents/x.pdf");
    model->refreshRecords();
    tasks.finish();
    ASSERT_THAT(model->history().records, SizeIs(2));
    EXPECT_EQ(summaries(model->history()).front(), "Organized 2 files in r");
}

TEST_F(TidyRecords, OfARunThatAnotherProgramStoredMeanwhileAreThereOnce) {
    const auto model = previewed();
    heldElsewhere = {"/records"};
    EXPECT_TRUE(model->organize());
    tasks.finish();
    heldElsewhere.clear();
    trashElsewhere("/r/ordovan+/Documents/x.pdf");
    EXPECT_THAT(storedJournal()->entries, SizeIs(2));
    model->refreshRecords();
    tasks.finish();
    EXPECT_THAT(summaries(model->history()),
                ElementsAre("Moved 1 duplicate file to the Trash in r", "Organized 2 files in r"));
}

TEST_F(TidyRecords, OfARunThatCouldNotBeSavedAreSaidToBeInMemoryOnly) {
    const auto model = previewed();
    EXPECT_FALSE(model->journalUnsaved());
    heldElsewhere = {"/records"};
    EXPECT_TRUE(model->organize());
    tasks.finish();
    EXPECT_EQ(
        model->journalWarning(),
        "Files were organized, but the undo record could not be saved to disk. Undo is available until you quit.");
    EXPECT_TRUE(model->journalUnsaved());
    EXPECT_FALSE(storedJournal());
    EXPECT_THAT(recoverable(*model), SizeIs(2));
    heldElsewhere.clear();
    EXPECT_TRUE(model->undo());
    tasks.finish();
    EXPECT_FALSE(model->journalUnsaved());
}

TEST_F(TidyRecords, OfTrashedFilesThatCouldNotBeSavedAreSaidToBeInMemoryOnly) {
    const auto model = previewed();
    records.failAll("write", ENOSPC);
    EXPECT_TRUE(model->trashBigFiles({{Url::file("/r/x.pdf"), 1}}));
    tasks.finish();
    EXPECT_TRUE(model->journalUnsaved());
    records.failAll("", 0);
    EXPECT_TRUE(model->restore());
    tasks.finish();
    EXPECT_FALSE(model->journalUnsaved());
}

TEST_F(TidyRecords, AreTriedBeforeARun) {
    const auto model = make();
    EXPECT_TRUE(model->canSaveRecords());
    records.failAll("write", EROFS);
    EXPECT_FALSE(model->canSaveRecords());
}

TEST_F(TidyRecords, ReadWhileARunMovesNothingStay) {
    const auto other = previewed();
    const auto model = previewed({.repreviewsAfterRuns = false});
    other->setExcluded({other->plan()->proposals[1].id()});
    other->organize();
    tasks.finish();
    model->setExcluded({model->plan()->proposals[1].id()});  // what is left has been moved
    EXPECT_TRUE(model->organize());
    model->preview();
    tasks.work(1);
    tasks.deliver();
    EXPECT_THAT(recoverable(*model), SizeIs(1));
    tasks.finish();
    EXPECT_EQ(model->lastReport()->movedCount(), 0U);
    EXPECT_THAT(recoverable(*model), SizeIs(1));
}

}  // namespace
