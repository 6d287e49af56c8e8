#include "OrdovanCore/platform/CaseProbe.h"

#include <linux/magic.h>

namespace ordovan {

namespace {

// Types that linux/magic.h does not name, from statfs(2) and the file systems' own headers.
constexpr unsigned long bcachefsType = 0xca451a4e;
constexpr unsigned long hfsType = 0x4244;
constexpr unsigned long udfType = 0x15013346;

/// After this many names that told nothing, more will not.
constexpr int mostNamesAsked = 64;

/// The name with every ASCII letter in the other case; empty when it has none.
std::string inOtherCase(std::string name) {
    bool changed = false;
    for (char& c : name) {
        const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
        if (letter) c = static_cast<char>(c ^ 0x20);
        changed |= letter;
    }
    if (!changed) name.clear();
    return name;
}

bool isListed(FolderNames& names, const std::string& wanted) {
    names.rewind();
    while (const std::optional<std::string> name = names.next()) {
        if (*name == wanted) return true;
    }
    return false;
}

}  // namespace

CaseRule caseRuleOfType(unsigned long type) {
    switch (type) {
        // Those that can fold case do it by folder, which the folder's casefold flag tells.
        case EXT4_SUPER_MAGIC:
        case BTRFS_SUPER_MAGIC:
        case F2FS_SUPER_MAGIC:
        case TMPFS_MAGIC:
        case RAMFS_MAGIC:
        case OVERLAYFS_SUPER_MAGIC:
        case REISERFS_SUPER_MAGIC:
        case NILFS_SUPER_MAGIC:
        case SQUASHFS_MAGIC:
        case EROFS_SUPER_MAGIC_V1:
        case CEPH_SUPER_MAGIC:
        case bcachefsType:
        case udfType:
            return CaseRule::sensitive;
        case MSDOS_SUPER_MAGIC:
        case EXFAT_SUPER_MAGIC:
        case hfsType:
            return CaseRule::insensitive;
        default:  // xfs, zfs, jfs, hfs+ and NTFS as they were made; FUSE and network volumes as the other side is
            return CaseRule::ask;
    }
}

std::optional<bool> namesDifferByCase(FolderNames& names) {
    for (int asked = 0; asked < mostNamesAsked; ++asked) {
        const std::optional<std::string> name = names.next();
        if (!name) break;
        const std::string other = inOtherCase(*name);
        if (other.empty()) continue;
        switch (names.lookUp(other)) {
            case FolderNames::Lookup::missing:
                return true;
            case FolderNames::Lookup::found:
                return isListed(names, other);
            case FolderNames::Lookup::unknown:
                break;
        }
    }
    return std::nullopt;
}

}  // namespace ordovan
