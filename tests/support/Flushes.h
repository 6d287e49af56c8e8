#pragma once

#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace ordovan::test {

/// What the program put on disk with fsync(2). Included by one source file of a test program, it takes the C library's
/// place, so that durability can be tested without pulling a plug.
struct Flushes {
    /// The flushed paths in order, as they were called at that moment.
    static inline std::vector<std::string> paths;
    /// When set, a path for which it returns an errno is not flushed and fails with it.
    static inline std::function<int(const std::string& path)> failing;

    /// Forgets everything; to be called first in a test.
    static void reset() {
        paths.clear();
        failing = nullptr;
    }
};

}  // namespace ordovan::test

extern "C" int fsync(int file) {
    using ordovan::test::Flushes;
    const std::string path = std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(file)).string();
    Flushes::paths.push_back(path);
    const int refused = Flushes::failing ? Flushes::failing(path) : 0;
    if (refused == 0) return static_cast<int>(::syscall(SYS_fsync, file));
    errno = refused;
    return -1;
}
