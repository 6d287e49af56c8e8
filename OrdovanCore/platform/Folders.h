#pragma once

#include "OrdovanCore/Url.h"
#include "OrdovanCore/platform/FolderEntry.h"

#include <sys/types.h>

#include <span>
#include <string_view>

namespace ordovan {

// Without state; any thread, several at once.

/// Makes a folder and all missing folders above it, each with `mode` (less the umask). An existing folder, or a link
/// to one, is no error and keeps its mode. Returns 0 or the errno: EEXIST when something else bears the name, ENOTDIR
/// or EEXIST when something else stands on the way; the folders made by then stay. Nothing is flushed.
int makeFolders(std::string_view path, ::mode_t mode);

/// Puts the entry of an item in its folder on disk (fsync(2) on the folder). For a folder that may be written but not
/// read, the whole volume is flushed instead. Returns 0 or the errno; a file system that can not flush folders at all
/// counts as having done so.
int syncFolderOf(FolderEntry item);

/// Whether the file system of an open folder brings changes of names to the disk in their order, a rename as one,
/// because it has a journal or the like: ext4, XFS, btrfs and F2FS. Not so FAT, for one.
[[nodiscard]] bool keepsOrder(int openFolder);

/// Puts the names of items that were moved on the disk, as far as that can be done, so that after a power cut each item
/// has its new name and no other. The folders of `arrivals`, the new places, are flushed whether an item is there or
/// not: a copy may have been taken away again. Then come the folders of `departures`, the old places, or where such a
/// folder is gone the next one above it: where an item is still there, since it may have had another name meanwhile;
/// where items were moved to other volumes; and where a rename is not one change of the file system's journal.
///
/// A few folders one by one (fsync(2)); many, and those of btrfs, by flushing their volumes, each once (syncfs(2));
/// those of FUSE always one by one.
///
/// `records` is the folder in which it is then recorded, on disk, what was moved; empty for none. On its own volume
/// nothing is flushed where that is ext4 or XFS: their journal brings the moves to the disk with the record, or before.
///
/// False where a volume says that it could not flush, or not even be asked (it has met an error and turned read-only,
/// say): then nobody knows which of its items will be where when it is mounted anew. What is gone, what may not be
/// read, and file systems that can not flush folders at all, count as flushed; so does what comes with the record.
[[nodiscard]] bool syncMoves(std::span<const Url> arrivals, std::span<const Url> departures = {},
                             std::string_view records = {});

/// Whether folders can be flushed by themselves, so that `syncMoves` tells something. ext4, XFS, btrfs and F2FS are not
/// asked; of the others each folder is flushed. Folders that are gone or may not be read count as such that can.
[[nodiscard]] bool canFlush(std::span<const Url> folders);

}  // namespace ordovan
