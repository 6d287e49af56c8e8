#include "OrdovanCore/platform/SystemFileSystem.h"

#include "tests/support/Flushes.h"
#include "tests/support/Results.h"
#include "tests/support/SecondVolume.h"
#include "tests/support/TempFolder.h"
#include "tests/support/Unprivileged.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <string>

using ordovan::test::BindMount;
using ordovan::test::error;
using ordovan::test::errorUnprivileged;
using ordovan::test::Flushes;
using ordovan::test::giveToUnprivileged;
using ordovan::test::SecondVolume;
using ordovan::test::TempFolder;
using ordovan::test::unprivileged;

namespace {

const std::string hashOfNothing = "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855";
const std::string hashOfAbc = "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";
const std::string hashOfOneMiBOfZeros = "30e14955ebf1352266dc2ff8067e68104607e750abb9d3b36582b8af909fcb58";

struct ::stat factsOf(const std::string& path) {
    struct ::stat facts{};
    EXPECT_EQ(::lstat(path.c_str(), &facts), 0) << path;
    return facts;
}

class SystemFiles : public testing::Test {
protected:
    TempFolder t;
    SystemFileSystem fs;
};

TEST_F(SystemFiles, TellALinkFromItsTarget) {
    t.write("file", "12345");
    t.makeLink("link", "file");
    EXPECT_TRUE(fs.exists(t.url("link")));
    EXPECT_FALSE(fs.isRegularFile(t.url("link")));
    EXPECT_TRUE(fs.isSymlink(t.url("link")));
    EXPECT_EQ(fs.fileSize(t.url("link")), 4);
    EXPECT_EQ(fs.fileSize(t.url("file")), 5);
    EXPECT_EQ(fs.fileIdentity(t.url("link")), fs.fileIdentity(t.url("file")));
}

TEST_F(SystemFiles, TellADanglingLink) {
    t.makeLink("link", "nowhere");
    EXPECT_FALSE(fs.exists(t.url("link")));
    EXPECT_TRUE(fs.isSymlink(t.url("link")));
    EXPECT_EQ(fs.fileSize(t.url("link")), 7);
    EXPECT_EQ(error(fs.fileIdentity(t.url("link"))), OrdovanSystemError::fileReadNoSuchFile);
}

TEST_F(SystemFiles, IgnoreSlashesBehindAName) {
    t.makeFolder("folder");
    t.makeLink("link", "folder");
    t.write("file", "12345");
    EXPECT_TRUE(fs.isSymlink(t.url("link//")));
    EXPECT_TRUE(fs.isRegularFile(t.url("file/")));
    EXPECT_EQ(error(fs.remove(t.url("link/"))), 0);
    EXPECT_TRUE(t.has("folder"));
}

TEST_F(SystemFiles, RefuseAPathThatIsTooLong) {
    std::string name;
    while (name.size() < 4096) name += "d/";
    EXPECT_FALSE(fs.exists(t.url(name)));
    EXPECT_EQ(error(fs.contentHash(t.url(name))), ENAMETOOLONG);
    EXPECT_EQ(error(fs.createDirectory(t.url(name))), ENAMETOOLONG);
    EXPECT_EQ(error(fs.fileSize(t.url(name))), OrdovanSystemError::fileReadNoSuchFile);
    EXPECT_EQ(t.count(), 0u);
}

TEST_F(SystemFiles, AreNeverThoseBeforeANulByte) {
    t.write("file", "content");
    const Url hostile = t.url(std::string("file\0.txt", 9));
    EXPECT_FALSE(fs.exists(hostile));
    EXPECT_EQ(error(fs.remove(hostile)), EINVAL);
    EXPECT_EQ(error(fs.move(hostile, t.url("moved"))), EINVAL);
    EXPECT_EQ(error(fs.move(t.url("file"), hostile)), EINVAL);
    EXPECT_EQ(error(fs.copy(t.url("file"), hostile)), EINVAL);
    EXPECT_EQ(t.count(), 1u);
}

TEST_F(SystemFiles, MayHaveAnyName) {
    for (const std::string& name : {std::string("new\nline"), std::string(255, 'n'), std::string("\xff\xfe\x80"),
                                    std::string("-rf"), std::string("\"quoted\" 'name'"), std::string("tail. ")}) {
        const Url file = t.write(name, "abc"), other = t.url("other");
        EXPECT_TRUE(fs.isRegularFile(file)) << name;
        EXPECT_EQ(fs.contentHash(file), hashOfAbc) << name;
        EXPECT_EQ(error(fs.move(file, other)), 0) << name;
        EXPECT_EQ(error(fs.copy(other, file)), 0) << name;
        EXPECT_EQ(t.read(name), "abc");
        EXPECT_EQ(error(fs.remove(file)), 0) << name;
        EXPECT_EQ(error(fs.remove(other)), 0) << name;
    }
    EXPECT_EQ(t.count(), 0u);
}

TEST_F(SystemFiles, AreHashedBySha256) {
    EXPECT_EQ(fs.contentHash(t.write("empty", "")), hashOfNothing);
    EXPECT_EQ(fs.contentHash(t.write("abc", "abc")), hashOfAbc);
    EXPECT_EQ(fs.contentHash(t.write("MiB", std::string(1 << 20, '\0'))), hashOfOneMiBOfZeros);
}

TEST_F(SystemFiles, AreHashedWithoutTouchingTheirAccessTime) {
    const Url file = t.write("file", "abc");
    const ::timespec old[2] = {{1'000'000'000, 5}, {1'500'000'000, 7}};
    ASSERT_EQ(::utimensat(AT_FDCWD, t.path("file").c_str(), old, 0), 0);
    EXPECT_EQ(fs.contentHash(file), hashOfAbc);
    EXPECT_EQ(factsOf(t.path("file")).st_atim.tv_sec, 1'000'000'000);
}

TEST_F(SystemFiles, OfAnotherUserAreHashedToo) {
    // Only a file's owner may spare its access time, so this open is refused first.
    const Url file = ::geteuid() == 0 ? t.write("roots", "abc") : Url::file("/etc/passwd");
    const std::string expected = *fs.contentHash(file);
    EXPECT_EQ(unprivileged([&] { return *fs.contentHash(file); }), expected);
}

TEST_F(SystemFiles, AreNotSocketsDevicesOrPipes) {
    ASSERT_EQ(::mkfifo(t.path("pipe").c_str(), 0600), 0);
    ::sockaddr_un address{};
    address.sun_family = AF_UNIX;
    t.path("socket").copy(address.sun_path, sizeof address.sun_path - 1);
    const int listener = ::socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_EQ(::bind(listener, reinterpret_cast<const ::sockaddr*>(&address), sizeof address), 0);
    for (const Url& url : {t.url("pipe"), t.url("socket"), Url::file("/dev/full"), Url::file("/dev/zero")}) {
        EXPECT_FALSE(fs.isRegularFile(url)) << url;
        EXPECT_EQ(error(fs.contentHash(url)), EINVAL) << url;
        EXPECT_EQ(error(fs.copy(url, t.url("copy"))), EINVAL) << url;
        EXPECT_FALSE(t.has("copy"));
    }
    ::close(listener);
}

TEST_F(SystemFiles, HeldByAnotherProgramAreBusy) {
    const Url file = t.write("file", "abc");
    std::signal(SIGIO, SIG_IGN);  // how the holder of a lease is told
    const int holder = ::open(t.path("file").c_str(), O_WRONLY | O_CLOEXEC);
    if (::fcntl(holder, F_SETLEASE, F_WRLCK) != 0) GTEST_SKIP() << "NOT TESTED: no leases on this file system";
    EXPECT_EQ(error(fs.contentHash(file)), EBUSY);
    ::close(holder);
    EXPECT_EQ(fs.contentHash(file), hashOfAbc);
}

TEST_F(SystemFiles, ThatMayNotBeReadAreNotHashed) {
    t.write("secret", "abc");
    giveToUnprivileged(t.path());
    ::chmod(t.path("secret").c_str(), 0);
    EXPECT_EQ(errorUnprivileged([&] { return fs.contentHash(t.url("secret")); }), EACCES);
    EXPECT_EQ(errorUnprivileged([&] { return fs.copy(t.url("secret"), t.url("copy")); }), EACCES);
    EXPECT_EQ(t.count(), 1u);
}

TEST_F(SystemFiles, InAClosedFolderCanNotBeExamined) {
    t.write("closed/file", "abc");
    giveToUnprivileged(t.path());
    ::chmod(t.path("closed").c_str(), 0);
    const Url file = t.url("closed/file");
    EXPECT_FALSE(unprivileged([&] { return fs.exists(file) || fs.isRegularFile(file) || fs.isSymlink(file); }));
    EXPECT_EQ(errorUnprivileged([&] { return fs.fileSize(file); }), OrdovanSystemError::fileReadNoSuchFile);
    EXPECT_EQ(errorUnprivileged([&] { return fs.fileIdentity(file); }), OrdovanSystemError::fileReadNoSuchFile);
    EXPECT_TRUE(unprivileged([&] { return fs.sameVolume(file, t.url()); })) << "judged by the folder above";
}

TEST_F(SystemFiles, HaveAnIdentityOfDeviceColonInode) {
    const Url file = t.write("file", "abc");
    const struct ::stat facts = factsOf(t.path("file"));
    EXPECT_EQ(fs.fileIdentity(file),
              std::to_string(static_cast<std::int32_t>(facts.st_dev)) + ":" + std::to_string(facts.st_ino));
}

TEST_F(SystemFiles, KeepTheirIdentityWhenMovedAndNotWhenCopied) {
    const Url file = t.write("file", "abc");
    const std::string before = *fs.fileIdentity(file);
    ASSERT_EQ(error(fs.move(file, t.url("moved"))), 0);
    ASSERT_EQ(error(fs.copy(t.url("moved"), t.url("copy"))), 0);
    EXPECT_EQ(fs.fileIdentity(t.url("moved")), before);
    EXPECT_NE(fs.fileIdentity(t.url("copy")), before);
}

TEST_F(SystemFiles, KeepModeAndTimesWhenMoved) {
    const Url file = t.write("file", "abc");
    ::chmod(t.path("file").c_str(), 0640);
    const ::timespec old[2] = {{1'000'000'000, 123'456'789}, {1'500'000'000, 987'654'321}};
    ::utimensat(AT_FDCWD, t.path("file").c_str(), old, 0);
    ASSERT_EQ(error(fs.move(file, t.url("moved"))), 0);
    const struct ::stat facts = factsOf(t.path("moved"));
    EXPECT_EQ(facts.st_mode & 07777, 0640u);
    EXPECT_EQ(facts.st_mtim.tv_nsec, 987'654'321);
}

TEST_F(SystemFiles, AreNeverReplacedByAMoveOrACopy) {
    t.write("file", "abc");
    t.write("empty", "");
    t.makeFolder("folder");
    t.makeLink("dangling", "nowhere");
    for (const char* taken : {"empty", "folder", "dangling", "file"}) {
        EXPECT_EQ(error(fs.move(t.url("file"), t.url(taken))), EEXIST) << taken;
        EXPECT_EQ(error(fs.copy(t.url("file"), t.url(taken))), EEXIST) << taken;
    }
    EXPECT_EQ(t.read("file"), "abc");
    EXPECT_EQ(t.read("empty"), "");
    EXPECT_FALSE(t.has("nowhere"));
}

TEST_F(SystemFiles, StayOnTheirVolumeWhenMoved) {
    if (!SecondVolume::available()) GTEST_SKIP() << SecondVolume::unavailable;
    const SecondVolume other;
    const Url file = t.write("file", "abc");
    EXPECT_EQ(error(fs.move(file, other.url("file"))), EXDEV);
    EXPECT_EQ(t.read("file"), "abc");
    EXPECT_EQ(other.root().count(), 0u);
}

TEST_F(SystemFiles, AreOnOneVolumeByTheirNearestExistingFolder) {
    EXPECT_TRUE(fs.sameVolume(t.url("a/b/c/d"), t.url()));
    EXPECT_TRUE(fs.sameVolume(t.url("missing/a"), t.url("missing/b/c")));
    EXPECT_FALSE(fs.sameVolume(t.url("a"), Url::file("/proc/missing/b")));
    if (!SecondVolume::available()) GTEST_SKIP() << SecondVolume::unavailable;
    const SecondVolume other;
    EXPECT_FALSE(fs.sameVolume(t.url("a/b"), other.url("a/b")));
    EXPECT_TRUE(fs.sameVolume(other.url("a"), other.url("b/c")));
    t.makeLink("link", other.path());
    EXPECT_TRUE(fs.sameVolume(t.url("link/a/b"), other.url("c"))) << "links are followed";
}

TEST_F(SystemFiles, OnAnotherMountOfTheirDeviceCanNotBeReachedByAMove) {
    if (!SecondVolume::available()) GTEST_SKIP() << SecondVolume::unavailable;
    const Url file = t.write("file", "abc");
    t.makeFolder("shown");
    const BindMount elsewhere(t.path("shown"));
    EXPECT_TRUE(fs.sameVolume(file, elsewhere.root().url("file")));
    EXPECT_EQ(error(fs.move(file, elsewhere.root().url("file"))), EXDEV);
    EXPECT_EQ(t.read("file"), "abc");
}

TEST_F(SystemFiles, OnAReadOnlyVolumeStay) {
    if (!SecondVolume::available()) GTEST_SKIP() << SecondVolume::unavailable;
    const SecondVolume other;
    other.root().write("folder/file", "abc");
    other.makeReadOnly();
    const Url file = other.url("folder/file");
    EXPECT_EQ(error(fs.move(file, other.url("moved"))), EROFS);
    EXPECT_EQ(error(fs.remove(file)), EROFS);
    EXPECT_EQ(error(fs.copy(file, other.url("copy"))), EROFS);
    EXPECT_EQ(error(fs.createDirectory(other.url("new/folder"))), EROFS);
    EXPECT_EQ(error(fs.createDirectory(other.url("folder"))), 0) << "it is there";
    EXPECT_EQ(fs.contentHash(file), hashOfAbc);
}

TEST_F(SystemFiles, InAFolderThatMayNotChangeStay) {
    t.write("locked/file", "abc");
    giveToUnprivileged(t.path());
    ::chmod(t.path("locked").c_str(), 0500);
    EXPECT_EQ(errorUnprivileged([&] { return fs.move(t.url("locked/file"), t.url("file")); }), EACCES);
    EXPECT_EQ(errorUnprivileged([&] { return fs.remove(t.url("locked/file")); }), EACCES);
    EXPECT_EQ(errorUnprivileged([&] { return fs.copy(t.url("locked/file"), t.url("locked/copy")); }), EACCES);
    EXPECT_EQ(errorUnprivileged([&] { return fs.createDirectory(t.url("locked/new/folder")); }), EACCES);
    EXPECT_EQ(t.read("locked/file"), "abc");
    EXPECT_EQ(t.count("locked"), 1u);
    EXPECT_FALSE(t.has("file"));
}

TEST_F(SystemFiles, GoToTheUsersTrashUnderAnotherNameWhenTheirsIsTaken) {
    t.makeFolder("data");
    ::setenv("XDG_DATA_HOME", t.path("data").c_str(), 1);
    const auto first = fs.trash(t.write("file.txt", "first"));
    const auto second = fs.trash(t.write("file.txt", "second"));
    ::unsetenv("XDG_DATA_HOME");
    ASSERT_EQ(error(first), 0);
    ASSERT_EQ(error(second), 0);
    EXPECT_EQ(first->deletingLastPathComponent(), t.url("data/Trash/files"));
    EXPECT_EQ(second->deletingLastPathComponent(), t.url("data/Trash/files"));
    EXPECT_EQ(t.read("data/Trash/files/file.txt"), "first");
    EXPECT_EQ(t.read("data/Trash/files/" + std::string(second->lastPathComponent())), "second");
    EXPECT_FALSE(t.has("file.txt"));
}

class SystemFolders : public SystemFiles {};

TEST_F(SystemFolders, AreMadeWithAllThatAreMissingAboveThem) {
    EXPECT_EQ(error(fs.createDirectory(t.url("a/b//c/d/"))), 0);
    EXPECT_EQ(error(fs.createDirectory(t.url("a/b/c/d"))), 0) << "again";
    EXPECT_TRUE(std::filesystem::is_directory(t.path("a/b/c/d")));
}

TEST_F(SystemFolders, MayBeReachedByALink) {
    t.makeFolder("folder");
    t.makeLink("link", "folder");
    EXPECT_EQ(error(fs.createDirectory(t.url("link"))), 0);
    EXPECT_EQ(error(fs.createDirectory(t.url("link/a/b"))), 0);
    EXPECT_TRUE(std::filesystem::is_directory(t.path("folder/a/b")));
}

TEST_F(SystemFolders, DoNotTakeThePlaceOfSomethingElse) {
    t.write("file", "abc");
    t.makeLink("dangling", "nowhere");
    EXPECT_EQ(error(fs.createDirectory(t.url("file"))), EEXIST);
    EXPECT_EQ(error(fs.createDirectory(t.url("file/a/b"))), ENOTDIR);
    EXPECT_EQ(error(fs.createDirectory(t.url("dangling"))), EEXIST);
    EXPECT_EQ(error(fs.createDirectory(t.url("dangling/a/b"))), ENOENT);
    EXPECT_EQ(t.read("file"), "abc");
    EXPECT_EQ(t.count(), 2u);
}

TEST_F(SystemFolders, AreNotRemovedAsFiles) {
    t.makeFolder("folder");
    EXPECT_EQ(error(fs.remove(t.url("folder"))), EISDIR);
    EXPECT_TRUE(t.has("folder"));
    EXPECT_EQ(error(fs.contentHash(t.url("folder"))), EISDIR);
    EXPECT_EQ(error(fs.copy(t.url("folder"), t.url("copy"))), EINVAL);
}

class SystemMove : public SystemFiles {
protected:
    SystemMove() { Flushes::reset(); }
    ~SystemMove() override { Flushes::reset(); }
};

TEST_F(SystemMove, PutsAPartialCopysFinalNameOnDisk) {
    const Url partial = OrdovanPartialName::beside(t.url("folder/file"));
    t.write("folder/" + std::string(partial.lastPathComponent()), "abc");
    EXPECT_EQ(error(fs.move(partial, t.url("folder/file"))), 0);
    EXPECT_EQ(Flushes::paths, std::vector{t.path("folder")});
    EXPECT_EQ(t.read("folder/file"), "abc");
}

TEST_F(SystemMove, GivesAPartialCopyItsNameBackWhenTheFolderCanNotBeFlushed) {
    const Url partial = OrdovanPartialName::beside(t.url("file"));
    t.write(partial.lastPathComponent(), "abc");
    Flushes::failing = [](const std::string&) { return EIO; };
    EXPECT_EQ(error(fs.move(partial, t.url("file"))), EIO);
    EXPECT_EQ(t.read(partial.lastPathComponent()), "abc");
    EXPECT_EQ(t.count(), 1u);
}

TEST_F(SystemMove, TakesAFileSystemThatCanNotFlushFoldersAsItIs) {
    const Url partial = OrdovanPartialName::beside(t.url("file"));
    t.write(partial.lastPathComponent(), "abc");
    Flushes::failing = [](const std::string&) { return EINVAL; };
    EXPECT_EQ(error(fs.move(partial, t.url("file"))), 0);
    EXPECT_EQ(t.read("file"), "abc");
}

TEST_F(SystemMove, IntoAFolderThatMayNotBeReadIsDurableToo) {
    const Url partial = OrdovanPartialName::beside(t.url("drop/file"));
    t.write("drop/" + std::string(partial.lastPathComponent()), "abc");
    giveToUnprivileged(t.path());
    ::chmod(t.path("drop").c_str(), 0300);
    EXPECT_EQ(errorUnprivileged([&] { return fs.move(partial, t.url("drop/file")); }), 0);
    ::chmod(t.path("drop").c_str(), 0700);
    EXPECT_EQ(t.read("drop/file"), "abc");
}

TEST_F(SystemMove, OfAnyOtherFileFlushesNothing) {
    EXPECT_EQ(error(fs.move(t.write("file", "abc"), t.url("moved"))), 0);
    EXPECT_EQ(Flushes::paths, std::vector<std::string>{});
}

}  // namespace
