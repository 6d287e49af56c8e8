#include "OrdovanCore/Duplicates.h"
#include "OrdovanCore/platform/ContentReader.h"
#include "OrdovanCore/platform/SystemFileSystem.h"
#include "OrdovanCore/testing/MemoryContentReader.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

using ordovan::test::TempFolder;
using ordovan::testing::HashingFileSystem;
using ordovan::testing::MemoryContentReader;

namespace {

using Entries = std::vector<OrdovanInventoryEntry>;

/// Many files of few sizes, small and large, with hard links, in memory.
Entries fill(MemoryContentReader& contents, unsigned seed) {
    std::mt19937 random(seed);
    const std::size_t sizes[] = {0, 40, 41, 70'000, 600'000, 600'000};
    Entries entries;
    for (int i = 0; i < 500; ++i) {
        const std::string path = "/" + std::to_string(i);
        const std::size_t size = sizes[random() % (i < 450 ? 4 : 6)];
        std::string content(size, 's');
        if (size > 0 && random() % 2 == 0) content[random() % size] = 'x';
        if (size == 40 && random() % 4 == 0) {
            contents.hardLink(path, "/linked");
        } else {
            contents.write(path, content);
        }
        entries.push_back({.url = Url::file(path), .byteSize = static_cast<std::int64_t>(size)});
    }
    return entries;
}

std::ptrdiff_t threads() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/task"), {});
}

}  // namespace

TEST(DuplicateThreads, GiveTheSameReportHoweverManyThereAre) {
    for (unsigned seed = 0; seed < 5; ++seed) {
        MemoryContentReader contents;
        contents.write("/linked", std::string(40, 'l'));
        const Entries entries = fill(contents, seed);
        HashingFileSystem fs(contents);
        const OrdovanDuplicateReport expected = OrdovanDuplicateFinder::find(entries, fs);
        for (const unsigned workers : {1U, 2U, 4U, 9U}) {
            EXPECT_EQ(OrdovanDuplicateFinder::find(entries, contents, {.workers = workers}), expected);
        }
    }
}

TEST(DuplicateThreads, ToldToStopEndWithoutAReport) {
    MemoryContentReader contents;
    contents.write("/linked", "");
    const Entries entries = fill(contents, 7);
    const auto threadsBefore = threads();
    for (int allowed = 1; allowed < 500; allowed += 13) {
        std::atomic<int> asked = 0;
        const auto report = OrdovanDuplicateFinder::find(
            entries, contents, {.shouldContinue = [&] { return ++asked <= allowed; }, .workers = 4});
        EXPECT_FALSE(report.has_value());
    }
    EXPECT_EQ(threads(), threadsBefore);
}

TEST(DuplicateThreads, TellProgressOneAtATime) {
    MemoryContentReader contents;
    contents.write("/linked", "");
    const Entries entries = fill(contents, 8);
    OrdovanDuplicateProgress last;  // not guarded: the search does that
    const auto progressed = [&](const OrdovanDuplicateProgress& progress) {
        EXPECT_GE(progress.filesDone, last.filesDone);
        EXPECT_GE(progress.bytesDone, last.bytesDone);
        last = progress;
    };
    ASSERT_TRUE(OrdovanDuplicateFinder::find(entries, contents, {.progressed = progressed, .workers = 4}));
    EXPECT_EQ(last.filesDone, last.filesTotal);
    EXPECT_EQ(last.bytesDone, last.bytesTotal);
}

TEST(DuplicateThreads, AgreeWithTheDiskHashedInTurn) {
    const TempFolder folder;
    Entries entries;
    for (int i = 0; i < 400; ++i) {
        const std::string content(i % 7 == 0 ? 300'000U : static_cast<std::size_t>(i % 5) * 1000U,
                                  i % 3 == 0 ? 'a' : 'b');
        const Url url = folder.write("f" + std::to_string(i % 20) + "/file" + std::to_string(i), content);
        entries.push_back({.url = url, .byteSize = static_cast<std::int64_t>(content.size())});
    }
    SystemContentReader reader;
    SystemFileSystem fs;
    EXPECT_EQ(OrdovanDuplicateFinder::find(entries, reader, {.workers = 4}), OrdovanDuplicateFinder::find(entries, fs));
}

TEST(DuplicateThreads, AreRightAboutUntouchedFilesWhileOthersAreWritten) {
    const TempFolder folder;
    Entries entries;
    for (int i = 0; i < 40; ++i) {
        const std::string name = (i % 2 == 0 ? "still" : "busy") + std::to_string(i);
        entries.push_back(
            {.url = folder.write(name, std::string(700'000, i % 4 < 2 ? 'a' : 'b')), .byteSize = 700'000});
    }
    std::jthread writer([&](const std::stop_token& stop) {
        for (std::size_t i = 1; !stop.stop_requested(); i = (i + 2) % entries.size()) {
            const int file = ::open(std::string(entries[i].url.path()).c_str(), O_WRONLY);
            EXPECT_EQ(::ftruncate(file, i % 3 == 0 ? 699'999 : 700'000), 0);
            EXPECT_EQ(::pwrite(file, "changed", 7, static_cast<::off_t>(i * 10'000)), 7);
            ::close(file);
        }
    });
    SystemContentReader reader;
    for (int round = 0; round < 10; ++round) {
        const OrdovanDuplicateReport report = OrdovanDuplicateFinder::find(entries, reader, {}).value();
        std::size_t stillFiles = 0, groupsWithThem = 0;
        for (const OrdovanDuplicateGroup& group : report.groups) {
            std::size_t still = 0;
            for (const Url& file : group.files) still += file.lastPathComponent().starts_with("still") ? 1 : 0;
            stillFiles += still;
            groupsWithThem += still > 0 ? 1 : 0;
        }
        EXPECT_EQ(stillFiles, 20U);
        EXPECT_EQ(groupsWithThem, 2U);
    }
}
