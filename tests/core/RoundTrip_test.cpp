// Organize and undo on the real disk, from the scan to the cleanup.

#include "OrdovanCore/Executor.h"
#include "OrdovanCore/FolderCleanup.h"
#include "OrdovanCore/Planner.h"
#include "OrdovanCore/platform/DirectoryReader.h"
#include "OrdovanCore/platform/SystemFileSystem.h"
#include "OrdovanCore/testing/FaultyFileSystem.h"
#include "OrdovanCore/testing/TreeBuilder.h"
#include "tests/support/DeviceNumbers.h"
#include "tests/support/SecondVolume.h"
#include "tests/support/TempFolder.h"
#include "tests/support/Unprivileged.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <sys/types.h>

#include <cerrno>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

using ordovan::test::SecondVolume;
using ordovan::test::TempFolder;
using ordovan::testing::buildOnDisk;
using ordovan::testing::describeTree;
using ordovan::testing::FaultyFileSystem;
using ordovan::testing::Operation;
using ordovan::testing::TreeItem;
using ::testing::IsEmpty;
using Kind = TreeItem::Kind;

namespace {

using Tree = std::map<std::string, std::string>;

void setModified(const std::string& path, std::int64_t seconds, std::int64_t nanoseconds) {
    const ::timespec times[2] = {{0, UTIME_OMIT}, {seconds, nanoseconds}};
    ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW), 0) << path;
}

/// A folder on the real disk that is organized into an output folder and back.
class RoundTrip : public ::testing::Test {
protected:
    void SetUp() override {
        if (!ordovan::test::filesShareTheirFoldersDevice()) GTEST_SKIP() << ordovan::test::filesHaveOtherDevices;
    }
    [[nodiscard]] Url output() const { return output_ ? *output_ : folder.url("ordovan+"); }
    void organizeInto(const Url& elsewhere) { output_ = elsewhere; }

    [[nodiscard]] OrdovanPlanResult plan(bool groupByMonth = false) const {
        FileManagerDirectoryReader reader;
        OrdovanInventoryLimits limits;
        limits.includeHidden = true;
        limits.maxDepth = 64;
        const std::vector<Url> excluded{output()};
        const auto inventory =
            OrdovanInventoryScanner::scan(folder.url(), reader, limits, excluded, [] { return true; });
        return OrdovanPlanner::plan(inventory.files, folder.url(), output(), {}, false, {}, groupByMonth,
                                    ordovan::text::TimeZone::utc());
    }
    OrdovanExecutionReport organize(const OrdovanPlanResult& what) {
        return OrdovanExecutor::apply(what.proposals, folder.url(), output(), fs, 17);
    }
    OrdovanExecutionReport organize(std::string_view name, std::string_view destination) {
        OrdovanFileProposal proposal;
        proposal.source = folder.url(name);
        proposal.destination = output().appending(destination);
        return OrdovanExecutor::apply(std::vector{proposal}, folder.url(), output(), fs, 17);
    }
    OrdovanExecutionReport undo(const OrdovanJournal& journal) {
        auto report = OrdovanExecutor::undo(journal, folder.url(), output(), fs);
        std::vector<Url> vacated;
        for (const auto& outcome : report.outcomes) vacated.push_back(outcome.destination);
        (void)OrdovanFolderCleanup::removeEmptyFolders(vacated, output());
        return report;
    }
    /// Everything but the output folder itself, which stays.
    [[nodiscard]] Tree tree() const {
        Tree all = describeTree(folder.path());
        all.erase("ordovan+");
        return all;
    }

    TempFolder folder;
    SystemFileSystem disk;
    FaultyFileSystem fs{disk};

private:
    std::optional<Url> output_;
};

class RoundTripAcrossVolumes : public RoundTrip {
protected:
    void SetUp() override {
        if (!SecondVolume::available()) GTEST_SKIP() << SecondVolume::unavailable;
        volume.emplace(1u << 20);
        organizeInto(volume->url("out"));
    }
    std::optional<SecondVolume> volume;
};

std::vector<TreeItem> oddTree() {
    std::vector<TreeItem> items = ordovan::testing::tree({"plain.pdf = a",
                                                          "with space.pdf = b",
                                                          "tab\there.txt = c",
                                                          "-rf = d",
                                                          "--help.png = e",
                                                          "'single'.doc = f",
                                                          "\"double\".doc = g",
                                                          "back\\slash.jpg = h",
                                                          "$(rm -rf ~).sh = i",
                                                          "*?[x].csv = j",
                                                          "%41.zip = k",
                                                          "\u00fc.txt = composed",
                                                          "u\u0308.txt = decomposed",
                                                          "e\u0301.md = decomposed alone",
                                                          "Twin.PDF = upper",
                                                          "twin.pdf = lower",
                                                          ".hidden = l",
                                                          ".hidden.tar.gz = m",
                                                          ".DS_Store = n",
                                                          "name. = o",
                                                          "backup/Trash/files/old.pdf = of another time",
                                                          "backup/Trash/info/old.pdf.trashinfo = [Trash Info]",
                                                          "backup/Trash/info/empty.trashinfo",
                                                          ".. .txt = p",
                                                          "\U0001F600.mp3 = q",
                                                          "empty.mov",
                                                          "folder.pdf/inside.pdf = r",
                                                          "deep/a/b/c/d/e/f/g/h/i/j/k/l/m/n/o/p/q/bottom.png = s",
                                                          "same/x.pdf = t",
                                                          "other/x.pdf = u",
                                                          "emptyFolder/",
                                                          "links/toFile -> ../plain.pdf",
                                                          "links/toFolder -> ../same",
                                                          "links/toNowhere -> nowhere",
                                                          "links/outside -> /etc/hostname",
                                                          "links/loop -> loop",
                                                          "pipe.pdf|",
                                                          "hard1.iso = both",
                                                          "same/hard2.iso == hard1.iso",
                                                          "closed/secret.pdf = v",
                                                          "readonly.txt = w",
                                                          "run.sh = x"});
    items.push_back({"line\nbreak.pdf", Kind::file, "y"});
    items.push_back({" = .pdf", Kind::file, "z"});
    items.push_back({"not\xffutf8.pdf", Kind::file, "stays"});
    items.push_back({"also\xc3/inside.pdf", Kind::file, "stays too"});
    items.push_back({std::string(251, 'n') + ".pdf", Kind::file, "long name"});
    items.push_back({"binary.bin", Kind::file, std::string(70000, '\0') + "\xff\x01"});
    return items;
}

}  // namespace

TEST_F(RoundTrip, GivesBackTheVeryTree) {
    buildOnDisk(folder.path(), oddTree());
    ::chmod(folder.path("readonly.txt").c_str(), 0444);
    ::chmod(folder.path("run.sh").c_str(), 06751);
    ::chmod(folder.path("same").c_str(), 0711);
    setModified(folder.path("plain.pdf"), 1234567890, 123456789);
    setModified(folder.path("run.sh"), -1, 999999999);
    setModified(folder.path("empty.mov"), 4102444800, 1);
    const Tree before = tree();

    const OrdovanPlanResult planned = plan(true);
    EXPECT_EQ(planned.conflicts.size(), 4u);  // the two x.pdf, and the two spellings of one name
    const OrdovanExecutionReport organized = organize(planned);
    EXPECT_EQ(organized.movedCount(), 35u);
    EXPECT_EQ(organized.movedCount() + 1, planned.proposals.size());  // all but the FIFO
    EXPECT_NE(tree(), before);
    EXPECT_FALSE(folder.has("plain.pdf"));
    EXPECT_TRUE(folder.has("not\xffutf8.pdf"));

    const OrdovanExecutionReport undone = undo(organized.journal);
    EXPECT_EQ(undone.movedCount(), organized.movedCount());
    EXPECT_THAT(undone.journal.entries, IsEmpty());
    EXPECT_EQ(tree(), before);
    EXPECT_EQ(folder.count("ordovan+"), 0u);
}

TEST_F(RoundTrip, GivesBackManyFilesAfterTheJournalWasStored) {
    std::vector<TreeItem> items;
    const char* extensions[] = {"pdf", "PNG", "mp3", "tar.gz", "", "unknown"};
    for (int i = 0; i < 2000; ++i) {
        const std::string number = std::to_string(i);
        const std::string extension = extensions[i % 6];
        items.push_back({"f" + std::to_string(i % 37) + "/g" + std::to_string(i % 5) + "/" + number +
                             (extension.empty() ? "" : "." + extension),
                         Kind::file, "content " + number});
    }
    buildOnDisk(folder.path(), items);
    const Tree before = tree();
    const OrdovanExecutionReport organized = organize(plan());
    EXPECT_EQ(organized.movedCount(), 2000u);
    const auto stored = OrdovanJournal::decoded(organized.journal.encoded());
    ASSERT_TRUE(stored);
    EXPECT_EQ(undo(*stored).movedCount(), 2000u);
    EXPECT_EQ(tree(), before);
}

TEST_F(RoundTrip, LeavesAndReportsAFileThatCanNotBeRead) {
    folder.write("closed.pdf", "secret");
    folder.write("open.pdf", "public");
    ::chmod(folder.path("closed.pdf").c_str(), 0);
    ordovan::test::giveToUnprivileged(folder.path());
    const std::string told = ordovan::test::unprivileged([&] {
        std::string all;
        for (const auto& outcome : organize(plan()).outcomes) all += outcome.message + "\n";
        return all;
    });
    EXPECT_EQ(told,
              "Could not move this file; it was left in place. ordovan+ doesn't have permission to change this folder. "
              "Choose the folder again with Choose Folder…, or check its permissions in Finder.\nMoved.\n");
    EXPECT_TRUE(folder.has("closed.pdf"));
    EXPECT_TRUE(folder.has("ordovan+/Documents/open.pdf"));
}

TEST_F(RoundTrip, NeverReplacesADestinationThatAppearsBetweenCheckAndMove) {
    folder.write("a.pdf", "mine");
    fs.setBeforeCall([&](const FaultyFileSystem::Call& call) {
        if (call.operation == Operation::move) folder.write("ordovan+/Documents/a.pdf", "theirs");
    });
    EXPECT_EQ(organize("a.pdf", "Documents/a.pdf").failedCount(), 1u);
    EXPECT_EQ(folder.read("a.pdf"), "mine");
    EXPECT_EQ(folder.read("ordovan+/Documents/a.pdf"), "theirs");
}

TEST_F(RoundTrip, RefusesALinkPlantedOnTheWay) {
    const TempFolder outside;
    folder.write("a.pdf", "mine");
    folder.makeFolder("ordovan+");
    folder.makeLink("ordovan+/Documents", outside.path());
    const auto report = organize("a.pdf", "Documents/a.pdf");
    EXPECT_EQ(report.outcomes[0].message, "A parent folder is a symlink; skipped to stay in scope.");
    EXPECT_EQ(outside.count(), 0u);
}

TEST_F(RoundTrip, RefusesToUndoThroughALinkPlantedSince) {
    const TempFolder outside;
    folder.write("sub/a.pdf", "mine");
    const auto organized = organize("sub/a.pdf", "Documents/a.pdf");
    ::rmdir(folder.path("sub").c_str());
    folder.makeLink("sub", outside.path());
    const auto undone = undo(organized.journal);
    EXPECT_EQ(undone.outcomes[0].message, "A parent folder is a symlink; undo skipped to stay in scope.");
    EXPECT_EQ(undone.journal, organized.journal);
    EXPECT_EQ(outside.count(), 0u);
}

TEST_F(RoundTrip, RefusesToUndoAFileThatWasSavedAnewByRename) {
    folder.write("a.pdf", "text");
    const auto organized = organize("a.pdf", "Documents/a.pdf");
    folder.write("ordovan+/Documents/new", "text");
    ASSERT_EQ(::rename(folder.path("ordovan+/Documents/new").c_str(), folder.path("ordovan+/Documents/a.pdf").c_str()),
              0);
    EXPECT_EQ(undo(organized.journal).outcomes[0].message,
              "A different file now occupies that location; undo skipped.");
}

TEST_F(RoundTripAcrossVolumes, GivesBackTheVeryTree) {
    std::vector<TreeItem> items = oddTree();
    std::erase_if(items, [](const TreeItem& item) { return item.kind == Kind::hardLink; });
    buildOnDisk(folder.path(), items);
    ::chmod(folder.path("readonly.txt").c_str(), 0444);
    ::chmod(folder.path("run.sh").c_str(), 0751);
    setModified(folder.path("plain.pdf"), 1234567890, 123456789);
    const Tree before = tree();
    const OrdovanExecutionReport organized = organize(plan());
    EXPECT_EQ(organized.movedCount(), 34u);
    EXPECT_FALSE(organized.journal.entries.at(0).sameVolume());
    EXPECT_EQ(organized.outcomes.at(0).message, "Copied, verified and moved.");
    EXPECT_EQ(undo(organized.journal).movedCount(), organized.movedCount());
    EXPECT_EQ(tree(), before);
    EXPECT_EQ(volume->root().count("out"), 0u);
}

TEST_F(RoundTrip, GivesBackTheVeryTreeFromAnOutputFolderThatIsAMountPoint) {
    if (!SecondVolume::available()) GTEST_SKIP() << SecondVolume::unavailable;
    buildOnDisk(folder.path(), {"a.pdf = 1", "sub/b.png = 2", "sub/deep/c.txt = 3", ".hidden.zip = 4", "ordovan+/"});
    const Tree before = tree();
    const auto& mounts = ordovan::test::detail::MountNamespace::get();
    ASSERT_TRUE(mounts.mount(folder.path("ordovan+"), "tmpfs", "size=1m,mode=755"));
    const OrdovanExecutionReport organized = organize(plan());
    EXPECT_EQ(organized.movedCount(), 4u);
    EXPECT_EQ(organized.outcomes[0].message, "Copied, verified and moved.");
    EXPECT_EQ(undo(organized.journal).movedCount(), 4u);
    EXPECT_EQ(folder.count("ordovan+"), 0u);
    EXPECT_EQ(tree(), before);
    mounts.unmount(folder.path("ordovan+"));
}

TEST_F(RoundTripAcrossVolumes, LeavesTheSourceAndNoPartialFileWhenTheDiskIsFull) {
    folder.write("big.mov", std::string(2u << 20, 'x'));
    EXPECT_EQ(organize("big.mov", "Videos/big.mov").outcomes[0].message,
              "Could not move this file; it was left in place. The disk is full. Free up some space and try again.");
    EXPECT_EQ(folder.read("big.mov").size(), 2u << 20);
    EXPECT_EQ(volume->root().count("out/Videos"), 0u);
}

TEST_F(RoundTripAcrossVolumes, LeavesTheSourceWhenTheDiskIsReadOnly) {
    folder.write("a.pdf", "mine");
    volume->makeReadOnly();
    EXPECT_EQ(organize("a.pdf", "Documents/a.pdf").outcomes[0].message,
              "Could not move this file; it was left in place. This disk is read-only.");
    EXPECT_EQ(folder.read("a.pdf"), "mine");
}

TEST_F(RoundTripAcrossVolumes, KeepsASourceThatIsEditedDuringTheCopy) {
    folder.write("before.txt", "hello");
    folder.write("after.txt", "hello");
    fs.setBeforeCall([&](const FaultyFileSystem::Call& call) {
        if (call.operation == Operation::copy && call.url == folder.url("before.txt"))
            folder.write("before.txt", "HELLO");
    });
    fs.setAfterCall([&](const FaultyFileSystem::Call& call) {
        if (call.operation == Operation::copy && call.url == folder.url("after.txt"))
            folder.write("after.txt", "hello, world");
    });
    for (const char* name : {"before.txt", "after.txt"}) {
        EXPECT_EQ(organize(name, std::string("Documents/") + name).outcomes[0].message,
                  "Copy verification failed; source kept, copy removed.");
    }
    EXPECT_EQ(folder.read("before.txt"), "HELLO");
    EXPECT_EQ(folder.read("after.txt"), "hello, world");
    EXPECT_EQ(volume->root().count("out/Documents"), 0u);
}

TEST_F(RoundTripAcrossVolumes, NeverReplacesADestinationThatAppearsDuringTheCopy) {
    folder.write("a.pdf", "mine");
    fs.setAfterCall([&](const FaultyFileSystem::Call& call) {
        if (call.operation == Operation::copy) volume->root().write("out/Documents/a.pdf", "theirs");
    });
    EXPECT_EQ(organize("a.pdf", "Documents/a.pdf").failedCount(), 1u);
    EXPECT_EQ(folder.read("a.pdf"), "mine");
    EXPECT_EQ(volume->root().read("out/Documents/a.pdf"), "theirs");
    EXPECT_EQ(volume->root().count("out/Documents"), 1u);
}

TEST_F(RoundTripAcrossVolumes, DiscardsTheCopyWhenTheSourceCanNotBeRemoved) {
    folder.write("locked/a.pdf", "mine");
    volume->root().makeFolder("out/Documents");
    ordovan::test::giveToUnprivileged(folder.path());
    ordovan::test::giveToUnprivileged(volume->path());
    ::chmod(folder.path("locked").c_str(), 0555);
    const std::string told =
        ordovan::test::unprivileged([&] { return organize("locked/a.pdf", "Documents/a.pdf").outcomes[0].message; });
    EXPECT_EQ(told, "Copied and verified, but the original could not be removed; copy discarded to avoid a duplicate.");
    EXPECT_EQ(folder.read("locked/a.pdf"), "mine");
    EXPECT_EQ(volume->root().count("out/Documents"), 0u);
}

TEST_F(RoundTripAcrossVolumes, KeepsTheOrganizedCopyWhenTheOldDiskIsFull) {
    folder.write("a.pdf", "mine");
    const auto organized = organize("a.pdf", "Documents/a.pdf");
    fs.failCall(Operation::copy, 2, ENOSPC);
    const auto undone = undo(organized.journal);
    EXPECT_EQ(undone.outcomes[0].message,
              "Could not restore this file. The disk is full. Free up some space and try again.");
    EXPECT_EQ(volume->root().read("out/Documents/a.pdf"), "mine");
    EXPECT_EQ(undone.journal, organized.journal);
}
