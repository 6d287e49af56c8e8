#include "OrdovanCore/platform/HashAhead.h"

#include "OrdovanCore/platform/SystemFileSystem.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <filesystem>
#include <thread>
#include <vector>

using ordovan::HashAheadFileSystem;
using ordovan::test::TempFolder;

namespace {

/// Writes files and waits until their time stamps are old enough to be relied on.
std::vector<Url> writeFiles(const TempFolder& folder, int count) {
    std::vector<Url> files;
    for (int i = 0; i < count; ++i) {
        files.push_back(folder.write("file " + std::to_string(i), std::string(static_cast<std::size_t>(i) * 37, 'x')));
    }
    ::timespec start, now;
    ::clock_gettime(CLOCK_REALTIME, &start);
    do {
        std::this_thread::yield();
        ::clock_gettime(CLOCK_REALTIME, &now);
    } while (static_cast<double>(now.tv_sec - start.tv_sec) + static_cast<double>(now.tv_nsec - start.tv_nsec) * 1e-9 < 0.15);
    return files;
}

}  // namespace

TEST(HashAhead, GivesTheSameHashesAsHashingInTurn) {
    const TempFolder folder;
    const std::vector<Url> files = writeFiles(folder, 400);
    SystemFileSystem disk;
    HashAheadFileSystem ahead(disk, files);
    for (const Url& file : files) EXPECT_EQ(ahead.contentHash(file).value(), disk.contentHash(file).value());
    for (const Url& file : files) EXPECT_EQ(ahead.contentHash(file).value(), disk.contentHash(file).value());
}

TEST(HashAhead, NeverHandsOutTheHashOfAnOlderContent) {
    const TempFolder folder;
    const std::vector<Url> files = writeFiles(folder, 60);
    SystemFileSystem disk;
    HashAheadFileSystem ahead(disk, files);
    static_cast<void>(ahead.contentHash(files[0]));
    for (int i = 1; i < 60; ++i) {
        // The same size and, set back, the same modification time: only the status-change time tells.
        struct ::stat before;
        ASSERT_EQ(::stat(std::string(files[i].path()).c_str(), &before), 0);
        folder.write("file " + std::to_string(i), std::string(static_cast<std::size_t>(i) * 37, 'y'));
        const ::timespec times[2] = {before.st_atim, before.st_mtim};
        ASSERT_EQ(::utimensat(AT_FDCWD, std::string(files[i].path()).c_str(), times, 0), 0);
        EXPECT_EQ(ahead.contentHash(files[i]).value(), disk.contentHash(files[i]).value());
    }
}

TEST(HashAhead, NoticesThatAnotherFileTookThePlace) {
    const TempFolder folder;
    const std::vector<Url> files = writeFiles(folder, 30);
    const std::string other = folder.write("other", "something else").sharedPath().str();
    SystemFileSystem disk;
    HashAheadFileSystem ahead(disk, files);
    static_cast<void>(ahead.contentHash(files[0]));
    ASSERT_EQ(::rename(other.c_str(), std::string(files[20].path()).c_str()), 0);
    EXPECT_EQ(ahead.contentHash(files[20]).value(), disk.contentHash(files[20]).value());
}

TEST(HashAhead, ReportsAFileThatCanNotBeHashedAsTheDiskDoes) {
    const TempFolder folder;
    std::vector<Url> files = writeFiles(folder, 3);
    files.push_back(folder.url("missing"));
    ASSERT_EQ(::mkfifo(folder.path("fifo").c_str(), 0644), 0);
    files.push_back(folder.url("fifo"));
    SystemFileSystem disk;
    HashAheadFileSystem ahead(disk, files);
    EXPECT_EQ(ahead.contentHash(files[3]).error(), disk.contentHash(files[3]).error());
    EXPECT_EQ(ahead.contentHash(files[4]).error(), disk.contentHash(files[4]).error());
    EXPECT_TRUE(ahead.contentHash(files[0]).has_value());
}

TEST(HashAhead, HashesFilesItWasNotToldOf) {
    const TempFolder folder;
    const std::vector<Url> files = writeFiles(folder, 3);
    const Url stranger = folder.write("stranger", "abc");
    SystemFileSystem disk;
    HashAheadFileSystem ahead(disk, files);
    EXPECT_EQ(ahead.contentHash(stranger).value(), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
}

TEST(HashAhead, WorksAheadOfARunThatIsBusy) {
    const TempFolder folder;
    const std::vector<Url> files = writeFiles(folder, 50);
    SystemFileSystem disk;
    HashAheadFileSystem ahead(disk, files);
    for (const Url& file : files) {
        for (int i = 0; i < 200; ++i) std::this_thread::yield();
        static_cast<void>(ahead.contentHash(file));
    }
    EXPECT_GT(ahead.handedOut(), 0U);
}

TEST(HashAhead, EndsItsWorkersWhenARunIsAbandoned) {
    const TempFolder folder;
    const std::vector<Url> files = writeFiles(folder, 300);
    const auto threadsBefore = std::distance(std::filesystem::directory_iterator("/proc/self/task"), {});
    SystemFileSystem disk;
    for (int i = 0; i < 20; ++i) {
        HashAheadFileSystem ahead(disk, files);
        if (i % 2 == 0) static_cast<void>(ahead.contentHash(files[static_cast<std::size_t>(i)]));
    }
    const std::filesystem::directory_iterator threads("/proc/self/task");
    EXPECT_EQ(threadsBefore, std::distance(threads, std::filesystem::directory_iterator()));
}
