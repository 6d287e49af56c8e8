#include "OrdovanCore/Duplicates.h"
#include "OrdovanCore/platform/ContentReader.h"
#include "OrdovanCore/platform/HashAhead.h"
#include "OrdovanCore/platform/SystemFileSystem.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <pthread.h>

#include <cerrno>
#include <vector>

using ordovan::HashAheadFileSystem;
using ordovan::test::TempFolder;

namespace {

bool canMakeThreads = true;

}  // namespace

// Takes the C library's place: this user has as many threads as he may have.
extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*start)(void*),
                              void* argument) noexcept {
    static auto* const real = reinterpret_cast<decltype(&::pthread_create)>(::dlsym(RTLD_NEXT, "pthread_create"));
    return canMakeThreads ? real(thread, attributes, start, argument) : EAGAIN;
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

}  // namespace
