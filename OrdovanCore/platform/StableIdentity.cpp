#include "OrdovanCore/platform/StableIdentity.h"

#include "OrdovanCore/platform/SystemPath.h"

#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/vfs.h>

#include <algorithm>
#include <array>
#include <optional>
#include <span>

namespace ordovan {

namespace {

// linux/magic.h, and those that older kernel headers lack.
constexpr std::array<unsigned long, 6> typesWithPassingNumbers = {
    0x4d44,      // MSDOS_SUPER_MAGIC: vfat, msdos
    0x2011bab0,  // EXFAT_SUPER_MAGIC
    0x65735546,  // FUSE_SUPER_MAGIC
    0x517b,      // SMB_SUPER_MAGIC
    0xff534d42,  // CIFS_SUPER_MAGIC
    0xfe534d42,  // SMB2_SUPER_MAGIC
};

/// Those of which the content does not outlive the mount either, and overlays, for which see the header.
constexpr std::array<unsigned long, 3> typesOfOneMount = {
    0x01021994,  // TMPFS_MAGIC
    0x858458f6,  // RAMFS_MAGIC
    0x794c7630,  // OVERLAYFS_SUPER_MAGIC
};

/// The type of the file system that holds an item; nothing where that can not be found out.
std::optional<unsigned long> typeOf(const Url& item) {
    const SystemPath path(item);
    struct ::statfs volume;
    if (path.error() != 0 || ::statfs(path.text(), &volume) != 0) return std::nullopt;
    // The field is signed on some machines and must not drag its sign along.
    return static_cast<unsigned long>(volume.f_type) & 0xffffffff;
}

bool contains(std::span<const unsigned long> types, std::optional<unsigned long> type) {
    return type && std::ranges::find(types, *type) != types.end();
}

/// Whether the number of the item's device is one that the kernel made up when it was mounted: those of no driver.
bool hasPassingDevice(const Url& item) {
    const SystemPath path(item);
    struct ::stat facts;
    return path.error() == 0 && ::stat(path.text(), &facts) == 0 && major(facts.st_dev) == 0;
}

}  // namespace

bool keepsInodes(const Url& item) {
    return !contains(typesWithPassingNumbers, typeOf(item));
}

bool keepsIdentities(const Url& item) {
    return keepsInodes(item) && (!hasPassingDevice(item) || contains(typesOfOneMount, typeOf(item)));
}

}  // namespace ordovan
