#include "OrdovanApp/controller/StoppableFileSystem.h"
#include "OrdovanCore/testing/MemoryContentReader.h"
#include "tests/support/QtTestMain.h"
#include "tests/support/TrashSentences.h"
#include "tests/support/TrashWorld.h"

#include <gmock/gmock.h>

#include <functional>
#include <memory>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

using ordovan::test::SignalCount;
using ordovan::test::trashNotRecorded;
using ordovan::test::trashRecordNotUpdated;
using ordovan::testing::Operation;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

namespace {

constexpr const char* moved = "Moved to the Trash.";
constexpr const char* putBack = "Put back.";
constexpr const char* keeperChanged = "The copy you chose to keep changed or is missing; nothing was moved.";
constexpr const char* held = "Another ordovan+ run is working in this folder. Try again when it has finished.";
constexpr const char* trashFolder = "/home/user/.local/share/Trash/files";

using TidyTrash = ordovan::test::TrashWorld;

// Extras.

TEST_F(TidyTrash, TakesTheExtrasOfAllGroupsAndRecordsThem) {
    tree({"a = 1", "b = 1", "c = 1", "d = 22", "e = 22", "f = 3"});
    const auto model = searched();
    model->keep("/r/b", model->duplicateReport()->groups.at(0).id());
    const SignalCount trashing(*model, &TidyViewModel::isTrashingChanged);
    EXPECT_TRUE(model->trashExtras());
    EXPECT_TRUE(model->isTrashing());
    tasks.finish();
    EXPECT_FALSE(model->isTrashing());
    EXPECT_EQ(trashing, 2);
    EXPECT_THAT(messages(*model->lastTrashReport()), ElementsAre(moved, moved, moved));
    EXPECT_THAT(originals(*model->trashRecord()), ElementsAre("a", "c", "e"));
    EXPECT_EQ(*model->trashRecord(), model->lastTrashReport()->record);
    EXPECT_EQ(storedTrash(), *model->trashRecord());
    EXPECT_EQ(memory.read("/r/b"), "1");
    EXPECT_EQ(memory.read("/r/d"), "22");
    EXPECT_EQ(memory.read(std::string(trashFolder) + "/e"), "22");
    EXPECT_THAT(summaries(*model), ElementsAre("Moved 3 duplicate files to the Trash in r"));
    EXPECT_EQ(history.load(), model->history());
    EXPECT_FALSE(model->journalWarning());
    // The folder was previewed again: nothing is double any more.
    EXPECT_THAT(model->inventory()->files, SizeIs(3));
    EXPECT_THAT(model->duplicateReport()->groups, IsEmpty());
}

TEST_F(TidyTrash, PairsGroupsWithKeepersWhenARunStarts) {
    tree({"a = 1", "b = 1"});
    const auto model = searched();
    model->trashExtras();
    model->keep("/r/b", model->duplicateReport()->groups.at(0).id());
    tasks.finish();
    EXPECT_TRUE(exists("/r/a"));
    EXPECT_FALSE(exists("/r/b"));
}

TEST_F(TidyTrash, LeavesAGroupAloneWhoseKeeperChangedAndGoesOnWithTheNext) {
    tree({"a = 1", "b = 1", "d = 22", "e = 22"});
    const auto model = searched({.repreviewsAfterRuns = false});
    memory.write("/r/d", "23");
    finished(model->trashExtras());
    EXPECT_THAT(messages(*model->lastTrashReport()), ElementsAre(keeperChanged, moved));
    EXPECT_THAT(originals(*storedTrash()), ElementsAre("b"));
    EXPECT_TRUE(exists("/r/e"));
}

TEST_F(TidyTrash, RecordsNothingButTheRunWhenNothingMoved) {
    tree({"a = 1", "b = 1"});
    const auto model = searched({.repreviewsAfterRuns = false});
    memory.write("/r/a", "2");
    std::vector<std::string> calls;
    records.observer = [&](const std::string& call) { calls.push_back(call); };
    finished(model->trashExtras());
    EXPECT_THAT(calls, ElementsAre("read /records/history.json", "write /records/history.json"));
    EXPECT_FALSE(storedTrash());
    EXPECT_THAT(model->history().records, SizeIs(1));
}

TEST_F(TidyTrash, NeedsAReportOfTheChosenFolder) {
    tree({"a = 1", "b = 2"});
    EXPECT_FALSE(make()->trashExtras());
    EXPECT_FALSE(previewed()->trashExtras());
    EXPECT_FALSE(searched()->trashExtras());  // without a group
}

// Big files.

TEST_F(TidyTrash, TakesBigFilesThatAreAsTheUserSawThem) {
    tree({"a = 1", "sub/b = 22", "c = 333"});
    build(memory, "/s", {"d = 4"});
    const auto model = previewed();
    auto chosen = items({"a", "sub/b", "c"});
    chosen.push_back({Url::file("/s/d"), 1});
    memory.write("/r/c", "3333");
    EXPECT_TRUE(finished(model->trashBigFiles(chosen)));
    EXPECT_THAT(messages(*model->lastTrashReport()),
                ElementsAre(moved, moved, "The file changed since you looked at it; left untouched.",
                            "Outside the folder you chose; left untouched."));
    EXPECT_THAT(originals(*storedTrash()), ElementsAre("a", "sub/b"));
    EXPECT_EQ(model->history().records.front().kind, OrdovanRunRecord::Kind::trash);
    EXPECT_THAT(model->inventory()->files, SizeIs(1));
}

TEST_F(TidyTrash, OfBigFilesNeedsAFolderAndFiles) {
    tree({"a = 1"});
    EXPECT_FALSE(make()->trashBigFiles(items({"a"})));
    EXPECT_FALSE(previewed()->trashBigFiles({}));
}

TEST_F(TidyTrash, RecordGrowsWithEveryRun) {
    tree({"a = 1", "b = 2"});
    build(memory, "/s", {"c = 3"});
    const auto model = trashed({"a"});
    finished(model->trashBigFiles(items({"b"})));
    model->chooseFolder(Url::file("/s"));
    tasks.finish();
    finished(model->trashBigFiles({{Url::file("/s/c"), 1}}));
    EXPECT_THAT(originals(*storedTrash()), ElementsAre("a", "b", "/s/c"));
    EXPECT_EQ(*make()->trashRecord(), *storedTrash());  // read at the start
}

TEST_F(TidyTrash, TellsItsFileSystemWhichFilesItWillHash) {
    tree({"a = 1", "b = 1", "c = 2"});
    std::vector<std::vector<std::string>> told;
    hashAhead = [&](OrdovanFileSystem&, std::span<const Url> files, const auto&...) {
        auto& paths = told.emplace_back();
        for (const Url& file : files) paths.push_back(local(file.path()));
        return std::unique_ptr<OrdovanFileSystem>();
    };
    const auto model = searched();
    model->keep("/r/b", model->duplicateReport()->groups.at(0).id());
    finished(model->trashExtras());
    auto chosen = items({"c"});
    chosen.push_back({Url::file("/r/enormous"), 1'000'000'000});
    finished(model->trashBigFiles(chosen));
    finished(model->restore());
    const std::string in = std::string(trashFolder) + '/';
    EXPECT_THAT(told, ElementsAre(ElementsAre("b", "a"), ElementsAre("c"), ElementsAre(in + "c", in + "a")));
}

TEST_F(TidyTrash, EveryRunHasADiskOfItsOwnThatGoesBeforeTheRecordIsSaved) {
    tree({"a = 1", "b = 1", "c = 2"});
    std::vector<std::string> seen;
    const OrdovanFileSystem* made = nullptr;
    makeRunFileSystem = [&](const Url&) {
        auto disk = std::make_unique<ordovan::testing::FaultyFileSystem>(static_cast<OrdovanFileSystem&>(fs));
        const std::shared_ptr<void> end(nullptr, [&](void*) { seen.emplace_back("gone"); });
        disk->setBeforeCall([&seen, end](const auto& call) {
            if (call.operation == Operation::trash || call.operation == Operation::move) seen.emplace_back("change");
        });
        seen.emplace_back("made");
        made = disk.get();
        return disk;
    };
    hashAhead = [&](OrdovanFileSystem& disk, const auto&...) {
        seen.emplace_back(&disk == made ? "read ahead" : "read ahead of another");
        return std::unique_ptr<OrdovanFileSystem>();
    };
    records.observer = [&](const std::string& call) {
        if (call.starts_with("write")) seen.emplace_back("saved");
    };
    const auto model = searched({.repreviewsAfterRuns = false});
    seen.clear();
    const std::vector<std::string> expected = {"made", "read ahead", "change", "gone", "saved", "saved"};
    finished(model->trashExtras());
    EXPECT_EQ(std::exchange(seen, {}), expected);
    finished(model->trashBigFiles(items({"c"})));
    EXPECT_EQ(std::exchange(seen, {}), expected);
    finished(model->restore({"/r/c"}));
    EXPECT_EQ(seen, expected);
}

// Records that can not be stored or read.

TEST_F(TidyTrash, StaysRecoverableInMemoryWhenTheRecordCanNotBeWritten) {
    tree({"a = 1", "b = 2"});
    records.failAll("write", ENOSPC);
    const auto model = trashed({"a"});
    EXPECT_EQ(model->journalWarning(), trashNotRecorded);
    EXPECT_THAT(originals(*model->trashRecord()), ElementsAre("a"));
    EXPECT_FALSE(storedTrash());
    EXPECT_TRUE(finished(model->restore()));
    EXPECT_EQ(model->journalWarning(), trashRecordNotUpdated);
    EXPECT_EQ(memory.read("/r/a"), "1");
    EXPECT_THAT(model->trashRecord()->entries, IsEmpty());
}

TEST_F(TidyTrash, StoresWithTheNextRunWhatCouldNotBeStoredBefore) {
    tree({"a = 1", "b = 2"});
    records.failAll("write", ENOSPC);
    const auto model = trashed({"a"});
    records.failAll("", 0);
    model->preview();
    tasks.finish();
    EXPECT_THAT(originals(*model->trashRecord()), ElementsAre("a"));
    EXPECT_EQ(model->journalWarning(), trashNotRecorded);  // until the next run starts
    finished(model->trashBigFiles(items({"b"})));
    EXPECT_FALSE(model->journalWarning());
    EXPECT_THAT(originals(*storedTrash()), ElementsAre("a", "b"));
    EXPECT_THAT(history.load().records, SizeIs(2));
}

TEST_F(TidyTrash, ListsAgainWhatTheRecordCouldNotForgetAndRefusesItSafely) {
    tree({"a = 1", "b = 2"});
    const auto model = trashed({"a", "b"});
    records.failAll("write", ENOSPC);
    finished(model->restore({"/r/a"}));
    EXPECT_EQ(model->journalWarning(), trashRecordNotUpdated);
    EXPECT_THAT(originals(*make()->trashRecord()), ElementsAre("a", "b"));
    records.failAll("", 0);
    finished(model->restore());
    EXPECT_THAT(messages(*model->lastTrashReport()),
                ElementsAre(putBack, "No longer in the Trash (emptied or moved)."));
    EXPECT_EQ(memory.read("/r/a"), "1");
    EXPECT_EQ(memory.read("/r/b"), "2");
}

TEST_F(TidyTrash, SetsAnUnreadableRecordAside) {
    tree({"a = 1"});
    memory.write("/records/trash-record.json", "garbage");
    const auto model = trashed({"a"});
    EXPECT_FALSE(model->journalWarning());
    EXPECT_THAT(originals(*storedTrash()), ElementsAre("a"));
    EXPECT_EQ(memory.read("/records/trash-record.unreadable-1700000000.json"), "garbage");
}

TEST_F(TidyTrash, KeepsWhatAnotherProcessRecorded) {
    tree({"a = 1", "b = 2"});
    const auto first = previewed(), second = previewed();
    finished(first->trashBigFiles(items({"a"})));
    finished(second->trashBigFiles(items({"b"})));
    EXPECT_THAT(originals(*storedTrash()), ElementsAre("a", "b"));
    EXPECT_THAT(originals(*second->trashRecord()), ElementsAre("a", "b"));
    finished(first->restore());  // what it knew after its own preview
    EXPECT_THAT(originals(*storedTrash()), ElementsAre("b"));
    second->preview();
    tasks.finish();
    EXPECT_THAT(originals(*second->trashRecord()), ElementsAre("b"));
}

TEST_F(TidyTrash, IsNotForgottenByAPreviewThatReadTheRecordBeforeIt) {
    tree({"a = 1"});
    const auto model = previewed({.repreviewsAfterRuns = false});
    model->preview();
    tasks.work();
    model->trashBigFiles(items({"a"}));
    tasks.work();
    // The run's result arrives first.
    EXPECT_EQ(tasks.waiting(), 0u);
    tasks.deliver();
    EXPECT_THAT(originals(*model->trashRecord()), ElementsAre("a"));

    bool ran = false;
    memory.write("/r/b", "2");
    fs.setBeforeCall([&](const auto& call) {
        if (std::exchange(ran, ran || call.url == Url::file("/r/ordovan+")) || !ran) return;
        finished(model->trashBigFiles(items({"b"})));  // while the preview scans, its record long read
    });
    model->preview();
    tasks.finish();
    EXPECT_TRUE(ran);
    EXPECT_THAT(originals(*model->trashRecord()), ElementsAre("a", "b"));
}

// Locks, exclusion and stopping.

TEST_F(TidyTrash, HoldsTheFoldersLockUntilItsRecordsAreSaved) {
    tree({"a = 1"});
    const auto model = previewed({.repreviewsAfterRuns = false});
    records.observer = [this](const std::string& call) { events.push_back(call.substr(0, call.find(' '))); };
    fs.setBeforeCall([this](const auto& call) {
        if (call.operation == Operation::trash || call.operation == Operation::move) events.emplace_back("change");
    });
    const std::vector<std::string> expected = {"lock /r", "change",          "lock /records", "read",
                                               "write",   "unlock /records", "lock /records", "read",
                                               "write",   "unlock /records", "unlock /r"};
    finished(model->trashBigFiles(items({"a"})));
    EXPECT_EQ(std::exchange(events, {}), expected);
    finished(model->restore());
    EXPECT_EQ(events, expected);
}

TEST_F(TidyTrash, DoesNothingWhileAnotherRunHoldsTheFolder) {
    tree({"a = 1", "b = 1", "c = 2"});
    const auto model = searched();
    finished(model->trashBigFiles(items({"c"})));
    const auto report = model->lastTrashReport();
    heldElsewhere = {"/r"};
    for (const auto& run : {std::function<bool()>([&] { return model->trashExtras(); }),
                            std::function<bool()>([&] { return model->trashBigFiles(items({"a"})); }),
                            std::function<bool()>([&] { return model->restore(); })}) {
        EXPECT_TRUE(finished(run()));
        EXPECT_EQ(model->runRefusal(), held);
        EXPECT_FALSE(model->isTrashing());
    }
    EXPECT_EQ(model->lastTrashReport(), report);
    EXPECT_THAT(originals(*storedTrash()), ElementsAre("c"));
    EXPECT_THAT(model->history().records, SizeIs(1));
    heldElsewhere.clear();
    EXPECT_TRUE(finished(model->restore()));
    EXPECT_FALSE(model->runRefusal());
    EXPECT_EQ(memory.read("/r/c"), "2");
}

TEST_F(TidyTrash, ExcludesEveryOtherRunAndIsExcludedByThem) {
    tree({"a = 1", "b = 1", "c.pdf = 2"});
    const auto model = searched();
    finished(model->trashBigFiles(items({"a"})));
    memory.write("/r/a", "1");
    model->preview();
    tasks.finish();
    model->findDuplicates();
    tasks.finish();
    const auto startable = [&] {
        return model->organize() || model->undo() || model->trashExtras() || model->trashBigFiles(items({"a"})) ||
               model->restore() || model->restore({"/r/a"});
    };
    EXPECT_TRUE(model->trashExtras());
    EXPECT_FALSE(startable());
    tasks.finish();
    EXPECT_TRUE(model->organize());
    EXPECT_TRUE(model->isApplying());
    EXPECT_FALSE(model->isTrashing());
    EXPECT_FALSE(startable());
    tasks.finish();
    EXPECT_TRUE(startable());
    tasks.finish();
}

TEST_F(TidyTrash, StopsBetweenFilesWhenToldToAndRecordsWhatItMoved) {
    tree({"a = 1", "b = 1", "c = 1", "d = 22", "e = 22"});
    const auto model = searched({.repreviewsAfterRuns = false});
    fs.setAfterCall([&](const auto& call) {
        if (call.operation == Operation::trash) model->cancelRun();
    });
    finished(model->trashExtras());
    const std::string stopped(OrdovanExecutor::stoppedMessage);
    EXPECT_THAT(messages(*model->lastTrashReport()), ElementsAre(moved, stopped, stopped));
    EXPECT_THAT(model->trashRecord()->entries, SizeIs(1));
    EXPECT_EQ(storedTrash(), *model->trashRecord());
}

TEST_F(TidyTrash, StopsInTheMiddleOfExaminingAFile) {
    tree({"a = 1", "b = 2"});
    const auto model = trashed({"a", "b"}, {.repreviewsAfterRuns = false});
    fs.setBeforeCall([&](const auto& call) {
        if (call.operation == Operation::fileSize) model->cancelRun();
    });
    fs.reset();
    finished(model->restore());
    EXPECT_THAT(messages(*model->lastTrashReport()), Each(std::string(OrdovanExecutor::stoppedMessage)));
    EXPECT_EQ(fs.callCount(Operation::contentHash), 0u);
    EXPECT_THAT(originals(*storedTrash()), ElementsAre("a", "b"));
}

TEST_F(TidyTrash, StopsInTheMiddleOfALargeFileThatItExamines) {
    const std::string content(StoppableFileSystem::largeFile + 1, 'x');
    const std::string inTrash = std::string(trashFolder) + "/a";
    ordovan::testing::MemoryContentReader reader;
    for (const std::string& path : {std::string("/r/a"), inTrash}) reader.write(path, content);
    contents = &reader;
    memory.write("/r/a", content);
    memory.write("/r/b", "small");
    const auto model = previewed({.repreviewsAfterRuns = false});
    const auto stopsInTheMiddle = [&](auto start) {
        const std::uint64_t readBefore = reader.bytesRead();
        reader.setBeforeRead([&](auto, std::int64_t offset) {
            if (offset > 0) model->cancelRun();
        });
        finished(start());
        reader.setBeforeRead({});
        EXPECT_LT(reader.bytesRead() - readBefore, content.size() / 10);
        EXPECT_THAT(messages(*model->lastTrashReport()), Each(std::string(OrdovanExecutor::stoppedMessage)));
    };
    stopsInTheMiddle([&] { return model->trashBigFiles(items({"a", "b"})); });
    EXPECT_TRUE(exists("/r/a"));
    finished(model->trashBigFiles(items({"b", "a"})));
    EXPECT_TRUE(exists(inTrash));
    stopsInTheMiddle([&] { return model->restore(); });
    EXPECT_TRUE(exists(inTrash));
    EXPECT_THAT(originals(*storedTrash()), ElementsAre("b", "a"));
}

TEST_F(TidyTrash, StillSavesItsRecordWhenTheControllerGoes) {
    tree({"a = 1", "b = 2"});
    auto model = previewed();
    model->trashBigFiles(items({"a", "b"}));
    fs.setAfterCall([&](const auto& call) {
        if (call.operation == Operation::trash) model.reset();
    });
    tasks.work();
    tasks.deliver();
    EXPECT_THAT(originals(*storedTrash()), ElementsAre("a"));
    EXPECT_THAT(history.load().records, SizeIs(1));
}

TEST_F(TidyTrash, TellsItsProgressNowAndThenAndAtTheEnd) {
    tree({"a = 1", "b = 1", "c = 1", "d = 22", "e = 22", "f = 22", "g = 22"});
    const auto model = searched();
    std::vector<std::tuple<quint64, quint64, quint64, quint64>> told;
    QObject::connect(model.get(), &TidyViewModel::trashProgressed,
                     [&](quint64 filesDone, quint64 filesTotal, quint64 bytesDone, quint64 bytesTotal) {
                         told.emplace_back(filesDone, filesTotal, bytesDone, bytesTotal);
                     });
    std::size_t moves = 0;
    fs.setAfterCall([&](const auto& call) {
        if (call.operation == Operation::trash && ++moves == 4) now += 0.2;
    });
    finished(model->trashExtras());
    EXPECT_THAT(told, ElementsAre(std::tuple(1, 5, 2, 8), std::tuple(4, 5, 7, 8), std::tuple(5, 5, 8, 8)));
}

}  // namespace
