#pragma once

#include "OrdovanCore/platform/FreshFacts.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ordovan {

/// An item by its name in a folder that is held open, as the *at family of system calls takes it; or by its absolute
/// path alone, and then every folder on the way is looked up anew. Refers to the name, which outlives it. A value; any
/// thread.
struct FolderEntry {
    FolderEntry(const char* path) noexcept : name(path) {}  // NOLINT(google-explicit-constructor): a path is one
    FolderEntry(int openFolder, const char* nameInIt) noexcept : folder(openFolder), name(nameInIt) {}

    int folder = AT_FDCWD;
    const char* name;

    /// What the item itself is (a link is not followed). False when it can not be examined, and errno tells.
    [[nodiscard]] bool examine(struct ::stat& facts) const noexcept {
        return ::fstatat(folder, name, &facts, AT_SYMLINK_NOFOLLOW) == 0;
    }
    /// The same as the file system itself knows it at this moment, see there.
    [[nodiscard]] bool examineAfresh(struct ::stat& facts) const noexcept {
        return ordovan::examineAfresh(folder, name, facts);
    }
    /// Takes the name away from what is no folder. 0, or -1 and errno.
    int unlink() const noexcept { return ::unlinkat(folder, name, 0); }
};

}  // namespace ordovan
