#include "OrdovanCore/Executor.h"
#include "OrdovanCore/platform/Sha256.h"
#include "OrdovanCore/testing/FaultyFileSystem.h"
#include "OrdovanCore/testing/TreeBuilder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <initializer_list>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

using ordovan::testing::build;
using ordovan::testing::FaultyFileSystem;
using ordovan::testing::MemoryFileSystem;
using ordovan::testing::Operation;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;
using Moment = FaultyFileSystem::Moment;
using Status = OrdovanExecutionStatus;

namespace {

constexpr const char* outOfScope = "Journal entry is outside the authorized scope; undo refused.";
constexpr const char* missing = "The organized file is missing or was changed since, so it was left as it is.";
constexpr const char* linkedParent = "A parent folder is a symlink; undo skipped to stay in scope.";
constexpr const char* occupied = "Original location is occupied; undo skipped.";
constexpr const char* modified = "File was modified after organizing; undo skipped to avoid data loss.";
constexpr const char* differentFile = "A different file now occupies that location; undo skipped.";
constexpr const char* verificationFailed = "Restore verification failed; organized copy kept.";
constexpr const char* unfinished = "Could not finish restoring; organized copy kept.";
constexpr const char* unknownError = "Could not restore this file. The system reported an error (code 5).";

/// The folder "/r" was organized into "/r/ordovan+".
class Undo : public ::testing::Test {
protected:
    void tree(std::initializer_list<std::string_view> items) { build(memory, "/r", items); }

    /// The journal entry that says truly how the file at `destination` came there.
    OrdovanJournalEntry entry(std::string_view source, std::string_view destination, bool sameVolume = true) {
        const std::string content = memory.read(destination).value();
        return {source,
                destination,
                sameVolume,
                static_cast<std::int64_t>(content.size()),
                ordovan::sha256(content).value(),
                memory.fileIdentity(Url::file(destination)).value()};
    }
    OrdovanJournalEntry fromDocuments(std::string_view name) {
        const std::string file(name);
        return entry("/r/" + file, "/r/ordovan+/Documents/" + file);
    }
    /// An entry for a file that may be missing or different.
    static OrdovanJournalEntry claim(std::string_view source, std::string_view destination) {
        return {source, destination, true, 1, ordovan::sha256("1").value(), ""};
    }

    OrdovanExecutionReport undo(std::vector<OrdovanJournalEntry> entries, const OrdovanRunControl& control = {}) {
        return OrdovanExecutor::undo({1, 17.5, std::move(entries)}, Url::file("/r"), Url::file("/r/ordovan+"), fs,
                                     control);
    }
    /// Undoes one entry; "status: message".
    std::string fate(const OrdovanJournalEntry& one) {
        const OrdovanExecutionReport report = undo({one});
        EXPECT_EQ(report.outcomes.size(), 1u);
        EXPECT_EQ(report.journal.entries.size(), 1u - report.movedCount());
        return std::string(rawValue(report.outcomes[0].status)) + ": " + report.outcomes[0].message;
    }
    static std::string skipped(const char* message) { return std::string("skippedRevalidation: ") + message; }
    static std::string failed(const char* message) { return std::string("failed: ") + message; }

    MemoryFileSystem memory;
    FaultyFileSystem fs{memory};
};

/// Files come back from a Documents folder on a volume of its own.
class UndoAcrossVolumes : public Undo {
protected:
    UndoAcrossVolumes() {
        memory.makeDirectory("/r");
        memory.addVolume("/r/ordovan+/Documents");
        memory.write("/r/ordovan+/Documents/a", "hello");
        one.push_back(entry("/r/a", "/r/ordovan+/Documents/a", false));
    }
    void expectOnlyTheOrganizedCopy() {
        EXPECT_EQ(memory.read("/r/ordovan+/Documents/a"), "hello");
        EXPECT_EQ(memory.contents().size(), 1u);
        EXPECT_EQ(memory.list("/r")->size(), 1u);
    }
    std::vector<OrdovanJournalEntry> one;
};

}  // namespace

TEST_F(Undo, PutsAFileBack) {
    tree({"ordovan+/Documents/a = hello"});
    const std::string before = memory.snapshot("/r/ordovan+/Documents").at("a");
    const OrdovanExecutionReport report = undo({fromDocuments("a")});
    EXPECT_THAT(report.outcomes,
                ElementsAre(OrdovanExecutionOutcome{Url::file("/r/a"), Url::file("/r/ordovan+/Documents/a"),
                                                    Status::moved, "Restored."}));
    EXPECT_EQ(report.journal, (OrdovanJournal{1, 17.5, {}}));
    EXPECT_EQ(memory.snapshot("/r").at("a"), before);
}

TEST_F(Undo, GivesAnEmptyReportForAnEmptyJournal) {
    EXPECT_EQ(undo({}), (OrdovanExecutionReport{{}, {1, 17.5, {}}}));
}

TEST_F(Undo, MakesTheFolderThatAFileCameFrom) {
    tree({"ordovan+/Documents/a = hello"});
    EXPECT_EQ(fate(entry("/r/old/place/a", "/r/ordovan+/Documents/a")), "moved: Restored.");
    EXPECT_EQ(memory.read("/r/old/place/a"), "hello");
}

TEST_F(Undo, GoesNewestFirst) {
    tree({"ordovan+/Documents/a = 1", "ordovan+/Documents/b = 2"});
    const auto report = undo({fromDocuments("a"), fromDocuments("b")});
    EXPECT_EQ(report.outcomes[0].source, Url::file("/r/b"));
    EXPECT_EQ(report.outcomes[1].source, Url::file("/r/a"));
}

TEST_F(Undo, TakesAFileThatMovedTwiceBackAlongItsWay) {
    tree({"ordovan+/Documents/a = hello"});
    const OrdovanJournalEntry second = entry("/r/ordovan+/Other/a", "/r/ordovan+/Documents/a");
    const OrdovanJournalEntry first("/r/a", "/r/ordovan+/Other/a", true, 5, second.contentHash(), second.fileID());
    EXPECT_EQ(undo({first, second}).movedCount(), 2u);
    EXPECT_EQ(memory.read("/r/a"), "hello");
}

TEST_F(Undo, KeepsTheEntriesThatWereNotRestoredInTheirOrder) {
    tree({"ordovan+/Documents/a = 1", "ordovan+/Documents/b = 2", "ordovan+/Documents/c = 3", "b = taken"});
    const auto goneFirst = claim("/r/x", "/r/ordovan+/x");
    const auto a = fromDocuments("a");
    const auto b = fromDocuments("b");
    const auto c = fromDocuments("c");
    const auto report = undo({goneFirst, a, b, c});
    EXPECT_EQ(report.journal, (OrdovanJournal{1, 17.5, {goneFirst, b}}));
    EXPECT_EQ(report.movedCount(), 2u);
    EXPECT_EQ(report.skippedCount(), 2u);
}

TEST_F(Undo, RestoresNothingTheSecondTime) {
    tree({"ordovan+/Documents/a = hello"});
    const auto a = fromDocuments("a");
    EXPECT_EQ(fate(a), "moved: Restored.");
    EXPECT_EQ(fate(a), skipped(missing));
}

// Scope

TEST_F(Undo, RefusesEntriesOutsideTheFolders) {
    tree({"../outside/a = 1", "plain = 1", "ordovan+/Documents/a = 1"});
    EXPECT_EQ(fate(claim("/r/a", "/outside/a")), skipped(outOfScope));
    EXPECT_EQ(fate(claim("/r/a", "/r/plain")), skipped(outOfScope));
    EXPECT_EQ(fate(claim("/etc/cron.d/a", "/r/ordovan+/Documents/a")), skipped(outOfScope));
    EXPECT_EQ(fate(claim("/rx/a", "/r/ordovan+/Documents/a")), skipped(outOfScope));
    EXPECT_THAT(memory.changes(), IsEmpty());
}

TEST_F(Undo, RefusesEntriesThatStepUp) {
    tree({"ordovan+/Documents/a = 1", "plain = 1", "sub/"});
    EXPECT_EQ(fate(claim("/r/../etc/a", "/r/ordovan+/Documents/a")), skipped(outOfScope));
    EXPECT_EQ(fate(claim("/r/sub/../a", "/r/ordovan+/Documents/a")), skipped(outOfScope));
    EXPECT_EQ(fate(claim("/r/a", "/r/ordovan+/../plain")), skipped(outOfScope));
    EXPECT_EQ(fate(claim("/r/a", "/r/ordovan+/Documents/../Documents/a")), skipped(outOfScope));
    EXPECT_EQ(fate(claim("/r/..", "/r/ordovan+/Documents/a")), skipped(outOfScope));
    EXPECT_THAT(memory.changes(), IsEmpty());
}

TEST_F(Undo, RefusesRelativeEmptyAndBrokenPaths) {
    tree({"ordovan+/Documents/a = 1"});
    const std::string_view withNul("/r/a\0b", 6);
    for (const std::string_view source :
         {std::string_view("r/a"), std::string_view(""), withNul, std::string_view("/r/\xff")}) {
        EXPECT_EQ(fate(claim(source, "/r/ordovan+/Documents/a")), skipped(outOfScope));
    }
    for (const char* destination : {"r/ordovan+/Documents/a", "", "ordovan+/Documents/a", "/r/ordovan+/\xff"}) {
        EXPECT_EQ(fate(claim("/r/a", destination)), skipped(outOfScope));
    }
    EXPECT_THAT(memory.changes(), IsEmpty());
}

TEST_F(Undo, RefusesEverythingWhenTheRootIsTooBroad) {
    build(memory, "/usr/ordovan+", {"a = 1"});
    const auto report = OrdovanExecutor::undo({1, 0, {entry("/usr/a", "/usr/ordovan+/a")}}, Url::file("/usr"),
                                              Url::file("/usr/ordovan+"), fs);
    EXPECT_EQ(report.outcomes[0].message, outOfScope);
    EXPECT_THAT(memory.changes(), IsEmpty());
}

TEST_F(Undo, RefusesTheFolderOfAnotherSpelling) {
    build(memory, "/B\u00fccher", {"x"});
    build(memory, "/Bu\u0308cher/ordovan+", {"a = 1"});
    const auto report = OrdovanExecutor::undo({1, 0, {entry("/B\u00fccher/a", "/Bu\u0308cher/ordovan+/a")}},
                                              Url::file("/B\u00fccher"), Url::file("/B\u00fccher/ordovan+"), fs);
    EXPECT_EQ(report.outcomes[0].message, outOfScope);
    EXPECT_THAT(memory.changes(), IsEmpty());
}

// Checks, in their order

TEST_F(Undo, LeavesAnOrganizedFileThatIsNoRegularFileAnyMore) {
    tree({"target = 1", "ordovan+/folder/x = 1", "ordovan+/link -> ../target", "ordovan+/pipe|"});
    EXPECT_EQ(fate(claim("/r/a", "/r/ordovan+/gone")), skipped(missing));
    EXPECT_EQ(fate(claim("/r/a", "/r/ordovan+/folder")), skipped(missing));
    EXPECT_EQ(fate(claim("/r/a", "/r/ordovan+/link")), skipped(missing));
    EXPECT_EQ(fate(claim("/r/a", "/r/ordovan+/pipe")), skipped(missing));
    EXPECT_THAT(memory.changes(), IsEmpty());
}

TEST_F(Undo, LeavesAFileWhoseSizeCanNotBeRead) {
    tree({"ordovan+/Documents/a = 1"});
    fs.failCall(Operation::fileSize, 1, EIO);
    EXPECT_EQ(fate(fromDocuments("a")), skipped(missing));
    EXPECT_THAT(memory.changes(), IsEmpty());
}

TEST_F(Undo, SkipsAnOrganizedFileBehindALink) {
    tree({"../outside/a = 1", "ordovan+/Documents -> /outside"});
    EXPECT_EQ(fate(claim("/r/a", "/r/ordovan+/Documents/a")), skipped(linkedParent));
    EXPECT_THAT(memory.changes(), IsEmpty());
}

TEST_F(Undo, SkipsAnOldPlaceBehindALink) {
    tree({"../outside/", "ordovan+/Documents/a = 1", "old -> /outside"});
    EXPECT_EQ(fate(claim("/r/old/a", "/r/ordovan+/Documents/a")), skipped(linkedParent));
    EXPECT_EQ(fate(claim("/r/old/new/a", "/r/ordovan+/Documents/a")), skipped(linkedParent));
    EXPECT_THAT(memory.changes(), IsEmpty());
}

TEST_F(Undo, SkipsEverythingWhenTheOutputFolderIsALink) {
    tree({"../outside/a = 1", "ordovan+ -> /outside"});
    EXPECT_EQ(fate(claim("/r/a", "/r/ordovan+/a")), skipped(linkedParent));
    EXPECT_THAT(memory.changes(), IsEmpty());
}

TEST_F(Undo, LeavesBothFilesWhenTheOldPlaceIsTaken) {
    tree({"ordovan+/Documents/a = organized", "a = new"});
    EXPECT_EQ(fate(fromDocuments("a")), skipped(occupied));
    EXPECT_EQ(memory.read("/r/a"), "new");
    EXPECT_EQ(memory.read("/r/ordovan+/Documents/a"), "organized");
    EXPECT_THAT(memory.changes(), IsEmpty());
}

TEST_F(Undo, TakesADanglingLinkOrAFolderForTaken) {
    tree({"ordovan+/Documents/a = 1", "ordovan+/Documents/b = 1", "a -> nowhere", "b/"});
    EXPECT_EQ(fate(fromDocuments("a")), skipped(occupied));
    EXPECT_EQ(fate(fromDocuments("b")), skipped(occupied));
    EXPECT_THAT(memory.changes(), IsEmpty());
}

TEST_F(Undo, LeavesAFileAloneWhenItsContentChanged) {
    tree({"ordovan+/Documents/same = hello", "ordovan+/Documents/longer = hello"});
    const auto same = fromDocuments("same");
    const auto longer = fromDocuments("longer");
    memory.write("/r/ordovan+/Documents/same", "HELLO");
    memory.write("/r/ordovan+/Documents/longer", "hello!");
    EXPECT_EQ(fate(same), skipped(modified));
    EXPECT_EQ(fate(longer), skipped(modified));
    EXPECT_THAT(memory.changes(), IsEmpty());
}

TEST_F(Undo, LeavesAFileAloneWhoseSizeIsNotTheRecordedOne) {
    tree({"ordovan+/Documents/a = hello"});
    const auto a = fromDocuments("a");
    EXPECT_EQ(fate({a.source(), a.destination(), true, 6, a.contentHash(), a.fileID()}), skipped(modified));
    EXPECT_EQ(fs.callCount(Operation::contentHash), 0u);
}

TEST_F(Undo, LeavesAFileAloneThatCanNotBeHashed) {
    tree({"ordovan+/Documents/a = hello"});
    const auto a = fromDocuments("a");
    memory.setMode("/r/ordovan+/Documents/a", 0);
    EXPECT_EQ(fate(a), skipped(modified));
    EXPECT_THAT(memory.changes(), IsEmpty());
}

TEST_F(Undo, LeavesAnotherFileOfEqualContent) {
    tree({"ordovan+/Documents/a = hello"});
    const auto a = fromDocuments("a");
    memory.replace("/r/ordovan+/Documents/a", "hello");
    EXPECT_EQ(fate(a), skipped(differentFile));
    EXPECT_THAT(memory.changes(), IsEmpty());
}

TEST_F(Undo, LeavesAFileWhoseIdentityCanNotBeRead) {
    tree({"ordovan+/Documents/a = hello"});
    const auto a = fromDocuments("a");
    fs.failCall(Operation::fileIdentity, 1, EIO);
    EXPECT_EQ(fate(a), skipped(differentFile));
    EXPECT_THAT(memory.changes(), IsEmpty());
}

TEST_F(Undo, AsksForNoIdentityWhereNoneIsRecorded) {
    tree({"ordovan+/Documents/a = 1", "ordovan+/Documents/b = 1"});
    EXPECT_EQ(fate(claim("/r/a", "/r/ordovan+/Documents/a")), "moved: Restored.");
    const OrdovanJournalEntry acrossVolumes("/r/b", "/r/ordovan+/Documents/b", false, 1, ordovan::sha256("1").value(),
                                            "7:7");
    EXPECT_EQ(fate(acrossVolumes), "moved: Restored.");
}

TEST_F(Undo, NeverMovesWhatItCouldNotFollow) {
    tree({"ordovan+/Documents/a = 1"});
    fs.failCall(Operation::fileIdentity, 1, EIO);
    EXPECT_EQ(fate(claim("/r/a", "/r/ordovan+/Documents/a")), failed(unknownError));
    EXPECT_THAT(memory.changes(), IsEmpty());
}

TEST_F(Undo, TellsTheFirstReasonOnly) {
    tree({"../outside/", "old -> /outside", "ordovan+/Documents/a = changed", "a = taken"});
    EXPECT_EQ(fate(claim("/r/old/a", "/r/ordovan+/Documents/gone")), skipped(missing));
    EXPECT_EQ(fate(claim("/r/a", "/r/ordovan+/Documents/a")), skipped(occupied));
}

// Moving back

TEST_F(Undo, ReportsAMoveThatFails) {
    tree({"ordovan+/Documents/a = hello"});
    fs.failCall(Operation::move, 1, EIO);
    EXPECT_EQ(fate(fromDocuments("a")), failed(unknownError));
    EXPECT_EQ(memory.read("/r/ordovan+/Documents/a"), "hello");
}

TEST_F(Undo, ReportsAFolderThatCanNotBeMade) {
    tree({"ordovan+/Documents/a = hello"});
    memory.setMode("/r", 0555);
    EXPECT_THAT(fate(entry("/r/old/a", "/r/ordovan+/Documents/a")),
                StartsWith("failed: Could not restore this file. ordovan+ doesn't have permission"));
    EXPECT_EQ(memory.read("/r/ordovan+/Documents/a"), "hello");
}

TEST_F(Undo, NeverReplacesWhatAppearsAtTheOldPlace) {
    tree({"ordovan+/Documents/a = organized"});
    fs.setBeforeCall([&](const FaultyFileSystem::Call& call) {
        if (call.operation == Operation::move) memory.write("/r/a", "new");
    });
    EXPECT_EQ(fate(fromDocuments("a")), "failed: Could not restore this file. The system reported an error (code 17).");
    EXPECT_EQ(memory.read("/r/a"), "new");
    EXPECT_EQ(memory.read("/r/ordovan+/Documents/a"), "organized");
}

TEST_F(Undo, BelievesTheDiskWhenTheReplyToAMoveIsLost) {
    tree({"ordovan+/Documents/a = hello"});
    fs.failCall(Operation::move, 1, EIO, Moment::afterEffect);
    EXPECT_EQ(fate(fromDocuments("a")), "moved: Restored.");
    EXPECT_EQ(memory.read("/r/a"), "hello");
}

TEST_F(Undo, DoesNotBelieveAMoveThatDidNothing) {
    tree({"ordovan+/Documents/a = hello"});
    fs.failCall(Operation::move, 1, 0, Moment::insteadOfEffect);
    EXPECT_EQ(fate(fromDocuments("a")), failed(unfinished));
    EXPECT_EQ(memory.read("/r/ordovan+/Documents/a"), "hello");
}

TEST_F(Undo, GoesOnAfterARefusalAndAFailure) {
    tree({"ordovan+/Documents/a = 1", "ordovan+/Documents/b = 2", "ordovan+/Documents/c = 3"});
    fs.failCall(Operation::move, 1, EIO);
    const auto report =
        undo({fromDocuments("a"), claim("/outside", "/r/ordovan+/x"), fromDocuments("b"), fromDocuments("c")});
    EXPECT_EQ(report.movedCount(), 2u);
    EXPECT_EQ(report.skippedCount(), 1u);
    EXPECT_EQ(report.failedCount(), 1u);
    EXPECT_EQ(memory.read("/r/a"), "1");
}

TEST_F(Undo, StopsBetweenFilesAndKeepsTheRest) {
    tree({"ordovan+/Documents/a = 1", "ordovan+/Documents/b = 2"});
    int asked = 0;
    std::vector<std::pair<std::size_t, std::size_t>> told;
    const auto a = fromDocuments("a");
    const auto report = undo(
        {a, fromDocuments("b")},
        {[&] { return ++asked < 2; }, [&](std::size_t done, std::size_t total) { told.emplace_back(done, total); }});
    EXPECT_EQ(report.outcomes[0].message, "Restored.");
    EXPECT_EQ(report.outcomes[1].status, Status::skippedRevalidation);
    EXPECT_EQ(report.outcomes[1].message, OrdovanExecutor::stoppedMessage);
    EXPECT_EQ(report.journal.entries, std::vector{a});
    EXPECT_THAT(told, ElementsAre(std::pair(1u, 2u)));
}

TEST_F(Undo, RestoresADoubledEntryOnce) {
    tree({"ordovan+/Documents/a = hello"});
    const auto a = fromDocuments("a");
    const auto report = undo({a, a});
    EXPECT_EQ(report.movedCount(), 1u);
    EXPECT_EQ(report.outcomes[1].message, missing);
    EXPECT_EQ(memory.read("/r/a"), "hello");
}

// Across volumes

TEST_F(Undo, MakesNoFolderAnewBehindALinkThatCameMeanwhile) {
    tree({"sub/x = 1", "ordovan+/Documents/a = hello"});
    memory.makeDirectory("/elsewhere");
    const OrdovanJournalEntry one = entry("/r/sub/deep/a", "/r/ordovan+/Documents/a");
    fs.setBeforeCall([&](const FaultyFileSystem::Call& call) {
        if (call.operation != Operation::move || !memory.item("/r/sub/x")) return;
        memory.removeTree("/r/sub");
        memory.link("/r/sub", "/elsewhere");
    });
    EXPECT_EQ(undo({one}).failedCount(), 1u);
    EXPECT_EQ(memory.read("/r/ordovan+/Documents/a"), "hello");
    EXPECT_TRUE(memory.list("/elsewhere")->empty());
}

TEST_F(UndoAcrossVolumes, CopiesVerifiesAndRemoves) {
    const std::string before = memory.snapshot("/r/ordovan+/Documents").at("a");
    Url partial;
    fs.setBeforeCall([&](const FaultyFileSystem::Call& call) {
        if (call.operation == Operation::copy) partial = call.second;
    });
    EXPECT_EQ(undo(one).outcomes[0].message, "Restored.");
    EXPECT_THAT(std::string(partial.path()), StartsWith("/r/.a.ordovan-partial-"));
    EXPECT_EQ(memory.snapshot("/r").at("a"), before);
    EXPECT_THAT(memory.snapshot("/r/ordovan+/Documents"), IsEmpty());
    EXPECT_EQ(memory.list("/r")->size(), 2u);
}

TEST_F(UndoAcrossVolumes, KeepsTheOrganizedCopyWhenTheCopyFails) {
    memory.setFreeBytes("/r", 3);
    EXPECT_EQ(undo(one).outcomes[0].message,
              "Could not restore this file. The disk is full. Free up some space and try again.");
    expectOnlyTheOrganizedCopy();
}

TEST_F(UndoAcrossVolumes, KeepsTheOrganizedCopyWhenTheVerificationFails) {
    fs.lieAboutHash(2);
    EXPECT_EQ(undo(one).outcomes[0].message, verificationFailed);
    expectOnlyTheOrganizedCopy();
}

TEST_F(UndoAcrossVolumes, KeepsTheOrganizedCopyWhenTheRenameFails) {
    for (const Moment moment : {Moment::beforeEffect, Moment::afterEffect, Moment::insteadOfEffect}) {
        fs.reset();
        fs.failCall(Operation::move, 1, EIO, moment);
        EXPECT_EQ(undo(one).outcomes[0].message, unfinished);
        expectOnlyTheOrganizedCopy();
    }
}

TEST_F(UndoAcrossVolumes, KeepsTheOrganizedCopyWhenItCanNotBeRemoved) {
    memory.setMode("/r/ordovan+/Documents", 0555);
    EXPECT_EQ(undo(one).outcomes[0].message, unfinished);
    expectOnlyTheOrganizedCopy();
}

TEST_F(UndoAcrossVolumes, BelievesTheDiskWhenTheReplyToTheRemovalIsLost) {
    fs.failCall(Operation::remove, 1, EIO, Moment::afterEffect);
    EXPECT_EQ(undo(one).outcomes[0].message, "Restored.");
    EXPECT_EQ(memory.read("/r/a"), "hello");
    EXPECT_EQ(memory.contents().size(), 1u);
}

TEST_F(UndoAcrossVolumes, KeepsAnOrganizedFileThatIsEditedDuringTheCopy) {
    fs.setAfterCall([&](const FaultyFileSystem::Call& call) {
        if (call.operation == Operation::copy) memory.write("/r/ordovan+/Documents/a", "edited text");
    });
    EXPECT_EQ(undo(one).outcomes[0].message, verificationFailed);
    EXPECT_EQ(memory.read("/r/ordovan+/Documents/a"), "edited text");
    EXPECT_EQ(memory.list("/r")->size(), 1u);
}

TEST_F(UndoAcrossVolumes, NeverReplacesWhatAppearsAtTheOldPlace) {
    fs.setAfterCall([&](const FaultyFileSystem::Call& call) {
        if (call.operation == Operation::copy) memory.write("/r/a", "new");
    });
    EXPECT_EQ(undo(one).outcomes[0].message, unfinished);
    EXPECT_EQ(memory.read("/r/a"), "new");
    EXPECT_EQ(memory.read("/r/ordovan+/Documents/a"), "hello");
    EXPECT_EQ(memory.list("/r")->size(), 2u);
}
