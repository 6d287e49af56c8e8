#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <ctime>
#include <string>

namespace ordovan {

// Pure; any thread.

/// True when both describe one file: the same inode of the same device.
[[nodiscard]] inline bool isSameFile(const struct ::stat& a, const struct ::stat& b) noexcept {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

/// The same, and of one kind: an inode number that was given to something else meanwhile often shows by that.
[[nodiscard]] inline bool isSameItem(const struct ::stat& a, const struct ::stat& b) noexcept {
    return isSameFile(a, b) && (a.st_mode & S_IFMT) == (b.st_mode & S_IFMT);
}

[[nodiscard]] inline bool isSameTime(const ::timespec& a, const ::timespec& b) noexcept {
    return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
}

/// True when one file was neither written nor had its attributes changed between two looks at it: the same size, time
/// of modification and time of status change (which no program can set).
[[nodiscard]] inline bool isUnwritten(const struct ::stat& before, const struct ::stat& after) noexcept {
    return before.st_size == after.st_size && isSameTime(before.st_mtim, after.st_mtim) &&
           isSameTime(before.st_ctim, after.st_ctim);
}

/// A file's identity as the port and the stored records give it: device and inode (`OrdovanFileSystem::fileIdentity`).
[[nodiscard]] inline std::string identityText(const struct ::stat& facts) {
    return std::to_string(static_cast<std::int32_t>(facts.st_dev)) + ":" +
           std::to_string(static_cast<std::uint64_t>(facts.st_ino));
}

/// True when what was examined once is still there and was neither written nor changed otherwise since.
[[nodiscard]] inline bool isUntouched(const struct ::stat& before, const struct ::stat& after) noexcept {
    return isSameItem(before, after) && isUnwritten(before, after);
}

}  // namespace ordovan
