#pragma once

#include "OrdovanCore/platform/Descriptor.h"
#include "OrdovanCore/platform/FolderEntry.h"

#include <sys/stat.h>

#include <cerrno>

namespace ordovan {

/// A regular file opened for reading, and what it was then. One object is used by one thread at a time.
struct RegularFile {
    /// Whose word `facts` is: the kernel's, which may remember it from earlier, or the file system's own, for those who
    /// compare it with a later look.
    enum class Look { usual, afresh };

    Descriptor descriptor;
    struct ::stat facts{};

    /// Opens without following a final link, without waiting (a FIFO never blocks) and, where the system lets us,
    /// without touching the access time. Returns 0 or the errno: ELOOP for a link, EISDIR for a folder, EINVAL for
    /// anything else that is not a regular file, EBUSY when another program holds a lease on it.
    [[nodiscard]] int open(FolderEntry item, Look look = Look::usual) {
        return openWith([&](int flags) { return Descriptor::openAt(item.folder, item.name, flags); }, look);
    }

    /// The same by any other call that opens something with open(2)'s flags and leaves its errno.
    template <class Opening>
    [[nodiscard]] int openWith(const Opening& opening, Look look = Look::usual) {
        constexpr int flags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK;
        descriptor = opening(flags | O_NOATIME);
        // Only the owner may spare the access time.
        if (!descriptor && errno == EPERM) descriptor = opening(flags);
        return check(look);
    }

    /// What the file is by now. False when it can not be examined, and errno tells.
    [[nodiscard]] bool examineAfresh(struct ::stat& now) const noexcept {
        return ordovan::examineAfresh(descriptor.get(), "", now);
    }

private:
    [[nodiscard]] int check(Look look);
};

}  // namespace ordovan
