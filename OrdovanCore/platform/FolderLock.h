#pragma once

#include "OrdovanCore/FileSystem.h"
#include "OrdovanCore/platform/Descriptor.h"

#include <chrono>
#include <functional>
#include <utility>

namespace ordovan {

/// How long a lock is waited for.
struct LockPatience {
    std::chrono::milliseconds longest{0};
    /// Asked whenever the lock was not to be had; true ends the wait. Empty: nothing but the time does.
    std::function<bool()> isEnded = {};
};

/// An exclusive lock on a folder (flock(2) on the folder itself), for processes that agree to ask for it. It leaves no
/// file behind and the kernel releases it when the process ends, however it ends. Two locks on one folder exclude each
/// other within one process as well. Any thread.
class FolderLock {
public:
    /// Takes the lock or fails at once: EWOULDBLOCK when another holds it, else the system's error (ENOENT, EACCES).
    /// A file system without locks (ENOLCK, ENOTSUP) gives a lock that excludes nobody.
    static OrdovanResult<FolderLock> tryAcquire(const Url& folder);
    /// Takes the lock, asking again every 20 ms while another holds it: flock(2) waits without an end or not at all,
    /// and a wait that short is not noticed. Errors as for `tryAcquire`: EWOULDBLOCK when the patience is at its end,
    /// EINTR when `isEnded` ended it. The folder is made (0700) when it is missing.
    static OrdovanResult<FolderLock> acquire(const Url& folder, const LockPatience& patience);

private:
    explicit FolderLock(Descriptor folder) noexcept : folder_(std::move(folder)) {}
    Descriptor folder_;
};

}  // namespace ordovan
