#pragma once

#include "OrdovanCore/Url.h"

namespace ordovan {

/// Whether the inode numbers of the volume that holds this item outlive an unmount, by the type of its file system
/// (statfs(2)): a file that a run was going to move is known again by its number, size and time. False for those whose
/// numbers are made up when a file is first looked at: FAT and exFAT, FUSE (which file system works behind it can not
/// be told) and network shares of the SMB kind (whose servers need not give any). True where the type can not be found
/// out. Any thread.
///
/// True for overlays too: they number by what lies below them. Where the layers are different file systems a file may
/// get another number when it is first changed, but by that change and not by an unmount; who compares identities then
/// finds a different file and leaves it alone. (What a rename may do to a number is another question:
/// `keepsInodeNumbers`.)
[[nodiscard]] bool keepsInodes(const Url& item);

/// Whether the whole identities of files on that volume do. False also where the kernel makes up a device number at
/// each mount (one of major 0): btrfs, NFS, ZFS, bcachefs and the like. True for tmpfs and ramfs all the same, whose
/// content goes with the mount, and for overlays, where it is left at refusing a file that is not known again: they are
/// what containers have for a root. Any thread.
[[nodiscard]] bool keepsIdentities(const Url& item);

}  // namespace ordovan
