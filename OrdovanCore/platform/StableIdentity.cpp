#include "OrdovanCore/platform/StableIdentity.h"

#include "OrdovanCore/platform/SystemPath.h"

#include <sys/vfs.h>

#include <algorithm>
#include <array>

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

}  // namespace

bool keepsIdentities(const Url& item) {
    const SystemPath path(item);
    struct ::statfs volume;
    if (path.error() != 0 || ::statfs(path.text(), &volume) != 0) return true;
    // The field is signed on some machines and must not drag its sign along.
    const unsigned long type = static_cast<unsigned long>(volume.f_type) & 0xffffffff;
    return std::ranges::find(typesWithPassingNumbers, type) == typesWithPassingNumbers.end();
}

}  // namespace ordovan
