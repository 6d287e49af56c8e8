#include "OrdovanCore/platform/MovedItem.h"

#include "OrdovanCore/platform/Descriptor.h"
#include "OrdovanCore/platform/SameFile.h"

#include <linux/magic.h>
#include <sys/vfs.h>

namespace ordovan {

bool keepsInodeNumbers(unsigned long fileSystemType) {
    switch (fileSystemType) {
        case EXT4_SUPER_MAGIC:
        case XFS_SUPER_MAGIC:
        case BTRFS_SUPER_MAGIC:
        case F2FS_SUPER_MAGIC:
        case REISERFS_SUPER_MAGIC:
        case NILFS_SUPER_MAGIC:
        case TMPFS_MAGIC:
        case RAMFS_MAGIC:
        case NFS_SUPER_MAGIC:
            return true;
        default:
            return false;
    }
}

bool isMoved(const struct ::stat& was, const struct ::stat& there, bool keepsInodeNumbers) noexcept {
    const bool isOfOneKind = (was.st_mode & S_IFMT) == (there.st_mode & S_IFMT);
    if (!isOfOneKind || (keepsInodeNumbers && !isSameFile(was, there))) return false;
    return !S_ISREG(was.st_mode) || (was.st_size == there.st_size && isSameTime(was.st_mtim, there.st_mtim));
}

bool isMoved(const struct ::stat& was, const struct ::stat& there, FolderEntry place) {
    if (isMoved(was, there, true)) return true;
    const Descriptor item = Descriptor::openAt(place.folder, place.name, O_PATH | O_NOFOLLOW);
    struct ::statfs volume;
    // The field is signed on some machines and must not drag its sign along.
    const bool isWeak = item && ::fstatfs(item.get(), &volume) == 0 &&
                        !keepsInodeNumbers(static_cast<unsigned long>(volume.f_type) & 0xffffffff);
    return isWeak && isMoved(was, there, false);
}

}  // namespace ordovan
