// A run compares what a file was before it was read and afterwards. On file systems on a network or in user space both
// are to be the server's word: what the kernel remembers may be old, or made up.

#include "OrdovanCore/platform/FreshFacts.h"

#include "OrdovanCore/platform/FolderEntry.h"
#include "OrdovanCore/platform/RunFileSystem.h"
#include "tests/support/Results.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <tuple>
#include <utility>

using ordovan::Descriptor;
using ordovan::examineAfresh;
using ordovan::FolderEntry;
using ordovan::RunFileSystem;
using ordovan::test::error;
using ordovan::test::TempFolder;

namespace {

/// What the kernel remembers of one file, and tells whoever does not ask for the server's word.
std::optional<struct ::stat> remembered;

/// What happens while the next file is read, while the next copy is flushed, and right after the next rename.
std::function<void()> duringRead;
std::function<void()> duringFlush;
std::function<void()> afterRename;

/// The errno with which the server's word is refused, and how often it was asked for.
int refusal = 0;
int asked = 0;

void perform(std::function<void()>& action) {
    if (action) std::exchange(action, nullptr)();
}

int fromMemory(int result, struct ::stat* facts) {
    if (result == 0 && remembered && remembered->st_ino == facts->st_ino) *facts = *remembered;
    return result;
}

}  // namespace

// NOLINTBEGIN: the C library's names and signatures
extern "C" int fstat(int file, struct stat* facts) noexcept {
    return fromMemory(static_cast<int>(::syscall(SYS_fstat, file, facts)), facts);
}
extern "C" int fstatat(int folder, const char* path, struct stat* facts, int flags) noexcept {
    return fromMemory(static_cast<int>(::syscall(SYS_newfstatat, folder, path, facts, flags)), facts);
}
extern "C" int statx(int folder, const char* path, int flags, unsigned mask, struct statx* facts) noexcept {
    // Without the flag it would be told what is remembered. Nothing here asks so.
    EXPECT_EQ(flags & AT_STATX_SYNC_TYPE, AT_STATX_FORCE_SYNC);
    ++asked;
    if (refusal != 0) {
        errno = refusal;
        return -1;
    }
    remembered.reset();
    return static_cast<int>(::syscall(SYS_statx, folder, path, flags, mask, facts));
}
extern "C" ssize_t read(int file, void* bytes, std::size_t size) {
    perform(duringRead);
    return ::syscall(SYS_read, file, bytes, size);
}
extern "C" int fsync(int file) {
    perform(duringFlush);
    return static_cast<int>(::syscall(SYS_fsync, file));
}
extern "C" int renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags) noexcept {
    const long result = ::syscall(SYS_renameat2, fromFolder, from, toFolder, to, flags);
    perform(afterRename);
    return static_cast<int>(result);
}
// NOLINTEND

namespace {

class FreshFacts : public testing::Test {
protected:
    void SetUp() override { t.write("root/a", "content"); }
    void TearDown() override {
        remembered.reset();
        duringRead = duringFlush = afterRename = nullptr;
        refusal = 0;
    }

    [[nodiscard]] Url at(const std::string& name) const { return t.url("root/" + name); }

    [[nodiscard]] struct ::stat factsOf(const std::string& name) const {
        struct ::stat facts{};
        EXPECT_EQ(::syscall(SYS_newfstatat, AT_FDCWD, t.path("root/" + name).c_str(), &facts, AT_SYMLINK_NOFOLLOW), 0);
        return facts;
    }
    /// A time of status change that the server will not have.
    void makeUpTime(const std::string& name) const {
        remembered = factsOf(name);
        remembered->st_ctim.tv_sec += 1;
    }
    /// Of what is written here the kernel does not hear.
    void writeFromAnotherMachine(const std::string& name) const {
        const struct ::stat before = factsOf(name);
        const Descriptor file = Descriptor::open(t.path("root/" + name).c_str(), O_WRONLY | O_APPEND);
        ASSERT_EQ(::write(file.get(), "more", 4), 4);
        remembered = before;
    }

    TempFolder t;
    RunFileSystem fs{t.url("root")};
};

void expectSame(const struct ::stat& a, const struct ::stat& b) {
    EXPECT_EQ(std::tie(a.st_dev, a.st_ino, a.st_mode, a.st_nlink, a.st_uid, a.st_gid, a.st_rdev),
              std::tie(b.st_dev, b.st_ino, b.st_mode, b.st_nlink, b.st_uid, b.st_gid, b.st_rdev));
    EXPECT_EQ(std::tie(a.st_size, a.st_blksize, a.st_blocks), std::tie(b.st_size, b.st_blksize, b.st_blocks));
    EXPECT_EQ(std::tie(a.st_atim.tv_sec, a.st_atim.tv_nsec, a.st_mtim.tv_sec, a.st_mtim.tv_nsec, a.st_ctim.tv_sec,
                       a.st_ctim.tv_nsec),
              std::tie(b.st_atim.tv_sec, b.st_atim.tv_nsec, b.st_mtim.tv_sec, b.st_mtim.tv_nsec, b.st_ctim.tv_sec,
                       b.st_ctim.tv_nsec));
}

TEST_F(FreshFacts, AreThoseThatEveryLookGives) {
    t.makeLink("root/link", t.path("nowhere"));
    t.makeFolder("root/folder");
    ASSERT_EQ(::mkfifo(t.path("root/fifo").c_str(), 0640), 0);
    const ::timespec times[2] = {{-5, 7}, {1'600'000'000, 123'456'789}};
    ASSERT_EQ(::utimensat(AT_FDCWD, t.path("root/a").c_str(), times, 0), 0);
    const Descriptor folder = Descriptor::open(t.path("root").c_str(), O_PATH | O_DIRECTORY);
    for (const int refused : {0, ENOSYS}) {
        refusal = refused;
        for (const char* name : {"a", "link", "folder", "fifo"}) {
            SCOPED_TRACE(name);
            struct ::stat facts{};
            ASSERT_TRUE(FolderEntry(folder.get(), name).examineAfresh(facts));
            expectSame(facts, factsOf(name));
        }
        struct ::stat facts{};
        ASSERT_TRUE(examineAfresh(folder.get(), "", facts));
        expectSame(facts, factsOf("."));
        EXPECT_FALSE(FolderEntry(folder.get(), "missing").examineAfresh(facts));
        EXPECT_EQ(errno, ENOENT);
    }
}

TEST_F(FreshFacts, LetAFileBeHashedOfWhichTheKernelMadeUpATime) {
    makeUpTime("a");
    duringRead = [] { remembered.reset(); };
    EXPECT_EQ(error(fs.contentHash(at("a"))), 0);
}

TEST_F(FreshFacts, LetAFileBeReadInPiecesOfWhichTheKernelMadeUpATime) {
    makeUpTime("a");
    const auto file = fs.open(at("a")).value();
    remembered.reset();
    char piece[16];
    EXPECT_EQ(file->read(0, piece), 7u);
    EXPECT_EQ(file->read(7, piece), 0u);
}

TEST_F(FreshFacts, LetAFileBeCopiedOfWhichTheKernelMadeUpATime) {
    makeUpTime("a");
    duringFlush = [] { remembered.reset(); };
    EXPECT_EQ(error(fs.copy(at("a"), at("b"))), 0);
    EXPECT_EQ(t.read("root/b"), "content");
}

TEST_F(FreshFacts, LetAFileBeMovedOnOfWhichTheKernelMadeUpATime) {
    ASSERT_EQ(error(fs.contentHash(at("a"))), 0);
    afterRename = [this] { makeUpTime("b"); };
    ASSERT_EQ(error(fs.move(at("a"), at("b"))), 0);
    remembered.reset();
    EXPECT_EQ(error(fs.move(at("b"), at("c"))), 0);
    EXPECT_EQ(t.read("root/c"), "content");
}

TEST_F(FreshFacts, LetAFileBeMovedOnceMoreThatWentBack) {
    t.makeFolder("root/sub");
    ASSERT_EQ(error(fs.contentHash(at("a"))), 0);
    afterRename = [this] {
        std::filesystem::rename(t.path("root/sub"), t.path("root/aside"));
        afterRename = [this] { makeUpTime("a"); };
    };
    ASSERT_EQ(error(fs.move(at("a"), at("sub/a"))), ENOENT);
    remembered.reset();
    ASSERT_EQ(error(fs.createDirectory(at("sub"))), 0);
    EXPECT_EQ(error(fs.move(at("a"), at("sub/a"))), 0);
    EXPECT_EQ(t.read("root/sub/a"), "content");
}

TEST_F(FreshFacts, TellWhatAnotherMachineWroteWhileAFileWasHashed) {
    duringRead = [this] { writeFromAnotherMachine("a"); };
    EXPECT_EQ(error(fs.contentHash(at("a"))), EBUSY);
    EXPECT_EQ(error(fs.contentHash(at("a"))), 0);
}

TEST_F(FreshFacts, TellWhatAnotherMachineWroteWhileAFileWasCopied) {
    duringFlush = [this] { writeFromAnotherMachine("a"); };
    EXPECT_EQ(error(fs.copy(at("a"), at("b"))), EBUSY);
    EXPECT_FALSE(t.has("root/b"));
}

TEST_F(FreshFacts, TakeOneSystemCallForEachLook) {
    asked = 0;
    ASSERT_EQ(error(fs.contentHash(at("a"))), 0);
    EXPECT_EQ(asked, 2) << "before and behind";
    ASSERT_EQ(error(fs.copy(at("a"), at("b"))), 0);
    EXPECT_EQ(asked, 4);
    ASSERT_EQ(error(fs.move(at("a"), at("c"))), 0);
    EXPECT_EQ(asked, 5) << "where it arrived";
    ASSERT_EQ(error(SystemFileSystem().contentHash(at("b"))), 0);
    EXPECT_EQ(asked, 5) << "nobody compares that";
}

TEST_F(FreshFacts, AreTheKernelsWhereNobodyElseCanBeAsked) {
    for (const int refused : {ENOSYS, EINVAL, EPERM, EOPNOTSUPP}) {
        refusal = refused;
        EXPECT_EQ(error(fs.contentHash(at("a"))), 0) << refused;
        EXPECT_EQ(error(fs.copy(at("a"), at("b"))), 0) << refused;
        EXPECT_EQ(error(fs.move(at("b"), at("c"))), 0) << refused;
        duringRead = [this] { t.write("root/a", "another content"); };
        EXPECT_EQ(error(fs.contentHash(at("a"))), EBUSY) << refused;
        t.write("root/a", "content");
        EXPECT_EQ(error(fs.remove(at("c"))), 0) << refused;
    }
}

TEST_F(FreshFacts, AreNotTheKernelsWhereTheServerHasNone) {
    refusal = EIO;
    EXPECT_EQ(error(fs.contentHash(at("a"))), EIO);
    EXPECT_EQ(error(fs.copy(at("a"), at("b"))), EIO);
    EXPECT_FALSE(t.has("root/b"));
    refusal = 0;
    duringRead = [] { refusal = ESTALE; };
    EXPECT_EQ(error(fs.contentHash(at("a"))), EBUSY);
}

}  // namespace
