#include "OrdovanCore/platform/FileRecordStorage.h"

#include "tests/support/Flushes.h"
#include "tests/support/Results.h"
#include "tests/support/SecondVolume.h"
#include "tests/support/TempFolder.h"
#include "tests/support/Unprivileged.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

using ordovan::FileRecordStorage;
using ordovan::RecordStorage;
using ordovan::test::error;
using ordovan::test::errorUnprivileged;
using ordovan::test::Flushes;
using ordovan::test::giveToUnprivileged;
using ordovan::test::SecondVolume;
using ordovan::test::TempFolder;

namespace {

unsigned modeOf(const std::string& path) {
    struct ::stat facts{};
    EXPECT_EQ(::lstat(path.c_str(), &facts), 0) << path;
    return facts.st_mode & 07777;
}

RecordStorage::Producer text(std::string document) {
    return [document = std::move(document)](const RecordStorage::Sink& sink) { return sink(document); };
}

class FileRecords : public testing::Test {
protected:
    FileRecords() { Flushes::reset(); }
    ~FileRecords() override { Flushes::reset(); }

    std::string contentOf(const Url& file) {
        std::string content;
        const auto result = storage.read(file, [&](std::string_view piece) {
            content += piece;
            return true;
        });
        EXPECT_EQ(error(result), 0);
        return content;
    }

    TempFolder t;
    FileRecordStorage storage;
};

TEST_F(FileRecords, AreReadAsTheyWereWritten) {
    std::string document;
    const auto produce = [&](const RecordStorage::Sink& sink) {
        for (const std::size_t size : {0, 1, 100, 300'000, 7, 262'144, 5, 1'000'000}) {
            const std::string piece(size, static_cast<char>('a' + document.size() % 26));
            document += piece;
            if (!sink(piece)) return false;
        }
        return true;
    };
    ASSERT_EQ(error(storage.write(t.url("record"), produce)), 0);
    EXPECT_EQ(contentOf(t.url("record")), document);
}

TEST_F(FileRecords, MayBeEmpty) {
    ASSERT_EQ(error(storage.write(t.url("record"), text(""))), 0);
    EXPECT_EQ(contentOf(t.url("record")), "");
}

TEST_F(FileRecords, ComeInPiecesOfAQuarterMebibyte) {
    t.write("record", std::string(600'000, 'x'));
    std::vector<std::size_t> sizes;
    const auto result = storage.read(t.url("record"), [&](std::string_view piece) {
        sizes.push_back(piece.size());
        return true;
    });
    EXPECT_EQ(error(result), 0);
    EXPECT_EQ(sizes, (std::vector<std::size_t>{262'144, 262'144, 75'712}));
}

TEST_F(FileRecords, ReplaceTheOldDocument) {
    t.write("record", "a longer old document");
    ASSERT_EQ(error(storage.write(t.url("record"), text("new"))), 0);
    EXPECT_EQ(t.read("record"), "new");
    EXPECT_EQ(t.count(), 1u);
}

TEST_F(FileRecords, AreForTheirOwnerAlone) {
    const ::mode_t before = ::umask(0);
    t.makeFolder("there");
    ::chmod(t.path("there").c_str(), 0755);
    ASSERT_EQ(error(storage.write(t.url("there/made/too/record"), text("new"))), 0);
    EXPECT_EQ(modeOf(t.path("there/made/too/record")), 0600u);
    EXPECT_EQ(modeOf(t.path("there/made/too")), 0700u);
    EXPECT_EQ(modeOf(t.path("there/made")), 0700u);
    EXPECT_EQ(modeOf(t.path("there")), 0755u);
    ::umask(0777);
    EXPECT_EQ(error(storage.write(t.url("there/strict"), text("new"))), 0);
    ::umask(before);
    EXPECT_EQ(modeOf(t.path("there/strict")), 0600u);
}

TEST_F(FileRecords, AreOnDiskBeforeTheyBearTheirNameAndTheNameAfterwards) {
    bool named = true;
    Flushes::failing = [&](const std::string&) {
        if (Flushes::paths.size() == 1) named = t.has("record");
        return 0;
    };
    ASSERT_EQ(error(storage.write(t.url("record"), text("new"))), 0);
    ASSERT_EQ(Flushes::paths.size(), 2u);
    EXPECT_TRUE(Flushes::paths[0].starts_with(t.path(".record."))) << Flushes::paths[0];
    EXPECT_FALSE(named);
    EXPECT_EQ(Flushes::paths[1], t.path());
}

TEST_F(FileRecords, StandAsTheyWereWhenTheProducerGivesUp) {
    t.write("record", "old");
    const auto giveUp = [](const RecordStorage::Sink& sink) { return sink("half") && false; };
    EXPECT_EQ(error(storage.write(t.url("record"), giveUp)), ECANCELED);
    EXPECT_EQ(t.read("record"), "old");
    EXPECT_EQ(t.count(), 1u);
}

TEST_F(FileRecords, StandAsTheyWereWhenTheNewOneCanNotBeFlushed) {
    t.write("record", "old");
    Flushes::failing = [](const std::string&) { return EIO; };
    EXPECT_EQ(error(storage.write(t.url("record"), text("new"))), EIO);
    EXPECT_EQ(t.read("record"), "old");
    EXPECT_EQ(t.count(), 1u);
}

TEST_F(FileRecords, TellWhenTheirNameCanNotBeFlushed) {
    Flushes::failing = [&](const std::string& path) { return path == t.path() ? EIO : 0; };
    EXPECT_EQ(error(storage.write(t.url("record"), text("new"))), EIO);
    EXPECT_EQ(t.read("record"), "new");
    EXPECT_EQ(t.count(), 1u);
}

TEST_F(FileRecords, StandAsTheyWereOnAFullVolume) {
    if (!SecondVolume::available()) GTEST_SKIP() << SecondVolume::unavailable;
    const SecondVolume small(1 << 20);
    small.root().write("record", "old");
    int pieces = 0;
    const auto endless = [&](const RecordStorage::Sink& sink) {
        while (sink(std::string(10'000, 'x'))) ++pieces;
        return true;  // a producer that does not tell
    };
    EXPECT_EQ(error(storage.write(small.url("record"), endless)), ENOSPC);
    EXPECT_LT(pieces, 200);
    EXPECT_EQ(small.root().read("record"), "old");
    EXPECT_EQ(small.root().count(), 1u);
}

TEST_F(FileRecords, LeaveNoTemporaryWhereAFolderBearsTheName) {
    t.makeFolder("record");
    EXPECT_EQ(error(storage.write(t.url("record"), text("new"))), EISDIR);
    EXPECT_EQ(t.count(), 1u);
}

TEST_F(FileRecords, AreNotWrittenWhereTheFolderMayNotChange) {
    t.write("locked/record", "old");
    giveToUnprivileged(t.path());
    ::chmod(t.path("locked").c_str(), 0500);
    EXPECT_EQ(errorUnprivileged([&] { return storage.write(t.url("locked/record"), text("new")); }), EACCES);
    EXPECT_EQ(errorUnprivileged([&] { return storage.write(t.url("locked/a/record"), text("new")); }), EACCES);
    EXPECT_EQ(errorUnprivileged([&] { return storage.remove(t.url("locked/record")); }), EACCES);
    EXPECT_EQ(t.read("locked/record"), "old");
}

TEST_F(FileRecords, MayHaveAVeryLongName) {
    const std::string name(255, 'r');
    ASSERT_EQ(error(storage.write(t.url(name), text("new"))), 0);
    EXPECT_EQ(t.read(name), "new");
}

TEST_F(FileRecords, LeftHalfWrittenByADeadProcessAreSweptUp) {
    t.write("record", "old");
    const ::pid_t child = ::fork();
    if (child == 0) {
        static_cast<void>(storage.write(t.url("record"), [](const RecordStorage::Sink& sink) -> bool {
            sink(std::string(300'000, 'x'));
            ::_exit(0);
        }));
    }
    ::waitpid(child, nullptr, 0);
    ASSERT_EQ(t.count(), 2u) << "the old document and half of the new one";
    EXPECT_EQ(error(storage.write(t.url("record"), text("new"))), 0);
    EXPECT_EQ(t.read("record"), "new");
    EXPECT_EQ(t.count(), 1u);
}

TEST_F(FileRecords, BeingWrittenAreNotSweptUp) {
    const auto writeMeanwhile = [&](const RecordStorage::Sink& sink) {
        EXPECT_EQ(error(storage.write(t.url("record"), text("inner"))), 0);
        EXPECT_EQ(t.read("record"), "inner");
        return sink("outer");
    };
    EXPECT_EQ(error(storage.write(t.url("record"), writeMeanwhile)), 0);
    EXPECT_EQ(t.read("record"), "outer");
    EXPECT_EQ(t.count(), 1u);
}

TEST_F(FileRecords, SweepNothingElseUp) {
    const std::string uuid = "9D2B1A5E-3C4F-4E6A-8B7C-0123456789AB";
    for (const std::string& name :
         {".other." + uuid, std::string(".record.txt"), "record." + uuid, ".record." + uuid + "0"}) {
        t.write(name, "kept");
    }
    EXPECT_EQ(error(storage.write(t.url("record"), text("new"))), 0);
    EXPECT_EQ(t.count(), 5u);
}

TEST_F(FileRecords, ThatAreNotThereSaySo) {
    const auto sink = [](std::string_view) { return true; };
    EXPECT_EQ(error(storage.read(t.url("record"), sink)), ENOENT);
    EXPECT_EQ(error(storage.read(t.url("missing/record"), sink)), ENOENT);
    EXPECT_EQ(error(storage.remove(t.url("record"))), 0);
    EXPECT_EQ(error(storage.setAside(t.url("record"), t.url("aside"))), ENOENT);
}

TEST_F(FileRecords, ThatAreNoFilesAreRefused) {
    t.write("file", "content");
    t.makeLink("link", "file");
    t.makeFolder("folder");
    ::mkfifo(t.path("pipe").c_str(), 0600);
    for (const char* name : {"link", "folder", "pipe"}) {
        const auto sink = [](std::string_view) { return true; };
        EXPECT_EQ(error(storage.read(t.url(name), sink)), EINVAL) << name;
    }
}

TEST_F(FileRecords, AreNeverWrittenThroughALink) {
    t.write("file", "content");
    t.makeLink("record", "file");
    EXPECT_EQ(error(storage.write(t.url("record"), text("new"))), 0);
    EXPECT_EQ(t.read("file"), "content");
    EXPECT_EQ(contentOf(t.url("record")), "new");
}

TEST_F(FileRecords, StopWhenTheReaderHasEnough) {
    t.write("record", std::string(1'000'000, 'x'));
    int pieces = 0;
    const auto once = [&](std::string_view) { return ++pieces < 2; };
    EXPECT_EQ(error(storage.read(t.url("record"), once)), ECANCELED);
    EXPECT_EQ(pieces, 2);
}

TEST_F(FileRecords, AreRemoved) {
    t.write("record", "old");
    EXPECT_EQ(error(storage.remove(t.url("record"))), 0);
    EXPECT_EQ(Flushes::paths, std::vector{t.path()});
    EXPECT_EQ(error(storage.remove(t.url("record"))), 0);
    EXPECT_EQ(Flushes::paths.size(), 1U) << "nothing has changed";
    EXPECT_EQ(t.count(), 0u);
}

TEST_F(FileRecords, AreRemovedThoughTheirFolderCanNotBeFlushed) {
    t.write("record", "old");
    Flushes::failing = [](const std::string&) { return EIO; };
    EXPECT_EQ(error(storage.remove(t.url("record"))), 0);
    EXPECT_EQ(t.count(), 0u);
}

TEST_F(FileRecords, AreSetAsideUnderAFreeNameOnly) {
    t.write("record", "bad");
    t.write("taken", "kept");
    EXPECT_EQ(error(storage.setAside(t.url("record"), t.url("taken"))), EEXIST);
    EXPECT_EQ(t.read("taken"), "kept");
    EXPECT_EQ(error(storage.setAside(t.url("record"), t.url("free"))), 0);
    EXPECT_EQ(t.read("free"), "bad");
    EXPECT_FALSE(t.has("record"));
}

TEST_F(FileRecords, WantAnAbsoluteFilePath) {
    const auto sink = [](std::string_view) { return true; };
    for (const Url& url : {Url::file("record"), Url::parse("https://host/record"), Url()}) {
        EXPECT_EQ(error(storage.read(url, sink)), EINVAL) << url;
        EXPECT_EQ(error(storage.write(url, text("new"))), EINVAL) << url;
        EXPECT_EQ(error(storage.remove(url)), EINVAL) << url;
        EXPECT_EQ(error(storage.setAside(url, t.url("aside"))), EINVAL) << url;
    }
}

// Notes.

TEST_F(FileRecords, TakeNotesAtTheirEnd) {
    ASSERT_EQ(error(storage.write(t.url("record"), text("head\n"))), 0);
    auto notes = storage.openNotes(t.url("record"));
    ASSERT_TRUE(notes);
    EXPECT_EQ(error((*notes)->append("one\n")), 0);
    EXPECT_EQ(error((*notes)->append(std::string(300'000, 'x'))), 0);
    EXPECT_EQ(contentOf(t.url("record")), "head\none\n" + std::string(300'000, 'x'));
}

TEST_F(FileRecords, TakeNotesOfOneWriterAtATime) {
    ASSERT_EQ(error(storage.write(t.url("record"), text("head\n"))), 0);
    auto notes = storage.openNotes(t.url("record"));
    ASSERT_TRUE(notes);
    EXPECT_EQ(error(storage.openNotes(t.url("record"))), EWOULDBLOCK);
    notes->reset();
    EXPECT_EQ(error(storage.openNotes(t.url("record"))), 0);
}

TEST_F(FileRecords, FlushTheirNotesWhenTold) {
    ASSERT_EQ(error(storage.write(t.url("record"), text("head\n"))), 0);
    auto notes = storage.openNotes(t.url("record"));
    ASSERT_TRUE(notes);
    EXPECT_EQ(error((*notes)->append("one\n")), 0);
    EXPECT_EQ(error((*notes)->sync()), 0);
}

TEST_F(FileRecords, TakeNotesOnlyWhereADocumentStands) {
    t.makeFolder("folder");
    t.makeLink("link", t.path("record"));
    ASSERT_EQ(::mkfifo(t.path("fifo").c_str(), 0600), 0);
    EXPECT_EQ(error(storage.openNotes(t.url("record"))), ENOENT);
    EXPECT_EQ(error(storage.openNotes(t.url("folder"))), EINVAL);
    EXPECT_EQ(error(storage.openNotes(t.url("link"))), EINVAL);
    EXPECT_EQ(error(storage.openNotes(t.url("fifo"))), EINVAL);
    EXPECT_EQ(error(storage.openNotes(Url::file("relative"))), EINVAL);
    EXPECT_FALSE(t.has("record"));
}

TEST_F(FileRecords, SayWhenANoteFindsNoRoom) {
    if (!SecondVolume::available()) GTEST_SKIP() << SecondVolume::unavailable;
    SecondVolume volume(64 << 10);
    const Url record = Url::file(volume.path() + "/record");
    ASSERT_EQ(error(storage.write(record, text("head\n"))), 0);
    auto notes = storage.openNotes(record);
    ASSERT_TRUE(notes);
    EXPECT_EQ(error((*notes)->append(std::string(200 << 10, 'x'))), ENOSPC);
}

}  // namespace
