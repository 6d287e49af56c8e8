#pragma once

#include <sys/file.h>

#include <cerrno>

namespace ordovan {

/// Takes an exclusive lock on an open file or folder (flock(2)), which lasts until its last descriptor is closed. 0,
/// also where the file system has no locks and so nobody is excluded; else the errno: EWOULDBLOCK when another holds
/// it. Any thread.
[[nodiscard]] inline int tryLock(int descriptor) {
    while (::flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
        switch (errno) {
            case EINTR:
                continue;
            case ENOLCK:
            case ENOTSUP:
            case ENOSYS:
            case EINVAL:
                return 0;
            default:
                return errno;
        }
    }
    return 0;
}

}  // namespace ordovan
