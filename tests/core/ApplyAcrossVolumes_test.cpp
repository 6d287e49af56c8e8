#include "OrdovanCore/platform/Sha256.h"
#include "tests/support/ApplyFixture.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <map>
#include <string>
#include <utility>

using ordovan::sha256;
using ordovan::testing::FaultyFileSystem;
using ordovan::testing::Operation;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;
using Lasting = FaultyFileSystem::Lasting;
using Moment = FaultyFileSystem::Moment;

namespace {

constexpr const char* verificationFailed = "Copy verification failed; source kept, copy removed.";
constexpr const char* originalStays =
    "Copied and verified, but the original could not be removed; copy discarded to avoid a duplicate.";
constexpr const char* unknownError =
    "Could not move this file; it was left in place. The system reported an error (code 5).";

using ApplyAcrossVolumes = ordovan::test::ApplyFixture;

}  // namespace

TEST_F(ApplyAcrossVolumes, CopiesVerifiesAndRemoves) {
    tree({"a.pdf = hello"});
    documentsOnAnotherVolume();
    memory.setModified("/r/a.pdf", 1234567890123456789);
    memory.setMode("/r/a.pdf", 0640);
    const std::string before = memory.snapshot("/r").at("a.pdf");
    const std::string identity = memory.fileIdentity(Url::file("/r/a.pdf")).value();
    const auto report = apply({toDocuments("a.pdf")});
    EXPECT_EQ(report.outcomes[0].message, "Copied, verified and moved.");
    EXPECT_THAT(report.journal.entries, ElementsAre(OrdovanJournalEntry("/r/a.pdf", "/r/ordovan+/Documents/a.pdf",
                                                                        false, 5, sha256("hello").value(), identity)));
    EXPECT_EQ(memory.snapshot("/r/ordovan+/Documents"), (std::map<std::string, std::string>{{"a.pdf", before}}));
    EXPECT_FALSE(memory.item("/r/a.pdf"));
    EXPECT_EQ(fs.callCount(Operation::contentHash), 3u);  // the original before and after its copy, and the copy
}

TEST_F(ApplyAcrossVolumes, CopiesUnderAPartialNameBesideTheDestination) {
    tree({"report.pdf = hello"});
    documentsOnAnotherVolume();
    Url partial;
    fs.setBeforeCall([&](const FaultyFileSystem::Call& call) {
        if (call.operation == Operation::copy) partial = call.second;
    });
    EXPECT_EQ(fate(toDocuments("report.pdf")), "moved: Copied, verified and moved.");
    EXPECT_THAT(std::string(partial.path()), StartsWith("/r/ordovan+/Documents/.report.pdf.ordovan-partial-"));
    EXPECT_TRUE(OrdovanPartialName::isPartial(partial.path()));
}

TEST_F(ApplyAcrossVolumes, LeavesNothingBehindWhenTheCopyFails) {
    tree({"a = hello"});
    memory.addVolume("/r/ordovan+/Documents", 3);
    EXPECT_EQ(fate(toDocuments("a")),
              "failed: Could not move this file; it was left in place. The disk is full. Free "
              "up some space and try again.");
    EXPECT_EQ(memory.read("/r/a"), "hello");
    EXPECT_THAT(memory.snapshot("/r/ordovan+/Documents"), IsEmpty());
}

TEST_F(ApplyAcrossVolumes, RemovesTheCopyWhenItsReplyIsLost) {
    tree({"a = hello"});
    documentsOnAnotherVolume();
    fs.failCall(Operation::copy, 1, EIO, Moment::afterEffect);
    EXPECT_EQ(fate(toDocuments("a")), failed(unknownError));
    EXPECT_EQ(memory.read("/r/a"), "hello");
    EXPECT_THAT(memory.snapshot("/r/ordovan+/Documents"), IsEmpty());
}

TEST_F(ApplyAcrossVolumes, NeverRemovesAPartialNameThatWasTaken) {
    tree({"a = hello"});
    documentsOnAnotherVolume();
    fs.setBeforeCall([&](const FaultyFileSystem::Call& call) {
        if (call.operation == Operation::copy) memory.write(call.second.path(), "theirs");
    });
    EXPECT_EQ(fate(toDocuments("a")),
              "failed: Could not move this file; it was left in place. The system reported an error (code 17).");
    EXPECT_EQ(memory.list("/r/ordovan+/Documents")->size(), 1u);
    EXPECT_EQ(fs.callCount(Operation::remove), 0u);
}

TEST_F(ApplyAcrossVolumes, RemovesTheEmptyFileThatItMadeWhileTheReplySaysTheNameIsTaken) {
    tree({"a = hello"});
    documentsOnAnotherVolume();
    fs.setBeforeCall([&](const FaultyFileSystem::Call& call) {
        if (call.operation == Operation::copy) memory.write(call.second.path(), "");
    });
    EXPECT_EQ(fate(toDocuments("a")),
              "failed: Could not move this file; it was left in place. The system reported an error (code 17).");
    EXPECT_EQ(memory.read("/r/a"), "hello");
    EXPECT_THAT(memory.snapshot("/r/ordovan+/Documents"), IsEmpty());
}

TEST_F(ApplyAcrossVolumes, DiscardsACopyThatDiffers) {
    tree({"a = hello"});
    documentsOnAnotherVolume();
    fs.lieAboutHash(2);
    EXPECT_EQ(fate(toDocuments("a")), failed(verificationFailed));
    EXPECT_EQ(memory.read("/r/a"), "hello");
    EXPECT_THAT(memory.snapshot("/r/ordovan+/Documents"), IsEmpty());
}

TEST_F(ApplyAcrossVolumes, DiscardsACopyThatCanNotBeVerified) {
    tree({"a = hello"});
    documentsOnAnotherVolume();
    for (const Operation operation : {Operation::contentHash, Operation::fileIdentity}) {
        fs.reset();
        fs.failCall(operation, 2, EIO);
        EXPECT_EQ(fate(toDocuments("a")), failed(verificationFailed));
        EXPECT_EQ(memory.read("/r/a"), "hello");
        EXPECT_THAT(memory.snapshot("/r/ordovan+/Documents"), IsEmpty());
    }
}

TEST_F(ApplyAcrossVolumes, DiscardsACopyOfASourceThatChangedWhileItWasCopied) {
    tree({"a = hello"});
    documentsOnAnotherVolume();
    fs.setBeforeCall([&](const FaultyFileSystem::Call& call) {
        if (call.operation == Operation::copy) memory.write("/r/a", "HELLO");
    });
    EXPECT_EQ(fate(toDocuments("a")), failed(verificationFailed));
    EXPECT_EQ(memory.read("/r/a"), "HELLO");
    EXPECT_THAT(memory.snapshot("/r/ordovan+/Documents"), IsEmpty());
}

TEST_F(ApplyAcrossVolumes, KeepsASourceThatChangedAfterTheCopy) {
    tree({"grown = hello", "replaced = hello"});
    documentsOnAnotherVolume();
    fs.setAfterCall([&](const FaultyFileSystem::Call& call) {
        if (call.operation != Operation::copy) return;
        if (call.url == Url::file("/r/grown")) memory.write("/r/grown", "hello, world");
        if (call.url == Url::file("/r/replaced")) memory.replace("/r/replaced", "other");
    });
    EXPECT_EQ(fate(toDocuments("grown")), failed(verificationFailed));
    EXPECT_EQ(fate(toDocuments("replaced")), failed(verificationFailed));
    EXPECT_EQ(memory.read("/r/grown"), "hello, world");
    EXPECT_EQ(memory.read("/r/replaced"), "other");
    EXPECT_THAT(memory.snapshot("/r/ordovan+/Documents"), IsEmpty());
}

TEST_F(ApplyAcrossVolumes, LeavesAFileThatTookTheCopysPlaceWhenTheSourceHasChanged) {
    tree({"a = hello"});
    documentsOnAnotherVolume();
    fs.setAfterCall([&](const FaultyFileSystem::Call& call) {
        if (call.operation == Operation::move) memory.write("/r/a", "HELLO");
        if (call.operation == Operation::contentHash && call.url == Url::file("/r/a") &&
            memory.exists(Url::file("/r/ordovan+/Documents/a"))) {
            memory.replace("/r/ordovan+/Documents/a", "theirs");
        }
    });
    EXPECT_EQ(fate(toDocuments("a")), failed(verificationFailed));
    EXPECT_EQ(memory.read("/r/a"), "HELLO");
    EXPECT_EQ(memory.read("/r/ordovan+/Documents/a"), "theirs");
}

TEST_F(ApplyAcrossVolumes, LeavesAFileThatTookTheCopysPlaceWhenTheSourceCanNotBeRemoved) {
    tree({"a = hello"});
    documentsOnAnotherVolume();
    fs.failCall(Operation::remove, 1, EIO);
    fs.setBeforeCall([&](const FaultyFileSystem::Call& call) {
        if (call.operation == Operation::remove && call.url == Url::file("/r/a")) {
            memory.replace("/r/ordovan+/Documents/a", "theirs");
        }
    });
    EXPECT_EQ(fate(toDocuments("a")), failed(originalStays));
    EXPECT_EQ(memory.read("/r/a"), "hello");
    EXPECT_EQ(memory.read("/r/ordovan+/Documents/a"), "theirs");
}

TEST_F(ApplyAcrossVolumes, KeepsWhatWasWrittenToTheSourceAfterItWasCopied) {
    tree({"a = hello"});
    documentsOnAnotherVolume();
    fs.setAfterCall([&](const FaultyFileSystem::Call& call) {
        if (call.operation == Operation::move) memory.write("/r/a", "HELLO");  // the same size, in the same file
    });
    EXPECT_EQ(fate(toDocuments("a")), failed(verificationFailed));
    EXPECT_EQ(memory.read("/r/a"), "HELLO");
    EXPECT_THAT(memory.snapshot("/r/ordovan+/Documents"), IsEmpty());
}

TEST_F(ApplyAcrossVolumes, KeepsTheOnlyCopyWhenTheSourceDisappearsMeanwhile) {
    tree({"a = hello"});
    documentsOnAnotherVolume();
    fs.setAfterCall([&](const FaultyFileSystem::Call& call) {
        if (call.operation == Operation::copy) memory.removeTree("/r/a");
    });
    EXPECT_EQ(fate(toDocuments("a")), "moved: Copied, verified and moved.");
    EXPECT_EQ(memory.read("/r/ordovan+/Documents/a"), "hello");
}

TEST_F(ApplyAcrossVolumes, KeepsTheOnlyCopyWhenItsRenameFailsAsWell) {
    tree({"a = hello"});
    documentsOnAnotherVolume();
    fs.setAfterCall([&](const FaultyFileSystem::Call& call) {
        if (call.operation == Operation::copy) memory.removeTree("/r/a");
    });
    fs.failCall(Operation::move, 1, EIO);
    EXPECT_EQ(fate(toDocuments("a")), failed(unknownError));
    EXPECT_EQ(memory.contents().size(), 1u);
}

TEST_F(ApplyAcrossVolumes, KeepsTheOnlyCopyWhenTheReplyToItsRenameIsLost) {
    tree({"a = hello"});
    documentsOnAnotherVolume();
    fs.setAfterCall([&](const FaultyFileSystem::Call& call) {
        if (call.operation == Operation::copy) memory.removeTree("/r/a");
    });
    fs.failCall(Operation::move, 1, EIO, Moment::afterEffect);
    EXPECT_EQ(fate(toDocuments("a")), "moved: Copied, verified and moved.");
    EXPECT_EQ(memory.read("/r/ordovan+/Documents/a"), "hello");
}

TEST_F(ApplyAcrossVolumes, KeepsTheOnlyCopyWhenALinkTakesThePlaceOfTheSource) {
    tree({"a = hello"});
    documentsOnAnotherVolume();
    fs.setAfterCall([&](const FaultyFileSystem::Call& call) {
        if (call.operation != Operation::copy) return;
        memory.removeTree("/r/a");
        memory.link("/r/a", "nowhere");
    });
    EXPECT_EQ(fate(toDocuments("a")), "moved: Copied, verified and moved.");
    EXPECT_EQ(memory.read("/r/ordovan+/Documents/a"), "hello");
    EXPECT_EQ(memory.linkTarget("/r/a"), "nowhere");
}

TEST_F(ApplyAcrossVolumes, KeepsASourceThatCanNotBeReadAnyMore) {
    tree({"a = hello"});
    documentsOnAnotherVolume();
    fs.failCall(Operation::contentHash, 3, EIO);
    EXPECT_EQ(fate(toDocuments("a")), failed(verificationFailed));
    EXPECT_EQ(memory.read("/r/a"), "hello");
    EXPECT_THAT(memory.snapshot("/r/ordovan+/Documents"), IsEmpty());
}

TEST_F(ApplyAcrossVolumes, TakesNoSightOfTheSourceForNoProofThatItIsGone) {
    tree({"a = hello"});
    documentsOnAnotherVolume();
    fs.failCall(Operation::isRegularFile, 3, EIO, Moment::beforeEffect, Lasting::forGood);
    EXPECT_EQ(fate(toDocuments("a")), failed(originalStays));
    EXPECT_EQ(memory.read("/r/a"), "hello");
}

TEST_F(ApplyAcrossVolumes, TakesNoSightOfTheSourceForNoProofThatItWasRemoved) {
    tree({"a = hello"});
    documentsOnAnotherVolume();
    fs.failCall(Operation::isRegularFile, 5, EIO, Moment::beforeEffect, Lasting::forGood);
    fs.failCall(Operation::remove, 1, EIO);
    EXPECT_EQ(fate(toDocuments("a")), failed(originalStays));
    EXPECT_EQ(memory.read("/r/a"), "hello");
}

TEST_F(ApplyAcrossVolumes, TakesAVolumeThatIsPulledForNoProofThatTheSourceIsGone) {
    memory.addVolume("/r/sub");
    tree({"sub/a = hello"});
    documentsOnAnotherVolume();
    fs.setAfterCall([&](const FaultyFileSystem::Call& call) {
        if (call.operation != Operation::copy) return;
        memory.removeTree("/r/sub");
        memory.makeDirectory("/r/sub");  // the folder on which it was mounted
    });
    EXPECT_EQ(fate(proposal("/r/sub/a", "/r/ordovan+/Documents/a")), failed(originalStays));
    EXPECT_EQ(memory.read("/r/ordovan+/Documents/a"), "hello");
}

TEST_F(ApplyAcrossVolumes, TakesASourceThatAloneCanNotBeSeenForNoProofThatItIsGone) {
    tree({"sub/a = hello"});
    documentsOnAnotherVolume();
    fs.setAfterCall([&](const FaultyFileSystem::Call& call) {
        if (call.operation == Operation::copy) memory.setMode("/r/sub", 0);
    });
    EXPECT_EQ(fate(proposal("/r/sub/a", "/r/ordovan+/Documents/a")), failed(originalStays));
    EXPECT_EQ(memory.read("/r/sub/a"), "hello");
    EXPECT_EQ(memory.read("/r/ordovan+/Documents/a"), "hello");
}

TEST_F(ApplyAcrossVolumes, MovesNothingWhenTheSourceAndItsCopyGo) {
    tree({"a = hello"});
    documentsOnAnotherVolume();
    fs.setBeforeCall([&](const FaultyFileSystem::Call& call) {
        if (call.operation == Operation::contentHash && memory.item("/r/ordovan+/Documents/a")) {
            memory.removeTree("/r/ordovan+/Documents/a");
            memory.removeTree("/r/a");
        }
    });
    EXPECT_EQ(fate(toDocuments("a")), failed(originalStays));
}

TEST_F(ApplyAcrossVolumes, KeepsTheSourceWhenItsCopyGoesWhileTheSourceIsHashed) {
    tree({"a = hello"});
    documentsOnAnotherVolume();
    fs.setAfterCall([&](const FaultyFileSystem::Call& call) {
        if (call.operation == Operation::contentHash && call.url == Url::file("/r/a") &&
            memory.item("/r/ordovan+/Documents/a")) {
            memory.removeTree("/r/ordovan+/Documents/a");
        }
    });
    EXPECT_EQ(fate(toDocuments("a")), failed("Move did not land at the destination."));
    EXPECT_EQ(memory.read("/r/a"), "hello");
}

TEST_F(ApplyAcrossVolumes, KeepsTheSourceWhenItsCopyIsReplacedWhileTheSourceIsHashed) {
    tree({"a = hello"});
    documentsOnAnotherVolume();
    fs.setAfterCall([&](const FaultyFileSystem::Call& call) {
        if (call.operation == Operation::contentHash && call.url == Url::file("/r/a") &&
            memory.item("/r/ordovan+/Documents/a")) {
            memory.replace("/r/ordovan+/Documents/a", "theirs");
        }
    });
    EXPECT_EQ(fate(toDocuments("a")), failed("Move did not land at the destination."));
    EXPECT_EQ(memory.read("/r/a"), "hello");
    EXPECT_EQ(memory.read("/r/ordovan+/Documents/a"), "theirs");
}

TEST_F(ApplyAcrossVolumes, KnowsACopyByItsContentWhereARenameNumbersItAnew) {
    tree({"a = hello"});
    documentsOnAnotherVolume();
    fs.setAfterCall([&](const FaultyFileSystem::Call& call) {
        if (call.operation == Operation::move) memory.replace("/r/ordovan+/Documents/a", "hello");
    });
    EXPECT_EQ(fate(toDocuments("a")), "moved: Copied, verified and moved.");
    EXPECT_FALSE(memory.item("/r/a"));
    EXPECT_EQ(memory.read("/r/ordovan+/Documents/a"), "hello");
}

TEST_F(ApplyAcrossVolumes, TakesAnotherFileOfItsSizeForNoCopy) {
    tree({"a = hello"});
    documentsOnAnotherVolume();
    fs.setAfterCall([&](const FaultyFileSystem::Call& call) {
        if (call.operation == Operation::move) memory.replace("/r/ordovan+/Documents/a", "other");
    });
    EXPECT_EQ(fate(toDocuments("a")), failed("Move did not land at the destination."));
    EXPECT_EQ(memory.read("/r/a"), "hello");
    EXPECT_EQ(memory.read("/r/ordovan+/Documents/a"), "other");
}

TEST_F(ApplyAcrossVolumes, TakesAFileOfItsContentForNoCopyWhileThePartialOneStands) {
    tree({"a = hello"});
    documentsOnAnotherVolume();
    fs.failCall(Operation::move, 1, 0, Moment::insteadOfEffect);
    fs.setAfterCall([&](const FaultyFileSystem::Call& call) {
        if (call.operation == Operation::move) memory.write("/r/ordovan+/Documents/a", "hello");
    });
    EXPECT_EQ(fate(toDocuments("a")), failed("Move did not land at the destination."));
    EXPECT_EQ(memory.read("/r/a"), "hello");
    EXPECT_EQ(memory.list("/r/ordovan+/Documents")->size(), 1u);
}

TEST_F(ApplyAcrossVolumes, NeverReplacesADestinationThatAppearsDuringTheCopy) {
    tree({"a = mine"});
    documentsOnAnotherVolume();
    fs.setAfterCall([&](const FaultyFileSystem::Call& call) {
        if (call.operation == Operation::copy) memory.write("/r/ordovan+/Documents/a", "theirs");
    });
    EXPECT_EQ(fate(toDocuments("a")),
              "failed: Could not move this file; it was left in place. The system reported an error (code 17).");
    EXPECT_EQ(memory.read("/r/a"), "mine");
    EXPECT_EQ(memory.read("/r/ordovan+/Documents/a"), "theirs");
    EXPECT_EQ(memory.list("/r/ordovan+/Documents")->size(), 1u);
}

TEST_F(ApplyAcrossVolumes, NeverRemovesAnotherFileInARollback) {
    tree({"a = mine"});
    documentsOnAnotherVolume();
    fs.setBeforeCall([&](const FaultyFileSystem::Call& call) {
        if (call.operation != Operation::move) return;
        memory.removeTree(call.url.path());
        memory.write("/r/ordovan+/Documents/a", "theirs");
    });
    EXPECT_THAT(fate(toDocuments("a")), StartsWith("failed: Could not move this file; it was left in place."));
    EXPECT_EQ(memory.read("/r/a"), "mine");
    EXPECT_EQ(memory.read("/r/ordovan+/Documents/a"), "theirs");
}

TEST_F(ApplyAcrossVolumes, RollsBackARenameThatMayNotBeOnDisk) {
    tree({"a = hello"});
    documentsOnAnotherVolume();
    fs.failCall(Operation::move, 1, EIO, Moment::afterEffect);
    EXPECT_EQ(fate(toDocuments("a")), failed(unknownError));
    EXPECT_EQ(memory.read("/r/a"), "hello");
    EXPECT_THAT(memory.snapshot("/r/ordovan+/Documents"), IsEmpty());
}

TEST_F(ApplyAcrossVolumes, KeepsTheSourceWhenTheRenameDidNotLand) {
    tree({"a = hello"});
    documentsOnAnotherVolume();
    fs.failCall(Operation::move, 1, 0, Moment::insteadOfEffect);
    EXPECT_EQ(fate(toDocuments("a")), failed("Move did not land at the destination."));
    EXPECT_EQ(memory.read("/r/a"), "hello");
    EXPECT_THAT(memory.snapshot("/r/ordovan+/Documents"), IsEmpty());
}

TEST_F(ApplyAcrossVolumes, DiscardsTheCopyWhenTheSourceCanNotBeRemoved) {
    tree({"locked/a = hello"});
    documentsOnAnotherVolume();
    memory.setMode("/r/locked", 0555);
    EXPECT_EQ(fate(proposal("/r/locked/a", "/r/ordovan+/Documents/a")), failed(originalStays));
    EXPECT_EQ(memory.read("/r/locked/a"), "hello");
    EXPECT_THAT(memory.snapshot("/r/ordovan+/Documents"), IsEmpty());
}

TEST_F(ApplyAcrossVolumes, DiscardsTheCopyWhenTheRemovalDidNothing) {
    tree({"a = hello"});
    documentsOnAnotherVolume();
    fs.failCall(Operation::remove, 1, 0, Moment::insteadOfEffect);
    EXPECT_EQ(fate(toDocuments("a")), failed(originalStays));
    EXPECT_EQ(memory.read("/r/a"), "hello");
    EXPECT_THAT(memory.snapshot("/r/ordovan+/Documents"), IsEmpty());
}

TEST_F(ApplyAcrossVolumes, BelievesTheDiskWhenTheReplyToTheRemovalIsLost) {
    tree({"a = hello"});
    documentsOnAnotherVolume();
    fs.failCall(Operation::remove, 1, EIO, Moment::afterEffect);
    EXPECT_EQ(fate(toDocuments("a")), "moved: Copied, verified and moved.");
    EXPECT_EQ(memory.read("/r/ordovan+/Documents/a"), "hello");
    EXPECT_FALSE(memory.item("/r/a"));
}

TEST_F(ApplyAcrossVolumes, ReportsTheFirstFailureWhenTheRollbackFailsToo) {
    tree({"locked/a = hello"});
    documentsOnAnotherVolume();
    memory.setMode("/r/locked", 0555);
    fs.failCall(Operation::remove, 2, EIO);
    EXPECT_EQ(fate(proposal("/r/locked/a", "/r/ordovan+/Documents/a")), failed(originalStays));
    EXPECT_EQ(memory.read("/r/locked/a"), "hello");
}

TEST_F(ApplyAcrossVolumes, MakesAFolderAnewThatWasRemovedMeanwhile) {
    tree({"a = 1"});
    memory.addVolume("/r/ordovan+");
    bool removed = false;
    fs.setBeforeCall([&](const FaultyFileSystem::Call& call) {
        if (call.operation == Operation::copy && !std::exchange(removed, true))
            memory.removeTree("/r/ordovan+/Documents");
    });
    EXPECT_EQ(fate(toDocuments("a")), "moved: Copied, verified and moved.");
    EXPECT_EQ(memory.read("/r/ordovan+/Documents/a"), "1");
}

TEST_F(ApplyAcrossVolumes, CopiesANameOfTheGreatestLength) {
    const std::string name(255, 'n');
    tree({name + " = hello"});
    documentsOnAnotherVolume();
    EXPECT_EQ(fate(toDocuments(name)), "moved: Copied, verified and moved.");
    EXPECT_EQ(memory.read("/r/ordovan+/Documents/" + name), "hello");
}
