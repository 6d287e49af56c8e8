#pragma once

#include "OrdovanCore/FileSystem.h"
#include "OrdovanCore/Reconcile.h"

#include <span>
#include <vector>

namespace ordovan {

/// All info files of the user's Trash that tell of one of these places: in the home Trash and in those at the top of
/// the volumes that hold the places. An item beside an info file that tells no place, as a power cut may leave it, is
/// told of each place whose name it may bear. Each Trash is read once; nothing is made or changed. What the Trash would
/// not be put into, such as a folder of another user, is passed over. An error when a Trash of ours that is there can
/// not be read. Any thread.
[[nodiscard]] OrdovanResult<std::vector<TrashedFile>> findInTrash(std::span<const Url> originals);

/// Removes the info file of an item that is not there; ENOTEMPTY when it is. None there is no error. Any thread.
[[nodiscard]] OrdovanResult<void> removeTrashInfo(const TrashedFile& orphan);

}  // namespace ordovan
