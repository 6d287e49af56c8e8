#pragma once

#include <dlfcn.h>
#include <fcntl.h>
#include <linux/fs.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/types.h>
#include <sys/uio.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ordovan::proofs {

/// Which system calls are watched, and what befalls which of them.
struct SystemCallPlan {
    std::string below = "";             ///< only calls about this folder, or about what lies in it, count
    bool changesOnly = true;            ///< only calls that change something, or write it to the disk, count
    std::size_t at = 0;                 ///< the number of the call to which something happens; 0: to none
    bool forGood = false;               ///< it happens to all later calls as well
    std::function<void()> before = {};  ///< done before that call
    std::function<void()> after = {};   ///< done after it
    int error = 0;                      ///< with which that call fails
    bool afterEffect = false;           ///< it fails after it was done: its reply was lost
    /// Whether that can happen to a call of this name; empty: to every one.
    std::function<bool(std::string_view name)> applies = {};
    bool isShort = false;  ///< it reads or writes half of what it was told to, at least one byte
};

/// The system calls of this program about files, with what can befall one of them. Included by one source file of a
/// test program, it takes the place of the C library's functions, also for the libraries that the program uses.
///
///     SystemCalls::watch({.below = folder, .at = 3, .before = [] { ::raise(SIGKILL); }});
///     ...
///     SystemCalls::ignore();
///
/// Calls are counted from 1 while they are watched. Any thread.
class SystemCalls {
public:
    static void watch(SystemCallPlan plan) {
        const std::lock_guard lock(mutex_);
        plan_ = std::move(plan);
        calls_.clear();
        happened_ = 0;
        isWatching_ = true;
    }
    static void ignore() {
        const std::lock_guard lock(mutex_);
        isWatching_ = false;
    }
    /// From now on the calls of these names fail with these errors, as on a file system that does not know them,
    /// whether calls are watched or not.
    static void lack(std::map<std::string_view, int> errors) {
        const std::lock_guard lock(mutex_);
        lacking_ = std::move(errors);
    }
    /// The calls that were counted, in order: "renameat2 /x/a".
    static std::vector<std::string> calls() {
        const std::lock_guard lock(mutex_);
        return calls_;
    }
    /// How many calls something happened to.
    static std::size_t happened() {
        const std::lock_guard lock(mutex_);
        return happened_;
    }

    /// What a call is about.
    struct Subject {
        const char* name;
        bool isChange;
        int descriptor;
        const char* path;  ///< null for a call about the descriptor itself
    };

    /// One call on its way. `Result` is what the C library's function returns, -1 meaning an error.
    template <class Result, class Real>
    static Result pass(const Subject& subject, const Real& real) {
        if (isInside_ || (!isWatching_ && lacking_.empty())) return real(false);
        const auto lacking = lacking_.find(subject.name);
        if (lacking != lacking_.end()) {
            errno = lacking->second;
            return static_cast<Result>(-1);
        }
        const Fate fate = meet(subject);
        perform(fate.before);
        if (fate.error != 0 && !fate.afterEffect) {
            errno = fate.error;
            return static_cast<Result>(-1);
        }
        const Result result = real(fate.isShort);
        const int error = errno;
        perform(fate.after);
        errno = error;
        if (fate.error == 0) return result;
        errno = fate.error;
        return static_cast<Result>(-1);
    }

    /// The C library's function of this name.
    template <class Function>
    static Function* real(const char* name) {
        return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
    }

private:
    struct Fate {
        std::function<void()> before;
        std::function<void()> after;
        int error = 0;
        bool afterEffect = false;
        bool isShort = false;
    };

    static Fate meet(const Subject& subject) {
        const std::lock_guard lock(mutex_);
        if (!isWatching_ || (plan_.changesOnly && !subject.isChange)) return {};
        std::string path = pathOf(subject);
        if (!path.starts_with(plan_.below)) return {};
        calls_.push_back(std::string(subject.name) + " " + path);
        const std::size_t number = calls_.size();
        if (plan_.at == 0 || number < plan_.at || (number > plan_.at && !plan_.forGood)) return {};
        if (plan_.applies && !plan_.applies(subject.name)) return {};
        ++happened_;
        return {plan_.before, plan_.after, plan_.error, plan_.afterEffect, plan_.isShort};
    }

    static void perform(const std::function<void()>& action) {
        if (!action) return;
        isInside_ = true;
        action();
        isInside_ = false;
    }

    static std::string ofDescriptor(int descriptor) {
        char target[4096];
        const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
        const long got = ::syscall(SYS_readlinkat, AT_FDCWD, link.c_str(), target, sizeof target);
        return got > 0 ? std::string(target, static_cast<std::size_t>(got)) : std::string();
    }

    static std::string pathOf(const Subject& subject) {
        constexpr std::string_view open = "/proc/self/fd/";
        const std::string_view path = subject.path == nullptr ? std::string_view() : std::string_view(subject.path);
        if (path.empty()) return ofDescriptor(subject.descriptor);
        if (path.starts_with(open)) {
            const std::size_t slash = std::min(path.find('/', open.size()), path.size());
            const int descriptor = std::atoi(std::string(path.substr(open.size(), slash - open.size())).c_str());
            return ofDescriptor(descriptor).append(path.substr(slash));
        }
        if (path.front() == '/' || subject.descriptor == AT_FDCWD) return std::string(path);
        return ofDescriptor(subject.descriptor).append("/").append(path);
    }

    static inline std::mutex mutex_;
    static inline SystemCallPlan plan_;
    static inline std::map<std::string_view, int> lacking_;
    static inline std::vector<std::string> calls_;
    static inline std::size_t happened_ = 0;
    static inline bool isWatching_ = false;
    static inline thread_local bool isInside_ = false;
};

/// Half of a count, at least one.
inline std::size_t halved(std::size_t count, bool isShort) {
    return isShort && count > 1 ? count / 2 : count;
}

inline bool changes(int openFlags) {
    return (openFlags & (O_CREAT | O_TRUNC)) != 0 || (openFlags & O_TMPFILE) == O_TMPFILE;
}

}  // namespace ordovan::proofs

// NOLINTBEGIN: the C library's names and signatures

#define ORDOVAN_REAL(name) static auto* const real = SystemCalls::real<decltype(::name)>(#name)

extern "C" {

using ordovan::proofs::changes;
using ordovan::proofs::halved;
using ordovan::proofs::SystemCalls;

/// What opening a file that is there already or made now comes to, under either of its two names.
static int openVia(decltype(::openat)* real, const char* name, int folder, const char* path, int flags, mode_t mode) {
    return SystemCalls::pass<int>({name, changes(flags), folder, path},
                                  [&](bool) { return real(folder, path, flags, mode); });
}

#define ORDOVAN_OPEN_MODE(flags)                                          \
    mode_t mode = 0;                                                      \
    if (((flags) & O_CREAT) != 0 || ((flags) & O_TMPFILE) == O_TMPFILE) { \
        va_list rest;                                                     \
        va_start(rest, flags);                                            \
        mode = va_arg(rest, mode_t);                                      \
        va_end(rest);                                                     \
    }

int open(const char* path, int flags, ...) {
    ORDOVAN_REAL(openat);
    ORDOVAN_OPEN_MODE(flags)
    return openVia(real, "open", AT_FDCWD, path, flags, mode);
}
int open64(const char* path, int flags, ...) {
    ORDOVAN_REAL(openat);
    ORDOVAN_OPEN_MODE(flags)
    return openVia(real, "open", AT_FDCWD, path, flags, mode);
}
int openat(int folder, const char* path, int flags, ...) {
    ORDOVAN_REAL(openat);
    ORDOVAN_OPEN_MODE(flags)
    return openVia(real, "openat", folder, path, flags, mode);
}
int openat64(int folder, const char* path, int flags, ...) {
    ORDOVAN_REAL(openat);
    ORDOVAN_OPEN_MODE(flags)
    return openVia(real, "openat", folder, path, flags, mode);
}

ssize_t read(int file, void* bytes, size_t count) {
    ORDOVAN_REAL(read);
    return SystemCalls::pass<ssize_t>({"read", false, file, nullptr},
                                      [&](bool isShort) { return real(file, bytes, halved(count, isShort)); });
}
ssize_t pread(int file, void* bytes, size_t count, off_t at) {
    ORDOVAN_REAL(pread);
    return SystemCalls::pass<ssize_t>({"pread", false, file, nullptr},
                                      [&](bool isShort) { return real(file, bytes, halved(count, isShort), at); });
}
ssize_t write(int file, const void* bytes, size_t count) {
    ORDOVAN_REAL(write);
    return SystemCalls::pass<ssize_t>({"write", true, file, nullptr},
                                      [&](bool isShort) { return real(file, bytes, halved(count, isShort)); });
}
ssize_t pwrite(int file, const void* bytes, size_t count, off_t at) {
    ORDOVAN_REAL(pwrite);
    return SystemCalls::pass<ssize_t>({"pwrite", true, file, nullptr},
                                      [&](bool isShort) { return real(file, bytes, halved(count, isShort), at); });
}
ssize_t copy_file_range(int from, off64_t* in, int to, off64_t* out, size_t count, unsigned flags) {
    ORDOVAN_REAL(copy_file_range);
    return SystemCalls::pass<ssize_t>({"copy_file_range", true, to, nullptr}, [&](bool isShort) {
        return real(from, in, to, out, halved(count, isShort), flags);
    });
}
int ioctl(int file, unsigned long request, ...) noexcept {
    static auto* const real = SystemCalls::real<int(int, unsigned long, void*)>("ioctl");
    va_list rest;
    va_start(rest, request);
    void* const argument = va_arg(rest, void*);
    va_end(rest);
    return SystemCalls::pass<int>({"ioctl", request == FICLONE, file, nullptr},
                                  [&](bool) { return real(file, request, argument); });
}

/// Closing a file that was written to may be when its last error is told; it is closed all the same (close(2)).
int close(int file) {
    ORDOVAN_REAL(close);
    bool isClosed = false;
    const bool isWritten = (::fcntl(file, F_GETFL) & O_ACCMODE) != O_RDONLY;
    const int result = SystemCalls::pass<int>({"close", isWritten, file, nullptr}, [&](bool) {
        isClosed = true;
        return real(file);
    });
    if (isClosed) return result;
    const int error = errno;
    real(file);
    errno = error;
    return result;
}

#define ORDOVAN_DESCRIPTOR_CALL(name, isChange)                                                            \
    int name(int file) {                                                                                   \
        ORDOVAN_REAL(name);                                                                                \
        return SystemCalls::pass<int>({#name, isChange, file, nullptr}, [&](bool) { return real(file); }); \
    }
ORDOVAN_DESCRIPTOR_CALL(fsync, true)
ORDOVAN_DESCRIPTOR_CALL(fdatasync, true)
#undef ORDOVAN_DESCRIPTOR_CALL

int sync_file_range(int file, off64_t at, off64_t count, unsigned flags) {
    ORDOVAN_REAL(sync_file_range);
    return SystemCalls::pass<int>({"sync_file_range", true, file, nullptr},
                                  [&](bool) { return real(file, at, count, flags); });
}
int ftruncate(int file, off_t size) noexcept {
    ORDOVAN_REAL(ftruncate);
    return SystemCalls::pass<int>({"ftruncate", true, file, nullptr}, [&](bool) { return real(file, size); });
}
int fchmod(int file, mode_t mode) noexcept {
    ORDOVAN_REAL(fchmod);
    return SystemCalls::pass<int>({"fchmod", true, file, nullptr}, [&](bool) { return real(file, mode); });
}
int fchown(int file, uid_t user, gid_t group) noexcept {
    ORDOVAN_REAL(fchown);
    return SystemCalls::pass<int>({"fchown", true, file, nullptr}, [&](bool) { return real(file, user, group); });
}
int futimens(int file, const struct timespec times[2]) noexcept {
    ORDOVAN_REAL(futimens);
    return SystemCalls::pass<int>({"futimens", true, file, nullptr}, [&](bool) { return real(file, times); });
}
int fsetxattr(int file, const char* name, const void* value, size_t size, int flags) noexcept {
    ORDOVAN_REAL(fsetxattr);
    return SystemCalls::pass<int>({"fsetxattr", true, file, nullptr},
                                  [&](bool) { return real(file, name, value, size, flags); });
}
int flock(int file, int operation) noexcept {
    ORDOVAN_REAL(flock);
    return SystemCalls::pass<int>({"flock", false, file, nullptr}, [&](bool) { return real(file, operation); });
}

int rename(const char* from, const char* to) noexcept {
    ORDOVAN_REAL(rename);
    return SystemCalls::pass<int>({"rename", true, AT_FDCWD, from}, [&](bool) { return real(from, to); });
}
int renameat(int fromFolder, const char* from, int toFolder, const char* to) noexcept {
    ORDOVAN_REAL(renameat);
    return SystemCalls::pass<int>({"renameat", true, fromFolder, from},
                                  [&](bool) { return real(fromFolder, from, toFolder, to); });
}
int renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags) noexcept {
    ORDOVAN_REAL(renameat2);
    return SystemCalls::pass<int>({"renameat2", true, fromFolder, from},
                                  [&](bool) { return real(fromFolder, from, toFolder, to, flags); });
}
int link(const char* from, const char* to) noexcept {
    ORDOVAN_REAL(link);
    return SystemCalls::pass<int>({"link", true, AT_FDCWD, from}, [&](bool) { return real(from, to); });
}
int linkat(int fromFolder, const char* from, int toFolder, const char* to, int flags) noexcept {
    ORDOVAN_REAL(linkat);
    return SystemCalls::pass<int>({"linkat", true, fromFolder, from},
                                  [&](bool) { return real(fromFolder, from, toFolder, to, flags); });
}
int unlink(const char* path) noexcept {
    ORDOVAN_REAL(unlink);
    return SystemCalls::pass<int>({"unlink", true, AT_FDCWD, path}, [&](bool) { return real(path); });
}
int unlinkat(int folder, const char* path, int flags) noexcept {
    ORDOVAN_REAL(unlinkat);
    return SystemCalls::pass<int>({"unlinkat", true, folder, path}, [&](bool) { return real(folder, path, flags); });
}
int rmdir(const char* path) noexcept {
    ORDOVAN_REAL(rmdir);
    return SystemCalls::pass<int>({"rmdir", true, AT_FDCWD, path}, [&](bool) { return real(path); });
}
int mkdir(const char* path, mode_t mode) noexcept {
    ORDOVAN_REAL(mkdir);
    return SystemCalls::pass<int>({"mkdir", true, AT_FDCWD, path}, [&](bool) { return real(path, mode); });
}
int mkdirat(int folder, const char* path, mode_t mode) noexcept {
    ORDOVAN_REAL(mkdirat);
    return SystemCalls::pass<int>({"mkdirat", true, folder, path}, [&](bool) { return real(folder, path, mode); });
}

int stat(const char* path, struct stat* facts) noexcept {
    ORDOVAN_REAL(stat);
    return SystemCalls::pass<int>({"stat", false, AT_FDCWD, path}, [&](bool) { return real(path, facts); });
}
int lstat(const char* path, struct stat* facts) noexcept {
    ORDOVAN_REAL(lstat);
    return SystemCalls::pass<int>({"lstat", false, AT_FDCWD, path}, [&](bool) { return real(path, facts); });
}
int fstat(int file, struct stat* facts) noexcept {
    ORDOVAN_REAL(fstat);
    return SystemCalls::pass<int>({"fstat", false, file, nullptr}, [&](bool) { return real(file, facts); });
}
int fstatat(int folder, const char* path, struct stat* facts, int flags) noexcept {
    ORDOVAN_REAL(fstatat);
    return SystemCalls::pass<int>({"fstatat", false, folder, path},
                                  [&](bool) { return real(folder, path, facts, flags); });
}
int statx(int folder, const char* path, int flags, unsigned mask, struct statx* facts) noexcept {
    ORDOVAN_REAL(statx);
    return SystemCalls::pass<int>({"statx", false, folder, path},
                                  [&](bool) { return real(folder, path, flags, mask, facts); });
}

/// The calls that the C library has no function for.
long syscall(long number, ...) noexcept {
    static auto* const real = SystemCalls::real<long(long, long, long, long, long, long, long)>("syscall");
    long a[6];
    va_list rest;
    va_start(rest, number);
    for (long& argument : a) argument = va_arg(rest, long);
    va_end(rest);
    const auto call = [&](bool) { return real(number, a[0], a[1], a[2], a[3], a[4], a[5]); };
    if (number != SYS_openat2) return call(false);
    // Its third argument points to the flags (open_how, openat2(2)).
    const auto flags = static_cast<int>(*reinterpret_cast<const unsigned long long*>(a[2]));
    return SystemCalls::pass<long>(
        {"openat2", changes(flags), static_cast<int>(a[0]), reinterpret_cast<const char*>(a[1])}, call);
}

}  // extern "C"

#undef ORDOVAN_OPEN_MODE
#undef ORDOVAN_REAL
// NOLINTEND
