#include "OrdovanCore/platform/WriterProbe.h"

#include "tests/support/TempFolder.h"
#include "tests/support/Unprivileged.h"
#include "tests/support/Writers.h"

#include <gtest/gtest.h>

#include <linux/magic.h>
#include <sys/syscall.h>

#include <cstdarg>

using ordovan::Descriptor;
using ordovan::RegularFile;
using ordovan::WriterProbe;
using ordovan::test::TempFolder;

namespace {

/// Whether a sandbox keeps the signals of leases as they are, and how many leases were asked for.
bool refusesSignals = false;
int leases = 0;

}  // namespace

// Takes the place of the C library's.
extern "C" int fcntl(int file, int command, ...) {
    std::va_list arguments;
    va_start(arguments, command);
    const long argument = va_arg(arguments, long);
    va_end(arguments);
    if (command == F_SETLEASE && argument == F_RDLCK) ++leases;
    if (command != F_SETSIG || !refusesSignals) {
        return static_cast<int>(::syscall(SYS_fcntl, file, command, argument));
    }
    errno = EPERM;
    return -1;
}

namespace {

class WriterProbeTest : public testing::Test {
protected:
    void SetUp() override {
        if (!ordovan::test::hasLeases(t.path())) GTEST_SKIP() << ordovan::test::withoutLeases;
        t.write("file", "content");
    }
    /// What is said of the file at the start and, as if it had been read meanwhile, at the end.
    std::pair<bool, bool> asked() {
        RegularFile file;
        EXPECT_EQ(file.open(t.path("file").c_str()), 0);
        const bool atStart = probe.isWrittenAtStart(file);
        return {atStart, probe.isWrittenAtEnd(file)};
    }
    [[nodiscard]] Descriptor opened(int flags) const { return Descriptor::open(t.path("file").c_str(), flags); }

    TempFolder t;
    WriterProbe probe;
    const std::pair<bool, bool> yes{true, true};
    const std::pair<bool, bool> no{false, false};
};

TEST_F(WriterProbeTest, SeesWhoHasTheFileOpenForWriting) {
    EXPECT_EQ(asked(), no);
    for (const int flags : {O_WRONLY, O_RDWR, O_WRONLY | O_APPEND}) {
        const Descriptor writer = opened(flags);
        EXPECT_EQ(asked(), yes);
    }
    EXPECT_EQ(asked(), no);
}

TEST_F(WriterProbeTest, SeesAMappingWhoseDescriptorIsClosed) {
    const ordovan::test::SharedMapping mapping(opened(O_RDWR));
    EXPECT_EQ(asked(), yes);
}

TEST_F(WriterProbeTest, SeesNoReaders) {
    const Descriptor reader = opened(O_RDONLY);
    const Descriptor path = opened(O_PATH);
    EXPECT_EQ(asked(), no);
}

TEST_F(WriterProbeTest, SeesAWriterWhoComesMeanwhile) {
    RegularFile file;
    ASSERT_EQ(file.open(t.path("file").c_str()), 0);
    EXPECT_FALSE(probe.isWrittenAtStart(file));
    const Descriptor writer = opened(O_WRONLY);
    EXPECT_TRUE(probe.isWrittenAtEnd(file));
}

TEST_F(WriterProbeTest, KeepsNoWriterWaiting) {
    RegularFile file;
    ASSERT_EQ(file.open(t.path("file").c_str()), 0);
    EXPECT_FALSE(probe.isWrittenAtStart(file));
    EXPECT_TRUE(opened(O_WRONLY | O_NONBLOCK)) << "EWOULDBLOCK if the lease were still held";
}

TEST_F(WriterProbeTest, TakesNoLeaseWhoseSignalWouldEndTheProgram) {
    const Descriptor writer = opened(O_WRONLY);
    leases = 0;
    refusesSignals = true;
    EXPECT_EQ(asked(), no);
    refusesSignals = false;
    EXPECT_EQ(leases, 0);
    EXPECT_EQ(asked(), yes);
}

TEST_F(WriterProbeTest, CanNotTellOfAnotherUsersFile) {
    if (::geteuid() != 0) GTEST_SKIP() << "NOT TESTED: wants root, to be two users";
    const Descriptor writer = opened(O_WRONLY);
    EXPECT_FALSE(ordovan::test::unprivileged([&] { return asked() == yes; }));
    EXPECT_EQ(asked(), yes);
}

TEST(WriterProbe, BelievesNoNetworkVolume) {
    for (const unsigned long type : {NFS_SUPER_MAGIC, SMB_SUPER_MAGIC, V9FS_MAGIC, 0x0BD00BD0}) {
        EXPECT_FALSE(WriterProbe::knowsWriters(type)) << type;
    }
    for (const unsigned long type : {CIFS_SUPER_MAGIC, SMB2_SUPER_MAGIC}) EXPECT_FALSE(WriterProbe::knowsWriters(type));
    for (const unsigned long type : {EXT4_SUPER_MAGIC, TMPFS_MAGIC, FUSE_SUPER_MAGIC, OVERLAYFS_SUPER_MAGIC}) {
        EXPECT_TRUE(WriterProbe::knowsWriters(type)) << type;
    }
}

}  // namespace
