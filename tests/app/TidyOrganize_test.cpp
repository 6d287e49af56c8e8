#include "tests/support/QtTestMain.h"
#include "tests/support/TidyWorld.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

using ordovan::test::SignalCount;
using ordovan::testing::build;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;
using ::testing::SizeIs;

namespace {

constexpr const char* x = "x.pdf -> ordovan+/Documents/x.pdf";
constexpr const char* y = "y.jpg -> ordovan+/Images/y.jpg";

class TidyOrganize : public ordovan::test::TidyWorld {
protected:
    /// Starts a run and lets it and all that follows from it come to its end.
    bool organize(TidyViewModel& model) {
        const bool started = model.organize();
        tasks.finish();
        return started;
    }
    const std::string asideName = "/records/journals/.ordovan-journal.unreadable-1700000000.json";
};

TEST_F(TidyOrganize, MovesTheTickedFilesAndRecordsThem) {
    tree({"x.pdf = 1", "y.jpg = 2"});
    const auto model = previewed();
    model->toggle("/r/y.jpg -> /r/ordovan+/Images/y.jpg");
    EXPECT_TRUE(organize(*model));
    EXPECT_EQ(memory.read("/r/ordovan+/Documents/x.pdf"), "1");
    EXPECT_EQ(memory.read("/r/y.jpg"), "2");
    EXPECT_THAT(messages(*model), ElementsAre("Moved."));
    EXPECT_THAT(recoverable(*model), ElementsAre(x));
    EXPECT_EQ(storedJournal(), *model->recoverableJournal());
    EXPECT_EQ(storedJournal()->createdAtEpoch, now);
    EXPECT_FALSE(model->journalWarning());
    EXPECT_FALSE(model->isApplying());
}

TEST_F(TidyOrganize, TellsItsFileSystemWhichFilesItWillHash) {
    tree({"x.pdf = 1", "y.jpg = 2"});
    std::vector<std::string> told;
    hashAhead = [&](OrdovanFileSystem&, std::span<const Url> files, const std::function<bool(const Url&)>&) {
        for (const Url& file : files) told.push_back(file.sharedPath().str());
        return std::make_unique<ordovan::testing::FaultyFileSystem>(static_cast<OrdovanFileSystem&>(fs));
    };
    const auto model = previewed();
    organize(*model);
    EXPECT_THAT(told, ElementsAre("/r/x.pdf", "/r/y.jpg"));
    told.clear();
    model->undo();
    tasks.finish();
    EXPECT_THAT(told, ElementsAre("/r/ordovan+/Images/y.jpg", "/r/ordovan+/Documents/x.pdf"));
    EXPECT_EQ(memory.read("/r/y.jpg"), "2");
}

TEST_F(TidyOrganize, LetsOnlyFilesOfTheFolderBeReadBeforeTheirTurn) {
    tree({"x.pdf = 1", "sub/z.pdf = 2", "../outside/secret = 3", "link -> ../outside"});
    std::function<bool(const Url&)> may;
    hashAhead = [&](OrdovanFileSystem&, std::span<const Url>, const std::function<bool(const Url&)>& mayRead) {
        may = mayRead;
        return std::make_unique<ordovan::testing::FaultyFileSystem>(static_cast<OrdovanFileSystem&>(fs));
    };
    organize(*previewed());
    EXPECT_TRUE(may(Url::file("/r/sub/z.pdf")));
    EXPECT_FALSE(may(Url::file("/outside/secret")));
    EXPECT_FALSE(may(Url::file("/r/../outside/secret")));
    EXPECT_FALSE(may(Url::file("/r/link/secret")));
}

TEST_F(TidyOrganize, RecordsTheRunInTheHistory) {
    tree({"x.pdf = 1", "y.jpg = 2"});
    const auto model = previewed();
    memory.write("/r/ordovan+/Images/y.jpg", "in the way");
    organize(*model);
    ASSERT_THAT(model->history().records, SizeIs(1));
    EXPECT_EQ(model->history().records[0].summary(), "Organized 1 file in r");
    EXPECT_EQ(model->history().records[0].skipped, 1);
    EXPECT_EQ(model->history().records[0].epoch, now);
    EXPECT_EQ(history.load(), model->history());
    EXPECT_EQ(make()->history(), model->history());
}

TEST_F(TidyOrganize, PreviewsTheFolderAgain) {
    tree({"x.pdf = 1", "y.jpg = 2"});
    const auto model = previewed();
    model->toggle("/r/y.jpg -> /r/ordovan+/Images/y.jpg");
    model->organize();
    tasks.work();
    tasks.deliver();
    EXPECT_EQ(model->phase().kind, TidyViewModel::Phase::Case::scanning);
    tasks.finish();
    EXPECT_THAT(proposed(*model), ElementsAre(y));
    EXPECT_THAT(model->excluded(), SizeIs(1));
}

TEST_F(TidyOrganize, PreviewsNothingAgainWhereThatIsNotWanted) {
    tree({"x.pdf = 1"});
    const auto model = previewed({.repreviewsAfterRuns = false});
    organize(*model);
    EXPECT_THAT(proposed(*model), ElementsAre(x));
    EXPECT_THAT(recoverable(*model), ElementsAre(x));
}

TEST_F(TidyOrganize, WithoutAFolderPlanOrTickedFileDoesNothing) {
    EXPECT_FALSE(make()->organize());
    tree({"x.pdf = 1"});
    const auto model = make();
    model->chooseFolder(Url::file("/r"));
    EXPECT_FALSE(model->organize());
    tasks.finish();
    model->toggle("/r/x.pdf -> /r/ordovan+/Documents/x.pdf");
    const SignalCount changes(*model, &TidyViewModel::isApplyingChanged);
    EXPECT_FALSE(organize(*model));
    EXPECT_EQ(changes, 0);
    EXPECT_EQ(memory.read("/r/x.pdf"), "1");
}

TEST_F(TidyOrganize, IgnoresASecondStartWhileTheFirstRuns) {
    tree({"x.pdf = 1"});
    const auto model = previewed();
    EXPECT_TRUE(model->organize());
    EXPECT_TRUE(model->isApplying());
    EXPECT_FALSE(model->organize());
    EXPECT_FALSE(model->undo());
    EXPECT_EQ(tasks.waiting(), 1u);
    tasks.finish();
    EXPECT_THAT(model->history().records, SizeIs(1));
}

TEST_F(TidyOrganize, AppendsToTheStoredRecord) {
    tree({"x.pdf = 1"});
    const auto model = previewed();
    organize(*model);
    memory.write("/r/y.jpg", "2");
    model->preview();
    tasks.finish();
    now += 60;
    organize(*model);
    EXPECT_THAT(lines(*storedJournal()), ElementsAre(x, y));
    EXPECT_THAT(recoverable(*model), ElementsAre(x, y));
    EXPECT_EQ(storedJournal()->createdAtEpoch, now);
}

TEST_F(TidyOrganize, KeepsWhatAnotherProcessRecordedSinceThePreview) {
    tree({"x.pdf = 1"});
    const auto model = previewed();
    OrdovanJournal other;
    other.entries.emplace_back("/r/o.pdf", "/r/ordovan+/Documents/o.pdf", true, 1, "", "");
    memory.write(journalPath(), other.encoded());
    organize(*model);
    EXPECT_THAT(lines(*storedJournal()), ElementsAre("o.pdf -> ordovan+/Documents/o.pdf", x));
    EXPECT_THAT(recoverable(*model), ElementsAre("o.pdf -> ordovan+/Documents/o.pdf", x));
}

TEST_F(TidyOrganize, SetsAnUnreadableRecordAsideAndWritesItsOwnAlone) {
    tree({"x.pdf = 1"});
    memory.write(journalPath(), "garbage");
    const auto model = previewed();
    organize(*model);
    EXPECT_EQ(memory.read(asideName), "garbage");
    EXPECT_THAT(lines(*storedJournal()), ElementsAre(x));
    EXPECT_FALSE(model->journalWarning());
}

TEST_F(TidyOrganize, SetsARecordOfAnotherVersionAside) {
    tree({"x.pdf = 1"});
    OrdovanJournal later;
    later.version = 2;
    memory.write(journalPath(), later.encoded());
    organize(*previewed());
    EXPECT_EQ(memory.read(asideName), later.encoded());
    EXPECT_THAT(lines(*storedJournal()), ElementsAre(x));
}

TEST_F(TidyOrganize, KeepsWhatItHadReadOfARecordThatBecameUnreadable) {
    tree({"x.pdf = 1", "y.jpg = 2"});
    const auto model = previewed();
    model->toggle("/r/y.jpg -> /r/ordovan+/Images/y.jpg");
    organize(*model);
    memory.write(journalPath(), "garbage");
    model->setExcluded({});
    organize(*model);
    EXPECT_EQ(memory.read(asideName), "garbage");
    EXPECT_THAT(lines(*storedJournal()), ElementsAre(x, y));
}

TEST_F(TidyOrganize, WarnsWhenTheRecordCanBeNeitherReadNorSetAside) {
    tree({"x.pdf = 1"});
    memory.write(journalPath(), "garbage");
    records.failAll("setAside", EACCES);
    const auto model = previewed();
    organize(*model);
    EXPECT_EQ(model->journalWarning(),
              "Files were organized, but the existing undo record could not be read or set aside, so this run's undo "
              "record was not saved. Undo is available until you quit.");
    EXPECT_EQ(memory.read(journalPath()), "garbage");
    EXPECT_THAT(recoverable(*model), ElementsAre(x));
}

TEST_F(TidyOrganize, WarnsWhenTheRecordCanNotBeWrittenAndKeepsItInMemory) {
    tree({"x.pdf = 1"});
    const auto model = previewed();
    records.failAll("write", ENOSPC);
    organize(*model);
    EXPECT_EQ(
        model->journalWarning(),
        "Files were organized, but the undo record could not be saved to disk. Undo is available until you quit.");
    EXPECT_THAT(recoverable(*model), ElementsAre(x));
    model->preview();
    tasks.finish();
    EXPECT_THAT(recoverable(*model), ElementsAre(x));
    EXPECT_FALSE(storedJournal());
}

TEST_F(TidyOrganize, StoresWithTheNextRunWhatCouldNotBeStoredBefore) {
    tree({"x.pdf = 1"});
    const auto model = previewed();
    records.failAll("write", ENOSPC);
    organize(*model);
    records.failAll("", 0);
    memory.write("/r/y.jpg", "2");
    model->preview();
    tasks.finish();
    organize(*model);
    EXPECT_FALSE(model->journalWarning());
    EXPECT_THAT(lines(*storedJournal()), ElementsAre(x, y));
    EXPECT_THAT(history.load().records, SizeIs(2));
}

TEST_F(TidyOrganize, RemembersWhatCouldNotBeStoredOfEachFolder) {
    tree({"x.pdf = 1"});
    build(memory, "/s", {"x.pdf = 1"});
    const auto model = previewed();
    records.failAll("write", ENOSPC);
    organize(*model);
    model->chooseFolder(Url::file("/s"));
    tasks.finish();
    EXPECT_THAT(recoverable(*model), IsEmpty());
    model->chooseFolder(Url::file("/r"));
    tasks.finish();
    EXPECT_THAT(recoverable(*model), ElementsAre(x));
}

TEST_F(TidyOrganize, ThatMovesNothingLeavesTheRecordAlone) {
    tree({"x.pdf = 1"});
    const auto model = previewed();
    memory.write("/r/ordovan+/Documents/x.pdf", "in the way");
    memory.write(journalPath(), "garbage");
    organize(*model);
    EXPECT_EQ(memory.read(journalPath()), "garbage");
    EXPECT_FALSE(model->recoverableJournal());
    EXPECT_THAT(messages(*model), ElementsAre("A file already exists at the destination; left untouched."));
    EXPECT_THAT(model->history().records, SizeIs(1));
}

TEST_F(TidyOrganize, HoldsTheFoldersLockUntilItsRecordsAreSaved) {
    tree({"x.pdf = 1"});
    const auto model = previewed({.repreviewsAfterRuns = false});
    records.observer = [this](const std::string& call) { events.push_back(call.substr(0, call.find(' '))); };
    organize(*model);
    EXPECT_THAT(events, ElementsAre("lock /r", "lock /records", "read", "write", "unlock /records", "lock /records",
                                    "read", "write", "unlock /records", "unlock /r"));
}

TEST_F(TidyOrganize, DoesNothingWhileAnotherRunHoldsTheFolder) {
    tree({"x.pdf = 1"});
    const auto model = previewed();
    heldElsewhere = {"/r"};
    EXPECT_TRUE(organize(*model));
    EXPECT_EQ(model->runRefusal(), "Another ordovan+ run is working in this folder. Try again when it has finished.");
    EXPECT_FALSE(model->isApplying());
    EXPECT_FALSE(model->lastReport());
    EXPECT_THAT(model->history().records, IsEmpty());
    EXPECT_EQ(memory.read("/r/x.pdf"), "1");
    heldElsewhere.clear();
    organize(*model);
    EXPECT_FALSE(model->runRefusal());
    EXPECT_EQ(memory.read("/r/ordovan+/Documents/x.pdf"), "1");
}

TEST_F(TidyOrganize, WorksWithoutLocksWhereThereAreNone) {
    tree({"x.pdf = 1"});
    const auto model = previewed();
    lockError = EACCES;
    organize(*model);
    EXPECT_FALSE(model->runRefusal());
    EXPECT_THAT(lines(*storedJournal()), ElementsAre(x));
}

TEST_F(TidyOrganize, StopsBetweenFilesWhenToldToAndRecordsWhatItMoved) {
    tree({"a.pdf = 1", "b.pdf = 2", "c.pdf = 3"});
    const auto model = previewed({.repreviewsAfterRuns = false});
    fs.setAfterCall([&](const auto& call) {
        if (call.operation == ordovan::testing::Operation::move) model->cancelRun();
    });
    organize(*model);
    EXPECT_THAT(messages(*model), ElementsAre("Moved.", std::string(OrdovanExecutor::stoppedMessage),
                                              std::string(OrdovanExecutor::stoppedMessage)));
    EXPECT_THAT(lines(*storedJournal()), ElementsAre("a.pdf -> ordovan+/Documents/a.pdf"));
    EXPECT_EQ(memory.read("/r/b.pdf"), "2");
}

TEST_F(TidyOrganize, StillSavesItsRecordWhenTheControllerGoes) {
    tree({"a.pdf = 1", "b.pdf = 2"});
    auto model = previewed();
    model->organize();
    fs.setAfterCall([&](const auto& call) {
        if (call.operation == ordovan::testing::Operation::move) model.reset();
    });
    tasks.work();
    tasks.deliver();
    EXPECT_THAT(lines(*storedJournal()), ElementsAre("a.pdf -> ordovan+/Documents/a.pdf"));
    EXPECT_THAT(history.load().records, SizeIs(1));
}

TEST_F(TidyOrganize, TellsItsProgressNowAndThenAndAtTheEnd) {
    tree({"a.pdf = 1", "b.pdf = 2", "c.pdf = 3", "d.pdf = 4"});
    const auto model = previewed();
    std::vector<std::pair<quint64, quint64>> told;
    QObject::connect(model.get(), &TidyViewModel::runProgressed,
                     [&](quint64 done, quint64 total) { told.emplace_back(done, total); });
    std::size_t moves = 0;
    fs.setAfterCall([&](const auto& call) {
        if (call.operation == ordovan::testing::Operation::move && ++moves == 3) now += 0.2;
    });
    organize(*model);
    EXPECT_THAT(told, ElementsAre(Pair(1u, 4u), Pair(3u, 4u), Pair(4u, 4u)));
}

TEST_F(TidyOrganize, OfAFolderThatWasLeftMeanwhileDoesNotShowItsRecord) {
    tree({"x.pdf = 1"});
    build(memory, "/s", {"y.jpg = 2"});
    const auto model = previewed();
    model->organize();
    model->chooseFolder(Url::file("/s"));
    tasks.finish();
    EXPECT_EQ(model->rootURL(), Url::file("/s"));
    EXPECT_FALSE(model->recoverableJournal());
    EXPECT_THAT(lines(*storedJournal()), ElementsAre(x));
}

TEST_F(TidyOrganize, IsNotForgottenByAPreviewThatReadTheRecordBeforeIt) {
    tree({"x.pdf = 1"});
    const auto model = previewed({.repreviewsAfterRuns = false});
    bool ran = false;
    fs.setBeforeCall([&](const auto& call) {
        if (std::exchange(ran, ran || call.url == Url::file("/r/ordovan+")) || !ran) return;
        organize(*model);  // while the preview scans, its journal long read
    });
    model->preview();
    tasks.finish();
    EXPECT_TRUE(ran);
    EXPECT_EQ(memory.read("/r/ordovan+/Documents/x.pdf"), "1");
    EXPECT_THAT(recoverable(*model), ElementsAre(x));
}

TEST_F(TidyOrganize, WarningStaysUntilTheNextRunStarts) {
    tree({"x.pdf = 1"});
    const auto model = previewed();
    records.failAll("write", ENOSPC);
    organize(*model);
    records.failAll("", 0);
    model->preview();
    tasks.finish();
    EXPECT_TRUE(model->journalWarning());
    model->undo();
    EXPECT_FALSE(model->journalWarning());
    tasks.finish();
    EXPECT_FALSE(model->journalWarning());
}

}  // namespace
