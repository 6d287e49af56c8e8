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

constexpr const char* notUpdated =
    "The undo record could not be updated. Files that were restored may be listed again; restoring them again is "
    "refused safely.";
constexpr const char* notAdded = "This run couldn't be added to the history on disk. It is listed until you quit.";

class TidyHistory : public ordovan::test::TidyWorld {
protected:
    /// A controller that has organized one file.
    std::unique_ptr<TidyViewModel> organized() {
        tree({"x.pdf = 1"});
        auto model = previewed();
        QObject::connect(model.get(), &TidyViewModel::historyCleared, model.get(),
                         [this](const QString& error) { clearings.push_back(error.toStdString()); });
        model->organize();
        tasks.finish();
        return model;
    }
    static std::vector<std::string> summaries(const OrdovanRunHistory& history) {
        std::vector<std::string> lines;
        for (const auto& record : history.records) lines.push_back(record.summary());
        return lines;
    }

    std::vector<std::string> clearings;  // the errors of each, or ""
};

TEST_F(TidyHistory, IsEmptiedOnDiskAsWell) {
    const auto model = organized();
    const SignalCount changes(*model, &TidyViewModel::historyChanged);
    model->clearHistory();
    tasks.finish();
    EXPECT_THAT(model->history().records, IsEmpty());
    EXPECT_THAT(history.load().records, IsEmpty());
    EXPECT_THAT(clearings, ElementsAre(""));
    EXPECT_EQ(changes, 1);
    EXPECT_TRUE(model->recoverableJournal());
}

TEST_F(TidyHistory, StaysWhenItCanNotBeEmptiedOnDisk) {
    const auto model = organized();
    records.failAll("write", EROFS);
    model->clearHistory();
    tasks.finish();
    EXPECT_THAT(model->history().records, SizeIs(1));
    EXPECT_THAT(clearings, ElementsAre("The history couldn't be cleared."));
    EXPECT_FALSE(model->journalWarning());
}

TEST_F(TidyHistory, SaysThatItCouldNotBeEmptiedWhateverWarningStands) {
    const auto model = organized();
    heldElsewhere = {"/records"};
    model->undo();
    tasks.finish();
    model->clearHistory();
    tasks.finish();
    EXPECT_EQ(model->journalWarning(), notUpdated);
    EXPECT_THAT(clearings, ElementsAre("Another ordovan+ is saving its records. Try again in a moment."));
}

TEST_F(TidyHistory, SaysThatAnotherProcessIsSavingWhenItCanNotBeEmptied) {
    const auto model = organized();
    heldElsewhere = {"/records"};
    model->clearHistory();
    tasks.finish();
    EXPECT_THAT(clearings, ElementsAre("Another ordovan+ is saving its records. Try again in a moment."));
    EXPECT_THAT(model->history().records, SizeIs(1));
}

TEST_F(TidyHistory, SaysWhenARunCouldNotBeStored) {
    tree({"x.pdf = 1"});
    const auto model = previewed();
    memory.makeDirectory("/records/history.json");
    records.failAll("setAside", EACCES);
    model->organize();
    tasks.finish();
    EXPECT_EQ(model->journalWarning(), notAdded);
    EXPECT_THAT(summaries(model->history()), ElementsAre("Organized 1 file in r"));
    memory.removeTree("/records/history.json");
    model->undo();
    tasks.finish();
    EXPECT_FALSE(model->journalWarning());
    EXPECT_EQ(history.load(), model->history());
}

TEST_F(TidyHistory, ShowsTheLaterOfTwoChangesWhicheverArrivesLast) {
    const auto model = organized();
    model->undo();
    model->clearHistory();
    tasks.work(0);  // the undo is recorded
    tasks.work(0);  // and then the list is emptied
    tasks.finish();
    EXPECT_THAT(model->history().records, IsEmpty());

    model->organize();
    model->clearHistory();
    tasks.work(1);  // the list is emptied first
    tasks.work(0);
    tasks.finish();
    EXPECT_THAT(summaries(model->history()), ElementsAre("Organized 1 file in r"));
    EXPECT_EQ(history.load(), model->history());
}

TEST_F(TidyHistory, KeepsARunThatCouldNotBeStoredUntilItCan) {
    tree({"x.pdf = 1"});
    const auto model = previewed();
    records.failAll("write", ENOSPC);
    model->organize();
    tasks.finish();
    EXPECT_THAT(summaries(model->history()), ElementsAre("Organized 1 file in r"));
    EXPECT_THAT(history.load().records, IsEmpty());
    records.failAll("", 0);
    model->undo();
    tasks.finish();
    EXPECT_THAT(summaries(model->history()), ElementsAre("Restored 1 file in r", "Organized 1 file in r"));
    EXPECT_EQ(history.load(), model->history());
}

TEST_F(TidyHistory, IsEmptyWhereItCanNotBeRead) {
    memory.write("/records/history.json", "garbage");
    EXPECT_THAT(make()->history().records, IsEmpty());
}

TEST_F(TidyHistory, ShowsWhatAnotherProcessRecordedAfterTheNextRun) {
    const auto model = organized();
    const auto other = previewed();
    other->undo();
    tasks.finish();
    EXPECT_THAT(model->history().records, SizeIs(1));
    model->preview();
    tasks.finish();
    model->organize();
    tasks.finish();
    EXPECT_THAT(summaries(model->history()),
                ElementsAre("Organized 1 file in r", "Restored 1 file in r", "Organized 1 file in r"));
}

}  // namespace
