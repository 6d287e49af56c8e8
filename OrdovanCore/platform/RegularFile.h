#pragma once

#include "OrdovanCore/platform/Descriptor.h"
#include "OrdovanCore/platform/FolderEntry.h"

#include <sys/stat.h>

#include <cerrno>

namespace ordovan {

/// A regular file opened for reading, and what fstat(2) said of it. One object is used by one thread at a time.
struct RegularFile {
    Descriptor descriptor;
    struct ::stat facts{};

    /// Opens without following a final link, without waiting (a FIFO never blocks) and, where the system lets us,
    /// without touching the access time. Returns 0 or the errno: ELOOP for a link, EISDIR for a folder, EINVAL for
    /// anything else that is not a regular file, EBUSY when another program holds a lease on it.
    [[nodiscard]] int open(FolderEntry item) {
        return openWith([&](int flags) { return Descriptor::openAt(item.folder, item.name, flags); });
    }

    /// The same by any other call that opens something with open(2)'s flags and leaves its errno.
    template <class Opening>
    [[nodiscard]] int openWith(const Opening& opening) {
        constexpr int flags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK;
        descriptor = opening(flags | O_NOATIME);
        // Only the owner may spare the access time.
        if (!descriptor && errno == EPERM) descriptor = opening(flags);
        return check();
    }

private:
    [[nodiscard]] int check();
};

}  // namespace ordovan
