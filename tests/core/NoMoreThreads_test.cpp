#include "OrdovanCore/Duplicates.h"
#include "OrdovanCore/platform/ContentReader.h"
#include "OrdovanCore/platform/HashAhead.h"
#include "OrdovanCore/platform/SystemFileSystem.h"
#include "OrdovanCore/platform/Trash.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>

#include <cerrno>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

using ordovan::HashAheadFileSystem;
using ordovan::test::TempFolder;

namespace {

bool canMakeThreads = true;

/// How many files were sent on their way to the disk.
int writes = 0;

}  // namespace

// Takes the C library's place: this user has as many threads as he may have.
extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*start)(void*),
                              void* argument) noexcept {
    static auto* const real = reinterpret_cast<decltype(&::pthread_create)>(::dlsym(RTLD_NEXT, "pthread_create"));
    return canMakeThreads ? real(thread, attributes, start, argument) : EAGAIN;
}

extern "C" int sync_file_range(int, off64_t, off64_t, unsigned) {
    ++writes;
    return 0;
}

namespace {

class NoMoreThreads : public ::testing::Test {
protected:
    NoMoreThreads() {
        for (const char* name : {"a", "b", "c", "d", "e", "f"}) files.push_back(t.write(name, "the same"));
        canMakeThreads = false;
    }
    ~NoMoreThreads() override { canMakeThreads = true; }

    const TempFolder t;
    std::vector<Url> files;
};

TEST_F(NoMoreThreads, LetDuplicatesBeFoundAllTheSame) {
    std::vector<OrdovanInventoryEntry> entries;
    for (const Url& file : files) entries.push_back({.url = file, .byteSize = 8});
    SystemContentReader contents;
    const auto report = OrdovanDuplicateFinder::find(entries, contents, {.workers = 4});
    ASSERT_TRUE(report);
    EXPECT_EQ(report->duplicateFileCount(), 6);
}

TEST_F(NoMoreThreads, LetFilesBeHashedAllTheSame) {
    SystemFileSystem disk;
    HashAheadFileSystem ahead(disk, files, {});
    for (const Url& file : files) EXPECT_EQ(ahead.contentHash(file), disk.contentHash(file));
}

TEST_F(NoMoreThreads, LetFilesGoToTheTrashAllTheSame) {
    ::setenv("XDG_DATA_HOME", t.path("data").c_str(), 1);
    writes = 0;
    std::optional<ordovan::TrashSession> session(std::in_place);
    for (int i = 0; i < 100; ++i) ASSERT_TRUE(session->move(t.write(std::to_string(i), "x")));
    EXPECT_GE(writes, 65);  // the first, and a full batch at least
    session.reset();
    EXPECT_EQ(writes, 100);
    EXPECT_EQ(t.count("data/Trash/files"), 100U);
    ::unsetenv("XDG_DATA_HOME");
}

TEST_F(NoMoreThreads, LetAFewFilesGoToTheTrashAllTheSame) {
    ::setenv("XDG_DATA_HOME", t.path("data").c_str(), 1);
    writes = 0;
    {
        ordovan::TrashSession session;
        for (const Url& file : files) EXPECT_TRUE(session.move(file));
    }
    EXPECT_EQ(writes, 6);
    EXPECT_EQ(t.count("data/Trash/info"), 6U);
    ::unsetenv("XDG_DATA_HOME");
}

}  // namespace
