#include "OrdovanCore/RecordedFileSystem.h"

#include "OrdovanCore/FileTrasher.h"
#include "tests/support/RecordedRun.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

using ordovan::RecordedFileSystem;
using ordovan::testing::digestOf;
using ordovan::testing::FaultyFileSystem;
using ordovan::testing::Operation;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using Kind = OrdovanRunRecord::Kind;
using NoteKind = OrdovanRunNote::Kind;
using RecordedFileSystemTest = ordovan::test::RecordedRun;

namespace {

TEST_F(RecordedFileSystemTest, NotesWhatWasMovedBehindItAndAtOnce) {
    tree({"a.pdf = one", "b.pdf = two"});
    intend("/r/a.pdf", "/r/ordovan+/a.pdf");
    intend("/r/b.pdf", "/r/ordovan+/b.pdf");
    EXPECT_EQ(organize().movedCount(), 2U);
    const auto noted = notes();
    ASSERT_THAT(noted, SizeIs(2));
    EXPECT_EQ(noted[1], (OrdovanRunNote{.kind = NoteKind::done,
                                        .item = 1,
                                        .byteSize = 3,
                                        .contentHash = digestOf("two"),
                                        .identity = intent.items[1].identity,
                                        .sameVolume = true,
                                        .path = {}}));
    EXPECT_THAT(events, ElementsAre("move", "move", "append"));
}

TEST_F(RecordedFileSystemTest, TellsOfWhichFilesItMayHaveChangedSomething) {
    memory.addVolume("/r/ordovan+");
    tree({"a = one", "b = two", "c = three"});
    for (const char* name : {"a", "b", "c"}) intend("/r/" + std::string(name), "/r/ordovan+/" + std::string(name));
    fs();
    disk.failCall(Operation::copy, 1, EROFS);
    disk.failCall(Operation::copy, 2, EIO);
    EXPECT_EQ(organize().movedCount(), 1U);
    using Change = RecordedFileSystem::Change;
    EXPECT_THAT(recorded->changes(), ElementsAre(Change{.item = 1, .isSourceToo = false}, Change{2, true}))
        << "each once, and none that was refused as read-only";
}

TEST_F(RecordedFileSystemTest, TellsThatAnOriginalOnAReadOnlyVolumeIsUnchanged) {
    memory.addVolume("/r/usb");
    tree({"usb/a = one"});
    intend("/r/usb/a", "/r/ordovan+/a");
    memory.setReadOnly("/r/usb", true);
    EXPECT_EQ(organize().movedCount(), 0U);
    EXPECT_THAT(recorded->changes(), ElementsAre(RecordedFileSystem::Change{.item = 0, .isSourceToo = false}));
}

TEST_F(RecordedFileSystemTest, NotesACopyOnDiskBeforeItIsBegun) {
    memory.addVolume("/r/ordovan+");
    tree({"a.pdf = one"});
    intend("/r/a.pdf", "/r/ordovan+/a.pdf");
    EXPECT_EQ(organize().movedCount(), 1U);
    const auto noted = notes();
    ASSERT_THAT(noted, SizeIs(2));
    EXPECT_EQ(noted[0].kind, NoteKind::begun);
    EXPECT_EQ(noted[0].contentHash, digestOf("one"));
    EXPECT_TRUE(OrdovanPartialName::isPartial(noted[0].path));
    EXPECT_EQ(noted[1].kind, NoteKind::done);
    EXPECT_FALSE(noted[1].sameVolume);
    EXPECT_THAT(events, ElementsAre("append", "sync", "copy", "move", "move", "remove", "append"));
}

TEST_F(RecordedFileSystemTest, NotesACopyThoughTheFileBeforeItLeftSomethingAndIsOutOfSightForAMoment) {
    memory.addVolume("/r/ordovan+");
    tree({"a = one", "b = two"});
    intend("/r/a", "/r/ordovan+/a");
    intend("/r/b", "/r/ordovan+/b");
    fs();
    // The original gets no hidden name, and its copy none to be removed by.
    disk.failCall(Operation::move, 2, EIO, FaultyFileSystem::Moment::beforeEffect, FaultyFileSystem::Lasting::forGood);
    bool isTurnOfB = false;
    const auto isLookAtA = [&](const FaultyFileSystem::Call& call) {
        return isTurnOfB && call.operation == Operation::isRegularFile && call.url == Url::file("/r/a");
    };
    disk.setBeforeCall([&](const FaultyFileSystem::Call& call) {
        if (isLookAtA(call)) static_cast<void>(memory.move(Url::file("/r/a"), Url::file("/r/away")));
    });
    disk.setAfterCall([&](const FaultyFileSystem::Call& call) {
        if (isLookAtA(call)) static_cast<void>(memory.move(Url::file("/r/away"), Url::file("/r/a")));
        if (call.operation == Operation::contentHash && call.url == Url::file("/r/b")) isTurnOfB = true;
    });
    EXPECT_EQ(organize().movedCount(), 0U);
    EXPECT_TRUE(recorded->leavesSomething());
    const auto noted = notes();
    ASSERT_THAT(noted, SizeIs(2));
    EXPECT_EQ(noted[1].item, 1U);
    EXPECT_EQ(noted[1].contentHash, digestOf("two"));
    EXPECT_TRUE(OrdovanPartialName::isPartial(noted[1].path));
}

/// A port that tells of moves in steps.
class Stepwise final : public ordovan::StepwiseMoves {
public:
    void tellTo(Listener listener) override { told = std::move(listener); }
    Listener told;
};

TEST_F(RecordedFileSystemTest, NotesThatAPlaceIsTakenInStepsBeforeThat) {
    tree({"a.pdf = one"});
    intend("/r/a.pdf", "/r/ordovan+/a.pdf");
    fs();
    const std::string hidden = "/r/.a.pdf.ordovan-partial-00000000-0000-4000-8000-000000000000";
    Stepwise steps;
    disk.setBeforeCall([&](const FaultyFileSystem::Call& call) {
        if (call.operation != Operation::move) return;
        steps.told.begins(call.url, Url::file(hidden));
        events.emplace_back("move");
    });
    recorded = std::make_unique<RecordedFileSystem>(disk, intent, gathered, &steps);
    EXPECT_EQ(organize().movedCount(), 1U);
    EXPECT_THAT(events, ElementsAre("append", "move"));
    const auto noted = notes();
    EXPECT_FALSE(steps.told.begins || steps.told.leavesSomething) << "nobody listens any more";
    ASSERT_THAT(noted, SizeIs(2));
    EXPECT_EQ(noted[0].kind, NoteKind::claimed);
    EXPECT_EQ(noted[0].contentHash, digestOf("one"));
    EXPECT_EQ(noted[0].path, hidden);
}

TEST_F(RecordedFileSystemTest, NotesNoStepsOfRenamesThatAreNoItems) {
    memory.addVolume("/r/ordovan+");
    tree({"a.pdf = one"});
    intend("/r/a.pdf", "/r/ordovan+/a.pdf");
    fs();
    Stepwise steps;
    std::size_t renames = 0;
    disk.setBeforeCall([&](const FaultyFileSystem::Call& call) {
        if (call.operation == Operation::move && ++renames > 0) steps.told.begins(call.url, {});
    });
    recorded = std::make_unique<RecordedFileSystem>(disk, intent, gathered, &steps);
    EXPECT_EQ(organize().movedCount(), 1U);
    EXPECT_EQ(renames, 2U) << "the copy got its name, and the original a hidden one";
    std::vector<NoteKind> kinds;
    for (const auto& note : notes()) kinds.push_back(note.kind);
    EXPECT_THAT(kinds, ElementsAre(NoteKind::begun, NoteKind::claimed, NoteKind::done));
}

/// The disk takes steps, in the course of which it may turn read-only.
class RecordedSteps : public RecordedFileSystemTest {
protected:
    ~RecordedSteps() override { recorded.reset(); }  // it tells the disk that nobody listens any more

    /// What the run has changed when the disk refuses its N-th call of an operation, be it that something is left.
    std::vector<RecordedFileSystem::Change> changesOfRefused(Operation operation, std::size_t number, bool isLeft) {
        disk.reset();
        recorded = std::make_unique<RecordedFileSystem>(disk, intent, gathered, &steps);
        disk.failCall(operation, number, EROFS);
        std::size_t calls = 0;
        disk.setBeforeCall([=, this](const FaultyFileSystem::Call& call) mutable {
            if (call.operation == operation && ++calls == number && isLeft) steps.told.leavesSomething();
        });
        if (intent.kind == Kind::trash) {
            EXPECT_FALSE(recorded->trash(Url::file(intent.items[0].source)));
        } else {
            EXPECT_EQ(organize().movedCount(), 0U);
        }
        EXPECT_EQ(recorded->leavesSomething(), isLeft);
        return recorded->changes();
    }
    using Change = RecordedFileSystem::Change;
    Stepwise steps;
};

TEST_F(RecordedSteps, LeaveTheRecordThatIsNeededForWhatTheyLeave) {
    tree({"a = one"});
    intend("/r/a", "/r/ordovan+/a");
    EXPECT_THAT(changesOfRefused(Operation::move, 1, true), ElementsAre(Change{.item = 0, .isSourceToo = true}));
}

TEST_F(RecordedSteps, LeaveNothingWhereTheyAreTakenBack) {
    tree({"a = one"});
    intend("/r/a", "/r/ordovan+/a");
    EXPECT_THAT(changesOfRefused(Operation::move, 1, false), IsEmpty());
}

TEST_F(RecordedSteps, OnTheWayToTheTrashLeaveTheRecordThatIsNeededForWhatTheyLeave) {
    tree({"a = one"});
    intend("/r/a", "", Kind::trash);
    EXPECT_THAT(changesOfRefused(Operation::trash, 1, true), ElementsAre(Change{.item = 0, .isSourceToo = true}));
    EXPECT_THAT(changesOfRefused(Operation::trash, 1, false), IsEmpty());
}

TEST_F(RecordedSteps, OnTheWayBackFromTheTrashLeaveTheRecordThatIsNeededForWhatTheyLeave) {
    tree({"a = one"});
    intend("/r/a", "", Kind::trash);
    recorded = std::make_unique<RecordedFileSystem>(disk, intent, gathered, &steps);
    const Url file = Url::file("/r/a");
    EXPECT_TRUE(recorded->fileSize(file) && recorded->contentHash(file) && recorded->fileIdentity(file));
    const auto place = recorded->trash(file);
    ASSERT_TRUE(place);
    EXPECT_FALSE(recorded->leavesSomething());
    disk.setBeforeCall([&](const FaultyFileSystem::Call& call) {
        if (call.operation != Operation::move) return;
        steps.told.begins(call.url, {});
        steps.told.leavesSomething();
    });
    EXPECT_TRUE(recorded->move(*place, file));
    EXPECT_TRUE(recorded->leavesSomething());
    EXPECT_THAT(recorded->changes(), SizeIs(1));
    const auto noted = notes();
    ASSERT_THAT(noted, SizeIs(1)) << "that it was trashed, and no claim";
    EXPECT_EQ(noted[0].kind, NoteKind::done);
}

TEST_F(RecordedSteps, OfACopyThatIsPublishedLeaveItsOriginalAlone) {
    memory.addVolume("/r/ordovan+");
    tree({"a = one"});
    intend("/r/a", "/r/ordovan+/a");
    EXPECT_THAT(changesOfRefused(Operation::move, 1, true), ElementsAre(Change{.item = 0, .isSourceToo = false}));
}

TEST_F(RecordedFileSystemTest, NotesAFileThatIsNotTheIntendedOneBeforeItMoves) {
    tree({"a.pdf = one"});
    intend("/r/a.pdf", "/r/ordovan+/a.pdf");
    memory.replace("/r/a.pdf", "other");
    EXPECT_EQ(organize().movedCount(), 1U);
    EXPECT_THAT(events, ElementsAre("append", "move"));
    const auto noted = notes();
    ASSERT_THAT(noted, SizeIs(2));
    EXPECT_EQ(noted[0].kind, NoteKind::begun);
    EXPECT_EQ(noted[0].contentHash, digestOf("other"));
    EXPECT_NE(noted[0].identity, intent.items[0].identity);
    EXPECT_EQ(noted[0].path, "");
}

TEST_F(RecordedFileSystemTest, NotesAFileThatIsNotTheIntendedOneBeforeItGoesToTheTrash) {
    tree({"a.pdf = one"});
    intend("/r/a.pdf", "", Kind::trash);
    memory.replace("/r/a.pdf", "other");
    const OrdovanFileTrasher::Item item{Url::file("/r/a.pdf"), 5};
    EXPECT_EQ(OrdovanFileTrasher::trash({&item, 1}, Url::file("/r"), fs()).movedCount(), 1U);
    EXPECT_THAT(events, ElementsAre("append", "trash"));
    EXPECT_EQ(notes().at(0).contentHash, digestOf("other"));
}

TEST_F(RecordedFileSystemTest, NotesNothingOfAFileThatWasNotHashed) {
    tree({"a.pdf = one", "ordovan+/"});
    intend("/r/a.pdf", "/r/ordovan+/a.pdf");
    EXPECT_EQ(fs().fileSize(Url::file("/r/a.pdf")), 3);
    EXPECT_TRUE(fs().move(Url::file("/r/a.pdf"), Url::file("/r/ordovan+/a.pdf")));
    EXPECT_THAT(notes(), IsEmpty());
    EXPECT_THAT(events, ElementsAre("move"));
}

TEST_F(RecordedFileSystemTest, LetsAVerifiedCopyGoToItsPlaceOnly) {
    memory.addVolume("/r/ordovan+");
    tree({"a.pdf = one"});
    intend("/r/a.pdf", "/r/ordovan+/a.pdf");
    const Url from = Url::file("/r/a.pdf");
    const Url partial = OrdovanPartialName::beside(Url::file("/r/ordovan+/a.pdf"));
    EXPECT_TRUE(fs().fileSize(from) && fs().contentHash(from) && fs().copy(from, partial));
    EXPECT_FALSE(fs().move(partial, Url::file("/r/ordovan+/b.pdf")));
    EXPECT_TRUE(fs().move(partial, Url::file("/r/ordovan+/a.pdf")));
}

TEST_F(RecordedFileSystemTest, NotesNoIdentityWhereTheVolumeKeepsNone) {
    tree({"a.pdf = one", "b.pdf = two"});
    intend("/r/a.pdf", "/r/ordovan+/a.pdf");
    intend("/r/b.pdf", "/r/ordovan+/b.pdf");
    for (OrdovanRunItem& item : intent.items) item.identity.clear();
    memory.write("/r/b.pdf", "TWO");
    intent.items[0].contentHash = digestOf("one");
    EXPECT_EQ(organize().movedCount(), 2U);
    EXPECT_THAT(events, ElementsAre("move", "append", "move")) << "one that may be another is told of before it moves";
    const auto noted = notes();
    ASSERT_THAT(noted, SizeIs(3));
    for (const OrdovanRunNote& note : noted) EXPECT_EQ(note.identity, "");
    EXPECT_EQ(noted[1].contentHash, digestOf("TWO"));
}

TEST_F(RecordedFileSystemTest, NotesWhereAFileLiesInTheTrash) {
    tree({"a.pdf = one", "b.pdf = two"});
    intend("/r/b.pdf", "", Kind::trash);
    const OrdovanFileTrasher::Item item{Url::file("/r/b.pdf"), 3};
    const auto report = OrdovanFileTrasher::trash({&item, 1}, Url::file("/r"), fs());
    ASSERT_EQ(report.movedCount(), 1U);
    const auto noted = notes();
    ASSERT_THAT(noted, SizeIs(1));
    EXPECT_EQ(noted[0].path, report.outcomes[0].destination.path());
    EXPECT_EQ(noted[0].contentHash, digestOf("two"));
}

TEST_F(RecordedFileSystemTest, HandsNotesOverSome32KiBAtATime) {
    for (int i = 0; i < 400; ++i) {
        const std::string name = std::to_string(i) + ".pdf";
        memory.write("/r/" + name, "x");
        intend("/r/" + name, "/r/ordovan+/" + name);
    }
    EXPECT_EQ(organize().movedCount(), 400U);
    EXPECT_THAT(notes(), SizeIs(400));
    EXPECT_EQ(std::ranges::count(events, "append"), 2);
}

TEST_F(RecordedFileSystemTest, FindsItemsThatTheRunTakesInAnotherOrderOrLeavesOut) {
    for (int i = 0; i < 20; ++i) {
        const std::string name = std::to_string(i);
        memory.write("/r/" + name, "x");
        intend("/r/" + name, "/r/ordovan+/" + name);
    }
    for (const int i : {15, 2, 3, 19, 0}) {
        const std::string name = std::to_string(i);
        EXPECT_TRUE(fs().createDirectory(Url::file("/r/ordovan+")));
        EXPECT_TRUE(fs().move(Url::file("/r/" + name), Url::file("/r/ordovan+/" + name))) << i;
    }
}

TEST_F(RecordedFileSystemTest, GoesOnWhenNotesCanNotBeWritten) {
    memory.addVolume("/r/ordovan+");
    tree({"a.pdf = one", "b.pdf = two"});
    intend("/r/a.pdf", "/r/ordovan+/a.pdf");
    intend("/r/b.pdf", "/r/ordovan+/b.pdf");
    gathered.fails = true;
    EXPECT_EQ(organize().movedCount(), 2U);
    gathered.fails = false;
    EXPECT_THAT(notes(), IsEmpty());
}

// Nothing but what is intended.

TEST_F(RecordedFileSystemTest, RefusesWhatIsNotIntendedAndTouchesNothing) {
    tree({"a = 1", "b = 2", "ordovan+/x = 3"});
    intend("/r/a", "/r/ordovan+/a");
    const auto before = memory.snapshot();
    const auto url = [](std::string_view path) { return Url::file(path); };
    const std::string partial = "/r/ordovan+/.a.ordovan-partial-00000000-0000-4000-8000-000000000000";
    const auto refused = std::unexpected(OrdovanSystemError::posix(EPERM));
    EXPECT_EQ(fs().move(url("/r/b"), url("/r/ordovan+/b")), OrdovanResult<void>(refused));
    EXPECT_EQ(fs().move(url("/r/a"), url("/r/ordovan+/b")), OrdovanResult<void>(refused));
    EXPECT_EQ(fs().move(url("/r/a"), url("")), OrdovanResult<void>(refused));
    EXPECT_EQ(fs().move(url("/r/ordovan+/a"), url("/r/a")), OrdovanResult<void>(refused));
    EXPECT_EQ(fs().move(url(partial), url("/r/ordovan+/a")), OrdovanResult<void>(refused));
    EXPECT_EQ(fs().copy(url("/r/b"), url(partial)), OrdovanResult<void>(refused));
    EXPECT_EQ(fs().copy(url("/r/a"), url("/r/ordovan+/a")), OrdovanResult<void>(refused));
    EXPECT_EQ(fs().copy(url("/r/a"), url("/r/.a.ordovan-partial-00000000-0000-4000-8000-000000000000")),
              OrdovanResult<void>(refused));
    EXPECT_EQ(fs().remove(url("/r/a")), OrdovanResult<void>(refused));
    EXPECT_EQ(fs().remove(url("/r/ordovan+/x")), OrdovanResult<void>(refused));
    EXPECT_EQ(fs().trash(url("/r/b")), OrdovanResult<Url>(refused));
    EXPECT_EQ(fs().trash(url("/r/a")), OrdovanResult<Url>(refused));
    EXPECT_EQ(fs().createDirectory(url("/r/other")), OrdovanResult<void>(refused));
    EXPECT_EQ(memory.snapshot(), before);
    EXPECT_THAT(events, IsEmpty());
}

TEST_F(RecordedFileSystemTest, RemovesTheOriginalOfACopyOnly) {
    tree({"a = 1", "alike = 1", "b = 2", "ordovan+/x = 3"});
    intend("/r/a", "/r/ordovan+/a");
    intend("/r/b", "/r/ordovan+/b");
    const Url partial = Url::file("/r/ordovan+/.a.ordovan-partial-00000000-0000-4000-8000-000000000000");
    EXPECT_TRUE(fs().contentHash(Url::file("/r/a")));
    EXPECT_TRUE(fs().fileSize(Url::file("/r/a")));
    EXPECT_TRUE(fs().fileIdentity(Url::file("/r/a")));
    EXPECT_TRUE(fs().copy(Url::file("/r/a"), partial));
    EXPECT_TRUE(fs().fileIdentity(partial));
    EXPECT_FALSE(fs().remove(Url::file("/r/b")));
    EXPECT_FALSE(fs().remove(Url::file("/r/a"))) << "its copy has not got its name";
    EXPECT_FALSE(fs().move(partial, Url::file("/r/ordovan+/b")));
    EXPECT_TRUE(fs().move(partial, Url::file("/r/ordovan+/a")));
    EXPECT_FALSE(fs().remove(Url::file("/r/alike")));
    EXPECT_TRUE(fs().remove(Url::file("/r/a")));
    memory.write("/r/a", "1");
    EXPECT_FALSE(fs().remove(Url::file("/r/a"))) << "it is another file by now";
    EXPECT_TRUE(fs().move(Url::file("/r/b"), Url::file("/r/ordovan+/b")));
    EXPECT_FALSE(fs().remove(Url::file("/r/ordovan+/a")));  // another file is in work by now
}

TEST_F(RecordedFileSystemTest, LetsAFileComeBackFromTheTrash) {
    tree({"a = 1"});
    intend("/r/a", "", Kind::trash);
    const auto place = fs().trash(Url::file("/r/a"));
    ASSERT_TRUE(place);
    EXPECT_FALSE(fs().move(*place, Url::file("/r/b")));
    EXPECT_TRUE(fs().move(*place, Url::file("/r/a")));
    EXPECT_EQ(memory.read("/r/a"), "1");
}

TEST_F(RecordedFileSystemTest, AnswersQuestionsAboutEveryFile) {
    tree({"a = 1", "b = 22"});
    intend("/r/a", "/r/ordovan+/a");
    EXPECT_TRUE(fs().exists(Url::file("/r/b")));
    EXPECT_TRUE(fs().isRegularFile(Url::file("/r/b")));
    EXPECT_FALSE(fs().isSymlink(Url::file("/r/b")));
    EXPECT_TRUE(fs().sameVolume(Url::file("/r/b"), Url::file("/r/a")));
    EXPECT_EQ(fs().fileSize(Url::file("/r/b")), 2);
    EXPECT_EQ(fs().contentHash(Url::file("/r/b")), digestOf("22"));
    EXPECT_EQ(fs().fileIdentity(Url::file("/r/b")), memory.fileIdentity(Url::file("/r/b")));
}

}  // namespace
