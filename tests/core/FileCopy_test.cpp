#include "OrdovanCore/platform/FileCopy.h"

#include "OrdovanCore/platform/Folders.h"
#include "tests/support/Flushes.h"
#include "tests/support/SecondVolume.h"
#include "tests/support/TempFolder.h"
#include "tests/support/Unprivileged.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/syscall.h>
#include <sys/vfs.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

using ordovan::CopyWays;
using ordovan::syncFolderOf;
using ordovan::test::Flushes;
using ordovan::test::SecondVolume;
using ordovan::test::TempFolder;

namespace {

/// The errno with which every extended attribute is refused, and the room that volumes then show (bytes).
int attributeRefusal = 0;
std::optional<std::uint64_t> shownRoom;

}  // namespace

// Take the C library's place, so that a volume can be out of room for one attribute or for everything.
extern "C" int fsetxattr(int file, const char* name, const void* value, std::size_t size, int flags) noexcept {
    if (attributeRefusal == 0) return static_cast<int>(::syscall(SYS_fsetxattr, file, name, value, size, flags));
    errno = attributeRefusal;
    return -1;
}
extern "C" int fstatvfs(int file, struct statvfs* volume) noexcept {
    struct statfs facts{};
    if (::syscall(SYS_fstatfs, file, &facts) != 0) return -1;
    *volume = {};
    volume->f_frsize = static_cast<unsigned long>(facts.f_frsize);
    volume->f_bavail = shownRoom ? *shownRoom / volume->f_frsize : facts.f_bavail;
    return 0;
}

namespace {

struct ::stat factsOf(const std::string& path) {
    struct ::stat facts{};
    EXPECT_EQ(::lstat(path.c_str(), &facts), 0) << path;
    return facts;
}

/// The value of an extended attribute, or "none".
std::string attribute(const std::string& path, const char* name) {
    char value[256];
    const ::ssize_t size = ::lgetxattr(path.c_str(), name, value, sizeof value);
    return size < 0 ? "none" : std::string(value, static_cast<std::size_t>(size));
}

bool setAttribute(const std::string& path, const char* name, std::string_view value) {
    return ::lsetxattr(path.c_str(), name, value.data(), value.size(), 0) == 0;
}

/// An access control list in the kernel's form: owner rw, the tests' own user rw by name, owning group as given, mask
/// rw, others none.
std::string accessList(char owningGroup) {
    using namespace std::string_literals;
    const ::uid_t user = ::geteuid();
    std::string named(sizeof user, '\0');
    for (std::size_t i = 0; i < named.size(); ++i) named[i] = static_cast<char>(user >> (8 * i));
    return "\2\0\0\0"s + "\1\0\6\0\xff\xff\xff\xff"s + "\2\0\6\0"s + named + "\4\0"s + owningGroup +
           "\0\xff\xff\xff\xff"s + "\x10\0\6\0\xff\xff\xff\xff"s + "\x20\0\0\0\xff\xff\xff\xff"s;
}

int copy(const TempFolder& from, const TempFolder& to, CopyWays ways = {.sync = syncFolderOf}) {
    return ordovan::copyExclusively(from.path("a").c_str(), to.path("b").c_str(), ways);
}

/// Every way of bringing bytes over, within a volume and to another one.
class FileCopy : public testing::TestWithParam<CopyWays> {
protected:
    TempFolder t;
};

INSTANTIATE_TEST_SUITE_P(EveryWay, FileCopy,
                         testing::Values(CopyWays{true, true, syncFolderOf}, CopyWays{false, true, syncFolderOf},
                                         CopyWays{false, false, syncFolderOf}),
                         [](const auto& ways) {
                             return ways.param.shareExtents ? "Share" : ways.param.copyRange ? "Range" : "ReadAndWrite";
                         });

TEST_P(FileCopy, KeepsContentOfAnySize) {
    for (const std::size_t size : {0, 1, 4095, 1 << 20, (1 << 20) + 1, 5'000'000}) {
        std::string content(size, '\0');
        for (std::size_t i = 0; i < size; ++i) content[i] = static_cast<char>(i * 7 + i / 251);
        t.write("a", content);
        EXPECT_EQ(copy(t, t, GetParam()), 0);
        EXPECT_EQ(t.read("b"), content) << size;
        std::filesystem::remove(t.path("b"));
    }
}

TEST_P(FileCopy, KeepsContentOnAnotherVolume) {
    if (!SecondVolume::available()) GTEST_SKIP() << SecondVolume::unavailable;
    const SecondVolume other;
    std::string content(3'000'000, 'x');
    content[2'999'999] = 'y';
    t.write("a", content);
    EXPECT_EQ(copy(t, other.root(), GetParam()), 0);
    EXPECT_EQ(other.root().read("b"), content);
    EXPECT_EQ(t.read("a"), content);
}

TEST_P(FileCopy, KeepsHoles) {
    t.write("a", "start");
    std::filesystem::resize_file(t.path("a"), 32 << 20);
    const int file = ::open(t.path("a").c_str(), O_WRONLY | O_CLOEXEC);
    ASSERT_EQ(::pwrite(file, "middle", 6, 16 << 20), 6);
    ::close(file);
    ASSERT_EQ(copy(t, t, GetParam()), 0);
    const struct ::stat facts = factsOf(t.path("b"));
    EXPECT_EQ(facts.st_size, 32 << 20);
    EXPECT_LE(facts.st_blocks * 512, 256 << 10);
    EXPECT_EQ(t.read("b"), t.read("a"));
}

TEST_P(FileCopy, KeepsAFileThatIsNothingButAHole) {
    t.write("a", "");
    std::filesystem::resize_file(t.path("a"), 8 << 20);
    ASSERT_EQ(copy(t, t, GetParam()), 0);
    EXPECT_EQ(factsOf(t.path("b")).st_size, 8 << 20);
    EXPECT_LE(factsOf(t.path("b")).st_blocks * 512, 64 << 10);
}

TEST_P(FileCopy, NeverReplaces) {
    t.write("a", "content");
    t.write("b", "");
    EXPECT_EQ(copy(t, t, GetParam()), EEXIST);
    EXPECT_EQ(t.read("b"), "");
    std::filesystem::remove(t.path("b"));
    t.makeLink("b", "nowhere");
    EXPECT_EQ(copy(t, t, GetParam()), EEXIST);
    EXPECT_FALSE(t.has("nowhere"));
}

TEST_P(FileCopy, LeavesNothingOnAFullVolume) {
    if (!SecondVolume::available()) GTEST_SKIP() << SecondVolume::unavailable;
    const SecondVolume other(1 << 20);
    t.write("a", std::string(3 << 20, 'x'));
    EXPECT_EQ(copy(t, other.root(), GetParam()), ENOSPC);
    EXPECT_EQ(other.root().count(), 0u);
    EXPECT_EQ(factsOf(t.path("a")).st_size, 3 << 20);
}

class FileCopyKeeps : public testing::Test {
protected:
    FileCopyKeeps() { t.write("a", "content"); }
    TempFolder t;
};

TEST_F(FileCopyKeeps, ModeAndTimesToTheNanosecond) {
    for (const ::mode_t mode : {0444u, 0000u, 0755u, 01644u, 04711u}) {
        ::chmod(t.path("a").c_str(), mode);
        const ::timespec old[2] = {{1'000'000'000, 123'456'789}, {-5, 987'654'321}};
        ASSERT_EQ(::utimensat(AT_FDCWD, t.path("a").c_str(), old, 0), 0);
        if (::geteuid() != 0 && (mode & 0400) == 0) continue;  // not to be read at all
        ASSERT_EQ(copy(t, t), 0);
        const struct ::stat facts = factsOf(t.path("b"));
        EXPECT_EQ(facts.st_mode & 07777, mode);
        EXPECT_EQ(facts.st_atim.tv_nsec, 123'456'789);
        EXPECT_EQ(facts.st_mtim.tv_sec, -5);
        EXPECT_EQ(facts.st_mtim.tv_nsec, 987'654'321);
        std::filesystem::remove(t.path("b"));
    }
}

TEST_F(FileCopyKeeps, ModeAndTimesOnAnotherVolume) {
    if (!SecondVolume::available()) GTEST_SKIP() << SecondVolume::unavailable;
    const SecondVolume other;
    ::chmod(t.path("a").c_str(), 0640);
    const ::timespec old[2] = {{1'000'000'000, 123'456'789}, {1'500'000'000, 987'654'321}};
    ::utimensat(AT_FDCWD, t.path("a").c_str(), old, 0);
    ASSERT_EQ(copy(t, other.root()), 0);
    const struct ::stat facts = factsOf(other.path("b"));
    EXPECT_EQ(facts.st_mode & 07777, 0640u);
    EXPECT_EQ(facts.st_atim.tv_nsec, 123'456'789);
    EXPECT_EQ(facts.st_mtim.tv_nsec, 987'654'321);
}

TEST_F(FileCopyKeeps, OwnerAndGroupWhereAllowed) {
    if (::geteuid() != 0) GTEST_SKIP() << "NOT TESTED: only root may give files away";
    ASSERT_EQ(::lchown(t.path("a").c_str(), 1234, 2345), 0);
    ::chmod(t.path("a").c_str(), 06755);
    ASSERT_EQ(copy(t, t), 0);
    const struct ::stat facts = factsOf(t.path("b"));
    EXPECT_EQ(facts.st_uid, 1234u);
    EXPECT_EQ(facts.st_gid, 2345u);
    EXPECT_EQ(facts.st_mode & 07777, 06755u);
}

TEST_F(FileCopyKeeps, NoSetIdBitsUnderAnotherOwner) {
    if (::geteuid() != 0) GTEST_SKIP() << "NOT TESTED: only root has another user's files";
    ::chmod(t.path("a").c_str(), 06755);
    t.makeFolder("theirs");
    ordovan::test::giveToUnprivileged(t.path("theirs"));
    const int error = ordovan::test::unprivileged([&] {
        return ordovan::copyExclusively(t.path("a").c_str(), t.path("theirs/b").c_str(), {.sync = syncFolderOf});
    });
    EXPECT_EQ(error, 0);
    EXPECT_EQ(factsOf(t.path("theirs/b")).st_mode & 07777, 0755u);
    EXPECT_EQ(t.read("theirs/b"), "content");
}

TEST_F(FileCopyKeeps, ExtendedAttributes) {
    if (!setAttribute(t.path("a"), "user.comment", std::string("with\0zero", 9)) ||
        !setAttribute(t.path("a"), "user.empty", "")) {
        GTEST_SKIP() << "NOT TESTED: no extended attributes on the temporary folder's volume";
    }
    ::chmod(t.path("a").c_str(), 0444);
    ASSERT_EQ(copy(t, t), 0);
    EXPECT_EQ(attribute(t.path("b"), "user.comment"), std::string("with\0zero", 9));
    EXPECT_EQ(attribute(t.path("b"), "user.empty"), "");
}

TEST_F(FileCopyKeeps, ExtendedAttributesOnAnotherVolume) {
    if (!SecondVolume::available()) GTEST_SKIP() << SecondVolume::unavailable;
    const SecondVolume other;
    other.root().write("probe", "");
    if (!setAttribute(other.path("probe"), "user.comment", "x") || !setAttribute(t.path("a"), "user.comment", "kept")) {
        GTEST_SKIP() << "NOT TESTED: no extended attributes on one of the volumes";
    }
    ASSERT_EQ(copy(t, other.root()), 0);
    EXPECT_EQ(attribute(other.path("b"), "user.comment"), "kept");
}

TEST_F(FileCopyKeeps, AccessControlLists) {
    if (!setAttribute(t.path("a"), "system.posix_acl_access", accessList(0))) {
        GTEST_SKIP() << "NOT TESTED: no access control lists on the temporary folder's volume";
    }
    ASSERT_EQ(copy(t, t), 0);
    EXPECT_EQ(attribute(t.path("b"), "system.posix_acl_access"), accessList(0));
    EXPECT_EQ(factsOf(t.path("b")).st_mode & 07777, 0660u) << "the group bits beside a list are its mask";
}

TEST_F(FileCopyKeeps, NoMoreRightsThanTheListWhereItCanNotBeKept) {
    if (!SecondVolume::available()) GTEST_SKIP() << SecondVolume::unavailable;
    const SecondVolume plain(0, "ramfs");
    for (const char groupRight : {0, 4, 7}) {
        if (!setAttribute(t.path("a"), "system.posix_acl_access", accessList(groupRight))) {
            GTEST_SKIP() << "NOT TESTED: no access control lists on the temporary folder's volume";
        }
        ASSERT_EQ(copy(t, plain.root()), 0);
        const auto expected = 0600u | static_cast<unsigned>(groupRight & 6) << 3;
        EXPECT_EQ(factsOf(plain.path("b")).st_mode & 07777, expected);
        std::filesystem::remove(plain.path("b"));
    }
}

TEST_F(FileCopyKeeps, ContentWhereAttributesAreNotSupported) {
    if (!SecondVolume::available()) GTEST_SKIP() << SecondVolume::unavailable;
    const SecondVolume plain(0, "ramfs");
    setAttribute(t.path("a"), "user.comment", "lost");
    EXPECT_EQ(copy(t, plain.root()), 0);
    EXPECT_EQ(plain.root().read("b"), "content");
    std::filesystem::rename(plain.path("b"), plain.path("a"));
    EXPECT_EQ(copy(plain.root(), t), 0);
    EXPECT_EQ(t.read("b"), "content");
}

/// Copies a file with an attribute that is refused.
class FileCopyOfARefusedAttribute : public FileCopyKeeps {
protected:
    void SetUp() override {
        if (!setAttribute(t.path("a"), "user.comment", std::string(200, 'x'))) {
            GTEST_SKIP() << "NOT TESTED: no extended attributes on the temporary folder's volume";
        }
    }
    ~FileCopyOfARefusedAttribute() override {
        attributeRefusal = 0;
        shownRoom.reset();
    }
    int copyRefused(int error, std::uint64_t room) {
        attributeRefusal = error;
        shownRoom = room;
        return copy(t, t);
    }
};

TEST_F(FileCopyOfARefusedAttribute, LeavesOutWhatIsTooBigForTheVolume) {
    for (const int error : {E2BIG, ERANGE, ENOTSUP, EPERM, EACCES, EINVAL}) {
        EXPECT_EQ(copyRefused(error, 0), 0) << error;
        EXPECT_EQ(t.read("b"), "content");
        EXPECT_EQ(attribute(t.path("b"), "user.comment"), "none");
        std::filesystem::remove(t.path("b"));
    }
}

TEST_F(FileCopyOfARefusedAttribute, LeavesOutWhatHasNoRoomWhereTheVolumeHas) {
    for (const int error : {ENOSPC, EDQUOT}) {
        EXPECT_EQ(copyRefused(error, 8 << 20), 0) << error;
        EXPECT_EQ(t.read("b"), "content");
        EXPECT_EQ(attribute(t.path("b"), "user.comment"), "none");
        std::filesystem::remove(t.path("b"));
    }
}

TEST_F(FileCopyOfARefusedAttribute, FailsOnAFullVolumeAndOnAnyOtherError) {
    EXPECT_EQ(copyRefused(ENOSPC, 0), ENOSPC);
    EXPECT_EQ(copyRefused(EDQUOT, 4096), EDQUOT);
    EXPECT_EQ(copyRefused(EIO, 8 << 20), EIO);
    EXPECT_EQ(t.count(), 1u);
}

TEST_F(FileCopyOfARefusedAttribute, GivesNoMoreRightsThanAListThatHasNoRoom) {
    if (!setAttribute(t.path("a"), "system.posix_acl_access", accessList(4))) {
        GTEST_SKIP() << "NOT TESTED: no access control lists on the temporary folder's volume";
    }
    ASSERT_EQ(copyRefused(ENOSPC, 8 << 20), 0);
    EXPECT_EQ(factsOf(t.path("b")).st_mode & 07777, 0640u);
}

TEST_F(FileCopyKeeps, ContentWhereAnAttributeIsTooBig) {
    if (!SecondVolume::available()) GTEST_SKIP() << SecondVolume::unavailable;
    const SecondVolume other;
    other.root().write("a", "content");
    const std::string big(60'000, 'x');
    if (!setAttribute(other.path("a"), "user.big", big) || setAttribute(t.path("a"), "user.big", big)) {
        GTEST_SKIP() << "NOT TESTED: no volume here that holds a big attribute beside one that does not";
    }
    ASSERT_TRUE(setAttribute(other.path("a"), "user.small", "kept"));
    EXPECT_EQ(copy(other.root(), t), 0);
    EXPECT_EQ(t.read("b"), "content");
    EXPECT_EQ(attribute(t.path("b"), "user.small"), "kept");
    EXPECT_EQ(attribute(t.path("b"), "user.big"), "none");
}

/// What another program does while a file is being copied; `sync` comes after the content.
std::function<int(const std::string& item)> meanwhile;

class FileCopyFails : public testing::Test {
protected:
    FileCopyFails() { t.write("a", "content"); }
    ~FileCopyFails() override { Flushes::reset(); }
    int copyWhile(std::function<int(const std::string&)> action) {
        meanwhile = std::move(action);
        return copy(t, t, {.sync = [](ordovan::FolderEntry item) { return meanwhile(item.name); }});
    }
    TempFolder t;
};

TEST_F(FileCopyFails, WhenTheSourceIsWrittenMeanwhile) {
    const int error = copyWhile([&](const std::string&) {
        t.write("a", "CONTENT");
        return 0;
    });
    EXPECT_EQ(error, EBUSY);
    EXPECT_EQ(t.read("a"), "CONTENT");
    EXPECT_EQ(t.count(), 1u);
}

TEST_F(FileCopyFails, WhenTheSourceIsWrittenMeanwhileAndItsTimeSetBack) {
    const struct ::stat before = factsOf(t.path("a"));
    const int error = copyWhile([&](const std::string&) {
        const ::timespec times[2] = {before.st_atim, before.st_mtim};
        do {  // until the clock of the file system has moved on
            t.write("a", "CONTENT");
            ::utimensat(AT_FDCWD, t.path("a").c_str(), times, 0);
        } while (factsOf(t.path("a")).st_ctim.tv_nsec == before.st_ctim.tv_nsec);
        return 0;
    });
    EXPECT_EQ(factsOf(t.path("a")).st_mtim.tv_nsec, before.st_mtim.tv_nsec);
    EXPECT_EQ(error, EBUSY);
    EXPECT_EQ(t.read("a"), "CONTENT");
    EXPECT_EQ(t.count(), 1u);
}

TEST_F(FileCopyFails, WhenTheSourceIsReplacedMeanwhile) {
    t.write("fresh", "new");
    const int error = copyWhile([&](const std::string&) {
        std::filesystem::rename(t.path("fresh"), t.path("a"));
        return 0;
    });
    EXPECT_EQ(error, EBUSY);
    EXPECT_EQ(t.read("a"), "new");
    EXPECT_EQ(t.count(), 1u);
}

TEST_F(FileCopyFails, WhenTheSourceGoesMeanwhile) {
    const int error = copyWhile([&](const std::string&) {
        std::filesystem::remove(t.path("a"));
        return 0;
    });
    EXPECT_EQ(error, EBUSY);
    EXPECT_EQ(t.count(), 0u);
}

TEST_F(FileCopyFails, WithoutRemovingAFileThatTookTheCopysPlace) {
    t.write("theirs", "someone else's");
    const int error = copyWhile([&](const std::string& item) {
        std::filesystem::rename(t.path("theirs"), item);
        return EIO;
    });
    EXPECT_EQ(error, EIO);
    EXPECT_EQ(t.read("b"), "someone else's");
}

TEST_F(FileCopyFails, WhenTheFolderCanNotBeFlushed) {
    EXPECT_EQ(copyWhile([](const std::string&) { return EIO; }), EIO);
    EXPECT_EQ(t.count(), 1u);
}

TEST_F(FileCopyFails, WhenTheCopyCanNotBeFlushed) {
    Flushes::reset();
    Flushes::failing = [&](const std::string& path) { return path == t.path("b") ? EIO : 0; };
    EXPECT_EQ(copy(t, t), EIO);
    EXPECT_EQ(t.count(), 1u);
}

TEST_F(FileCopyFails, ForALinkAndForWhatIsNoFile) {
    t.makeLink("link", "a");
    t.makeFolder("folder");
    ::mkfifo(t.path("pipe").c_str(), 0600);
    const std::string to = t.path("b");
    EXPECT_EQ(ordovan::copyExclusively(t.path("link").c_str(), to.c_str(), {.sync = syncFolderOf}), ELOOP);
    EXPECT_EQ(ordovan::copyExclusively(t.path("folder").c_str(), to.c_str(), {.sync = syncFolderOf}), EINVAL);
    EXPECT_EQ(ordovan::copyExclusively(t.path("pipe").c_str(), to.c_str(), {.sync = syncFolderOf}), EINVAL);
    EXPECT_EQ(ordovan::copyExclusively(t.path("none").c_str(), to.c_str(), {.sync = syncFolderOf}), ENOENT);
    EXPECT_FALSE(t.has("b"));
}

TEST(FileCopyIsDurable, FirstTheCopyThenItsName) {
    const TempFolder t;
    t.write("a", "content");
    t.makeFolder("folder");
    Flushes::reset();
    EXPECT_EQ(ordovan::copyExclusively(t.path("a").c_str(), t.path("folder/b").c_str(), {.sync = syncFolderOf}), 0);
    EXPECT_EQ(Flushes::paths, (std::vector{t.path("folder/b"), t.path("folder")}));
}

}  // namespace
