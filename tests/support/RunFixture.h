#pragma once

#include "OrdovanCore/platform/RunFileSystem.h"
#include "tests/support/Flushes.h"
#include "tests/support/Results.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

namespace ordovan::test {

/// A run in "root"; "decoy" is beside it, and so is what the home Trash is made in. Included by one source file of a
/// test program, it takes the place of functions of the C library.
class RunFixture : public ::testing::TestWithParam<ConfinedFolders::Entering> {
public:
    /// What another program does right before the next rename and right after it; with which errno renames and links
    /// are refused then, and which errno is told of renames that were made.
    static inline std::function<void()> beforeRename, afterRename;
    static inline int renameRefusal = 0;
    static inline int renameReply = 0;
    static inline int linkRefusal = 0;

    /// How many times an item was looked at, and the path that can not be looked at, if any.
    static inline int looks = 0;
    static inline std::string hidden;

    static int refusedOr(int refusal, const std::function<long()>& call) {
        if (refusal == 0) return static_cast<int>(call());
        errno = refusal;
        return -1;
    }

protected:
    RunFixture() {
        ::setenv("XDG_DATA_HOME", t.path("data").c_str(), 1);
        t.makeFolder("root");
        t.makeFolder("decoy");
    }
    ~RunFixture() override {
        ::unsetenv("XDG_DATA_HOME");
        beforeRename = afterRename = nullptr;
        renameRefusal = renameReply = linkRefusal = 0;
        hidden.clear();
        Flushes::reset();
    }

    [[nodiscard]] Url at(std::string_view name) const { return t.url("root/" + std::string(name)); }
    void write(std::string_view name, std::string_view content) const { t.write(inRoot(name), content); }
    [[nodiscard]] std::string read(std::string_view name) const { return t.read(inRoot(name)); }
    [[nodiscard]] bool has(std::string_view name) const { return t.has(inRoot(name)); }
    static std::string inRoot(std::string_view name) { return "root/" + std::string(name); }

    /// Another folder or link takes the name of "root/sub", which is "root/aside" from then on.
    void exchangeSubForLink() const {
        std::filesystem::rename(t.path("root/sub"), t.path("root/aside"));
        t.makeLink("root/sub", t.path("decoy"));
    }
    /// Another file takes the name of one.
    void replace(std::string_view name, std::string_view content) const {
        t.write("root/.fresh", content);
        std::filesystem::rename(t.path("root/.fresh"), t.path(inRoot(name)));
    }
    /// A program touches a file: only its time of status change tells.
    void touch(std::string_view name) const {
        struct ::stat before{}, now{};
        const std::string path = t.path(inRoot(name));
        ASSERT_EQ(::lstat(path.c_str(), &before), 0);
        const ::timespec times[2] = {before.st_atim, before.st_mtim};
        do {  // until a tick of the file system's clock later
            ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
            ASSERT_EQ(::lstat(path.c_str(), &now), 0);
        } while (now.st_ctim.tv_nsec == before.st_ctim.tv_nsec);
    }
    void hash(std::string_view name) { ASSERT_EQ(error(fs.contentHash(at(name))), 0); }

    TempFolder t;
    RunFileSystem fs{t.url("root"), GetParam()};
};

}  // namespace ordovan::test

extern "C" int renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags) noexcept {
    using ordovan::test::RunFixture;
    if (RunFixture::beforeRename) std::exchange(RunFixture::beforeRename, nullptr)();
    const int result = RunFixture::refusedOr(
        RunFixture::renameRefusal, [=] { return ::syscall(SYS_renameat2, fromFolder, from, toFolder, to, flags); });
    const int error = result == 0 ? RunFixture::renameReply : errno;
    if (RunFixture::afterRename) std::exchange(RunFixture::afterRename, nullptr)();
    errno = error;
    return error == 0 ? 0 : -1;
}
extern "C" int linkat(int fromFolder, const char* from, int toFolder, const char* to, int flags) noexcept {
    using ordovan::test::RunFixture;
    return RunFixture::refusedOr(RunFixture::linkRefusal,
                                 [=] { return ::syscall(SYS_linkat, fromFolder, from, toFolder, to, flags); });
}
extern "C" int fstatat(int folder, const char* path, struct stat* facts, int flags) noexcept {
    using ordovan::test::RunFixture;
    ++RunFixture::looks;
    if (RunFixture::hidden == path) {
        errno = EIO;
        return -1;
    }
    return static_cast<int>(::syscall(SYS_newfstatat, folder, path, facts, flags));
}
extern "C" int statx(int folder, const char* path, int flags, unsigned mask, struct statx* facts) noexcept {
    using ordovan::test::RunFixture;
    ++RunFixture::looks;
    if (*path != '\0' && RunFixture::hidden == path) {  // without a path it is about what is open
        errno = EIO;
        return -1;
    }
    return static_cast<int>(::syscall(SYS_statx, folder, path, flags, mask, facts));
}
