#include "OrdovanCore/FileTrasher.h"
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
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Item = OrdovanFileTrasher::Item;
using Moment = FaultyFileSystem::Moment;
using Status = OrdovanExecutionStatus;

namespace {

const std::string moved = "moved: Moved to the Trash.";
const std::string outside = "skippedRevalidation: Outside the folder you chose; left untouched.";
const std::string missing = "skippedRevalidation: Missing or no longer a regular file; left untouched.";
const std::string changed = "skippedRevalidation: The file changed since you looked at it; left untouched.";
const std::string unrecordable =
    "skippedRevalidation: Couldn't read the file to record it for Put Back; left untouched.";
const std::string notMoved = "failed: Couldn't move this file to the Trash; it was left in place. ";
const std::string stopped = "skippedRevalidation: The run was stopped before this file; left untouched.";

/// The chosen folder is "/r".
class FileTrasher : public ::testing::Test {
protected:
    void tree(std::initializer_list<std::string_view> items) { build(memory, "/r", items); }

    OrdovanTrashReport trash(const std::vector<Item>& items, const OrdovanRunControl& control = {}) {
        return OrdovanFileTrasher::trash(items, Url::file(root), fs, control);
    }
    static std::vector<std::string> fates(const OrdovanTrashReport& report) {
        std::vector<std::string> all;
        for (const auto& one : report.outcomes) all.push_back(std::string(rawValue(one.status)) + ": " + one.message);
        return all;
    }
    /// Trashes one file that the user saw with `size` bytes; "status: message".
    std::string fate(std::string_view path, std::int64_t size = 7) {
        const OrdovanTrashReport report = trash({{Url::file(path), size}});
        EXPECT_EQ(report.record.entries.size(), report.movedCount());
        return fates(report).at(0);
    }

    std::string root = "/r";
    MemoryFileSystem memory;
    FaultyFileSystem fs{memory};
};

TEST_F(FileTrasher, AFileGoesToTheTrashAndIntoTheRecord) {
    tree({"sub/film.mkv = content"});
    const OrdovanTrashReport report = trash({{Url::file("/r/sub/film.mkv"), 7}});
    const Url there = Url::file("/home/user/.local/share/Trash/files/film.mkv");
    EXPECT_EQ(report, (OrdovanTrashReport{{{Url::file("/r/sub/film.mkv"), there, Status::moved, "Moved to the Trash."}},
                                          {1, {{"/r/sub/film.mkv", there.path(), 7, digestOf("content")}}}}));
    EXPECT_EQ(memory.read(there.path()), "content");
    EXPECT_FALSE(memory.item("/r/sub/film.mkv"));
}

TEST_F(FileTrasher, OutcomesAndEntriesStandInTheOrderOfTheItems) {
    tree({"a = 1", "b = 22", "c = 333"});
    const auto report = trash({{Url::file("/r/c"), 3}, {Url::file("/r/b"), 5}, {Url::file("/r/a"), 1}});
    EXPECT_EQ(fates(report), (std::vector{moved, changed, moved}));
    EXPECT_EQ(report.outcomes[1].destination, Url::file("/r/b"));
    ASSERT_EQ(report.record.entries.size(), 2U);
    EXPECT_EQ(report.record.entries[0].original(), "/r/c");
    EXPECT_EQ(report.record.entries[1].original(), "/r/a");
}

TEST_F(FileTrasher, NothingToTrashIsAnEmptyReport) {
    EXPECT_EQ(trash({}), OrdovanTrashReport());
}

TEST_F(FileTrasher, AFileOutsideTheFolderOrThroughALinkedFolderOrInATrashStays) {
    tree({"real/a = content", "linked -> real", ".Trash-1000/files/a = content"});
    build(memory, "/elsewhere", {"a = content"});
    for (const char* path : {"/elsewhere/a", "/r/../elsewhere/a", "/r/linked/a", "/r/.Trash-1000/files/a"}) {
        EXPECT_EQ(fate(path), outside) << path;
    }
    EXPECT_THAT(memory.changes(), IsEmpty());
}

TEST_F(FileTrasher, AFolderThatIsTooBroadHoldsNothing) {
    root = "/usr";
    build(memory, "/usr", {"a = content"});
    EXPECT_EQ(fate("/usr/a"), outside);
}

TEST_F(FileTrasher, WhatIsNoRegularFileStays) {
    tree({"folder/", "fifo|", "file = content", "link -> file"});
    for (const char* path : {"/r/folder", "/r/fifo", "/r/link", "/r/gone", "/r"})
        EXPECT_EQ(fate(path), missing) << path;
    EXPECT_THAT(memory.changes(), IsEmpty());
}

TEST_F(FileTrasher, AFileThatGrewByOneByteStays) {
    tree({"a = content!"});
    EXPECT_EQ(fate("/r/a", 7), changed);
}

TEST_F(FileTrasher, AFileWhoseSizeCanNotBeToldStays) {
    tree({"a = content"});
    fs.failCall(Operation::fileSize, 1, EIO);
    EXPECT_EQ(fate("/r/a"), changed);
}

TEST_F(FileTrasher, AFileThatCanNotBeReadStaysEvenIfTheTrashWouldTakeIt) {
    tree({"a = content"});
    memory.setMode("/r/a", 0);
    EXPECT_EQ(fate("/r/a"), unrecordable);
    EXPECT_THAT(memory.changes(), IsEmpty());
}

TEST_F(FileTrasher, AFileThatTookThePlaceOfTheOneLookedAtBeforeItWasHashedStays) {
    tree({"a = content"});
    fs.setBeforeCall([&](const auto& call) {
        if (call.operation == Operation::contentHash) memory.replace("/r/a", "CONTENT");
    });
    EXPECT_EQ(fate("/r/a"), changed);
    EXPECT_EQ(memory.read("/r/a"), "CONTENT");
}

TEST_F(FileTrasher, AFileWhoseNameIsNotUtf8StaysSinceNoRecordCouldNameIt) {
    tree({"a\xFF = content"});
    EXPECT_EQ(fate("/r/a\xFF"), unrecordable);
    EXPECT_TRUE(memory.item("/r/a\xFF"));
}

TEST_F(FileTrasher, AFileIsRecordedByTheBytesOfItsNameInNormalForm) {
    tree({"e\u0301/new\nline = content"});
    EXPECT_EQ(trash({{Url::file("/r//./e\u0301/new\nline"), 7}}).record.entries.at(0).original(),
              "/r/e\u0301/new\nline");
}

TEST_F(FileTrasher, ARefusalOfTheSystemIsToldWithItsReason) {
    tree({"a = content"});
    for (const auto& [error, reason] : std::initializer_list<std::pair<int, const char*>>{
             {ENOSPC, "The disk is full. Free up some space and try again."},
             {EROFS, "This disk is read-only."},
             {EBUSY, "The file is in use by another app."},
             {EIO, "The system reported an error (code 5)."}}) {
        fs.reset();
        fs.failCall(Operation::trash, 1, error);
        EXPECT_EQ(fate("/r/a"), notMoved + reason);
    }
    EXPECT_EQ(memory.read("/r/a"), "content");
}

TEST_F(FileTrasher, AnotherContentThatSlippedInBeforeTheMoveIsPutBack) {
    tree({"a = content"});
    fs.setBeforeCall([&](const auto& call) {
        if (call.operation == Operation::trash) memory.replace("/r/a", "CONTENT");
    });
    EXPECT_EQ(fate("/r/a"), notMoved + "The file is in use by another app.");
    EXPECT_EQ(memory.read("/r/a"), "CONTENT");
    EXPECT_THAT(memory.list("/home/user/.local/share/Trash/info").value(), IsEmpty());
}

TEST_F(FileTrasher, AFileThatGrewBeforeTheMoveIsPutBack) {
    tree({"a = content"});
    fs.setBeforeCall([&](const auto& call) {
        if (call.operation == Operation::trash) memory.write("/r/a", "content and more");
    });
    EXPECT_EQ(fate("/r/a"), notMoved + "The file is in use by another app.");
    EXPECT_EQ(memory.read("/r/a"), "content and more");
}

TEST_F(FileTrasher, AFileWhoseIdentityCanNotBeToldIsProvedByItsContent) {
    tree({"a = content"});
    fs.failCall(Operation::fileIdentity, 1, EIO);
    EXPECT_EQ(fate("/r/a"), moved);
    EXPECT_EQ(fs.callCount(Operation::contentHash), 2U);
}

TEST_F(FileTrasher, APlaceInTheTrashThatNoRecordCouldNameIsLeftAgain) {
    memory.addVolume("/mnt/\xFF");
    build(memory, "/mnt/\xFF", {"r/a = content"});
    memory.link("/via", "/mnt/\xFF");  // the name that the user knows the volume by
    root = "/via/r";
    EXPECT_EQ(fate("/via/r/a"), notMoved + "The system reported an error (code 84).");
    EXPECT_EQ(memory.read("/via/r/a"), "content");
}

TEST_F(FileTrasher, ATrashThatOnlyClaimsToHaveTakenAFileIsNotBelieved) {
    tree({"a = content"});
    fs.failCall(Operation::trash, 1, 0, Moment::insteadOfEffect);
    EXPECT_EQ(fate("/r/a"), notMoved + "The system reported an error (code 512).");
}

TEST_F(FileTrasher, AFileThatLeftAlthoughTheTrashReportsAnErrorIsNotSaidToBeInPlace) {
    tree({"a = content"});
    fs.failCall(Operation::trash, 1, EIO, Moment::afterEffect);
    EXPECT_EQ(fate("/r/a"), missing);
}

TEST_F(FileTrasher, AStoppedRunLeavesTheRemainingFilesAndSaysSo) {
    tree({"a = content", "b = content", "c = content"});
    int asked = 0;
    std::vector<std::size_t> done;
    const OrdovanRunControl control{[&] { return ++asked < 2; },
                                    [&](std::size_t count, std::size_t total) {
                                        EXPECT_EQ(total, 3U);
                                        done.push_back(count);
                                    }};
    EXPECT_EQ(fates(trash({{Url::file("/r/a"), 7}, {Url::file("/r/b"), 7}, {Url::file("/r/c"), 7}}, control)),
              (std::vector{moved, stopped, stopped}));
    EXPECT_EQ(asked, 2);
    EXPECT_THAT(done, ElementsAre(1U));
}

TEST_F(FileTrasher, AHashGivenUpForAStopIsAStop) {
    tree({"a = content"});
    fs.failCall(Operation::contentHash, 1, ECANCELED);
    EXPECT_EQ(fate("/r/a"), stopped);
    EXPECT_THAT(memory.changes(), IsEmpty());
}

}  // namespace
