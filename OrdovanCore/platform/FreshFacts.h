#pragma once

#include <sys/stat.h>

namespace ordovan {

/// Examines an item as the file system itself knows it at this moment, a link not being followed. What other looks give
/// of a file on a network or in user space (FUSE) may be what the kernel remembers: without what another machine wrote
/// since, or with a time of status change that the kernel made up when it renamed the file, and that gives way to the
/// server's sooner or later, as if somebody had changed the file. On local disks the two are the same, and cost the
/// same. With an empty name it is the descriptor's own file. What can not be asked so is examined as fstatat(2) does.
/// False when the item can not be examined, and errno tells. Any thread.
[[nodiscard]] bool examineAfresh(int folder, const char* name, struct ::stat& facts) noexcept;

}  // namespace ordovan
