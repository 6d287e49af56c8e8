#pragma once

#include "OrdovanCore/platform/Descriptor.h"
#include "OrdovanCore/platform/FolderEntry.h"

#include <sys/stat.h>

namespace ordovan {

/// A regular file opened for reading, and what fstat(2) said of it.
struct RegularFile {
    Descriptor descriptor;
    struct ::stat facts{};

    /// Opens without following a final link, without waiting (a FIFO never blocks) and, where the system lets us,
    /// without touching the access time. Returns 0 or the errno: ELOOP for a link, EISDIR for a folder, EINVAL for
    /// anything else that is not a regular file, EBUSY when another program holds a lease on it.
    [[nodiscard]] int open(FolderEntry item);
};

}  // namespace ordovan
