#include "OrdovanCore/DuplicateTrasher.h"
#include "OrdovanCore/testing/FaultyFileSystem.h"
#include "OrdovanCore/testing/TreeBuilder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

using ordovan::testing::build;
using ordovan::testing::digestOf;
using ordovan::testing::FaultyFileSystem;
using ordovan::testing::MemoryFileSystem;
using ordovan::testing::Operation;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::Eq;
using ::testing::IsEmpty;
using Moment = FaultyFileSystem::Moment;
using Status = OrdovanExecutionStatus;

namespace {

const std::string moved = "moved: Moved to the Trash.";
const std::string keeperChanged =
    "skippedRevalidation: The copy you chose to keep changed or is missing; nothing was moved.";
const std::string outside = "skippedRevalidation: Outside the folder you chose; left untouched.";
const std::string missing = "skippedRevalidation: Missing or no longer a regular file; left untouched.";
const std::string sameFile = "skippedRevalidation: This is the same file as the one you're keeping; left untouched.";
const std::string different = "skippedRevalidation: No longer identical to the copy you're keeping; left untouched.";
const std::string notMoved = "failed: Couldn't move this file to the Trash; it was left in place.";
const std::string stopped = "skippedRevalidation: The run was stopped before this file; left untouched.";

/// The chosen folder is "/r"; the files of a group hold "same".
class TrashExtras : public ::testing::Test {
protected:
    void tree(std::initializer_list<std::string_view> items) { build(memory, "/r", items); }

    static OrdovanDuplicateGroup group(std::initializer_list<std::string_view> files) {
        OrdovanDuplicateGroup one{digestOf("same"), 4, {}};
        for (const std::string_view file : files) one.files.push_back(Url::file(file));
        return one;
    }
    /// Keeps the first file of the group.
    OrdovanTrashReport trash(std::initializer_list<std::string_view> files, const OrdovanRunControl& control = {}) {
        return OrdovanDuplicateTrasher::trashExtras(group(files), Url::file(*files.begin()), Url::file(root), fs,
                                                    control);
    }
    /// "status: message" for each extra.
    static std::vector<std::string> fates(const OrdovanTrashReport& report) {
        std::vector<std::string> all;
        for (const auto& one : report.outcomes) all.push_back(std::string(rawValue(one.status)) + ": " + one.message);
        return all;
    }
    std::vector<std::string> fatesOf(std::initializer_list<std::string_view> files) { return fates(trash(files)); }

    std::string root = "/r";
    MemoryFileSystem memory;
    FaultyFileSystem fs{memory};
};

TEST_F(TrashExtras, AnExtraGoesToTheTrashAndIntoTheRecord) {
    tree({"a = same", "sub/b = same"});
    const OrdovanTrashReport report = trash({"/r/a", "/r/sub/b"});
    const Url there = Url::file("/home/user/.local/share/Trash/files/b");
    EXPECT_EQ(report, (OrdovanTrashReport{{{Url::file("/r/sub/b"), there, Status::moved, "Moved to the Trash."}},
                                          {1, {{"/r/sub/b", there.path(), 4, digestOf("same")}}}}));
    EXPECT_EQ(memory.read("/r/a"), "same");
    EXPECT_EQ(memory.read(there.path()), "same");
    EXPECT_FALSE(memory.item("/r/sub/b"));
}

TEST_F(TrashExtras, OutcomesAndEntriesStandInGroupOrderWhicheverCopyIsKept) {
    tree({"a = same", "b = same", "c = same"});
    const auto report =
        OrdovanDuplicateTrasher::trashExtras(group({"/r/a", "/r/b", "/r/c"}), Url::file("/r/b"), Url::file("/r"), fs);
    EXPECT_EQ(fates(report), std::vector(2, moved));
    ASSERT_EQ(report.record.entries.size(), 2U);
    EXPECT_EQ(report.record.entries[0].original(), "/r/a");
    EXPECT_EQ(report.record.entries[1].original(), "/r/c");
    EXPECT_TRUE(memory.item("/r/b"));
}

TEST_F(TrashExtras, EmptyFilesGoToo) {
    tree({"a", "b"});
    const OrdovanDuplicateGroup empty{digestOf(""), 0, {Url::file("/r/a"), Url::file("/r/b")}};
    const auto report = OrdovanDuplicateTrasher::trashExtras(empty, Url::file("/r/a"), Url::file("/r"), fs);
    EXPECT_EQ(fates(report), std::vector{moved});
}

// The kept copy.

TEST_F(TrashExtras, AKeptCopyEditedAfterTheScanMovesNothing) {
    tree({"a = SAME", "b = same", "c = same"});
    const OrdovanTrashReport report = trash({"/r/a", "/r/b", "/r/c"});
    EXPECT_EQ(fates(report), std::vector(2, keeperChanged));
    EXPECT_EQ(report.outcomes[1].source, Url::file("/r/c"));
    EXPECT_EQ(report.outcomes[1].destination, Url::file("/r/c"));
    EXPECT_EQ(report.record, OrdovanTrashRecord());
    EXPECT_THAT(memory.changes(), IsEmpty());
}

TEST_F(TrashExtras, AKeptCopyThatIsNotInTheGroupMovesNothing) {
    tree({"a = same", "b = same", "other = same"});
    const auto report =
        OrdovanDuplicateTrasher::trashExtras(group({"/r/a", "/r/b"}), Url::file("/r/other"), Url::file("/r"), fs);
    EXPECT_EQ(fates(report), std::vector(2, keeperChanged));
    EXPECT_THAT(memory.changes(), IsEmpty());
}

TEST_F(TrashExtras, AKeptCopyThatIsNoRegularFileOfThatSizeMovesNothing) {
    tree({"longer = same!", "folder/", "fifo|", "real = same", "link -> real", "b = same"});
    for (const std::string_view keeper : {"/r/longer", "/r/folder", "/r/fifo", "/r/link", "/r/nowhere"}) {
        EXPECT_EQ(fatesOf({keeper, "/r/b"}), std::vector{keeperChanged}) << keeper;
    }
    EXPECT_THAT(memory.changes(), IsEmpty());
}

TEST_F(TrashExtras, AKeptCopyThatCanNotBeReadMovesNothing) {
    tree({"a = same", "b = same"});
    for (const auto& [operation, number] :
         std::initializer_list<std::pair<Operation, std::size_t>>{{Operation::fileSize, 1},
                                                                  {Operation::contentHash, 1},
                                                                  {Operation::fileIdentity, 1},
                                                                  {Operation::fileIdentity, 2},
                                                                  {Operation::isRegularFile, 1}}) {
        fs.reset();
        fs.failCall(operation, number, EIO);
        EXPECT_EQ(fatesOf({"/r/a", "/r/b"}), std::vector{keeperChanged});
    }
    EXPECT_THAT(memory.changes(), IsEmpty());
}

TEST_F(TrashExtras, AKeptCopyReplacedWhileItWasHashedMovesNothing) {
    tree({"a = same", "b = same"});
    fs.setAfterCall([&](const auto& call) {
        if (call.operation == Operation::contentHash && call.url.path() == "/r/a") memory.replace("/r/a", "same");
    });
    EXPECT_EQ(fatesOf({"/r/a", "/r/b"}), std::vector{keeperChanged});
}

TEST_F(TrashExtras, AFolderThatIsTooBroadMovesNothing) {
    root = "/usr";
    build(memory, "/usr", {"a = same", "b = same"});
    EXPECT_EQ(fatesOf({"/usr/a", "/usr/b"}), std::vector{keeperChanged});
}

TEST_F(TrashExtras, AKeptCopyInATrashMovesNothing) {
    build(memory, "/r", {".Trash-1000/files/a = same", "sub/Trash/files/a = same", "b = same"});
    EXPECT_EQ(fatesOf({"/r/.Trash-1000/files/a", "/r/b"}), std::vector{keeperChanged});
    EXPECT_EQ(fatesOf({"/r/sub/Trash/files/a", "/r/b"}), std::vector{keeperChanged});
    EXPECT_THAT(memory.changes(), IsEmpty());
}

TEST_F(TrashExtras, AGroupOfTheKeptCopyAloneIsAnEmptyReportAndAsksNothing) {
    tree({"a = same"});
    EXPECT_EQ(trash({"/r/a", "/r/./a", "/r//x/../a"}), OrdovanTrashReport());
    EXPECT_EQ(OrdovanDuplicateTrasher::trashExtras({}, Url::file("/r/a"), Url::file("/r"), fs), OrdovanTrashReport());
    EXPECT_THAT(memory.log(), IsEmpty());
}

// Each extra.

TEST_F(TrashExtras, AHardLinkToTheKeptCopyStays) {
    tree({"a = same", "b == a"});
    EXPECT_EQ(fatesOf({"/r/a", "/r/b"}), std::vector{sameFile});
    EXPECT_TRUE(memory.item("/r/b"));
}

TEST_F(TrashExtras, AnExtraWhoseIdentityCanNotBeReadIsJudgedByItsContent) {
    tree({"a = same", "b = same"});
    fs.failCall(Operation::fileIdentity, 3, EIO);  // the first two are about the kept copy
    EXPECT_EQ(fatesOf({"/r/a", "/r/b"}), std::vector{moved});
}

TEST_F(TrashExtras, AnExtraWhoseContentChangedSinceTheScanStays) {
    tree({"a = same", "b = SAME", "c = longer", "d = same"});
    EXPECT_EQ(fatesOf({"/r/a", "/r/b", "/r/c", "/r/d"}), (std::vector{different, different, moved}));
    EXPECT_EQ(memory.read("/r/b"), "SAME");
}

TEST_F(TrashExtras, AnExtraReplacedWhileItWasHashedStays) {
    tree({"a = same", "b = same"});
    fs.setAfterCall([&](const auto& call) {
        if (call.operation == Operation::contentHash && call.url.path() == "/r/b") memory.replace("/r/b", "same");
    });
    EXPECT_EQ(fatesOf({"/r/a", "/r/b"}), std::vector{different});
}

TEST_F(TrashExtras, AnExtraThatCanNotBeReadStays) {
    tree({"a = same", "b = same"});
    memory.setMode("/r/b", 0200);
    EXPECT_EQ(fatesOf({"/r/a", "/r/b"}), std::vector{different});
}

TEST_F(TrashExtras, AnExtraThatIsGoneOrNoRegularFileAnyMoreStays) {
    tree({"a = same", "link -> a", "folder/", "fifo|"});
    EXPECT_EQ(fatesOf({"/r/a", "/r/link", "/r/folder", "/r/fifo", "/r/gone", "/r"}), std::vector(5, missing));
    EXPECT_THAT(memory.changes(), IsEmpty());
}

TEST_F(TrashExtras, AnExtraThroughALinkedFolderOrOutsideTheFolderStays) {
    tree({"a = same", "real/b = same", "linked -> real"});
    build(memory, "/elsewhere", {"c = same"});
    EXPECT_EQ(fatesOf({"/r/a", "/r/linked/b", "/elsewhere/c", "/r/../elsewhere/c"}), std::vector(3, outside));
    EXPECT_THAT(memory.changes(), IsEmpty());
}

TEST_F(TrashExtras, AnExtraThatLiesInATrashStays) {
    tree({"a = same", ".Trash-1000/files/b = same"});
    EXPECT_EQ(fatesOf({"/r/a", "/r/.Trash-1000/files/b"}), std::vector{outside});
}

TEST_F(TrashExtras, AnExtraWhoseNameIsNotUtf8StaysSinceNoRecordCouldNameIt) {
    tree({"a = same", "b\xFF = same"});
    EXPECT_EQ(fatesOf({"/r/a", "/r/b\xFF"}), std::vector{notMoved});
    EXPECT_TRUE(memory.item("/r/b\xFF"));
}

TEST_F(TrashExtras, AnExtraIsRecordedByTheBytesOfItsNameInNormalForm) {
    tree({"a = same", "e\u0301 = same", "new\nline = same"});
    const OrdovanTrashReport report = trash({"/r/a", "/r/./e\u0301", "/r//new\nline"});
    EXPECT_EQ(fates(report), std::vector(2, moved));
    EXPECT_EQ(report.record.entries[0].original(), "/r/e\u0301");
    EXPECT_EQ(report.record.entries[1].original(), "/r/new\nline");
}

TEST_F(TrashExtras, ATrashThatRefusesLeavesTheExtraInPlace) {
    tree({"a = same", "b = same", "c = same"});
    fs.failCall(Operation::trash, 1, ENOSPC);
    const OrdovanTrashReport report = trash({"/r/a", "/r/b", "/r/c"});
    EXPECT_EQ(fates(report), (std::vector{notMoved, moved}));
    EXPECT_EQ(report.outcomes[0].destination, Url::file("/r/b"));
    EXPECT_EQ(report.record.entries.size(), 1U);
    EXPECT_TRUE(memory.item("/r/b"));
}

// Between the checks and the move.

TEST_F(TrashExtras, AnExtraIsPutBackWhenTheKeptCopyIsGoneAfterTheMove) {
    tree({"a = same", "b = same", "c = same"});
    fs.setBeforeCall([&](const auto& call) {
        if (call.operation == Operation::trash) memory.removeTree("/r/a");
    });
    EXPECT_EQ(fatesOf({"/r/a", "/r/b", "/r/c"}), (std::vector{notMoved, different}));
    EXPECT_EQ(memory.read("/r/b"), "same");
    EXPECT_EQ(memory.read("/r/c"), "same");
    EXPECT_THAT(memory.list("/home/user/.local/share/Trash/info").value(), IsEmpty());
}

TEST_F(TrashExtras, AnExtraIsPutBackWhenTheKeptCopyIsAnotherFileAfterTheMove) {
    tree({"a = same", "b = same"});
    fs.setBeforeCall([&](const auto& call) {
        if (call.operation == Operation::trash) memory.replace("/r/a", "else");
    });
    EXPECT_EQ(fatesOf({"/r/a", "/r/b"}), std::vector{notMoved});
    EXPECT_EQ(memory.read("/r/b"), "same");
}

TEST_F(TrashExtras, AnExtraThatCanNotBePutBackIsRecorded) {
    tree({"a = same", "b = same"});
    fs.setBeforeCall([&](const auto& call) {
        if (call.operation == Operation::trash) memory.removeTree("/r/a");
    });
    fs.failCall(Operation::move, 1, EIO);
    const OrdovanTrashReport report = trash({"/r/a", "/r/b"});
    EXPECT_EQ(fates(report), std::vector{moved});
    ASSERT_EQ(report.record.entries.size(), 1U);
    EXPECT_EQ(memory.read(report.record.entries[0].trashed()), "same");
}

TEST_F(TrashExtras, AnotherContentThatSlippedInBeforeTheMoveIsPutBack) {
    tree({"a = same", "b = same"});
    fs.setBeforeCall([&](const auto& call) {
        if (call.operation == Operation::trash) memory.replace("/r/b", "NEW!");
    });
    const OrdovanTrashReport report = trash({"/r/a", "/r/b"});
    EXPECT_EQ(fates(report), std::vector{notMoved});
    EXPECT_THAT(report.record.entries, IsEmpty());
    EXPECT_EQ(memory.read("/r/b"), "NEW!");
}

TEST_F(TrashExtras, WhatSlippedInAndCanNotBePutBackIsRecordedAsWhatItIs) {
    tree({"a = same", "b = same"});
    fs.setBeforeCall([&](const auto& call) {
        if (call.operation == Operation::trash) memory.replace("/r/b", "newer");
        if (call.operation == Operation::move) memory.write("/r/b", "newest");
    });
    const OrdovanTrashReport report = trash({"/r/a", "/r/b"});
    EXPECT_EQ(fates(report), std::vector{moved});
    EXPECT_EQ(report.record.entries[0],
              (OrdovanTrashEntry{"/r/b", "/home/user/.local/share/Trash/files/b", 5, digestOf("newer")}));
    EXPECT_EQ(memory.read("/r/b"), "newest");
}

TEST_F(TrashExtras, AnotherFileOfTheSameContentThatSlippedInMayGo) {
    tree({"a = same", "b = same"});
    fs.setBeforeCall([&](const auto& call) {
        if (call.operation == Operation::trash) memory.replace("/r/b", "same");
    });
    EXPECT_EQ(fatesOf({"/r/a", "/r/b"}), std::vector{moved});
}

TEST_F(TrashExtras, ATrashThatOnlyClaimsToHaveTakenTheExtraIsNotBelieved) {
    tree({"a = same", "b = same"});
    fs.failCall(Operation::trash, 1, 0, Moment::insteadOfEffect);
    EXPECT_EQ(fatesOf({"/r/a", "/r/b"}), std::vector{notMoved});
    EXPECT_TRUE(memory.item("/r/b"));
}

TEST_F(TrashExtras, AnExtraThatLeftAlthoughTheTrashReportsAnErrorIsNotSaidToBeInPlace) {
    tree({"a = same", "b = same"});
    fs.failCall(Operation::trash, 1, EIO, Moment::afterEffect);
    const OrdovanTrashReport report = trash({"/r/a", "/r/b"});
    EXPECT_EQ(fates(report), std::vector{missing});
    EXPECT_THAT(report.record.entries, IsEmpty());
}

// Control.

TEST_F(TrashExtras, AStoppedRunLeavesTheRemainingExtrasAndSaysSo) {
    tree({"a = same", "b = same", "c = same", "d = same"});
    int asked = 0;
    std::vector<std::size_t> done;
    const OrdovanRunControl control{[&] { return ++asked < 2; },
                                    [&](std::size_t count, std::size_t total) {
                                        EXPECT_EQ(total, 3U);
                                        done.push_back(count);
                                    }};
    EXPECT_EQ(fates(trash({"/r/a", "/r/b", "/r/c", "/r/d"}, control)), (std::vector{moved, stopped, stopped}));
    EXPECT_EQ(asked, 2);
    EXPECT_THAT(done, ElementsAre(1U));
}

TEST_F(TrashExtras, ARunStoppedBeforehandReadsNothing) {
    tree({"a = same", "b = same"});
    EXPECT_EQ(fates(trash({"/r/a", "/r/b"}, {[] { return false; }, {}})), std::vector{stopped});
    EXPECT_EQ(fs.callCount(Operation::contentHash), 0U);
}

TEST_F(TrashExtras, AHashGivenUpForAStopIsAStop) {
    tree({"a = same", "b = same", "c = same"});
    for (const std::size_t number : {1U, 2U}) {
        fs.reset();
        fs.failCall(std::optional(Operation::contentHash), number, OrdovanSystemError::posix(ECANCELED),
                    Moment::beforeEffect, FaultyFileSystem::Lasting::forGood);
        EXPECT_THAT(fatesOf({"/r/a", "/r/b", "/r/c"}), Each(Eq(stopped)));
    }
    EXPECT_THAT(memory.changes(), IsEmpty());
}

TEST_F(TrashExtras, TheKeptCopyIsHashedOnceHoweverManyExtrasThereAre) {
    tree({"a = same", "b = same", "c = same", "d = same"});
    EXPECT_EQ(fatesOf({"/r/a", "/r/b", "/r/c", "/r/d"}), std::vector(3, moved));
    EXPECT_EQ(fs.callCount(Operation::contentHash), 4U);
}

}  // namespace
