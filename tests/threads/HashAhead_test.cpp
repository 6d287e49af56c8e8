#include "OrdovanCore/platform/HashAhead.h"

#include "OrdovanCore/platform/Descriptor.h"
#include "OrdovanCore/platform/RunFileSystem.h"
#include "OrdovanCore/platform/SystemFileSystem.h"
#include "tests/support/TempFolder.h"
#include "tests/support/Writers.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/stat.h>

#include <atomic>
#include <ctime>
#include <filesystem>
#include <thread>
#include <vector>

using ordovan::HashAheadFileSystem;
using ordovan::RunFileSystem;
using ordovan::test::TempFolder;

namespace {

std::vector<Url> writeFiles(const TempFolder& folder, int count) {
    std::vector<Url> files;
    for (int i = 0; i < count; ++i) {
        files.push_back(folder.write("file " + std::to_string(i), std::string(static_cast<std::size_t>(i) * 37, 'x')));
    }
    return files;
}

struct ::stat factsOf(const Url& file) {
    struct ::stat facts{};
    EXPECT_EQ(::stat(std::string(file.path()).c_str(), &facts), 0);
    return facts;
}

/// For workers that take every time stamp for old enough: their clock is an hour ahead.
HashAheadFileSystem::Options trusting() {
    return {.clock = [] { return static_cast<double>(std::time(nullptr)) + 3600; }, .trustsEveryFileSystem = true};
}

/// Asks for hashes so slowly that the workers come first, until one of theirs was handed out.
std::size_t handedOut(HashAheadFileSystem& ahead, const std::vector<Url>& files) {
    for (const Url& file : files) {
        for (int i = 0; i < 2000; ++i) std::this_thread::yield();
        static_cast<void>(ahead.contentHash(file));
    }
    return ahead.handedOut();
}

}  // namespace

TEST(HashAhead, GivesTheSameHashesAsHashingInTurn) {
    const TempFolder folder;
    const std::vector<Url> files = writeFiles(folder, 400);
    SystemFileSystem disk;
    HashAheadFileSystem ahead(disk, files, trusting());
    for (const Url& file : files) EXPECT_EQ(ahead.contentHash(file).value(), disk.contentHash(file).value());
    for (const Url& file : files) EXPECT_EQ(ahead.contentHash(file).value(), disk.contentHash(file).value());
}

TEST(HashAhead, WaitsForTheRunWhenItIsFarAhead) {
    constexpr std::size_t window = 4096;
    const TempFolder folder;
    std::vector<Url> files;
    for (std::size_t i = 0; i < window + 1500; ++i) files.push_back(folder.write("file " + std::to_string(i), ""));
    SystemFileSystem disk;
    std::atomic<std::size_t> hashed = 0;
    HashAheadFileSystem::Options options = trusting();
    options.clock = [&hashed] {
        ++hashed;
        hashed.notify_one();
        return static_cast<double>(std::time(nullptr)) + 3600;
    };
    HashAheadFileSystem ahead(disk, files, options);
    const auto waitUntil = [&](std::size_t count) {
        for (std::size_t now = hashed; now < count; now = hashed) hashed.wait(now);
    };
    waitUntil(window);
    EXPECT_EQ(hashed, window) << "as far ahead as they go";
    const std::string expected = disk.contentHash(files[0]).value();
    EXPECT_EQ(ahead.contentHash(files[700]).value(), expected);
    EXPECT_EQ(hashed, window) << "woken for a few files";
    EXPECT_EQ(ahead.contentHash(files[window]).value(), expected);
    EXPECT_EQ(ahead.handedOut(), 1U) << "nobody had come to the last one";
    waitUntil(files.size() - 1);
    for (const Url& file : files) EXPECT_EQ(ahead.contentHash(file).value(), expected);
    EXPECT_EQ(ahead.handedOut(), files.size() - 1);
}

TEST(HashAhead, NeverHandsOutTheHashOfAnOlderContent) {
    const TempFolder folder;
    const std::vector<Url> files = writeFiles(folder, 60);
    SystemFileSystem disk;
    HashAheadFileSystem ahead(disk, files, trusting());
    static_cast<void>(ahead.contentHash(files[0]));
    for (int i = 1; i < 60; ++i) {
        // The same size and, set back, the same modification time: only the status-change time tells.
        const struct ::stat before = factsOf(files[static_cast<std::size_t>(i)]);
        const std::string path(files[static_cast<std::size_t>(i)].path());
        const ::timespec times[2] = {before.st_atim, before.st_mtim};
        folder.write("file " + std::to_string(i), std::string(static_cast<std::size_t>(i) * 37, 'y'));
        do {  // until a clock tick later, on systems that stamp by the tick
            ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
        } while (factsOf(files[static_cast<std::size_t>(i)]).st_ctim.tv_nsec == before.st_ctim.tv_nsec);
        const Url& file = files[static_cast<std::size_t>(i)];
        EXPECT_EQ(ahead.contentHash(file).value(), disk.contentHash(file).value());
    }
}

TEST(HashAhead, DoesNotRelyOnStampsThatAreTooYoungToTell) {
    const TempFolder folder;
    const std::vector<Url> files = writeFiles(folder, 200);
    SystemFileSystem disk;
    auto options = trusting();
    options.clock = [] { return 0.0; };  // long before the files changed last
    HashAheadFileSystem ahead(disk, files, options);
    EXPECT_EQ(handedOut(ahead, files), 0U);
}

TEST(HashAhead, DoesNotOpenWhatTheRunMayNotRead) {
    const TempFolder folder;
    const std::vector<Url> files = writeFiles(folder, 200);
    SystemFileSystem disk;
    auto options = trusting();
    options.mayRead = [](const Url&) { return false; };
    HashAheadFileSystem ahead(disk, files, options);
    EXPECT_EQ(handedOut(ahead, files), 0U);
}

TEST(HashAhead, GoesThroughNoLinkInTheFolderOfTheRun) {
    const TempFolder folder;
    folder.makeFolder("root");
    folder.makeFolder("outside");
    folder.makeLink("root/link", folder.path("outside"));
    std::vector<Url> byLink;
    for (int i = 0; i < 200; ++i) {
        folder.write("outside/" + std::to_string(i), "theirs");
        byLink.push_back(folder.url("root/link/" + std::to_string(i)));
    }
    SystemFileSystem disk;
    auto options = trusting();
    {
        HashAheadFileSystem ahead(disk, byLink, options);
        EXPECT_GT(handedOut(ahead, byLink), 0U) << "where they are not opened from a root";
    }
    options.root = folder.path("root");
    HashAheadFileSystem ahead(disk, byLink, options);
    EXPECT_EQ(handedOut(ahead, byLink), 0U);
}

TEST(HashAhead, AsksOnlyAboutFilesOutsideTheFolderOfTheRun) {
    const TempFolder folder;
    const std::vector<Url> files = writeFiles(folder, 200);
    SystemFileSystem disk;
    auto options = trusting();
    options.root = folder.path();
    options.mayRead = [](const Url&) { return false; };
    HashAheadFileSystem ahead(disk, files, options);
    EXPECT_GT(handedOut(ahead, files), 0U);
}

class HashAheadOfFifos : public ::testing::TestWithParam<bool> {};

INSTANTIATE_TEST_SUITE_P(ByPathAndBelowARoot, HashAheadOfFifos, ::testing::Bool());

TEST_P(HashAheadOfFifos, DoesNotOpenThem) {
    const TempFolder folder;
    std::vector<Url> files = writeFiles(folder, 20);
    ASSERT_EQ(::mkfifo(folder.path("fifo").c_str(), 0644), 0);
    files.insert(files.begin(), folder.url("fifo"));
    const ordovan::Descriptor watch(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
    ASSERT_GE(::inotify_add_watch(watch.get(), folder.path("fifo").c_str(), IN_OPEN), 0);
    SystemFileSystem disk;
    {
        auto options = trusting();
        if (GetParam()) options.root = folder.path();
        HashAheadFileSystem ahead(disk, files, options);
        for (std::size_t i = 1; i < files.size(); ++i) static_cast<void>(ahead.contentHash(files[i]));
    }
    char events[512];
    EXPECT_EQ(::read(watch.get(), events, sizeof events), -1) << "something opened the FIFO";
}

TEST(HashAhead, NoticesThatAnotherFileTookThePlace) {
    const TempFolder folder;
    const std::vector<Url> files = writeFiles(folder, 30);
    const std::string other = folder.write("other", "something else").sharedPath().str();
    SystemFileSystem disk;
    HashAheadFileSystem ahead(disk, files, trusting());
    static_cast<void>(ahead.contentHash(files[0]));
    ASSERT_EQ(::rename(other.c_str(), std::string(files[20].path()).c_str()), 0);
    EXPECT_EQ(ahead.contentHash(files[20]).value(), disk.contentHash(files[20]).value());
}

TEST(HashAhead, HandsOutNothingThatTheDiskOfARunDoesNotVouchFor) {
    const TempFolder folder;
    const std::vector<Url> files = writeFiles(folder, 200);
    SystemFileSystem disk;
    auto options = trusting();
    options.vouch = [](const Url&, const struct ::stat&) { return false; };
    HashAheadFileSystem ahead(disk, files, options);
    EXPECT_EQ(handedOut(ahead, files), 0U);
}

TEST(HashAhead, LetsTheDiskOfARunKnowWhatWasHashed) {
    const TempFolder folder;
    const std::vector<Url> files = writeFiles(folder, 200);
    RunFileSystem disk(folder.url());
    auto options = trusting();
    options.vouch = RunFileSystem::voucher(disk);
    HashAheadFileSystem ahead(disk, files, options);
    ASSERT_GT(handedOut(ahead, files), 0U);
    const std::string last(files.back().path());
    folder.write("other", "something else");
    ASSERT_EQ(::rename(folder.path("other").c_str(), last.c_str()), 0);
    EXPECT_EQ(ahead.move(files.back(), folder.url("moved")).error(), OrdovanSystemError::posix(EBUSY));
    EXPECT_TRUE(ahead.move(files[files.size() - 2], folder.url("moved")));
}

TEST(HashAhead, LeavesAFileThatIsBeingWrittenToTheDisk) {
    const TempFolder folder;
    if (!ordovan::test::hasLeases(folder.path())) GTEST_SKIP() << ordovan::test::withoutLeases;
    const std::vector<Url> files = writeFiles(folder, 200);
    const std::string path(files[150].path());
    const ordovan::Descriptor writer = ordovan::Descriptor::open(path.c_str(), O_WRONLY);
    RunFileSystem disk(folder.url());
    HashAheadFileSystem ahead(disk, files, trusting());
    EXPECT_LT(handedOut(ahead, files), files.size());
    EXPECT_EQ(ahead.contentHash(files[150]).error(), OrdovanSystemError::posix(EBUSY));
}

TEST(HashAhead, ReportsAFileThatCanNotBeHashedAsTheDiskDoes) {
    const TempFolder folder;
    std::vector<Url> files = writeFiles(folder, 3);
    files.push_back(folder.url("missing"));
    ASSERT_EQ(::mkfifo(folder.path("fifo").c_str(), 0644), 0);
    files.push_back(folder.url("fifo"));
    SystemFileSystem disk;
    HashAheadFileSystem ahead(disk, files, trusting());
    EXPECT_EQ(ahead.contentHash(files[3]).error(), disk.contentHash(files[3]).error());
    EXPECT_EQ(ahead.contentHash(files[4]).error(), disk.contentHash(files[4]).error());
    EXPECT_TRUE(ahead.contentHash(files[0]).has_value());
}

TEST(HashAhead, HashesFilesItWasNotToldOf) {
    const TempFolder folder;
    const std::vector<Url> files = writeFiles(folder, 3);
    const Url stranger = folder.write("stranger", "abc");
    SystemFileSystem disk;
    HashAheadFileSystem ahead(disk, files, trusting());
    EXPECT_EQ(ahead.contentHash(stranger).value(), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
}

TEST(HashAhead, WorksAheadOfARunThatIsBusy) {
    const TempFolder folder;
    const std::vector<Url> files = writeFiles(folder, 200);
    SystemFileSystem disk;
    HashAheadFileSystem ahead(disk, files, trusting());
    EXPECT_GT(handedOut(ahead, files), 0U);
}

TEST(HashAhead, EndsItsWorkersWhenARunIsAbandoned) {
    const TempFolder folder;
    const std::vector<Url> files = writeFiles(folder, 300);
    const auto threadsBefore = std::distance(std::filesystem::directory_iterator("/proc/self/task"), {});
    SystemFileSystem disk;
    for (int i = 0; i < 20; ++i) {
        HashAheadFileSystem ahead(disk, files, trusting());
        if (i % 2 == 0) static_cast<void>(ahead.contentHash(files[static_cast<std::size_t>(i)]));
    }
    const std::filesystem::directory_iterator threads("/proc/self/task");
    EXPECT_EQ(threadsBefore, std::distance(threads, std::filesystem::directory_iterator()));
}
