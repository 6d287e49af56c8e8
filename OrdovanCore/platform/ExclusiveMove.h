#pragma once

#include "OrdovanCore/platform/FolderEntry.h"

#include <functional>
#include <string>

namespace ordovan {

// Without state; any thread, several at once.

/// The ways to rename without replacing, in the order in which they are tried.
struct MoveWays {
    /// renameat2(2) with RENAME_NOREPLACE. NFS and many FUSE file systems answer EINVAL.
    bool rename = true;
    /// link(2), which never replaces, then the old name goes. FAT and some FUSE file systems have no links.
    bool link = true;
    /// An empty file made exclusively under the new name, replaced by rename(2) while it is provably still that file
    /// and still empty. Between proof and rename stand no other calls; what another program writes to our empty file
    /// in that instant would be lost, which is why this comes last.
    bool placeholder = true;
    /// Whether a file that has got its new name by a link loses the old one by way of a fresh hidden name in the same
    /// folder (`OrdovanPartialName`): what another program saves under the old name meanwhile is not taken for the file
    /// and gets that name back. An item that goes by a hidden name has it taken away directly: nobody else uses that.
    bool hidesOldName = true;
    /// Called before the first step of a way that has more than one, with that hidden name, empty for none; null for
    /// nobody.
    const std::function<void(const std::string& hiddenName)>* announce = nullptr;
    /// Set when something that was made on the way may be left, and never cleared: of a failed move the second name or
    /// the placeholder, and of any the hidden name. Null where nobody wants to know.
    bool* leavesSomething = nullptr;
};

/// Renames an item to a name that must be free and returns 0 or the errno (EEXIST when it is taken, a dangling link
/// counting as taken; EXDEV for another volume). On failure what stood at `to` is untouched, and what was made is taken
/// away again while it is provably ours: the item stands where it stood and nowhere else. Where that fails as well, or
/// can not be seen, `leavesSomething` is set. The reply to a link is not believed: what it did is seen. Folders too,
/// which take the `placeholder` way where the first one fails (rename(2) replaces a folder only while it is empty).
/// Where the first way is missing, a hidden name of ours, which nobody else makes up, is taken by a plain rename(2) if
/// it is free.
int moveExclusively(FolderEntry from, FolderEntry to, MoveWays ways = {});

/// The same, and the new name is on disk when it returns. When it can not be put there, the item goes back to its old
/// name and the error is that of the flush. `sync` flushes the folder of the item it is given; 0 or an errno.
int moveDurably(FolderEntry from, FolderEntry to, MoveWays ways, int (*sync)(FolderEntry item));

}  // namespace ordovan
