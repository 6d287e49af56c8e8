#include "OrdovanCore/platform/Sha256.h"
#include "tests/support/ApplyFixture.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

using ordovan::sha256;
using ordovan::testing::build;
using ordovan::testing::FaultyFileSystem;
using ordovan::testing::Operation;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;
using Lasting = FaultyFileSystem::Lasting;
using Moment = FaultyFileSystem::Moment;
using Status = OrdovanExecutionStatus;

namespace {

constexpr const char* sourceChanged = "Source changed since preview; left untouched.";
constexpr const char* outOfScope = "Path no longer within the authorized scope.";
constexpr const char* linkedParent = "A parent folder is a symlink; skipped to stay in scope.";
constexpr const char* occupied = "A file already exists at the destination; left untouched.";
constexpr const char* unknownError =
    "Could not move this file; it was left in place. The system reported an error (code 5).";

using Apply = ordovan::test::ApplyFixture;

}  // namespace

TEST_F(Apply, MovesAFileAndRecordsIt) {
    tree({"a.pdf = hello"});
    const std::string identity = memory.fileIdentity(Url::file("/r/a.pdf")).value();
    const OrdovanExecutionReport report = apply({toDocuments("a.pdf")});
    EXPECT_THAT(report.outcomes,
                ElementsAre(OrdovanExecutionOutcome{Url::file("/r/a.pdf"), Url::file("/r/ordovan+/Documents/a.pdf"),
                                                    Status::moved, "Moved."}));
    EXPECT_EQ(report.journal.version, 1);
    EXPECT_EQ(report.journal.createdAtEpoch, 1700000000.5);
    EXPECT_THAT(report.journal.entries, ElementsAre(OrdovanJournalEntry("/r/a.pdf", "/r/ordovan+/Documents/a.pdf", true,
                                                                        5, sha256("hello").value(), identity)));
    EXPECT_EQ(memory.read("/r/ordovan+/Documents/a.pdf"), "hello");
    EXPECT_FALSE(memory.item("/r/a.pdf"));
}

TEST_F(Apply, GivesAnEmptyReportForNoProposals) {
    const OrdovanExecutionReport report = apply({});
    EXPECT_THAT(report.outcomes, IsEmpty());
    EXPECT_EQ(report.journal, (OrdovanJournal{1, 1700000000.5, {}}));
    EXPECT_EQ(report.movedCount() + report.skippedCount() + report.failedCount(), 0u);
}

TEST_F(Apply, CountsEveryProposalOnceAndKeepsTheirOrder) {
    tree({"a = 1", "b = 2", "c = 3", "ordovan+/Documents/b = old"});
    fs.failCall(Operation::move, 2, EIO);
    const OrdovanExecutionReport report =
        apply({toDocuments("c"), toDocuments("gone"), toDocuments("a"), toDocuments("b")});
    std::vector<std::pair<std::string, Status>> fates;
    for (const auto& outcome : report.outcomes) fates.emplace_back(outcome.source.lastPathComponent(), outcome.status);
    EXPECT_THAT(fates, ElementsAre(std::pair("c", Status::moved), std::pair("gone", Status::skippedRevalidation),
                                   std::pair("a", Status::failed), std::pair("b", Status::skippedRevalidation)));
    EXPECT_EQ(report.movedCount(), 1u);
    EXPECT_EQ(report.skippedCount(), 2u);
    EXPECT_EQ(report.failedCount(), 1u);
    EXPECT_EQ(report.journal.entries.size(), 1u);
}

TEST_F(Apply, NamesStatusesAndOutcomes) {
    EXPECT_EQ(rawValue(Status::moved), "moved");
    EXPECT_EQ(rawValue(Status::skippedRevalidation), "skippedRevalidation");
    EXPECT_EQ(rawValue(Status::failed), "failed");
    EXPECT_EQ((OrdovanExecutionOutcome{Url::file("/a"), Url::file("/b"), Status::moved, ""}.id()), "/a->/b");
}

// Source

TEST_F(Apply, SkipsASourceThatIsGone) {
    tree({"b"});
    EXPECT_EQ(fate(toDocuments("a.pdf")), skipped(sourceChanged));
    EXPECT_THAT(memory.changes(), IsEmpty());
}

TEST_F(Apply, SkipsASourceThatBecameALink) {
    tree({"target = x", "a.pdf -> target", "dangling -> nowhere"});
    EXPECT_EQ(fate(toDocuments("a.pdf")), skipped(sourceChanged));
    EXPECT_EQ(fate(toDocuments("dangling")), skipped(sourceChanged));
    EXPECT_THAT(memory.changes(), IsEmpty());
}

TEST_F(Apply, SkipsASourceThatIsNoRegularFile) {
    tree({"folder/x = 1", "pipe|"});
    EXPECT_EQ(fate(toDocuments("folder")), skipped(sourceChanged));
    EXPECT_EQ(fate(toDocuments("pipe")), skipped(sourceChanged));
    EXPECT_THAT(memory.changes(), IsEmpty());
}

// Scope

TEST_F(Apply, SkipsPathsOutsideTheirRoots) {
    tree({"a = 1", "../rest/b = 2"});
    EXPECT_EQ(fate(proposal("/rest/b", "/r/ordovan+/b")), skipped(outOfScope));
    EXPECT_EQ(fate(proposal("/r/a", "/r/a2")), skipped(outOfScope));
    EXPECT_EQ(fate(proposal("/r/a", "/r/ordovan+x/a")), skipped(outOfScope));
    EXPECT_THAT(memory.changes(), IsEmpty());
}

TEST_F(Apply, SkipsPathsThatStepUp) {
    tree({"a = 1", "sub/"});
    EXPECT_EQ(fate(proposal("/r/a", "/r/ordovan+/../a2")), skipped(outOfScope));
    EXPECT_EQ(fate(proposal("/r/a", "/r/ordovan+/x/../a2")), skipped(outOfScope));
    EXPECT_EQ(fate(proposal("/r/sub/../a", "/r/ordovan+/a")), skipped(outOfScope));
    EXPECT_THAT(memory.changes(), IsEmpty());
}

TEST_F(Apply, SkipsNamesThatARecordCouldNotHold) {
    tree({"a\xff = 1", "b = 2"});
    EXPECT_EQ(fate(toDocuments("a\xff")), skipped(outOfScope));
    EXPECT_EQ(fate(proposal("/r/b", "/r/ordovan+/b\xff")), skipped(outOfScope));
    EXPECT_EQ(fate(proposal("/r/b", std::string_view("/r/ordovan+/b\0c", 14))), skipped(outOfScope));
    EXPECT_THAT(memory.changes(), IsEmpty());
}

TEST_F(Apply, SkipsRelativeAndForeignDestinations) {
    tree({"a = 1"});
    EXPECT_EQ(fate(proposal("/r/a", "r/ordovan+/a")), skipped(outOfScope));
    OrdovanFileProposal foreign = proposal("/r/a", "");
    foreign.destination = Url::parse("https://host/r/ordovan+/a");
    EXPECT_EQ(fate(foreign), skipped(outOfScope));
    EXPECT_THAT(memory.changes(), IsEmpty());
}

TEST_F(Apply, SkipsEverythingWhenTheRootIsTooBroad) {
    build(memory, "/usr", {"a = 1"});
    const auto report = OrdovanExecutor::apply(std::vector{proposal("/usr/a", "/usr/ordovan+/a")}, Url::file("/usr"),
                                               Url::file("/usr/ordovan+"), fs, 0);
    EXPECT_EQ(report.outcomes[0].message, outOfScope);
    EXPECT_THAT(memory.changes(), IsEmpty());
}

TEST_F(Apply, TakesTwoSpellingsOfANameForTwoFolders) {
    build(memory, "/B\u00fccher", {"a = mine"});
    build(memory, "/Bu\u0308cher", {"a = another folder's"});
    const auto report = OrdovanExecutor::apply(std::vector{proposal("/Bu\u0308cher/a", "/B\u00fccher/ordovan+/a")},
                                               Url::file("/B\u00fccher"), Url::file("/B\u00fccher/ordovan+"), fs, 0);
    EXPECT_EQ(report.outcomes[0].message, outOfScope);
    EXPECT_THAT(memory.changes(), IsEmpty());
}

TEST_F(Apply, TakesTwoSpellingsForOneFolderWhereTheVolumeDoes) {
    build(memory, "/B\u00fccher", {"a = mine"});
    memory.link("/Bu\u0308cher", "B\u00fccher");  // as a volume that ignores composition would answer
    const auto report = OrdovanExecutor::apply(std::vector{proposal("/Bu\u0308cher/a", "/B\u00fccher/ordovan+/a")},
                                               Url::file("/B\u00fccher"), Url::file("/B\u00fccher/ordovan+"), fs, 0);
    EXPECT_EQ(report.outcomes[0].message, "Moved.");
}

TEST_F(Apply, MovesFilesWithDecomposedNamesAsTheyAre) {
    build(memory, "/Bu\u0308cher", {"u\u0308.txt = decomposed", "\u00fc.txt = composed"});
    const Url root = Url::file("/Bu\u0308cher");
    const auto report =
        OrdovanExecutor::apply(std::vector{proposal("/Bu\u0308cher/u\u0308.txt", "/Bu\u0308cher/ordovan+/u\u0308.txt"),
                                           proposal("/Bu\u0308cher/\u00fc.txt", "/Bu\u0308cher/ordovan+/\u00fc.txt")},
                               root, root.appending("ordovan+"), fs, 0);
    EXPECT_EQ(report.movedCount(), 2u);
    EXPECT_EQ(memory.read("/Bu\u0308cher/ordovan+/u\u0308.txt"), "decomposed");
    EXPECT_EQ(memory.read("/Bu\u0308cher/ordovan+/\u00fc.txt"), "composed");
}

TEST_F(Apply, TakesTwoSpellingsForTwoFoldersWhicheverWayRound) {
    build(memory, "/B\u00fccher", {"a = another folder's"});
    build(memory, "/Bu\u0308cher", {"a = mine"});
    const auto report = OrdovanExecutor::apply(std::vector{proposal("/B\u00fccher/a", "/Bu\u0308cher/ordovan+/a")},
                                               Url::file("/Bu\u0308cher"), Url::file("/Bu\u0308cher/ordovan+"), fs, 0);
    EXPECT_EQ(report.outcomes[0].message, outOfScope);
    EXPECT_THAT(memory.changes(), IsEmpty());
}

TEST_F(Apply, SkipsEverythingWhenARootStepsUpOrIsRelative) {
    tree({"a = 1", "../x/"});
    for (const char* root : {"/x/../r", "r", ""}) {
        const auto report = OrdovanExecutor::apply(std::vector{proposal("/r/a", "/r/ordovan+/a")}, Url::file(root),
                                                   Url::file("/r/ordovan+"), fs, 0);
        EXPECT_EQ(report.outcomes[0].message, outOfScope) << root;
    }
    EXPECT_THAT(memory.changes(), IsEmpty());
}

TEST_F(Apply, AcceptsRootsWithATrailingSlash) {
    tree({"a = 1"});
    const auto report = OrdovanExecutor::apply(std::vector{proposal("/r//a", "/r/ordovan+/./x/a")}, Url::file("/r/"),
                                               Url::file("/r/ordovan+/"), fs, 0);
    EXPECT_EQ(report.outcomes[0].message, "Moved.");
    EXPECT_EQ(memory.read("/r/ordovan+/x/a"), "1");
}

// Links on the way

TEST_F(Apply, SkipsASourceBehindALinkedFolder) {
    tree({"../outside/a = 1", "in/"});
    memory.link("/r/in/link", "/outside");
    EXPECT_EQ(fate(proposal("/r/in/link/a", "/r/ordovan+/a")), skipped(linkedParent));
    EXPECT_THAT(memory.changes(), IsEmpty());
}

TEST_F(Apply, SkipsADestinationBehindALinkedFolder) {
    tree({"a = 1", "../outside/deep/", "ordovan+/Documents -> /outside"});
    EXPECT_EQ(fate(toDocuments("a")), skipped(linkedParent));
    EXPECT_EQ(fate(proposal("/r/a", "/r/ordovan+/Documents/deep/a")), skipped(linkedParent));
    EXPECT_EQ(fate(proposal("/r/a", "/r/ordovan+/Documents/new/a")), skipped(linkedParent));
    EXPECT_THAT(memory.changes(), IsEmpty());
}

TEST_F(Apply, SkipsADestinationBehindADanglingLink) {
    tree({"a = 1", "ordovan+/Documents -> /nowhere"});
    EXPECT_EQ(fate(toDocuments("a")), skipped(linkedParent));
    EXPECT_THAT(memory.changes(), IsEmpty());
}

TEST_F(Apply, SkipsEveryDestinationWhenTheOutputFolderIsALink) {
    tree({"a = 1", "../outside/", "ordovan+ -> /outside"});
    EXPECT_EQ(fate(toDocuments("a")), skipped(linkedParent));
    EXPECT_THAT(memory.changes(), IsEmpty());
}

TEST_F(Apply, WorksInAChosenFolderThatIsALink) {
    build(memory, "/disk/real", {"a = 1"});
    memory.link("/r", "/disk/real");
    EXPECT_EQ(fate(toDocuments("a")), "moved: Moved.");
    EXPECT_EQ(memory.read("/disk/real/ordovan+/Documents/a"), "1");
}

TEST_F(Apply, LooksForLinksOnlyUpToAnOutputFolderElsewhere) {
    tree({"a = 1"});
    memory.makeDirectory("/disk/out");
    memory.link("/elsewhere", "/disk");
    const auto report = OrdovanExecutor::apply(std::vector{proposal("/r/a", "/elsewhere/out/Documents/a")},
                                               Url::file("/r"), Url::file("/elsewhere/out"), fs, 0);
    EXPECT_EQ(report.outcomes[0].message, "Moved.");
    EXPECT_EQ(memory.read("/disk/out/Documents/a"), "1");
}

TEST_F(Apply, FindsALinkPlantedDuringTheRun) {
    tree({"a = 1", "sub/b = 2", "../outside/sub/b = not ours"});
    bool planted = false;
    fs.setAfterCall([&](const FaultyFileSystem::Call& call) {
        if (call.operation != Operation::move || std::exchange(planted, true)) return;
        memory.removeTree("/r/sub");
        memory.link("/r/sub", "/outside/sub");
    });
    const auto report = apply({toDocuments("a"), proposal("/r/sub/b", "/r/ordovan+/Documents/b")});
    EXPECT_EQ(report.outcomes[1].message, linkedParent);
    EXPECT_EQ(memory.read("/outside/sub/b"), "not ours");
}

TEST_F(Apply, FindsALinkPlantedInTheOutputFolderDuringTheRun) {
    tree({"a = 1", "b = 2", "../outside/"});
    bool planted = false;
    fs.setAfterCall([&](const FaultyFileSystem::Call& call) {
        if (call.operation != Operation::isRegularFile || !memory.item("/r/ordovan+/Documents/a") ||
            std::exchange(planted, true)) {
            return;
        }
        memory.removeTree("/r/ordovan+/Documents");
        memory.link("/r/ordovan+/Documents", "/outside");
    });
    const auto report = apply({toDocuments("a"), toDocuments("b")});
    EXPECT_EQ(report.outcomes[1].message, linkedParent);
    EXPECT_EQ(memory.read("/r/b"), "2");
}

// Destination

TEST_F(Apply, DoesNotFollowALinkThatTakesThePlaceOfAFolderInTheMiddleOfARun) {
    tree({"a.pdf = 1"});
    memory.makeDirectory("/outside");
    fs.setBeforeCall([&](const FaultyFileSystem::Call& call) {
        if (call.operation != Operation::move) return;
        memory.removeTree("/r/ordovan+");
        memory.link("/r/ordovan+", "/outside");
    });
    EXPECT_EQ(fate(toDocuments("a.pdf")).substr(0, 6), "failed");
    EXPECT_EQ(memory.read("/r/a.pdf"), "1");
    EXPECT_THAT(memory.snapshot("/outside"), IsEmpty());
}

TEST_F(Apply, NeverReplacesWhatIsAtTheDestination) {
    tree({"a = new", "ordovan+/Documents/a"});
    EXPECT_EQ(fate(toDocuments("a")), skipped(occupied));
    EXPECT_EQ(memory.read("/r/ordovan+/Documents/a"), "");
    EXPECT_THAT(memory.changes(), IsEmpty());
}

TEST_F(Apply, NeverReplacesALinkOrAFolderAtTheDestination) {
    tree({"a = 1", "b = 2", "ordovan+/Documents/a -> nowhere", "ordovan+/Documents/b/"});
    EXPECT_EQ(fate(toDocuments("a")), skipped(occupied));
    EXPECT_EQ(fate(toDocuments("b")), skipped(occupied));
    EXPECT_THAT(memory.changes(), IsEmpty());
}

TEST_F(Apply, NeverReplacesADestinationThatAppearsBetweenCheckAndMove) {
    tree({"a = mine"});
    fs.setBeforeCall([&](const FaultyFileSystem::Call& call) {
        if (call.operation == Operation::move) memory.write("/r/ordovan+/Documents/a", "theirs");
    });
    EXPECT_EQ(fate(toDocuments("a")),
              "failed: Could not move this file; it was left in place. The system reported an error (code 17).");
    EXPECT_EQ(memory.read("/r/a"), "mine");
    EXPECT_EQ(memory.read("/r/ordovan+/Documents/a"), "theirs");
}

TEST_F(Apply, MovesOnlyOneOfTwoFilesForOneDestination) {
    tree({"x/a = 1", "y/a = 2"});
    const auto report = apply({proposal("/r/x/a", "/r/ordovan+/a"), proposal("/r/y/a", "/r/ordovan+/a")});
    EXPECT_EQ(report.outcomes[0].message, "Moved.");
    EXPECT_EQ(report.outcomes[1].message, occupied);
    EXPECT_EQ(memory.read("/r/y/a"), "2");
}

// Fingerprint, folder, move

TEST_F(Apply, LeavesAFileThatCanNotBeRead) {
    tree({"a = 1"});
    memory.setMode("/r/a", 0);
    EXPECT_THAT(fate(toDocuments("a")), StartsWith("failed: Could not move this file; it was left in place. ordovan+ "
                                                   "doesn't have permission to change this folder."));
    EXPECT_THAT(memory.changes(), IsEmpty());
}

TEST_F(Apply, LeavesAFileWhoseFingerprintFails) {
    tree({"a = 1"});
    for (const Operation operation : {Operation::fileSize, Operation::contentHash, Operation::fileIdentity}) {
        fs.reset();
        fs.failCall(operation, 1, EIO);
        EXPECT_EQ(fate(toDocuments("a")), failed(unknownError));
    }
    EXPECT_THAT(memory.changes(), IsEmpty());
}

TEST_F(Apply, LeavesAFileWhoseFolderCanNotBeMade) {
    tree({"a = 1", "ordovan+/Documents = a file in the way"});
    EXPECT_THAT(fate(toDocuments("a")), StartsWith("failed: Could not move this file; it was left in place. The system "
                                                   "reported an error (code "));
    EXPECT_EQ(memory.read("/r/a"), "1");
}

TEST_F(Apply, LeavesAFileOnAReadOnlyDisk) {
    tree({"a = 1"});
    memory.setReadOnly("/r", true);
    EXPECT_EQ(fate(toDocuments("a")),
              "failed: Could not move this file; it was left in place. This disk is read-only.");
}

TEST_F(Apply, ReportsAMoveThatDidNotLand) {
    tree({"a = 1"});
    fs.failCall(Operation::move, 1, 0, Moment::insteadOfEffect);
    EXPECT_EQ(fate(toDocuments("a")), failed("Move did not land at the destination."));
    EXPECT_EQ(memory.read("/r/a"), "1");
}

TEST_F(Apply, BelievesTheDiskWhenTheReplyToAMoveIsLost) {
    tree({"a = 1"});
    fs.failCall(Operation::move, 1, EIO, Moment::afterEffect);
    EXPECT_EQ(fate(toDocuments("a")), "moved: Moved.");
    EXPECT_EQ(memory.read("/r/ordovan+/Documents/a"), "1");
}

TEST_F(Apply, BelievesTheDiskWhenTheIdentityCanNotBeReadAnyMore) {
    tree({"a = 1"});
    fs.failCall(Operation::move, 1, EIO, Moment::afterEffect);
    fs.failCall(Operation::fileIdentity, 2, EIO, Moment::beforeEffect, Lasting::forGood);
    EXPECT_EQ(fate(toDocuments("a")), "moved: Moved.");
}

TEST_F(Apply, DoesNotTakeASecondNameOfTheFileForAMoveThatHappened) {
    tree({"a = 1"});
    fs.setBeforeCall([&](const FaultyFileSystem::Call& call) {
        if (call.operation == Operation::move) memory.hardLink("/r/ordovan+/Documents/a", "/r/a");
    });
    EXPECT_EQ(fate(toDocuments("a")),
              "failed: Could not move this file; it was left in place. The system reported an error (code 17).");
    EXPECT_EQ(memory.read("/r/a"), "1");
}

TEST_F(Apply, BelievesTheDiskWhenTheLandingCheckFailsOnce) {
    tree({"a = 1"});
    fs.failCall(Operation::isRegularFile, 2, EIO);
    EXPECT_EQ(fate(toDocuments("a")), "moved: Moved.");
}

TEST_F(Apply, DoesNotTakeAnotherFileAtTheDestinationForAMoveThatHappened) {
    tree({"a = same"});
    fs.failCall(Operation::move, 1, EIO);
    fs.setBeforeCall([&](const FaultyFileSystem::Call& call) {
        if (call.operation == Operation::move) memory.write("/r/ordovan+/Documents/a", "same");
    });
    EXPECT_EQ(fate(toDocuments("a")), failed(unknownError));
    EXPECT_EQ(memory.read("/r/a"), "same");
}

TEST_F(Apply, MakesEachFolderOnce) {
    tree({"a = 1", "b = 2", "c = 3", "d = 4"});
    const auto report = apply({toDocuments("a"), proposal("/r/b", "/r/ordovan+/Other/b"), toDocuments("c"),
                               proposal("/r/d", "/r/ordovan+/Other/d")});
    EXPECT_EQ(report.movedCount(), 4u);
    EXPECT_EQ(fs.callCount(Operation::createDirectory), 2u);
}

TEST_F(Apply, MakesAFolderAnewThatWasRemovedMeanwhile) {
    tree({"a = 1", "b = 2"});
    fs.setBeforeCall([&](const FaultyFileSystem::Call& call) {
        if (call.operation == Operation::move && call.url == Url::file("/r/b") &&
            memory.item("/r/ordovan+/Documents/a")) {
            memory.removeTree("/r/ordovan+");
        }
    });
    const auto report = apply({toDocuments("a"), toDocuments("b")});
    EXPECT_EQ(report.outcomes[1].message, "Moved.");
    EXPECT_EQ(memory.read("/r/ordovan+/Documents/b"), "2");
    EXPECT_EQ(fs.callCount(Operation::createDirectory), 2u);
}

TEST_F(Apply, MakesNoFolderAnewBehindALinkThatCameMeanwhile) {
    tree({"a = 1"});
    memory.makeDirectory("/elsewhere");
    fs.setBeforeCall([&](const FaultyFileSystem::Call& call) {
        if (call.operation != Operation::move || memory.read("/r/a") != "1") return;
        memory.removeTree("/r/ordovan+");
        memory.link("/r/ordovan+", "/elsewhere");
    });
    EXPECT_EQ(apply({toDocuments("a")}).failedCount(), 1u);
    EXPECT_EQ(memory.read("/r/a"), "1");
    EXPECT_TRUE(memory.list("/elsewhere")->empty());
}

TEST_F(Apply, TriesNoSecondTimeWhenTheSourceIsWhatIsMissing) {
    tree({"a = 1"});
    fs.setBeforeCall([&](const FaultyFileSystem::Call& call) {
        if (call.operation == Operation::move) memory.removeTree("/r/a");
    });
    EXPECT_EQ(fate(toDocuments("a")),
              "failed: Could not move this file; it was left in place. The file was moved or "
              "deleted while organizing.");
    EXPECT_EQ(fs.callCount(Operation::move), 1u);
}

TEST_F(Apply, HashesAFileOnceWithinAVolume) {
    tree({"a = 1", "b = 2"});
    EXPECT_EQ(apply({toDocuments("a"), toDocuments("b")}).movedCount(), 2u);
    EXPECT_EQ(fs.callCount(Operation::contentHash), 2u);
    EXPECT_EQ(fs.callCount(Operation::copy), 0u);
}

// Control

TEST_F(Apply, TellsItsProgressAfterEachFile) {
    tree({"a = 1", "c = 3"});
    std::vector<std::pair<std::size_t, std::size_t>> told;
    (void)apply({toDocuments("a"), toDocuments("gone"), toDocuments("c")},
                {{}, [&](std::size_t done, std::size_t total) { told.emplace_back(done, total); }});
    EXPECT_THAT(told, ElementsAre(std::pair(1u, 3u), std::pair(2u, 3u), std::pair(3u, 3u)));
}

TEST_F(Apply, StopsBetweenFilesAndReportsTheRest) {
    tree({"a = 1", "b = 2", "c = 3"});
    int asked = 0;
    std::size_t done = 0;
    const auto report = apply({toDocuments("a"), toDocuments("b"), toDocuments("c")},
                              {[&] { return ++asked < 2; }, [&](std::size_t count, std::size_t) { done = count; }});
    EXPECT_EQ(report.outcomes[0].message, "Moved.");
    EXPECT_EQ(report.outcomes[1].message, "The run was stopped before this file; left untouched.");
    EXPECT_EQ(report.outcomes[2].message, "The run was stopped before this file; left untouched.");
    EXPECT_EQ(report.skippedCount(), 2u);
    EXPECT_EQ(report.journal.entries.size(), 1u);
    EXPECT_EQ(asked, 2);
    EXPECT_EQ(done, 1u);
    EXPECT_EQ(memory.read("/r/c"), "3");
}
