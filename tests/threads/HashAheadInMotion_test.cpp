#include "OrdovanCore/platform/Descriptor.h"
#include "OrdovanCore/platform/HashAhead.h"
#include "OrdovanCore/platform/SystemFileSystem.h"
#include "tests/support/TempFolder.h"
#include "tests/support/Writers.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/syscall.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <ctime>
#include <functional>
#include <future>
#include <string>
#include <utility>
#include <vector>

using ordovan::Descriptor;
using ordovan::HashAheadFileSystem;
using ordovan::test::TempFolder;

namespace {

/// What happens while a worker reads a file, or asks what file system that is on.
std::function<void()> duringRead;
std::function<void(struct ::statfs&)> duringStatfs;

}  // namespace

extern "C" ssize_t read(int file, void* bytes, std::size_t size) {
    if (duringRead) std::exchange(duringRead, nullptr)();
    return ::syscall(SYS_read, file, bytes, size);
}

extern "C" int fstatfs(int file, struct statfs* facts) noexcept {
    const int result = static_cast<int>(::syscall(SYS_fstatfs, file, facts));
    if (duringStatfs) std::exchange(duringStatfs, nullptr)(*facts);
    return result;
}

namespace {

/// One file that a worker comes to before the run does, beside an empty one that nobody reads.
class HashAheadInMotion : public testing::Test {
protected:
    void TearDown() override {
        duringRead = nullptr;
        duringStatfs = nullptr;
    }

    /// How many hashes were handed out, the run asking once the worker has come as far as `reached` tells.
    std::size_t handedOut(bool trustsEveryFileSystem) {
        SystemFileSystem disk;
        HashAheadFileSystem ahead(disk, std::vector{file, empty},
                                  {.clock = [] { return static_cast<double>(std::time(nullptr)) + 3600; },
                                   .trustsEveryFileSystem = trustsEveryFileSystem});
        reached.get_future().wait();
        EXPECT_EQ(ahead.contentHash(file), disk.contentHash(file));
        return ahead.handedOut();
    }
    [[nodiscard]] Descriptor writer() const { return Descriptor::open(t.path("a").c_str(), O_WRONLY | O_APPEND); }

    TempFolder t;
    Url file = t.write("a", "content");
    Url empty = t.write("empty", "");
    std::promise<void> reached;
};

TEST_F(HashAheadInMotion, HandsAFileOutThatNobodyTouches) {
    duringRead = [this] { reached.set_value(); };
    EXPECT_EQ(handedOut(true), 1U);
}

TEST_F(HashAheadInMotion, KeepsTheHashOfAFileThatIsWrittenMeanwhile) {
    duringRead = [this] {
        EXPECT_EQ(::write(writer().get(), " and more", 9), 9);
        reached.set_value();
    };
    EXPECT_EQ(handedOut(true), 0U);
}

TEST_F(HashAheadInMotion, KeepsTheHashOfAFileThatIsOpenedForWritingMeanwhile) {
    if (!ordovan::test::hasLeases(t.path())) GTEST_SKIP() << ordovan::test::withoutLeases;
    Descriptor open;
    duringRead = [&] {
        open = writer();
        reached.set_value();
    };
    EXPECT_EQ(handedOut(true), 0U);
}

TEST_F(HashAheadInMotion, ReliesOnTheTimeStampsOfNoNetworkVolume) {
    duringStatfs = [this](struct ::statfs& facts) {
        facts.f_type = NFS_SUPER_MAGIC;
        reached.set_value();
    };
    EXPECT_EQ(handedOut(false), 0U);
}

}  // namespace
