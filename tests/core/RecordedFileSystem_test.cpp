#include "OrdovanCore/RecordedFileSystem.h"

#include "OrdovanCore/DuplicateTrasher.h"
#include "OrdovanCore/Executor.h"
#include "OrdovanCore/FileTrasher.h"
#include "OrdovanCore/testing/FaultyFileSystem.h"
#include "OrdovanCore/testing/TreeBuilder.h"
#include "tests/support/MemoryReconcile.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

using ordovan::RecordedFileSystem;
using ordovan::testing::digestOf;
using ordovan::testing::FaultyFileSystem;
using ordovan::testing::MemoryFileSystem;
using ordovan::testing::Operation;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using Kind = OrdovanRunRecord::Kind;
using NoteKind = OrdovanRunNote::Kind;

namespace {

/// Notes in memory, and in which order they came among the calls of the file system.
class GatheredNotes final : public ordovan::RunNotes {
public:
    explicit GatheredNotes(std::vector<std::string>& events) : events_(events) {}
    OrdovanResult<void> append(std::string_view text) override {
        if (fails) return std::unexpected(OrdovanSystemError::posix(ENOSPC));
        all += text;
        events_.emplace_back("append");
        return {};
    }
    OrdovanResult<void> sync() override {
        events_.emplace_back("sync");
        return {};
    }
    std::string all;
    bool fails = false;

private:
    std::vector<std::string>& events_;
};

/// A run in "/r" whose files have the intent they need.
class RecordedRun : public ::testing::Test {
protected:
    void tree(std::initializer_list<std::string_view> items) { ordovan::testing::build(memory, "/r", items); }

    void intend(std::string_view from, std::string_view to, Kind kind = Kind::organize) {
        intent.kind = kind;
        intent.root = Url::file("/r");
        OrdovanRunItem item{.source = from, .destination = to, .identity = {}, .contentHash = {}};
        if (const auto facts = ordovan::test::factsIn(memory, Url::file(from))) {
            item.byteSize = facts->byteSize;
            item.modifiedNs = facts->modifiedNs;
            item.identity = facts->identity;
        }
        intent.items.push_back(item);
    }

    RecordedFileSystem& fs() {
        if (!recorded) {
            disk.setBeforeCall([this](const FaultyFileSystem::Call& call) {
                using enum ordovan::testing::Operation;
                if (call.operation == move) events.emplace_back("move");
                if (call.operation == copy) events.emplace_back("copy");
                if (call.operation == remove) events.emplace_back("remove");
                if (call.operation == trash) events.emplace_back("trash");
            });
            recorded = std::make_unique<RecordedFileSystem>(disk, intent, gathered);
        }
        return *recorded;
    }

    OrdovanExecutionReport organize() {
        std::vector<OrdovanFileProposal> proposals;
        for (const OrdovanRunItem& item : intent.items) {
            proposals.push_back({.source = Url::file(item.source),
                                 .destination = Url::file(item.destination),
                                 .category = OrdovanFileCategory::documents,
                                 .explanation = "",
                                 .ruleFolder = std::nullopt});
        }
        return OrdovanExecutor::apply(proposals, Url::file("/r"), Url::file("/r/ordovan+"), fs(), 1);
    }

    /// The notes so far, the gathered ones handed over.
    std::vector<OrdovanRunNote> notes() {
        recorded.reset();
        std::string text;
        intent.encode([&](std::string_view piece) {
            text += piece;
            return true;
        });
        const auto run = OrdovanUnfinishedRun::decoded(text + gathered.all);
        EXPECT_TRUE(run) << describe(run.error());
        return run ? run->notes : std::vector<OrdovanRunNote>();
    }

    MemoryFileSystem memory;
    FaultyFileSystem disk{memory};
    OrdovanRunIntent intent;
    std::vector<std::string> events;
    GatheredNotes gathered{events};
    std::unique_ptr<RecordedFileSystem> recorded;
};

using RecordedFileSystemTest = RecordedRun;

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

/// A file that is carried to another volume, up to the removal of its original.
class RecordedOriginal : public RecordedRun {
protected:
    RecordedOriginal() {
        memory.addVolume("/r/ordovan+");
        tree({"a.pdf = one"});
        intend("/r/a.pdf", "/r/ordovan+/a.pdf");
        fs();
    }
    /// Whether the file exists once, and where; no hidden name is left.
    void expectOnlyAt(std::string_view path, std::string_view content = "one") {
        const char* const other = path == from ? to : from;
        EXPECT_EQ(memory.read(path), content);
        EXPECT_FALSE(memory.item(other));
        EXPECT_THAT(hidden(), IsEmpty());
        EXPECT_FALSE(fs().leavesSomething());
    }
    /// What lies under hidden names.
    [[nodiscard]] std::vector<std::string> hidden() const {
        std::vector<std::string> contents;
        for (const auto& [path, what] : memory.snapshot()) {
            if (OrdovanPartialName::isPartial(path)) contents.push_back(memory.read("/" + path).value_or("nothing"));
        }
        return contents;
    }
    /// Organizes the one file; what is said of it.
    std::string message() {
        const auto report = organize();
        EXPECT_EQ(report.journal.entries.size(), report.movedCount());
        return report.outcomes.at(0).message;
    }
    /// Does something before or after the original is hashed under its hidden name, with that.
    template <class Action>
    void whenHashedAside(const Action& action) {
        disk.setBeforeCall([action](const FaultyFileSystem::Call& call) {
            const bool isAside = OrdovanPartialName::isPartial(call.url.path()) && call.url.path().starts_with("/r/.a");
            if (call.operation == Operation::contentHash && isAside) action(call.url.path());
        });
    }
    /// Does something before the n-th rename.
    template <class Action>
    void beforeMove(std::size_t number, const Action& action) {
        disk.setBeforeCall([this, number, action](const FaultyFileSystem::Call& call) {
            if (call.operation == Operation::move && disk.callCount(Operation::move) == number) action();
        });
    }

    static constexpr const char* from = "/r/a.pdf";
    static constexpr const char* to = "/r/ordovan+/a.pdf";
    static constexpr const char* changed = "Copy verification failed; source kept, copy removed.";
    static constexpr const char* stays =
        "Copied and verified, but the original could not be removed; copy discarded to avoid a duplicate.";
    static constexpr std::size_t toAside = 2;  // its number among the renames
    static constexpr std::size_t back = 3;
};

TEST_F(RecordedOriginal, IsRemovedUnderAHiddenNameSoThatNothingElseIs) {
    disk.setBeforeCall([this](const FaultyFileSystem::Call& call) {
        if (call.operation == Operation::remove) memory.write("/r/a.pdf", "new");
    });
    EXPECT_EQ(organize().movedCount(), 1U);
    EXPECT_EQ(memory.read("/r/a.pdf"), "new");
    memory.removeTree("/r/a.pdf");
    expectOnlyAt("/r/ordovan+/a.pdf");
    EXPECT_EQ(disk.callCount(Operation::contentHash), 3U) << "before it is copied, the copy, and before it goes";
}

TEST_F(RecordedOriginal, StaysWhenItIsWrittenToBeforeItIsHidden) {
    beforeMove(toAside, [this] { memory.write(from, "two"); });  // the same size, in the same file
    EXPECT_EQ(message(), changed);
    expectOnlyAt(from, "two");
}

TEST_F(RecordedOriginal, StaysWhenItIsWrittenToUnderItsHiddenName) {
    whenHashedAside([this](std::string_view aside) { memory.write(aside, "grown"); });
    EXPECT_EQ(message(), changed);
    expectOnlyAt(from, "grown");
}

TEST_F(RecordedOriginal, StaysWhenItCanNotBeReadAnyMore) {
    disk.failCall(Operation::contentHash, 3, EIO);
    EXPECT_EQ(message(), changed);
    expectOnlyAt(from);
}

TEST_F(RecordedOriginal, StaysWhenItsCopyGoesWhileItIsHashed) {
    whenHashedAside([this](std::string_view) { memory.removeTree(to); });
    EXPECT_EQ(message(), stays);
    EXPECT_EQ(memory.read(from), "one");
    EXPECT_THAT(hidden(), IsEmpty());
}

TEST_F(RecordedOriginal, StaysWhenItsCopyIsReplacedWhileItIsHashed) {
    whenHashedAside([this](std::string_view) { memory.replace(to, "new"); });
    EXPECT_EQ(message(), stays);
    EXPECT_EQ(memory.read(from), "one");
    EXPECT_EQ(memory.read(to), "new");
    EXPECT_THAT(hidden(), IsEmpty());
}

TEST_F(RecordedOriginal, StaysWithItsCopyWhenItsVolumeTurnsReadOnly) {
    disk.failCall(Operation::remove, 1, EROFS);
    disk.failCall(Operation::move, back, EROFS);
    EXPECT_EQ(message(), stays);
    EXPECT_EQ(memory.read(to), "one");
    EXPECT_THAT(hidden(), ElementsAre("one"));
    EXPECT_TRUE(fs().leavesSomething());
}

TEST_F(RecordedOriginal, StaysWithItsCopyWhenItChangedAndItsNameIsTaken) {
    whenHashedAside([this](std::string_view aside) {
        memory.write(aside, "two");
        memory.write(from, "new");
    });
    EXPECT_EQ(message(), stays);
    EXPECT_EQ(memory.read(from), "new");
    EXPECT_EQ(memory.read(to), "one");
    EXPECT_THAT(hidden(), ElementsAre("two"));
    EXPECT_TRUE(fs().leavesSomething());
}

TEST_F(RecordedOriginal, GetsItsNameBackThoughTheReplyToThatIsLost) {
    disk.failCall(Operation::remove, 1, EACCES);
    disk.failCall(Operation::move, back, EIO, FaultyFileSystem::Moment::afterEffect);
    EXPECT_EQ(message(), stays);
    expectOnlyAt(from);
}

TEST_F(RecordedOriginal, GetsItsNameBackWhenItIsNotWhatWasHashedLast) {
    disk.failCall(Operation::remove, 1, EBUSY);
    disk.failCall(Operation::move, back, EBUSY);  // as the disk of a run says of a file that it has hashed
    EXPECT_EQ(message(), changed);
    expectOnlyAt(from);
}

TEST_F(RecordedOriginal, CountsAsRemovedThoughTheReplyToThatIsLost) {
    disk.failCall(Operation::remove, 1, EIO, FaultyFileSystem::Moment::afterEffect);
    EXPECT_EQ(message(), "Copied, verified and moved.");
    expectOnlyAt(to);
}

TEST_F(RecordedOriginal, StaysWhenItChangedWhereItCanNotBeRenamed) {
    disk.failCall(Operation::move, toAside, ENOSPC);
    beforeMove(toAside, [this] { memory.write(from, "two"); });
    EXPECT_EQ(message(), changed);
    expectOnlyAt(from, "two");
}

TEST_F(RecordedOriginal, StaysWhereItCanNotBeRenamedForAnyOtherReason) {
    disk.failCall(Operation::move, toAside, EACCES);
    EXPECT_EQ(message(), stays);
    expectOnlyAt(from);
}

TEST_F(RecordedOriginal, StaysWhenItChangedAndTheReplyToItsRenameIsLost) {
    disk.failCall(Operation::move, toAside, EIO, FaultyFileSystem::Moment::afterEffect);
    beforeMove(toAside, [this] { memory.write(from, "two"); });
    EXPECT_EQ(message(), changed);
    expectOnlyAt(from, "two");
}

TEST_F(RecordedOriginal, StaysWithItsCopyWhileItCanNotBeToldWhatBecameOfItsRename) {
    disk.failCall(Operation::move, toAside, EIO, FaultyFileSystem::Moment::afterEffect);
    disk.setAfterCall([this](const FaultyFileSystem::Call& call) {
        if (call.operation != Operation::move || disk.callCount(Operation::move) != toAside) return;
        disk.failCall(Operation::contentHash, 3, EIO, FaultyFileSystem::Moment::beforeEffect);
        const std::size_t next = disk.callCount(Operation::isRegularFile) + 1;
        for (std::size_t i = next; i < next + 3; ++i) disk.failCall(Operation::isRegularFile, i, EIO);
    });
    EXPECT_EQ(message(), stays);
    EXPECT_EQ(memory.read(to), "one");
    EXPECT_THAT(hidden(), ElementsAre("one"));
    EXPECT_TRUE(fs().leavesSomething());
}

TEST_F(RecordedOriginal, GoesFromTheTrashUnderItsOwnNameAndOnlyWhileItsCopyStands) {
    memory.makeDirectory("/r/Trash/files");
    memory.write("/r/Trash/files/a.pdf", "one");
    intent.items[0].source = std::string_view("/r/Trash/files/a.pdf");
    const Url trashed = Url::file("/r/Trash/files/a.pdf"), partial = OrdovanPartialName::beside(Url::file(to));
    ASSERT_TRUE(fs().contentHash(trashed) && fs().fileSize(trashed) && fs().fileIdentity(trashed));
    ASSERT_TRUE(fs().copy(trashed, partial) && fs().fileIdentity(partial) && fs().move(partial, Url::file(to)));
    memory.write(trashed.path(), "two");
    EXPECT_EQ(fs().contentHash(trashed), digestOf("two")) << "it is hashed when that is asked for";
    memory.removeTree(to);
    EXPECT_FALSE(fs().remove(trashed));
    EXPECT_EQ(memory.read(trashed.path()), "two");
    EXPECT_EQ(disk.callCount(Operation::move), 1U) << "it keeps its name";
}

// The copy, when it has to go again.

TEST_F(RecordedOriginal, LeavesAnotherFileThatTakesItsCopysPlaceInARollback) {
    disk.failCall(Operation::remove, 1, EACCES);
    beforeMove(back + 1, [this] { memory.replace(to, "theirs"); });  // after it has got its name back
    EXPECT_EQ(message(), stays);
    EXPECT_EQ(memory.read(from), "one");
    EXPECT_EQ(memory.read(to), "theirs");
    EXPECT_THAT(hidden(), IsEmpty());
}

TEST_F(RecordedOriginal, TellsOfACopyThatCanNotBeTakenAway) {
    disk.failCall(Operation::remove, 1, EACCES, FaultyFileSystem::Moment::beforeEffect,
                  FaultyFileSystem::Lasting::forGood);
    EXPECT_EQ(message(), stays);
    EXPECT_EQ(memory.read(from), "one");
    EXPECT_THAT(hidden(), ElementsAre("one"));
    EXPECT_TRUE(fs().leavesSomething());
}

TEST_F(RecordedOriginal, LosesItsCopyUnderItsNameWhereThatCanNotBeRenamed) {
    disk.failCall(Operation::remove, 1, EACCES);
    disk.failCall(Operation::move, back + 1, ENOSPC);
    EXPECT_EQ(message(), stays);
    expectOnlyAt(from);
}

TEST_F(RecordedOriginal, TellsOfAPartialCopyThatCanNotBeTakenAway) {
    disk.lieAboutHash(2);
    disk.failCall(Operation::remove, 1, EROFS);
    EXPECT_EQ(message(), changed);
    EXPECT_THAT(hidden(), ElementsAre("one"));
    EXPECT_TRUE(fs().leavesSomething());
}

TEST_F(RecordedOriginal, LeavesNothingWhenItsCopyFails) {
    disk.failCall(Operation::copy, 1, EROFS);
    disk.failCall(Operation::remove, 1, EROFS);
    EXPECT_EQ(organize().failedCount(), 1U);
    expectOnlyAt(from);
}

TEST_F(RecordedOriginal, LeavesNothingWhenItGoesAwayByItself) {
    disk.setAfterCall([this](const FaultyFileSystem::Call& call) {
        if (call.operation == Operation::copy) memory.removeTree(from);
    });
    EXPECT_EQ(organize().movedCount(), 1U);
    expectOnlyAt(to);
}

TEST_F(RecordedOriginal, IsKnownByItsContentWhereARenameNumbersFilesAnew) {
    disk.setAfterCall([this](const FaultyFileSystem::Call& call) {
        if (call.operation == Operation::move) memory.replace(call.second.path(), "one");
    });
    EXPECT_EQ(message(), "Copied, verified and moved.");
    expectOnlyAt(to);
}

TEST_F(RecordedOriginal, GetsItsNameBackWhenItCanNotBeRemoved) {
    disk.failCall(Operation::remove, 1, EACCES);
    EXPECT_EQ(organize().failedCount(), 1U);
    expectOnlyAt("/r/a.pdf");
}

TEST_F(RecordedOriginal, StaysWhenItChanged) {
    disk.failCall(Operation::move, toAside, EBUSY);
    EXPECT_EQ(organize().failedCount(), 1U);
    expectOnlyAt("/r/a.pdf");
}

TEST_F(RecordedOriginal, IsRemovedWhereItCanNotBeRenamed) {
    disk.failCall(Operation::move, toAside, ENOSPC);
    EXPECT_EQ(organize().movedCount(), 1U);
    expectOnlyAt("/r/ordovan+/a.pdf");
}

TEST_F(RecordedOriginal, IsRemovedThoughTheReplyToItsRenameIsLost) {
    disk.failCall(Operation::move, toAside, EIO, FaultyFileSystem::Moment::afterEffect);
    EXPECT_EQ(organize().movedCount(), 1U);
    expectOnlyAt("/r/ordovan+/a.pdf");
}

TEST_F(RecordedOriginal, LosesASecondNameThatItsRenameInStepsLeft) {
    disk.failCall(Operation::move, toAside, EIO);
    std::size_t moves = 0;
    disk.setBeforeCall([&](const FaultyFileSystem::Call& call) {
        if (call.operation != Operation::move || ++moves != toAside) return;
        memory.hardLink(std::string(call.second.path()), "/r/a.pdf");
    });
    EXPECT_EQ(organize().failedCount(), 1U);
    expectOnlyAt("/r/a.pdf");
}

TEST_F(RecordedOriginal, LeavesAnotherFileThatHasItsHiddenName) {
    disk.setBeforeCall([this](const FaultyFileSystem::Call& call) {
        const bool isHiding = call.operation == Operation::move && call.url == Url::file(from);
        if (isHiding) memory.write(call.second.path(), "theirs");
    });
    EXPECT_EQ(message(), stays);
    EXPECT_EQ(memory.read(from), "one");
    EXPECT_FALSE(memory.item(to));
    EXPECT_THAT(hidden(), ElementsAre("theirs"));
}

/// A port that says when it is about to move in steps.
class Stepwise final : public ordovan::StepwiseMoves {
public:
    void announceTo(Announce announce) override { announce_ = std::move(announce); }
    Announce announce_;
};

TEST_F(RecordedFileSystemTest, NotesThatAPlaceIsTakenInStepsBeforeThat) {
    tree({"a.pdf = one"});
    intend("/r/a.pdf", "/r/ordovan+/a.pdf");
    fs();
    const std::string hidden = "/r/.a.pdf.ordovan-partial-00000000-0000-4000-8000-000000000000";
    Stepwise steps;
    disk.setBeforeCall([&](const FaultyFileSystem::Call& call) {
        if (call.operation != Operation::move) return;
        steps.announce_(call.url, Url::file(hidden));
        events.emplace_back("move");
    });
    recorded = std::make_unique<RecordedFileSystem>(disk, intent, gathered, &steps);
    EXPECT_EQ(organize().movedCount(), 1U);
    EXPECT_THAT(events, ElementsAre("append", "move"));
    const auto noted = notes();
    EXPECT_FALSE(steps.announce_) << "nobody listens any more";
    ASSERT_THAT(noted, SizeIs(2));
    EXPECT_EQ(noted[0].kind, NoteKind::claimed);
    EXPECT_EQ(noted[0].contentHash, digestOf("one"));
    EXPECT_EQ(noted[0].path, hidden);
}

TEST_F(RecordedFileSystemTest, KnowsThatAMoveInStepsHasLeftAHiddenName) {
    for (const bool isLeft : {false, true}) {
        tree({"a.pdf = one"});
        memory.makeDirectory("/r/ordovan+");
        intent.items.clear();
        intend("/r/a.pdf", "/r/ordovan+/a.pdf");
        const std::string hidden = "/r/.a.pdf.ordovan-partial-00000000-0000-4000-8000-000000000000";
        Stepwise steps;
        disk.setBeforeCall([&](const FaultyFileSystem::Call& call) {
            if (call.operation != Operation::move) return;
            steps.announce_(call.url, Url::file(hidden));
            if (isLeft) memory.hardLink(hidden, "/r/a.pdf");
        });
        RecordedFileSystem run(disk, intent, gathered, &steps);
        EXPECT_TRUE(run.fileSize(Url::file("/r/a.pdf")));
        EXPECT_TRUE(run.move(Url::file("/r/a.pdf"), Url::file("/r/ordovan+/a.pdf")));
        EXPECT_EQ(run.leavesSomething(), isLeft);
        disk.setBeforeCall({});
        memory.removeTree("/r/ordovan+/a.pdf");
    }
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
