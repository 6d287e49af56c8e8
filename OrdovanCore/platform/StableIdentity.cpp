#include "OrdovanCore/platform/StableIdentity.h"

#include "OrdovanCore/platform/SystemPath.h"

#include <sys/vfs.h>

#include <algorithm>
#include <array>
#include <optional>

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

constexpr unsigned long btrfs = 0x9123683e;  // BTRFS_SUPER_MAGIC

/// The type of the file system that holds an item; nothing where that can not be found out.
std::optional<unsigned long> typeOf(const Url& item) {
    const SystemPath path(item);
    struct ::statfs volume;
    if (path.error() != 0 || ::statfs(path.text(), &volume) != 0) return std::nullopt;
    // The field is signed on some machines and must not drag its sign along.
    return static_cast<unsigned long>(volume.f_type) & 0xffffffff;
}

}  // namespace

bool keepsInodes(const Url& item) {
    return std::ranges::find(typesWithPassingNumbers, typeOf(item)) == typesWithPassingNumbers.end();
}

bool keepsIdentities(const Url& item) {
    return keepsInodes(item) && typeOf(item) != btrfs;
}

}  // namespace ordovan
