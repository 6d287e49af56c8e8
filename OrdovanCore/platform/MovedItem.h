#pragma once

#include "OrdovanCore/platform/FolderEntry.h"

#include <sys/stat.h>

namespace ordovan {

// Without state; any thread.

/// True when an item is the one that was examined before it was renamed: the same device, inode and kind and, for a
/// file, the same size and time of modification. (The time of status change is changed by the rename itself.)
/// Where a rename may change the inode number, it does not count.
[[nodiscard]] bool isMoved(const struct ::stat& was, const struct ::stat& there, bool keepsInodeNumbers) noexcept;

/// The same for what stands at a place just now, the file system of which is asked where it matters.
[[nodiscard]] bool isMoved(const struct ::stat& was, const struct ::stat& there, FolderEntry place);

/// True for the types (statfs(2)) of file systems that are known to leave a renamed file its inode number. Not so FUSE,
/// whose servers may number by name, FAT, an overlay that copies the file to its upper layer, and what is unknown.
/// (Whether a number outlives an unmount is another question: `keepsIdentities`.)
[[nodiscard]] bool keepsInodeNumbers(unsigned long fileSystemType);

}  // namespace ordovan
