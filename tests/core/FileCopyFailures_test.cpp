#include "OrdovanCore/platform/FileCopy.h"

#include "OrdovanCore/platform/Descriptor.h"
#include "OrdovanCore/platform/Folders.h"
#include "OrdovanCore/platform/WriterProbe.h"
#include "tests/support/FailingCalls.h"
#include "tests/support/TempFolder.h"
#include "tests/support/Writers.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <functional>
#include <string>
#include <utility>

using ordovan::CopyWays;
using ordovan::test::FailingCall;
using ordovan::test::TempFolder;

namespace {

/// What happens before the next flush.
std::function<void()> atFlush;

}  // namespace

// NOLINTBEGIN: the C library's names and signatures
extern "C" int fsync(int file) {
    static auto* const real = reinterpret_cast<decltype(&::fsync)>(::dlsym(RTLD_NEXT, "fsync"));
    if (atFlush) std::exchange(atFlush, nullptr)();
    return real(file);
}
ORDOVAN_FAILING(ssize_t, flistxattr, (int file, char* list, size_t size) noexcept, file, list, size)
ORDOVAN_FAILING(ssize_t, fgetxattr, (int file, const char* name, void* value, size_t size) noexcept, file, name, value,
                size)
ORDOVAN_FAILING(int, fchmod, (int file, mode_t mode) noexcept, file, mode)
ORDOVAN_FAILING(off_t, lseek, (int file, off_t at, int whence) noexcept, file, at, whence)
ORDOVAN_FAILING(ssize_t, copy_file_range, (int from, off64_t* in, int to, off64_t* out, size_t count, unsigned flags),
                from, in, to, out, count, flags)
ORDOVAN_FAILING(ssize_t, pread, (int file, void* bytes, size_t count, off_t at), file, bytes, count, at)
ORDOVAN_FAILING(ssize_t, pwrite, (int file, const void* bytes, size_t count, off_t at), file, bytes, count, at)
// NOLINTEND

namespace {

class FileCopyFailures : public ::testing::Test {
protected:
    FileCopyFailures() { t.write("a", content); }

    /// 0 or the errno of copying "a" to "b".
    [[nodiscard]] int copy() const {
        const CopyWays ways = {.shareExtents = false, .sync = ordovan::syncFolderOf};
        return ordovan::copyExclusively(t.path("a").c_str(), t.path("b").c_str(), ways);
    }
    /// Gives "a" an attribute. False where the file system has none.
    [[nodiscard]] bool giveAttribute() const {
        return ::setxattr(t.path("a").c_str(), "user.ordovan", "value", 5, 0) == 0;
    }
    [[nodiscard]] std::string attributeOfCopy() const {
        char value[16];
        const ::ssize_t size = ::getxattr(t.path("b").c_str(), "user.ordovan", value, sizeof value);
        return size < 0 ? "none" : std::string(value, static_cast<std::size_t>(size));
    }

    const std::string content = std::string(200'000, 'x') + "end";
    const TempFolder t;
};

TEST_F(FileCopyFailures, OfReadingLeaveNoCopy) {
    for (const char* function : {"flistxattr", "fchmod", "lseek", "copy_file_range"}) {
        const FailingCall failing(function, EIO);
        EXPECT_EQ(copy(), EIO) << function;
        EXPECT_EQ(failing.calls(), 1) << function;
        EXPECT_EQ(t.count(), 1U) << function;
    }
    const FailingCall range("copy_file_range", EXDEV, FailingCall::every);
    for (const char* function : {"pread", "pwrite"}) {
        const FailingCall failing(function, EIO);
        EXPECT_EQ(copy(), EIO) << function;
        EXPECT_EQ(t.count(), 1U) << function;
    }
}

TEST_F(FileCopyFailures, OfAttributesLeaveNoCopy) {
    if (!giveAttribute()) GTEST_SKIP() << "NOT TESTED: no attributes on this file system";
    const auto copyWithout = [&](const char* function, int number) {
        const FailingCall failing(function, EIO, number);
        const int error = copy();
        EXPECT_EQ(failing.calls(), number);
        return error;
    };
    EXPECT_EQ(copyWithout("flistxattr", 2), EIO);
    EXPECT_EQ(copyWithout("fgetxattr", 1), EIO);
    EXPECT_EQ(copyWithout("fgetxattr", 2), EIO);
    EXPECT_EQ(t.count(), 1U);
}

TEST_F(FileCopyFailures, AreNoneWhereAttributesCanNotBeHad) {
    if (!giveAttribute()) GTEST_SKIP() << "NOT TESTED: no attributes on this file system";
    for (const auto& [function, error] : {std::pair("flistxattr", ENOTSUP), std::pair("flistxattr", E2BIG),
                                          std::pair("fgetxattr", ENODATA), std::pair("fgetxattr", EPERM)}) {
        const FailingCall failing(function, error);
        EXPECT_EQ(copy(), 0) << function;
        EXPECT_EQ(attributeOfCopy(), "none") << function;
        std::filesystem::remove(t.path("b"));
    }
}

TEST_F(FileCopyFailures, AreNoneWhereAttributesGrewWhileTheyWereRead) {
    if (!giveAttribute()) GTEST_SKIP() << "NOT TESTED: no attributes on this file system";
    for (const char* function : {"flistxattr", "fgetxattr"}) {
        const FailingCall failing(function, ERANGE, 2);
        EXPECT_EQ(copy(), 0) << function;
        EXPECT_EQ(failing.calls(), 4) << function;
        EXPECT_EQ(attributeOfCopy(), "value") << function;
        std::filesystem::remove(t.path("b"));
    }
}

TEST_F(FileCopyFailures, AreNoneWhereHolesAreNotTold) {
    for (const int number : {1, 2}) {
        const FailingCall failing("lseek", EINVAL, number);
        EXPECT_EQ(copy(), 0);
        EXPECT_EQ(t.read("b"), content);
        std::filesystem::remove(t.path("b"));
    }
}

TEST_F(FileCopyFailures, AreNoneWhereRangesAreNotReallyCopied) {
    for (const int error : {0, EINTR, ENOSYS}) {
        const FailingCall failing("copy_file_range", error);
        EXPECT_EQ(copy(), 0);
        EXPECT_EQ(t.read("b"), content) << error;
        std::filesystem::remove(t.path("b"));
    }
}

TEST_F(FileCopyFailures, AreNoneWhereReadingAndWritingAreInterrupted) {
    const FailingCall range("copy_file_range", EXDEV, FailingCall::every);
    const FailingCall read("pread", EINTR), written("pwrite", EINTR);
    EXPECT_EQ(copy(), 0);
    EXPECT_EQ(t.read("b"), content);
}

TEST_F(FileCopyFailures, TellOfAFileThatIsBeingWrittenInTheEnd) {
    if (!ordovan::test::hasLeases(t.path())) GTEST_SKIP() << ordovan::test::withoutLeases;
    ordovan::Descriptor writer;
    atFlush = [&] { writer = ordovan::Descriptor::open(t.path("a").c_str(), O_WRONLY); };
    ordovan::WriterProbe writers;
    const CopyWays ways = {.shareExtents = false, .sync = ordovan::syncFolderOf};
    EXPECT_EQ(ordovan::copyExclusively(t.path("a").c_str(), t.path("b").c_str(), ways, {.writers = &writers}), EBUSY);
    EXPECT_TRUE(writer);
    EXPECT_EQ(t.count(), 1U);
}

TEST_F(FileCopyFailures, TellOfAFileThatBecameShorter) {
    const FailingCall range("copy_file_range", EXDEV, FailingCall::every);
    const FailingCall atEnd("pread", 0);
    EXPECT_EQ(copy(), EBUSY);
    EXPECT_EQ(t.count(), 1U);
}

}  // namespace
