// A run leaves a file alone that another program is writing, and says so in the sentence of its step.

#include "OrdovanCore/DuplicateTrasher.h"
#include "OrdovanCore/Executor.h"
#include "OrdovanCore/FileTrasher.h"
#include "OrdovanCore/platform/RunFileSystem.h"
#include "tests/support/Results.h"
#include "tests/support/SecondVolume.h"
#include "tests/support/TempFolder.h"
#include "tests/support/Writers.h"

#include <gtest/gtest.h>

#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

using ordovan::Descriptor;
using ordovan::RunFileSystem;
using ordovan::test::error;
using ordovan::test::SecondVolume;
using ordovan::test::SharedMapping;
using ordovan::test::TempFolder;

namespace {

/// What another program does while the next file is being read.
std::function<void()> duringRead;
/// What it does while the next copy is being flushed.
std::function<void()> duringFlush;

}  // namespace

extern "C" ssize_t read(int file, void* bytes, std::size_t size) {
    if (duringRead) std::exchange(duringRead, nullptr)();
    return ::syscall(SYS_read, file, bytes, size);
}

extern "C" int fsync(int file) {
    if (duringFlush) std::exchange(duringFlush, nullptr)();
    return static_cast<int>(::syscall(SYS_fsync, file));
}

namespace {

constexpr const char* busy = "Could not move this file; it was left in place. The file is in use by another app.";

class FilesInMotion : public testing::Test {
protected:
    void SetUp() override {
        ::setenv("XDG_DATA_HOME", t.path("data").c_str(), 1);
        t.write("root/a", "content");
    }
    void TearDown() override {
        ::unsetenv("XDG_DATA_HOME");
        duringRead = nullptr;
        duringFlush = nullptr;
    }

    [[nodiscard]] Url at(std::string_view name) const { return t.url("root/" + std::string(name)); }
    [[nodiscard]] Descriptor writer(std::string_view name = "a", int flags = O_WRONLY) const {
        return Descriptor::open(t.path("root/" + std::string(name)).c_str(), flags);
    }
    void append(std::string_view text) const {
        const Descriptor file = writer("a", O_WRONLY | O_APPEND);
        ASSERT_EQ(::write(file.get(), text.data(), text.size()), static_cast<::ssize_t>(text.size()));
    }
    OrdovanExecutionReport organize() {
        OrdovanFileProposal proposal;
        proposal.source = at("a");
        proposal.destination = at("ordovan+/Other/a");
        return OrdovanExecutor::apply({{proposal}}, at(""), at("ordovan+"), fs, 1.0);
    }
    OrdovanTrashReport trashBig() {
        const OrdovanFileTrasher::Item item{at("a"), 7};
        return OrdovanFileTrasher::trash({&item, 1}, at(""), fs);
    }

    TempFolder t;
    RunFileSystem fs{t.url("root")};
};

/// For what only a lease can tell.
class OpenFiles : public FilesInMotion {
protected:
    void SetUp() override {
        FilesInMotion::SetUp();
        if (!ordovan::test::hasLeases(t.path())) GTEST_SKIP() << ordovan::test::withoutLeases;
    }
};

TEST_F(OpenFiles, AreNeitherHashedNorCopied) {
    {
        const Descriptor open = writer();
        EXPECT_EQ(error(fs.contentHash(at("a"))), EBUSY);
        EXPECT_EQ(error(fs.copy(at("a"), at("b"))), EBUSY);
        EXPECT_FALSE(t.has("root/b"));
    }
    EXPECT_EQ(error(fs.contentHash(at("a"))), 0);
    EXPECT_EQ(error(fs.copy(at("a"), at("b"))), 0);
}

TEST_F(OpenFiles, AreNotEvenBegunToBeCopied) {
    const Descriptor open = writer();
    bool isBegun = false;
    duringFlush = [&] { isBegun = true; };
    EXPECT_EQ(error(fs.copy(at("a"), at("b"))), EBUSY);
    EXPECT_FALSE(isBegun);
}

TEST_F(OpenFiles, AreThoseThatAreOpenedWhileTheyAreCopied) {
    Descriptor open;
    duringFlush = [&] { open = writer(); };
    EXPECT_EQ(error(fs.copy(at("a"), at("b"))), EBUSY);
    EXPECT_TRUE(open);
    EXPECT_FALSE(t.has("root/b"));
}

TEST_F(OpenFiles, AreThoseThatAreMappedTooAndNotThoseThatAreRead) {
    const Descriptor reader = writer("a", O_RDONLY);
    EXPECT_EQ(error(fs.contentHash(at("a"))), 0);
    const SharedMapping mapping(writer("a", O_RDWR));
    EXPECT_EQ(error(fs.contentHash(at("a"))), EBUSY);
    EXPECT_EQ(error(fs.copy(at("a"), at("b"))), EBUSY);
}

TEST_F(OpenFiles, AreThoseThatAreOpenedMeanwhile) {
    Descriptor open;
    duringRead = [&] { open = writer(); };
    EXPECT_EQ(error(fs.contentHash(at("a"))), EBUSY);
}

TEST_F(OpenFiles, AreWrittenThroughAMappingMeanwhile) {
    {
        SharedMapping mapping(writer("a", O_RDWR));
        mapping.write("1234567");  // from here on the page is written without the system hearing of it
        EXPECT_EQ(error(fs.contentHash(at("a"))), EBUSY);
    }
    EXPECT_EQ(fs.contentHash(at("a")), SystemFileSystem().contentHash(at("a")));
}

TEST_F(OpenFiles, AreNotOrganized) {
    const Descriptor open = writer();
    const auto report = organize();
    EXPECT_EQ(report.outcomes.at(0).message, busy);
    EXPECT_EQ(report.failedCount(), 1u);
    EXPECT_EQ(t.read("root/a"), "content");
}

TEST_F(OpenFiles, AreNotTakenBack) {
    const OrdovanJournal journal = organize().journal;
    ASSERT_EQ(journal.entries.size(), 1u);
    const Descriptor open = writer("ordovan+/Other/a");
    const auto report = OrdovanExecutor::undo(journal, at(""), at("ordovan+"), fs);
    EXPECT_EQ(report.outcomes.at(0).message, "File was modified after organizing; undo skipped to avoid data loss.");
    EXPECT_EQ(report.journal.entries.size(), 1u);
    EXPECT_EQ(t.read("root/ordovan+/Other/a"), "content");
}

TEST_F(OpenFiles, AreNotTrashed) {
    const Descriptor open = writer();
    EXPECT_EQ(trashBig().outcomes.at(0).message, "Couldn't read the file to record it for Put Back; left untouched.");
    EXPECT_EQ(t.read("root/a"), "content");
}

TEST_F(OpenFiles, AreNotTrashedAsExtras) {
    t.write("root/b", "content");
    const OrdovanDuplicateGroup group{*fs.contentHash(at("a")), 7, {at("a"), at("b")}};
    const auto trashed = [&] {
        return OrdovanDuplicateTrasher::trashExtras(group, at("a"), at(""), fs).outcomes.at(0).message;
    };
    {
        const Descriptor open = writer("b");
        EXPECT_EQ(trashed(), "No longer identical to the copy you're keeping; left untouched.");
    }
    {
        const Descriptor open = writer("a");
        EXPECT_EQ(trashed(), "The copy you chose to keep changed or is missing; nothing was moved.");
    }
    EXPECT_EQ(trashed(), "Moved to the Trash.");
}

TEST_F(OpenFiles, AreNotPutBackFromTheTrash) {
    const OrdovanTrashRecord record = trashBig().record;
    ASSERT_EQ(record.entries.size(), 1u);
    const Descriptor open = Descriptor::open(t.path("data/Trash/files/a").c_str(), O_RDWR);
    const auto report = OrdovanDuplicateTrasher::restore(record, at(""), fs);
    EXPECT_EQ(report.outcomes.at(0).message, "The trashed file changed; restore skipped.");
    EXPECT_EQ(t.read("data/Trash/files/a"), "content");
}

TEST_F(OpenFiles, StayWhenTheyAreOpenedWhileTheyCrossVolumes) {
    if (!SecondVolume::available()) GTEST_SKIP() << SecondVolume::unavailable;
    const SecondVolume other;
    ASSERT_EQ(error(fs.contentHash(at("a"))), 0);
    const Descriptor open = writer();
    EXPECT_EQ(error(fs.copy(at("a"), other.url("a"))), EBUSY);
    EXPECT_EQ(other.root().count(), 0u);
}

TEST_F(OpenFiles, AreNoConcernOfPreviewsAndSearches) {
    const Descriptor open = writer();
    SystemFileSystem disk;
    EXPECT_EQ(error(disk.contentHash(at("a"))), 0);
    EXPECT_EQ(error(disk.copy(at("a"), at("b"))), 0);
}

TEST_F(OpenFiles, AreNotReadInPieces) {
    char piece[4];
    {
        const Descriptor open = writer();
        EXPECT_EQ(error(fs.open(at("a"))), EBUSY);
    }
    const auto file = fs.open(at("a")).value();
    EXPECT_EQ(file->read(0, piece), 4u);
    EXPECT_EQ(file->read(4, piece), 3u);
    const Descriptor open = writer();
    EXPECT_EQ(error(file->read(7, piece)), EBUSY);
}

TEST_F(FilesInMotion, AreKnownWhenTheyWereReadInPieces) {
    char piece[16];
    const auto file = fs.open(at("a")).value();
    EXPECT_EQ(file->read(0, piece), 7u);
    EXPECT_EQ(file->read(7, piece), 0u);
    t.write("root/fresh", "another");
    ASSERT_EQ(::rename(t.path("root/fresh").c_str(), t.path("root/a").c_str()), 0);
    EXPECT_EQ(error(fs.move(at("a"), at("b"))), EBUSY);
    EXPECT_EQ(error(fs.open(at("missing"))), ENOENT);
}

TEST_F(FilesInMotion, AreNotReadInPiecesWhileTheyGrow) {
    char piece[16];
    const auto file = fs.open(at("a")).value();
    EXPECT_EQ(file->read(0, piece), 7u);
    append("more");
    EXPECT_EQ(file->read(7, piece), 4u);
    EXPECT_EQ(error(file->read(11, piece)), EBUSY);
}

TEST_F(FilesInMotion, AreNotHashedWhileTheyGrow) {
    duringRead = [&] { append(" and more"); };
    EXPECT_EQ(error(fs.contentHash(at("a"))), EBUSY);
    EXPECT_EQ(fs.contentHash(at("a")), SystemFileSystem().contentHash(at("a")));
}

TEST_F(FilesInMotion, AreNotHashedWhileTheyAreReplaced) {
    t.write("root/fresh", "another");
    duringRead = [&] { EXPECT_EQ(::rename(t.path("root/fresh").c_str(), t.path("root/a").c_str()), 0); };
    EXPECT_EQ(error(fs.contentHash(at("a"))), EBUSY);
}

TEST_F(FilesInMotion, AreNotOrganizedWhileTheyGrow) {
    duringRead = [&] { append(" and more"); };
    EXPECT_EQ(organize().outcomes.at(0).message, busy);
    EXPECT_EQ(t.read("root/a"), "content and more");
    EXPECT_EQ(organize().outcomes.at(0).message, "Moved.");
}

}  // namespace
