// Failures that a sound system does not show: of functions that look around, when what they look at was there a moment
// ago.

#include "OrdovanCore/platform/DirectoryReader.h"
#include "OrdovanCore/platform/DocumentWriter.h"
#include "OrdovanCore/platform/EmptyFolder.h"
#include "OrdovanCore/platform/FileRecordStorage.h"
#include "OrdovanCore/platform/RealPath.h"
#include "OrdovanCore/platform/RunFileSystem.h"
#include "OrdovanCore/platform/SystemFileSystem.h"
#include "OrdovanCore/platform/TrashSearch.h"
#include "OrdovanCore/platform/UserDatabase.h"
#include "OrdovanCore/platform/Volumes.h"
#include "OrdovanCore/testing/TreeBuilder.h"
#include "tests/support/FailingCalls.h"
#include "tests/support/Results.h"
#include "tests/support/SecondVolume.h"
#include "tests/support/TempFolder.h"

#include <dirent.h>
#include <gtest/gtest.h>
#include <linux/magic.h>
#include <pwd.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>

using ordovan::test::error;
using ordovan::test::FailingCall;
using ordovan::test::SecondVolume;
using ordovan::test::TempFolder;
using ordovan::testing::buildOnDisk;

namespace {

/// The type of every file system, in place of the real ones.
std::optional<long> typeToTell;

}  // namespace

// NOLINTBEGIN: the C library's names and signatures
ORDOVAN_FAILING(ssize_t, getdents64, (int folder, void* entries, size_t size) noexcept, folder, entries, size)
ORDOVAN_FAILING(int, statx, (int folder, const char* path, int flags, unsigned mask, struct statx* facts) noexcept,
                folder, path, flags, mask, facts)
ORDOVAN_FAILING(int, fstat, (int file, struct stat* facts) noexcept, file, facts)
ORDOVAN_FAILING(int, fstatat, (int folder, const char* path, struct stat* facts, int flags) noexcept, folder, path,
                facts, flags)
ORDOVAN_FAILING(int, unlink, (const char* path) noexcept, path)
ORDOVAN_FAILING(ssize_t, read, (int file, void* bytes, size_t count), file, bytes, count)
ORDOVAN_FAILING(ssize_t, write, (int file, const void* bytes, size_t count), file, bytes, count)
ORDOVAN_FAILING(ssize_t, readlink, (const char* path, char* text, size_t size) noexcept, path, text, size)
ORDOVAN_FAILING_POINTER(DIR*, fdopendir, (int folder), folder)
ORDOVAN_FAILING_POINTER(DIR*, opendir, (const char* path), path)
ORDOVAN_FAILING_POINTER(struct dirent*, readdir, (DIR * listing), listing)
ORDOVAN_FAILING_POINTER(char*, realpath, (const char* path, char* resolved) noexcept, path, resolved)

extern "C" int fcntl(int file, int command, ...) {
    static auto* const real = reinterpret_cast<int (*)(int, int, void*)>(::dlsym(RTLD_NEXT, "fcntl"));
    std::va_list rest;
    va_start(rest, command);
    void* const argument = va_arg(rest, void*);
    va_end(rest);
    return FailingCall::befalls("fcntl") ? -1 : real(file, command, argument);
}
extern "C" int fstatfs(int file, struct statfs* volume) noexcept {
    static auto* const real = reinterpret_cast<decltype(&::fstatfs)>(::dlsym(RTLD_NEXT, "fstatfs"));
    if (FailingCall::befalls("fstatfs")) return -1;
    const int result = real(file, volume);
    if (typeToTell) volume->f_type = *typeToTell;
    return result;
}
// This one returns its error.
extern "C" int getpwuid_r(uid_t user, struct passwd* entry, char* space, size_t size, struct passwd** found) {
    static auto* const real = reinterpret_cast<decltype(&::getpwuid_r)>(::dlsym(RTLD_NEXT, "getpwuid_r"));
    return FailingCall::befalls("getpwuid_r") ? errno : real(user, entry, space, size, found);
}
// NOLINTEND

namespace {

TEST(PlatformFailures, OfListingAFolderAreTold) {
    const TempFolder t;
    buildOnDisk(t.path(), {"a", "sub/b"});
    for (const char* function : {"getdents64", "fstat"}) {
        FileManagerDirectoryReader reader;
        const FailingCall failing(function, EIO);
        EXPECT_EQ(error(reader.children(t.url())), EIO) << function;
    }
}

TEST(PlatformFailures, OfComingBackFromADeepFolderAreTold) {
    const TempFolder t;
    std::string deep = "a";
    for (int i = 1; i < 140; ++i) deep += "/" + std::to_string(i);  // deeper than folders are kept open
    buildOnDisk(t.path(), {deep + "/file", "z/file"});
    for (const char* function : {"fstat", "fcntl"}) {
        int number = 0;
        bool isBeyondTheLast = false;
        while (!isBeyondTheLast) {
            FileManagerDirectoryReader reader;
            const FailingCall failing(function, EIO, ++number);
            const auto found = OrdovanInventoryScanner::scan(t.url(), reader, {.maxDepth = 200}, {}, {});
            isBeyondTheLast = failing.calls() < number;
            EXPECT_EQ(found.skipped.empty(), isBeyondTheLast) << function << " " << number;
            EXPECT_EQ(found.fileCount() == 2, isBeyondTheLast);
        }
        EXPECT_GT(number, 1) << function;
    }
}

TEST(PlatformFailures, OfListingAFolderLeaveItAndItsSettings) {
    const TempFolder t;
    buildOnDisk(t.path(), {"out/empty/", "out/settings/.DS_Store = x", "out/used/.DS_Store = x", "out/used/a = y"});
    for (const char* function : {"fdopendir", "readdir"}) {
        for (const char* folder : {"empty", "settings", "used"}) {
            const FailingCall failing(function, EIO);
            EXPECT_FALSE(ordovan::removeFolderIfEmpty(t.path("out"), folder)) << function << " " << folder;
            EXPECT_EQ(failing.calls(), 1);
        }
    }
    EXPECT_TRUE(t.has("out/empty"));
    EXPECT_TRUE(t.has("out/settings/.DS_Store"));
    EXPECT_TRUE(t.has("out/used/.DS_Store"));
}

TEST(PlatformFailures, OfReadingTheUserDatabaseMeanNoHome) {
    const auto known = ordovan::homeFromUserDatabase();
    {
        const FailingCall tooLong("getpwuid_r", ERANGE);
        EXPECT_EQ(ordovan::homeFromUserDatabase(), known);
        EXPECT_EQ(tooLong.calls(), 2);
    }
    const FailingCall failing("getpwuid_r", EIO);
    EXPECT_EQ(ordovan::homeFromUserDatabase(), std::nullopt);
}

TEST(PlatformFailures, OfALongEntryInTheUserDatabaseEnd) {
    const FailingCall tooLong("getpwuid_r", ERANGE, FailingCall::every);
    EXPECT_EQ(ordovan::homeFromUserDatabase(), std::nullopt);
    EXPECT_EQ(tooLong.calls(), 9) << "4 KiB to 1 MiB";
}

TEST(PlatformFailures, OfAskingAVolumeLeaveItsNamesUnknown) {
    const TempFolder t;
    const FailingCall failing("fstatfs", EIO);
    EXPECT_EQ(ordovan::supportsCaseSensitiveNames(t.url()), std::nullopt);
}

TEST(PlatformFailures, OfProbingTheNamesOfAFolderLeaveThemUnknown) {
    const TempFolder t;
    buildOnDisk(t.path(), {"a", "A"});
    typeToTell = FUSE_SUPER_MAGIC;  // whose type does not tell
    EXPECT_EQ(ordovan::supportsCaseSensitiveNames(t.url()), true);
    for (const char* function : {"fdopendir", "fstatat"}) {
        const FailingCall failing(function, EIO, FailingCall::every);
        EXPECT_EQ(ordovan::supportsCaseSensitiveNames(t.url()), std::nullopt) << function;
    }
    typeToTell.reset();
}

TEST(PlatformFailures, OfWritingADocumentKeepTheOldOne) {
    const TempFolder t;
    t.write("plan.md", "old");
    {
        const FailingCall failing("write", EIO);
        EXPECT_EQ(error(ordovan::writeDocument(t.url("plan.md"), "new")), EIO);
    }
    EXPECT_EQ(t.read("plan.md"), "old");
    EXPECT_EQ(t.count(), 1U);
    {
        const FailingCall failing("fcntl", EMFILE);
        EXPECT_EQ(error(ordovan::writeDocument(t.url("plan.md"), "new")), EMFILE);
        EXPECT_EQ(failing.calls(), 1);
    }
    EXPECT_EQ(t.count(), 1U);
    const FailingCall interrupted("write", EINTR);
    EXPECT_EQ(error(ordovan::writeDocument(t.url("plan.md"), "new")), 0);
    EXPECT_EQ(t.read("plan.md"), "new");
}

TEST(PlatformFailures, OfReadingARecordAreToldUnlessItWasOnlyInterrupted) {
    const TempFolder t;
    t.write("record", "text");
    ordovan::FileRecordStorage records;
    std::string text;
    const auto keep = [&](std::string_view piece) { return !text.append(piece).empty(); };
    {
        const FailingCall failing("read", EIO);
        EXPECT_EQ(error(records.read(t.url("record"), keep)), EIO);
    }
    const FailingCall interrupted("read", EINTR);
    EXPECT_EQ(error(records.read(t.url("record"), keep)), 0);
    EXPECT_EQ(text, "text");
}

TEST(PlatformFailures, OfSweepingUpLetARecordBeWritten) {
    const TempFolder t;
    ordovan::FileRecordStorage records;
    const FailingCall failing("opendir", EMFILE);
    EXPECT_TRUE(records.write(t.url("record"), [](const auto& sink) { return sink("text"); }));
    EXPECT_EQ(failing.calls(), 1);
    EXPECT_EQ(t.read("record"), "text");
}

TEST(PlatformFailures, LeaveNoDataFolderToAUserWithoutAHome) {
    const char* const home = std::getenv("HOME");
    const std::string before = home == nullptr ? "" : home;
    ::unsetenv("HOME");
    ::unsetenv("XDG_DATA_HOME");
    const FailingCall failing("getpwuid_r", EIO);
    EXPECT_EQ(ordovan::userDataFolder(), "");
    if (home != nullptr) ::setenv("HOME", before.c_str(), 1);
}

TEST(PlatformFailures, AreWhatAPathThatEndsInItsMiddleComesTo) {
    using namespace std::string_literals;
    const TempFolder t;
    const Url file = t.write("a", "a");
    const Url odd = Url::file(t.path() + "/b\0c"s);
    SystemFileSystem fs;
    EXPECT_EQ(error(fs.copy(odd, file)), EINVAL);
    EXPECT_EQ(error(fs.copy(file, odd)), EINVAL);
    ordovan::RunFileSystem run(t.url());
    EXPECT_EQ(error(run.copy(odd, file)), EINVAL);
    EXPECT_EQ(error(run.copy(file, odd)), EINVAL);
    ordovan::FileRecordStorage records;
    EXPECT_EQ(error(records.setAside(odd, file)), EINVAL);
    EXPECT_EQ(error(records.setAside(file, odd)), EINVAL);
    EXPECT_EQ(ordovan::realPath(odd.path()), std::nullopt);
    EXPECT_EQ(t.read("a"), "a");
    EXPECT_EQ(t.count(), 1U);
}

class TrashFailures : public ::testing::Test {
protected:
    TrashFailures() { ::setenv("XDG_DATA_HOME", t.path("data").c_str(), 1); }
    ~TrashFailures() override { ::unsetenv("XDG_DATA_HOME"); }

    const TempFolder t;
    SystemFileSystem fs;
};

TEST_F(TrashFailures, OfSearchingATrashAreTold) {
    const Url original = t.write("a.pdf", "a");
    ASSERT_TRUE(fs.trash(original));
    for (const char* function : {"fdopendir", "readdir"}) {
        const FailingCall failing(function, EIO);
        EXPECT_EQ(error(ordovan::findInTrash({{original}})), EIO) << function;
    }
}

TEST_F(TrashFailures, OfRemovingAnInfoFileAreTold) {
    const Url original = t.write("a.pdf", "a");
    const auto trashed = fs.trash(original);
    ASSERT_TRUE(trashed);
    const auto found = ordovan::findInTrash({{original}});
    ASSERT_TRUE(found && found->size() == 1);
    std::filesystem::remove(trashed->path());
    const FailingCall failing("unlink", EROFS);
    EXPECT_EQ(error(ordovan::removeTrashInfo(found->front())), EROFS);
}

TEST_F(TrashFailures, OfLookingAroundLeaveAFileInOnePlace) {
    if (!SecondVolume::available()) GTEST_SKIP() << SecondVolume::unavailable;
    const SecondVolume volume;
    ::setenv("XDG_DATA_HOME", volume.root().path("data").c_str(), 1);
    for (const char* function : {"fstat", "statx", "fstatfs", "readlink", "fcntl"}) {
        int number = 0;
        bool isBeyondTheLast = false;
        while (!isBeyondTheLast) {
            const Url file = volume.root().write("a.pdf", "a");
            const FailingCall failing(function, EIO, ++number);
            const bool isTrashed = fs.trash(file).has_value();
            EXPECT_NE(isTrashed, fs.exists(file)) << function << " " << number;
            isBeyondTheLast = failing.calls() < number;
        }
    }
}

TEST_F(TrashFailures, OfFindingAHomeLeadToTheTrashOfTheVolume) {
    if (!SecondVolume::available()) GTEST_SKIP() << SecondVolume::unavailable;
    const SecondVolume volume;
    const char* const home = std::getenv("HOME");
    const std::string before = home == nullptr ? "" : home;
    ::unsetenv("HOME");
    ::unsetenv("XDG_DATA_HOME");
    const FailingCall homeless("getpwuid_r", EIO, FailingCall::every);
    volume.root().makeFolder(".Trash");
    ::chmod(volume.root().path(".Trash").c_str(), 01777);
    const std::string trash = volume.root().path(".Trash/") + std::to_string(::geteuid()) + "/files/a.pdf";
    EXPECT_EQ(fs.trash(volume.root().write("a.pdf", "a")), Url::file(trash));
    int number = 0;
    bool isBeyondTheLast = false;
    while (!isBeyondTheLast) {
        const Url file = volume.root().write("a.pdf", "a");
        const FailingCall failing("fstat", EIO, ++number);
        const bool isTrashed = fs.trash(file).has_value();
        EXPECT_NE(isTrashed, fs.exists(file)) << number;
        isBeyondTheLast = failing.calls() < number;
    }
    EXPECT_GT(number, 2);
    const Url file = volume.root().write("b.pdf", "b");
    const FailingCall mountless("statx", ENOSYS, FailingCall::every);
    EXPECT_FALSE(fs.trash(file));
    EXPECT_TRUE(fs.exists(file));
    if (home != nullptr) ::setenv("HOME", before.c_str(), 1);
}

TEST_F(TrashFailures, AreNoneWhereTheKernelDoesNotTellTheFoldersPath) {
    const FailingCall failing("readlink", ENOENT, FailingCall::every);
    const auto trashed = fs.trash(t.write("a.pdf", "a"));
    ASSERT_TRUE(trashed);
    EXPECT_EQ(trashed->path(), t.path("data/Trash/files/a.pdf"));
    EXPECT_FALSE(fs.exists(t.url("a.pdf")));
}

TEST_F(TrashFailures, LeaveAFileWhereItsFolderHasNoPath) {
    const Url file = t.write("a.pdf", "a");
    const FailingCall link("readlink", ENOENT, FailingCall::every);
    const FailingCall path("realpath", EACCES, FailingCall::every);
    EXPECT_EQ(error(fs.trash(file)), EACCES);
    EXPECT_TRUE(fs.exists(file));
}

}  // namespace
