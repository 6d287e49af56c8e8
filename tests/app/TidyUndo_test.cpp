#include "tests/support/QtTestMain.h"
#include "tests/support/TidyWorld.h"

#include <gmock/gmock.h>

#include <string>
#include <utility>
#include <vector>

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;
using ::testing::SizeIs;
using ::testing::UnorderedElementsAre;

namespace {

constexpr const char* x = "x.pdf -> ordovan+/Documents/x.pdf";
constexpr const char* y = "y.jpg -> ordovan+/Images/y.jpg";
constexpr const char* notUpdated =
    "The undo record could not be updated. Files that were restored may be listed again; restoring them again is "
    "refused safely.";

class TidyUndo : public ordovan::test::TidyWorld {
protected:
    /// A controller that has organized x.pdf and y.jpg.
    std::unique_ptr<TidyViewModel> organized(TidyViewModel::Options options = {}) {
        tree({"x.pdf = 1", "y.jpg = 2"});
        before = memory.snapshot("/r");
        auto model = previewed(options);
        model->organize();
        tasks.finish();
        now += 60;
        return model;
    }
    bool undo(TidyViewModel& model) {
        const bool started = model.undo();
        tasks.finish();
        return started;
    }
    bool undo(TidyViewModel& model, const std::unordered_set<std::string>& ids) {
        const bool started = model.undo(ids);
        tasks.finish();
        return started;
    }
    /// An entry for a file that lies at its destination.
    OrdovanJournalEntry entry(const std::string& source, const std::string& destination) {
        const Url url = Url::file(destination);
        return {source, destination, true, *memory.fileSize(url), *memory.contentHash(url), *memory.fileIdentity(url)};
    }
    void store(std::vector<OrdovanJournalEntry> entries) {
        OrdovanJournal journal;
        journal.entries = std::move(entries);
        memory.write(journalPath(), journal.encoded());
    }

    std::map<std::string, std::string> before;
};

TEST_F(TidyUndo, OfEverythingGivesTheFolderBackAndDeletesTheRecord) {
    const auto model = organized();
    EXPECT_TRUE(undo(*model));
    EXPECT_THAT(messages(*model), ElementsAre("Restored.", "Restored."));
    auto after = memory.snapshot("/r");
    after.erase("ordovan+");
    EXPECT_EQ(after, before);
    EXPECT_FALSE(memory.exists(Url::file("/r/ordovan+/Documents")));
    EXPECT_FALSE(model->recoverableJournal());
    EXPECT_FALSE(memory.exists(Url::file(journalPath())));
    EXPECT_FALSE(model->journalWarning());
}

TEST_F(TidyUndo, OfOneFileLeavesTheOthersInTheRecord) {
    const auto model = organized();
    EXPECT_TRUE(undo(*model, {"/r/ordovan+/Documents/x.pdf"}));
    EXPECT_EQ(memory.read("/r/x.pdf"), "1");
    EXPECT_EQ(memory.read("/r/ordovan+/Images/y.jpg"), "2");
    EXPECT_THAT(recoverable(*model), ElementsAre(y));
    EXPECT_THAT(lines(*storedJournal()), ElementsAre(y));
}

TEST_F(TidyUndo, RecordsTheRunInTheHistoryAndPreviewsAgain) {
    const auto model = organized();
    undo(*model);
    ASSERT_THAT(model->history().records, SizeIs(2));
    EXPECT_EQ(model->history().records[0].summary(), "Restored 2 files in r");
    EXPECT_EQ(model->history().records[0].epoch, now);
    EXPECT_EQ(history.load(), model->history());
    EXPECT_THAT(proposed(*model), ElementsAre(x, y));
}

TEST_F(TidyUndo, WithoutAJournalOrAKnownEntryDoesNothing) {
    EXPECT_FALSE(make()->undo());
    tree({"x.pdf = 1"});
    EXPECT_FALSE(previewed()->undo());
    store({});
    EXPECT_FALSE(previewed()->undo());
    const auto model = organized();
    EXPECT_FALSE(model->undo({"/r/never.pdf"}));
    EXPECT_FALSE(model->undo(std::unordered_set<std::string>()));
    EXPECT_EQ(tasks.waiting(), 0u);
    EXPECT_FALSE(model->isApplying());
}

TEST_F(TidyUndo, OfTheFolderLeftBehindDoesNothingInTheNewOne) {
    const auto model = organized();
    memory.makeDirectory("/s");
    model->chooseFolder(Url::file("/s"));
    EXPECT_FALSE(model->undo());
}

TEST_F(TidyUndo, KeepsARefusedEntryAndOffersItAgain) {
    const auto model = organized();
    memory.write("/r/x.pdf", "in the way");
    undo(*model);
    EXPECT_THAT(messages(*model), UnorderedElementsAre("Original location is occupied; undo skipped.", "Restored."));
    EXPECT_THAT(recoverable(*model), ElementsAre(x));
    memory.removeTree("/r/x.pdf");
    undo(*model);
    EXPECT_EQ(memory.read("/r/x.pdf"), "1");
    EXPECT_FALSE(model->recoverableJournal());
}

TEST_F(TidyUndo, CoversBothOutputFolders) {
    tree({"ordovan+/Documents/x.pdf = 1", "Organized/Images/y.jpg = 2"});
    store({entry("/r/y.jpg", "/r/Organized/Images/y.jpg"), entry("/r/x.pdf", "/r/ordovan+/Documents/x.pdf")});
    const auto model = previewed();
    undo(*model);
    EXPECT_THAT(messages(*model), ElementsAre("Restored.", "Restored."));
    EXPECT_EQ(memory.read("/r/x.pdf"), "1");
    EXPECT_EQ(memory.read("/r/y.jpg"), "2");
    EXPECT_FALSE(memory.exists(Url::file("/r/Organized/Images")));
    EXPECT_FALSE(model->recoverableJournal());
}

TEST_F(TidyUndo, CountsItsProgressOverAllOutputFolders) {
    tree({"ordovan+/Documents/x.pdf = 1", "Organized/Images/y.jpg = 2"});
    store({entry("/r/y.jpg", "/r/Organized/Images/y.jpg"), entry("/r/x.pdf", "/r/ordovan+/Documents/x.pdf")});
    const auto model = previewed();
    std::vector<std::pair<quint64, quint64>> told;
    QObject::connect(model.get(), &TidyViewModel::runProgressed,
                     [&](quint64 done, quint64 total) { told.emplace_back(done, total); });
    undo(*model);
    EXPECT_THAT(told, ElementsAre(Pair(1u, 2u), Pair(2u, 2u)));
}

TEST_F(TidyUndo, RefusesEntriesOutsideTheOutputFoldersAndSaysSo) {
    tree({"mine/a.pdf = 1", "ordovan+/b.pdf = 2"});
    memory.write("/etc/passwd", "3");
    store({entry("/r/a.pdf", "/r/mine/a.pdf"), entry("/r/p", "/etc/passwd"), entry("/etc/b.pdf", "/r/ordovan+/b.pdf"),
           entry("/r/q", "/r/ordovan+/../../etc/passwd")});
    before = memory.snapshot("/r");
    const auto model = previewed();
    memory.clearLog();
    undo(*model);
    const std::string refused = "Journal entry is outside the authorized scope; undo refused.";
    EXPECT_THAT(messages(*model), ElementsAre(refused, refused, refused, refused));
    EXPECT_THAT(memory.changes(), IsEmpty());
    EXPECT_EQ(memory.snapshot("/r"), before);
    EXPECT_THAT(recoverable(*model), SizeIs(4));
}

TEST_F(TidyUndo, KeepsWhatAnotherProcessRecordedMeanwhile) {
    const auto model = organized();
    memory.write("/r/ordovan+/Documents/o.pdf", "3");
    auto entries = storedJournal()->entries;
    entries.push_back(entry("/r/o.pdf", "/r/ordovan+/Documents/o.pdf"));
    store(entries);
    undo(*model);
    EXPECT_THAT(lines(*storedJournal()), ElementsAre("o.pdf -> ordovan+/Documents/o.pdf"));
    EXPECT_THAT(recoverable(*model), ElementsAre("o.pdf -> ordovan+/Documents/o.pdf"));
    EXPECT_EQ(memory.read("/r/ordovan+/Documents/o.pdf"), "3");
}

TEST_F(TidyUndo, ForgetsWhatAnotherProcessHasPutBackAlready) {
    const auto first = organized();
    const auto second = previewed();
    undo(*first);
    memory.write("/r/x.pdf", "changed since");
    undo(*second);
    EXPECT_FALSE(second->recoverableJournal());
    EXPECT_FALSE(storedJournal());
    EXPECT_EQ(second->lastReport()->movedCount(), 0u);
}

TEST_F(TidyUndo, StillRecordsWhatItCouldNotRestoreWhenTheRecordIsGone) {
    const auto model = organized();
    memory.write("/r/x.pdf", "in the way");
    memory.removeTree(journalPath());
    undo(*model);
    EXPECT_THAT(lines(*storedJournal()), ElementsAre(x));
}

TEST_F(TidyUndo, SetsARecordAsideThatBecameUnreadable) {
    const auto model = organized();
    memory.write(journalPath(), "garbage");
    undo(*model, {"/r/ordovan+/Documents/x.pdf"});
    EXPECT_EQ(memory.read("/records/journals/.ordovan-journal.unreadable-1700000060.json"), "garbage");
    EXPECT_THAT(lines(*storedJournal()), ElementsAre(y));
    EXPECT_FALSE(model->journalWarning());
}

TEST_F(TidyUndo, WarnsWhenTheRecordCanNotBeWritten) {
    const auto model = organized();
    records.failAll("write", EROFS);
    undo(*model, {"/r/ordovan+/Documents/x.pdf"});
    EXPECT_EQ(model->journalWarning(), notUpdated);
    EXPECT_EQ(memory.read("/r/x.pdf"), "1");
    EXPECT_THAT(lines(*storedJournal()), ElementsAre(x, y));
}

TEST_F(TidyUndo, WarnsWhenTheRecordCanNotBeDeleted) {
    const auto model = organized({.repreviewsAfterRuns = false});
    records.failAll("remove", EROFS);
    undo(*model);
    EXPECT_EQ(model->journalWarning(), notUpdated);
    EXPECT_FALSE(model->recoverableJournal());
}

TEST_F(TidyUndo, RefusesSafelyWhatAStaleRecordListsAgain) {
    const auto model = organized();
    records.failAll("remove", EROFS);
    undo(*model);
    records.failAll("", 0);
    EXPECT_THAT(recoverable(*model), ElementsAre(x, y));
    undo(*model);
    EXPECT_EQ(model->lastReport()->skippedCount(), 2u);
    EXPECT_EQ(memory.read("/r/x.pdf"), "1");
    EXPECT_EQ(memory.read("/r/y.jpg"), "2");
}

TEST_F(TidyUndo, WorksFromMemoryWhenNothingCouldBeStored) {
    tree({"x.pdf = 1"});
    before = memory.snapshot("/r");
    const auto model = previewed();
    records.failAll("write", ENOSPC);
    model->organize();
    tasks.finish();
    EXPECT_TRUE(undo(*model));
    EXPECT_EQ(memory.read("/r/x.pdf"), "1");
    EXPECT_FALSE(model->recoverableJournal());
    EXPECT_EQ(model->journalWarning(),
              "This run couldn't be added to the history on disk. It is listed until you quit.");
    EXPECT_THAT(model->history().records, SizeIs(2));
}

TEST_F(TidyUndo, DoesNothingWhileAnotherRunHoldsTheFolder) {
    const auto model = organized();
    heldElsewhere = {"/r"};
    undo(*model);
    EXPECT_EQ(model->runRefusal(), "Another ordovan+ run is working in this folder. Try again when it has finished.");
    EXPECT_THAT(recoverable(*model), ElementsAre(x, y));
    EXPECT_EQ(memory.read("/r/ordovan+/Documents/x.pdf"), "1");
    EXPECT_FALSE(model->isApplying());
}

TEST_F(TidyUndo, StopsBetweenFilesWhenToldTo) {
    const auto model = organized({.repreviewsAfterRuns = false});
    fs.setAfterCall([&](const auto& call) {
        if (call.operation == ordovan::testing::Operation::move) model->cancelRun();
    });
    undo(*model);
    EXPECT_EQ(model->lastReport()->movedCount(), 1u);
    EXPECT_EQ(model->lastReport()->skippedCount(), 1u);
    EXPECT_THAT(recoverable(*model), SizeIs(1));
    EXPECT_EQ(storedJournal(), *model->recoverableJournal());
}

TEST_F(TidyUndo, KeepsFoldersThatStillHoldSomething) {
    const auto model = organized();
    memory.write("/r/ordovan+/Documents/kept.txt", "3");
    undo(*model);
    EXPECT_EQ(memory.read("/r/ordovan+/Documents/kept.txt"), "3");
    EXPECT_FALSE(memory.exists(Url::file("/r/ordovan+/Images")));
}

TEST_F(TidyUndo, IsNotOfferedInAFolderWhoseRecordHasNotBeenRead) {
    const auto model = organized();
    ordovan::testing::build(memory, "/s", {});
    const ordovan::test::SignalCount changes(*model, &TidyViewModel::recoverableJournalChanged);
    model->chooseFolder(Url::file("/s"));
    EXPECT_FALSE(model->recoverableJournal());
    EXPECT_EQ(changes, 1);
    EXPECT_FALSE(model->undo());
    EXPECT_FALSE(model->undo({"/r/ordovan+/Documents/x.pdf"}));
    model->chooseFolder(Url::file("/r"));
    EXPECT_FALSE(model->recoverableJournal());
    tasks.finish();
    EXPECT_THAT(recoverable(*model), ElementsAre(x, y));
    model->chooseFolder(Url::file("/r"));
    EXPECT_THAT(recoverable(*model), ElementsAre(x, y));  // the same folder
}

/// A folder that an older version has organized into `folder`, where it left its record.
class TidyOlderRecord : public TidyUndo, public ::testing::WithParamInterface<const char*> {
protected:
    TidyOlderRecord() {
        tree({"y.jpg = 2"});
        memory.write(folder + "/Documents/x.pdf", "1");
        journal.entries = {entry("/r/x.pdf", folder + "/Documents/x.pdf")};
        memory.write(file, journal.encoded());
    }
    const std::string folder = std::string("/r/") + GetParam();
    const std::string file = folder + "/.ordovan-journal.json";
    OrdovanJournal journal;
};
INSTANTIATE_TEST_SUITE_P(Places, TidyOlderRecord, ::testing::Values("Organized", "ordovan+"),
                         [](const auto& place) { return place.index == 0 ? "InOrganized" : "InTheOutputFolder"; });

TEST_P(TidyOlderRecord, IsFoundMovedAndUndone) {
    const auto model = previewed();
    EXPECT_EQ(storedJournal(), journal);
    EXPECT_FALSE(memory.item(file));
    EXPECT_THAT(proposed(*model), ElementsAre(y));
    undo(*model);
    EXPECT_EQ(memory.read("/r/x.pdf"), "1");
    EXPECT_FALSE(memory.exists(Url::file(folder + "/Documents")));
}

TEST_P(TidyOlderRecord, StaysWhereItIsWhenItCanNotBeStored) {
    records.failAll("write", ENOSPC);
    const auto model = previewed();
    EXPECT_EQ(memory.read(file), journal.encoded());
    EXPECT_EQ(*model->recoverableJournal(), journal);
    EXPECT_FALSE(model->journalWarning());
}

TEST_P(TidyOlderRecord, ThatCanNotBeChangedIsListedAgainWithAWarning) {
    records.failAll("write", ENOSPC);
    const auto model = previewed();
    records.failAll("remove", EROFS);
    undo(*model);
    EXPECT_EQ(memory.read("/r/x.pdf"), "1");
    EXPECT_EQ(model->journalWarning(), notUpdated);
    EXPECT_EQ(*model->recoverableJournal(), journal);
    records.failAll("", 0);
    undo(*model);
    EXPECT_EQ(model->lastReport()->movedCount(), 0u);
    EXPECT_EQ(memory.read("/r/x.pdf"), "1");
}

TEST_P(TidyOlderRecord, ThatCouldNotBeStoredIsStoredWithTheNextRun) {
    records.failAll("write", ENOSPC);
    const auto model = previewed();
    records.failAll("", 0);
    model->organize();
    tasks.finish();
    EXPECT_THAT(storedJournal()->entries, SizeIs(2));
    EXPECT_THAT(recoverable(*model), SizeIs(2));
}

TEST_P(TidyOlderRecord, IsLeftAloneWhenItCanNotBeRead) {
    memory.write(file, "garbage");
    const auto model = previewed();
    EXPECT_FALSE(model->recoverableJournal());
    EXPECT_EQ(memory.read(file), "garbage");
    EXPECT_FALSE(storedJournal());
}

TEST_P(TidyOlderRecord, IsNeitherReadNorRemovedThroughALinkedFolder) {
    ASSERT_TRUE(memory.move(Url::file(folder), Url::file("/elsewhere")));
    memory.link(folder, "/elsewhere");
    EXPECT_FALSE(previewed()->recoverableJournal());
    EXPECT_EQ(memory.read("/elsewhere/.ordovan-journal.json"), journal.encoded());
}

TEST_P(TidyOlderRecord, IsNotAskedForOnceThereIsAnother) {
    store({entry("/r/z.pdf", folder + "/Documents/x.pdf")});
    const auto model = previewed();
    EXPECT_EQ(model->recoverableJournal()->entries[0].source(), "/r/z.pdf");
    EXPECT_EQ(memory.read(file), journal.encoded());
}

TEST_F(TidyUndo, JoinsTheRecordsOfTwoOlderVersions) {
    tree({"Organized/x.pdf = 1", "ordovan+/y.jpg = 2"});
    OrdovanJournal first, second;
    first.entries = {entry("/r/x.pdf", "/r/Organized/x.pdf")};
    second.entries = {entry("/r/y.jpg", "/r/ordovan+/y.jpg")};
    memory.write("/r/Organized/.ordovan-journal.json", first.encoded());
    memory.write("/r/ordovan+/.ordovan-journal.json", second.encoded());
    const auto model = previewed();
    EXPECT_THAT(recoverable(*model), ElementsAre("x.pdf -> Organized/x.pdf", "y.jpg -> ordovan+/y.jpg"));
    EXPECT_EQ(storedJournal(), *model->recoverableJournal());
}

}  // namespace
