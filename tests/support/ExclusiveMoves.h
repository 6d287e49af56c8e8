#pragma once

#include "OrdovanCore/platform/ExclusiveMove.h"
#include "tests/support/TempFolder.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

// What tests of exclusive moves do to them. Included by one source file of a test program, it takes the place of
// functions of the C library.

namespace ordovan::test {

/// What another program does at the next but `skip` examination of a path.
inline std::function<void()> atExamination;
inline int skip = 0;

/// The errno with which a file system refuses every renameat2(2), and every linkat(2).
inline int renameRefusal = 0;
inline int linkRefusal = 0;

/// A path that can not be examined, and one that can not be removed, and why not; from when `atExamination` set it.
struct Refusal {
    std::string path;
    int error = 0;
};
inline Refusal examination;
inline Refusal removal;

/// What another program does right before the next rename, and whether the system does what it says it did not.
inline std::function<void()> atRename;
inline int renameReply = 0;
inline int linkReply = 0;
inline int openReply = 0;

/// True from when the volume takes no changes any more, as one that has met an error.
inline bool isReadOnly = false;
/// Whether the volume makes up an item's number from its name.
inline bool numbersByName = false;

/// What can not be done to a hidden name of ours, and why not.
struct HiddenRefusals {
    int rename = 0;
    int examination = 0;
    int removal = 0;
};
inline HiddenRefusals hidden;

inline bool isHidden(const char* path) {
    return std::string_view(path).contains("/.a.ordovan-partial-");
}

inline bool fails(int error) {
    errno = error;
    return error != 0;
}

/// The errno with which looking at open files fails.
inline int openFileRefusal = 0;

inline bool refuses(const Refusal& refusal, const char* path) {
    if (refusal.error == 0 || refusal.path != path) return false;
    errno = refusal.error;
    return true;
}

}  // namespace ordovan::test

// Takes the place of the C library's, so that a test can act between two steps of a move.
extern "C" int fstatat(int folder, const char* path, struct stat* facts, int flags) noexcept {
    using namespace ordovan::test;
    if (atExamination && skip-- == 0) std::exchange(atExamination, nullptr)();
    if (refuses(examination, path) || (isHidden(path) && fails(hidden.examination))) return -1;
    const int done = static_cast<int>(::syscall(SYS_newfstatat, folder, path, facts, flags));
    if (done == 0 && numbersByName) facts->st_ino = std::hash<std::string_view>()(path);
    return done;
}
extern "C" int fstatfs(int file, struct statfs* facts) noexcept {
    const int done = static_cast<int>(::syscall(SYS_fstatfs, file, facts));
    if (done == 0 && ordovan::test::numbersByName) facts->f_type = FUSE_SUPER_MAGIC;
    return done;
}
extern "C" int openat(int folder, const char* path, int flags, ...) {
    using namespace ordovan::test;
    va_list more;
    va_start(more, flags);
    const ::mode_t mode = (flags & O_CREAT) != 0 ? va_arg(more, ::mode_t) : 0;
    va_end(more);
    if ((flags & O_CREAT) != 0 && isReadOnly && fails(EROFS)) return -1;
    const int file = static_cast<int>(::syscall(SYS_openat, folder, path, flags, mode));
    if (file < 0 || (flags & O_CREAT) == 0 || openReply == 0) return file;
    ::close(file);
    errno = std::exchange(openReply, 0);
    return -1;
}
extern "C" int fstat(int file, struct stat* facts) noexcept {
    using namespace ordovan::test;
    if (openFileRefusal == 0) return static_cast<int>(::syscall(SYS_fstat, file, facts));
    errno = openFileRefusal;
    return -1;
}
extern "C" int unlinkat(int folder, const char* path, int flags) noexcept {
    using namespace ordovan::test;
    if (refuses(removal, path) || (isHidden(path) && fails(hidden.removal))) return -1;
    if (isReadOnly && fails(EROFS)) return -1;
    return static_cast<int>(::syscall(SYS_unlinkat, folder, path, flags));
}
extern "C" int linkat(int fromFolder, const char* from, int toFolder, const char* to, int flags) noexcept {
    using namespace ordovan::test;
    if (fails(isReadOnly ? EROFS : linkRefusal)) return -1;
    const int done = static_cast<int>(::syscall(SYS_linkat, fromFolder, from, toFolder, to, flags));
    return done != 0 || fails(std::exchange(linkReply, 0)) ? -1 : 0;
}
extern "C" int renameat(int fromFolder, const char* from, int toFolder, const char* to) noexcept {
    using namespace ordovan::test;
    if (atRename) std::exchange(atRename, nullptr)();
    if ((isHidden(to) && fails(hidden.rename)) || (isReadOnly && fails(EROFS))) return -1;
    const int done = static_cast<int>(::syscall(SYS_renameat2, fromFolder, from, toFolder, to, 0));
    return done != 0 || fails(std::exchange(renameReply, 0)) ? -1 : 0;
}
extern "C" int renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags) noexcept {
    using namespace ordovan::test;
    if (renameRefusal == 0) return static_cast<int>(::syscall(SYS_renameat2, fromFolder, from, toFolder, to, flags));
    errno = renameRefusal;
    return -1;
}

namespace ordovan::test {

inline constexpr MoveWays byLink{.rename = false, .link = true, .placeholder = false};
inline constexpr MoveWays byLinkPlainly{.rename = false, .link = true, .placeholder = false, .hidesOldName = false};
inline constexpr MoveWays byPlaceholder{.rename = false, .link = false, .placeholder = true};
inline constexpr MoveWays byLinkOrPlaceholder{.rename = false, .link = true, .placeholder = true};

inline int move(const TempFolder& t, const char* from, const char* to, MoveWays ways) {
    return ordovan::moveExclusively(t.path(from).c_str(), t.path(to).c_str(), ways);
}

inline ::ino_t inode(const std::string& path) {
    struct ::stat facts{};
    return ::lstat(path.c_str(), &facts) == 0 ? facts.st_ino : 0;
}

}  // namespace ordovan::test
