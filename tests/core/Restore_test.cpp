#include "OrdovanCore/DuplicateTrasher.h"
#include "OrdovanCore/TrashPlace.h"
#include "OrdovanCore/testing/FaultyFileSystem.h"
#include "OrdovanCore/testing/TreeBuilder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

using ordovan::testing::build;
using ordovan::testing::digestOf;
using ordovan::testing::FaultyFileSystem;
using ordovan::testing::MemoryFileSystem;
using ordovan::testing::Operation;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Moment = FaultyFileSystem::Moment;
using Status = OrdovanExecutionStatus;

namespace {

const std::string putBack = "moved: Put back.";
const std::string refused = "skippedRevalidation: Not a Trash item for this folder; restore refused.";
const std::string gone = "skippedRevalidation: No longer in the Trash (emptied or moved).";
const std::string changed = "skippedRevalidation: The trashed file changed; restore skipped.";
const std::string occupied = "skippedRevalidation: Something now occupies the original location; restore skipped.";
const std::string stillThere = "failed: Couldn't put this file back; it is still in the Trash.";
const std::string unverified = "failed: Restore verification failed; the file is still in the Trash.";
const std::string unfinished = "failed: Couldn't finish restoring; the file is still in the Trash.";
const std::string stopped = "skippedRevalidation: The run was stopped before this file; left untouched.";

const std::string trashFolder(MemoryFileSystem::homeTrashPath);

/// The chosen folder is "/r"; the Trash is the user's.
class Restore : public ::testing::Test {
protected:
    Restore() { memory.makeDirectory("/r"); }

    /// A file in the Trash, with its info file, that was at `original`; its true entry.
    OrdovanTrashEntry trashed(std::string_view original, std::string_view content = "content") {
        const std::string name(ordovan::lastPathComponent(original));
        memory.write(trashFolder + "/info/" + name + ".trashinfo",
                     "[Trash Info]\nPath=" + std::string(original) + "\n");
        memory.write(trashFolder + "/files/" + name, content);
        return {original, trashFolder + "/files/" + name, static_cast<std::int64_t>(content.size()), digestOf(content)};
    }
    /// The same entry with another place in the Trash.
    static OrdovanTrashEntry at(std::string_view place, const OrdovanTrashEntry& entry) {
        return {entry.original(), place, entry.byteSize(), entry.contentHash()};
    }

    OrdovanTrashReport restore(std::vector<OrdovanTrashEntry> entries, const OrdovanRunControl& control = {}) {
        return OrdovanDuplicateTrasher::restore({1, std::move(entries)}, Url::file(root), fs, control);
    }
    static std::vector<std::string> fates(const OrdovanTrashReport& report) {
        std::vector<std::string> all;
        for (const auto& one : report.outcomes) all.push_back(std::string(rawValue(one.status)) + ": " + one.message);
        return all;
    }
    /// Restores one entry; "status: message". It stays in the record unless it was put back.
    std::string fate(const OrdovanTrashEntry& entry) {
        const OrdovanTrashReport report = restore({entry});
        EXPECT_EQ(report.record.entries.size(), 1U - report.movedCount());
        return fates(report).at(0);
    }
    /// The Trash on another volume than the folder.
    void putFolderOnAnotherVolume(std::int64_t freeBytes = MemoryFileSystem::unlimited) {
        memory.addVolume("/r", freeBytes);
    }
    std::vector<std::string> trashNames() {
        std::vector<std::string> names;
        for (const auto& [path, description] : memory.snapshot(trashFolder)) {
            if (path != "files" && path != "info") names.push_back(path);
        }
        return names;
    }

    std::string root = "/r";
    MemoryFileSystem memory;
    FaultyFileSystem fs{memory};
};

TEST_F(Restore, PutsAFileBackAndLeavesNothingOfItInTheTrash) {
    const OrdovanTrashEntry entry = trashed("/r/a.pdf");
    const OrdovanTrashReport report = restore({entry});
    EXPECT_EQ(report, (OrdovanTrashReport{
                          {{Url::file(entry.trashed()), Url::file("/r/a.pdf"), Status::moved, "Put back."}}, {1, {}}}));
    EXPECT_EQ(memory.read("/r/a.pdf"), "content");
    EXPECT_THAT(trashNames(), IsEmpty());
}

TEST_F(Restore, PutsAFileBackIntoANewFolderWhenItsOwnIsGone) {
    EXPECT_EQ(fate(trashed("/r/deep/folder/a.pdf")), putBack);
    EXPECT_EQ(memory.read("/r/deep/folder/a.pdf"), "content");
}

TEST_F(Restore, PutsBackFromEveryKindOfTrash) {
    for (const std::string place : {"/x/.Trash/501/files", "/x/.Trashes/501", "/x/.Trash-1000/files", "/x/Trash/files",
                                    "/x/.Trash", "/x/./.Trash"}) {
        memory.write(place + "/a", "content");
        EXPECT_EQ(fate(at(place + "/a", trashed("/r/a"))), putBack) << place;
        memory.removeTree("/r/a");
    }
}

TEST_F(Restore, KeepsTheNameByteForByte) {
    for (const std::string original : {"/r/e\u0301", "/r/new\nline", "/r/-rf"}) {
        EXPECT_EQ(fate(trashed(original)), putBack);
        EXPECT_TRUE(memory.item(original)) << original;
    }
}

TEST_F(Restore, AnEntryWhoseTrashPlaceIsNoneIsRefusedWithoutAChange) {
    const OrdovanTrashEntry entry = trashed("/r/a");
    for (const std::string place :
         {"/x/a", "/x/Trash/a", "/x/files/Trash/a", "/x/.Trash-/a", "/x/.Trash-1a/a", "/x/.trash/a", "/x/.Trashed/a",
          "/x/My.Trash/a", "/x/.Trash-1000/../a", "/x/.Trash/b/../a", "x/.Trash/a", "/x/.Trash/a\xFF", ""}) {
        if (place.starts_with('/')) memory.write(place, "content");
        EXPECT_EQ(fate(at(place, entry)), refused) << place;
    }
    EXPECT_THAT(memory.changes(), IsEmpty());
}

TEST_F(Restore, AnEntryWhoseOriginalPlaceIsOutsideTheFolderIsRefused) {
    memory.makeDirectory("/elsewhere");
    memory.link("/r/linked", "/elsewhere");
    for (const std::string original :
         {"/elsewhere/a", "/r/../elsewhere/a", "/r/linked/a", "/rest/a", "a", "/r/\xFF/a", "/r/.Trash-1000/files/a"}) {
        EXPECT_EQ(fate(at(trashFolder + "/files/a", OrdovanTrashEntry(original, "", 7, digestOf("content")))), refused)
            << original;
    }
    EXPECT_THAT(memory.changes(), IsEmpty());
}

TEST_F(Restore, AFolderThatIsTooBroadIsRefused) {
    root = "/usr";
    EXPECT_EQ(fate(trashed("/usr/a")), refused);
}

TEST_F(Restore, EveryEntryStaysInTheRecordAfterTheTrashWasEmptied) {
    std::vector<OrdovanTrashEntry> entries{trashed("/r/a"), trashed("/r/b"), trashed("/r/c")};
    memory.removeTree(trashFolder + "/files");
    const OrdovanTrashReport report = restore(entries);
    EXPECT_EQ(fates(report), std::vector(3, gone));
    EXPECT_EQ(report.record.entries, entries);
}

TEST_F(Restore, WhatIsNoRegularFileAnyMoreIsGone) {
    const OrdovanTrashEntry link = trashed("/r/link"), folder = trashed("/r/folder");
    memory.removeTree(link.trashed());
    memory.write("/elsewhere", "content");
    memory.link(link.trashed(), "/elsewhere");
    memory.removeTree(folder.trashed());
    memory.makeDirectory(folder.trashed());
    EXPECT_EQ(fate(link), gone);
    EXPECT_EQ(fate(folder), gone);
}

TEST_F(Restore, AFileEditedInTheTrashIsNotPutBack) {
    const OrdovanTrashEntry same = trashed("/r/same size"), longer = trashed("/r/longer");
    memory.write(same.trashed(), "CONTENT");
    memory.write(longer.trashed(), "content and more");
    EXPECT_EQ(fate(same), changed);
    EXPECT_EQ(fate(longer), changed);
    EXPECT_THAT(memory.changes(), IsEmpty());
}

TEST_F(Restore, AFileThatCanNotBeReadIsNotPutBack) {
    const OrdovanTrashEntry entry = trashed("/r/a");
    fs.failCall(Operation::fileSize, 1, EIO);
    EXPECT_EQ(fate(entry), changed);
    fs.reset();
    fs.failCall(Operation::contentHash, 1, EIO);
    EXPECT_EQ(fate(entry), changed);
    fs.reset();
    fs.failCall(Operation::fileIdentity, 1, EIO);
    EXPECT_EQ(fate(entry), stillThere);
}

TEST_F(Restore, ATakenPlaceIsNeverOverwritten) {
    const OrdovanTrashEntry file = trashed("/r/file"), dangling = trashed("/r/dangling"), folder = trashed("/r/folder");
    memory.write("/r/file", "");
    memory.link("/r/dangling", "nowhere");
    memory.makeDirectory("/r/folder");
    EXPECT_EQ(fates(restore({file, dangling, folder})), std::vector(3, occupied));
    EXPECT_THAT(memory.changes(), IsEmpty());
}

TEST_F(Restore, APlaceTakenAtTheLastInstantIsNotOverwritten) {
    const OrdovanTrashEntry entry = trashed("/r/a");
    fs.setBeforeCall([&](const auto& call) {
        if (call.operation == Operation::move) memory.write("/r/a", "new");
    });
    EXPECT_EQ(fate(entry), stillThere);
    EXPECT_EQ(memory.read("/r/a"), "new");
    EXPECT_EQ(memory.read(entry.trashed()), "content");
}

TEST_F(Restore, AFolderThatCanNotBeMadeOrARenameThatFailsLeavesTheFileInTheTrash) {
    const OrdovanTrashEntry entry = trashed("/r/new/a");
    fs.failCall(Operation::createDirectory, 1, EACCES);
    EXPECT_EQ(fate(entry), stillThere);
    fs.reset();
    fs.failCall(Operation::move, 1, EIO);
    EXPECT_EQ(fate(entry), stillThere);
    fs.reset();
    fs.failCall(Operation::move, 1, 0, Moment::insteadOfEffect);
    EXPECT_EQ(fate(entry), stillThere);
    EXPECT_EQ(memory.read(entry.trashed()), "content");
}

TEST_F(Restore, AFolderThatWentMeanwhileIsNotMadeAnew) {
    const OrdovanTrashEntry entry = trashed("/r/new/a");
    memory.makeDirectory("/elsewhere");
    fs.setBeforeCall([&](const FaultyFileSystem::Call& call) {
        if (call.operation != Operation::move || memory.item("/elsewhere/new")) return;
        memory.removeTree("/r");
        memory.link("/r", "/elsewhere");
    });
    EXPECT_EQ(fate(entry), stillThere);
    EXPECT_EQ(memory.read(entry.trashed()), "content");
    EXPECT_TRUE(memory.list("/elsewhere")->empty());
}

TEST_F(Restore, ARenameWhoseReplyWasLostHasHappened) {
    const OrdovanTrashEntry entry = trashed("/r/a");
    fs.failCall(Operation::move, 1, EIO, Moment::afterEffect);
    EXPECT_EQ(fate(entry), putBack);
}

// Across volumes.

TEST_F(Restore, AcrossVolumesTheFileIsCopiedAndThenRemovedFromTheTrash) {
    const OrdovanTrashEntry entry = trashed("/r/sub/a.pdf");
    putFolderOnAnotherVolume();
    EXPECT_EQ(fate(entry), putBack);
    EXPECT_EQ(memory.read("/r/sub/a.pdf"), "content");
    EXPECT_THAT(trashNames(), IsEmpty());
    EXPECT_EQ(memory.snapshot("/r").size(), 2U);
}

TEST_F(Restore, AcrossVolumesTheCopyIsHiddenUntilItIsVerified) {
    const OrdovanTrashEntry entry = trashed("/r/a.pdf");
    putFolderOnAnotherVolume();
    std::string partial;
    fs.setBeforeCall([&](const auto& call) {
        if (call.operation == Operation::copy) partial = call.second.path();
        const bool verifies = call.operation == Operation::contentHash && call.url.path() == partial;
        EXPECT_TRUE(!verifies || !memory.item("/r/a.pdf"));
    });
    EXPECT_EQ(fate(entry), putBack);
    EXPECT_TRUE(partial.starts_with("/r/.a.pdf.ordovan-partial-"));
    EXPECT_TRUE(OrdovanPartialName::isPartial(partial));
}

TEST_F(Restore, AcrossVolumesAFailedCopyLeavesNothingBehind) {
    const OrdovanTrashEntry entry = trashed("/r/a");
    putFolderOnAnotherVolume(3);
    EXPECT_EQ(fate(entry), stillThere);
    EXPECT_THAT(memory.snapshot("/r"), IsEmpty());
    EXPECT_EQ(trashNames().size(), 2U);
}

TEST_F(Restore, AcrossVolumesACopyThatDiffersIsDiscarded) {
    const OrdovanTrashEntry entry = trashed("/r/a");
    putFolderOnAnotherVolume();
    fs.lieAboutHash(2);
    EXPECT_EQ(fate(entry), unverified);
    EXPECT_THAT(memory.snapshot("/r"), IsEmpty());
    EXPECT_EQ(memory.read(entry.trashed()), "content");
}

TEST_F(Restore, AcrossVolumesACopyThatCanNotBeRenamedIsDiscarded) {
    const OrdovanTrashEntry entry = trashed("/r/a");
    putFolderOnAnotherVolume();
    fs.failCall(Operation::move, 1, EIO);
    EXPECT_EQ(fate(entry), stillThere);
    EXPECT_THAT(memory.snapshot("/r"), IsEmpty());
}

TEST_F(Restore, AcrossVolumesTheCopyGoesWhenTheTrashKeepsItsItem) {
    const OrdovanTrashEntry entry = trashed("/r/a");
    putFolderOnAnotherVolume();
    fs.failCall(Operation::remove, 1, EACCES);
    EXPECT_EQ(fate(entry), unfinished);
    EXPECT_THAT(memory.snapshot("/r"), IsEmpty());
    EXPECT_EQ(trashNames().size(), 2U);
}

// Many entries.

TEST_F(Restore, GoesFromTheNewestToTheOldestAndKeepsWhatIsLeftInItsOrder) {
    const OrdovanTrashEntry one = trashed("/r/1"), two = trashed("/r/2"), three = trashed("/r/3");
    memory.write(two.trashed(), "CONTENT");
    const OrdovanTrashReport report = restore({one, two, three});
    EXPECT_EQ(fates(report), (std::vector{putBack, changed, putBack}));
    EXPECT_EQ(report.outcomes[0].destination, Url::file("/r/3"));
    EXPECT_EQ(report.record, (OrdovanTrashRecord{1, {two}}));
}

TEST_F(Restore, TwoEntriesOfOneOriginalGiveTheNewestItsPlace) {
    const OrdovanTrashEntry older = at(trashFolder + "/files/a", trashed("/r/a", "older"));
    memory.write(trashFolder + "/files/a 2", "newer");
    const OrdovanTrashEntry newer("/r/a", trashFolder + "/files/a 2", 5, digestOf("newer"));
    const OrdovanTrashReport report = restore({older, newer});
    EXPECT_EQ(fates(report), (std::vector{putBack, occupied}));
    EXPECT_EQ(report.record.entries, std::vector{older});
    EXPECT_EQ(memory.read("/r/a"), "newer");
}

TEST_F(Restore, KeepsTheRecordsVersion) {
    EXPECT_EQ(OrdovanDuplicateTrasher::restore({7, {}}, Url::file("/r"), fs).record.version, 7);
}

TEST_F(Restore, AnOldRecordUsedAgainOverwritesNothing) {
    const std::vector<OrdovanTrashEntry> entries{trashed("/r/a"), trashed("/r/b")};
    EXPECT_EQ(fates(restore(entries)), std::vector(2, putBack));
    memory.write("/r/a", "edited since");
    EXPECT_EQ(fates(restore(entries)), std::vector(2, gone));
    (void)trashed("/r/a");
    EXPECT_EQ(fate(entries[0]), occupied);
    EXPECT_EQ(memory.read("/r/a"), "edited since");
}

TEST_F(Restore, AStoppedRunKeepsTheRemainingEntries) {
    const std::vector<OrdovanTrashEntry> entries{trashed("/r/1"), trashed("/r/2"), trashed("/r/3")};
    int asked = 0;
    std::vector<std::size_t> done;
    const OrdovanTrashReport report =
        restore(entries, {[&] { return ++asked < 2; }, [&](std::size_t count, std::size_t) { done.push_back(count); }});
    EXPECT_EQ(fates(report), (std::vector{putBack, stopped, stopped}));
    EXPECT_THAT(done, ElementsAre(1U));
    EXPECT_EQ(report.record.entries, (std::vector{entries[0], entries[1]}));
}

TEST_F(Restore, AHashGivenUpForAStopIsAStop) {
    const OrdovanTrashEntry entry = trashed("/r/a");
    fs.failCall(Operation::contentHash, 1, ECANCELED);
    EXPECT_EQ(fate(entry), stopped);
}

TEST(TrashPlace, TellsWhereTheInfoFileOfAnItemIs) {
    using ordovan::trashInfoPath;
    EXPECT_EQ(trashInfoPath("/h/Trash/files/a.b"), "/h/Trash/info/a.b.trashinfo");
    EXPECT_EQ(trashInfoPath("/v/.Trash-1000/files/a"), "/v/.Trash-1000/info/a.trashinfo");
    EXPECT_EQ(trashInfoPath("/v/.Trash/1000/files/a"), "/v/.Trash/1000/info/a.trashinfo");
    for (const char* none : {"/h/Trash/files/folder/a", "/h/Trash/a", "/h/files/a", "/h/Trash/files", "/v/.Trash/files",
                             "/h//Trash/files/a", "Trash/files/a", "/", "", "/files/a", "/v/.Trash-/files/a"}) {
        EXPECT_EQ(trashInfoPath(none), std::nullopt) << none;
    }
}

}  // namespace
