// Two mounts of one device have one device number and yet refuse a rename between them, as btrfs subvolumes and the
// layers of an overlay may: the file is then copied, verified and removed, in every direction.

#include "OrdovanCore/DuplicateTrasher.h"
#include "OrdovanCore/FileTrasher.h"
#include "OrdovanCore/platform/RunFileSystem.h"
#include "tests/support/ApplyFixture.h"
#include "tests/support/SecondVolume.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <cstdlib>
#include <string>

using ordovan::RunFileSystem;
using ordovan::test::BindMount;
using ordovan::test::SecondVolume;
using ordovan::test::TempFolder;
using ordovan::testing::FaultyFileSystem;
using ordovan::testing::Operation;
using ::testing::IsEmpty;

namespace {

class OneDeviceTwoMounts : public ordovan::test::ApplyFixture {
protected:
    OneDeviceTwoMounts() {
        tree({"a = hello"});
        memory.addMountOfRootDevice("/r/ordovan+/Documents");
    }
    OrdovanExecutionReport undo(const OrdovanJournal& journal) {
        return OrdovanExecutor::undo(journal, Url::file("/r"), Url::file("/r/ordovan+"), fs);
    }
};

}  // namespace

TEST_F(OneDeviceTwoMounts, AFileIsCopiedBetweenThem) {
    const auto report = apply({toDocuments("a")});
    EXPECT_EQ(report.outcomes.at(0).message, "Copied, verified and moved.");
    EXPECT_FALSE(report.journal.entries.at(0).sameVolume());
    EXPECT_EQ(memory.read("/r/ordovan+/Documents/a"), "hello");
    EXPECT_FALSE(memory.item("/r/a"));
}

TEST_F(OneDeviceTwoMounts, AFileIsCopiedBack) {
    const auto report = undo(apply({toDocuments("a")}).journal);
    EXPECT_EQ(report.outcomes.at(0).message, "Restored.");
    EXPECT_EQ(memory.read("/r/a"), "hello");
    EXPECT_THAT(memory.snapshot("/r/ordovan+/Documents"), IsEmpty());
}

TEST_F(OneDeviceTwoMounts, AFileIsPutBackFromTheTrashOfTheOther) {
    memory.makeDirectory("/home/user/there");
    memory.addMountOfRootDevice("/home/user/there");
    memory.write("/home/user/x", "hello");
    const Url x = Url::file("/home/user/x");
    const auto trashed = memory.trash(x).value();
    const OrdovanTrashRecord record{
        1, {OrdovanTrashEntry("/home/user/there/x", trashed.path(), 5, ordovan::testing::digestOf("hello"))}};
    const auto report = OrdovanDuplicateTrasher::restore(record, Url::file("/home/user/there"), fs);
    EXPECT_EQ(report.outcomes.at(0).message, "Put back.");
    EXPECT_EQ(memory.read("/home/user/there/x"), "hello");
    EXPECT_FALSE(memory.item(trashed.path()));
}

TEST_F(OneDeviceTwoMounts, AFileStaysWhenItsCopyFails) {
    fs.failCall(Operation::copy, 1, ENOSPC);
    EXPECT_EQ(fate(toDocuments("a")),
              "failed: Could not move this file; it was left in place. The disk is full. Free "
              "up some space and try again.");
    EXPECT_EQ(memory.read("/r/a"), "hello");
}

TEST_F(OneDeviceTwoMounts, AFileThatMovedAfterAllIsNotCopied) {
    tree({"ordovan+/Other/", "b = hello"});
    fs.failCall(Operation::move, 1, EXDEV, FaultyFileSystem::Moment::afterEffect);
    EXPECT_EQ(fate(proposal("/r/b", "/r/ordovan+/Other/b")), "moved: Moved.");
    EXPECT_EQ(fs.callCount(Operation::copy), 0u);
}

namespace {

/// A real bind mount at "root/ordovan+".
class RealBindMount : public ::testing::Test {
protected:
    void SetUp() override {
        if (!SecondVolume::available()) GTEST_SKIP() << SecondVolume::unavailable;
        shown_.makeFolder("shown");
    }
    TempFolder shown_;
};

TEST_F(RealBindMount, IsCopiedToAndFrom) {
    const BindMount mount(shown_.path("shown"));
    shown_.write("a", "hello");
    OrdovanFileProposal proposal;
    proposal.source = shown_.url("a");
    proposal.destination = mount.root().url("Documents/a");
    RunFileSystem fs(shown_.url());
    ASSERT_TRUE(fs.sameVolume(proposal.source, proposal.destination));
    const auto done = OrdovanExecutor::apply({{proposal}}, shown_.url(), mount.root().url(), fs, 1.0);
    EXPECT_EQ(done.outcomes.at(0).message, "Copied, verified and moved.");
    EXPECT_EQ(shown_.read("shown/Documents/a"), "hello");
    EXPECT_FALSE(shown_.has("a"));
    const auto undone = OrdovanExecutor::undo(done.journal, shown_.url(), mount.root().url(), fs);
    EXPECT_EQ(undone.outcomes.at(0).message, "Restored.");
    EXPECT_EQ(shown_.read("a"), "hello");
    EXPECT_EQ(shown_.count("shown/Documents"), 0u);
}

TEST_F(RealBindMount, IsPutBackToFromTheTrashOutside) {
    const BindMount mount(shown_.path("shown"));
    ::setenv("XDG_DATA_HOME", shown_.path("data").c_str(), 1);
    RunFileSystem fs(mount.root().url());
    const OrdovanFileTrasher::Item item{shown_.write("x", "hello"), 5};
    RunFileSystem outside(shown_.url());
    OrdovanTrashRecord record = OrdovanFileTrasher::trash({&item, 1}, shown_.url(), outside).record;
    ::unsetenv("XDG_DATA_HOME");
    ASSERT_EQ(record.entries.size(), 1u);
    const auto& entry = record.entries[0];
    record.entries[0] =
        OrdovanTrashEntry(mount.root().path("x"), entry.trashed(), entry.byteSize(), entry.contentHash());
    const auto report = OrdovanDuplicateTrasher::restore(record, mount.root().url(), fs);
    EXPECT_EQ(report.outcomes.at(0).message, "Put back.");
    EXPECT_EQ(shown_.read("shown/x"), "hello");
    EXPECT_FALSE(shown_.has("data/Trash/files/x"));
}

}  // namespace
