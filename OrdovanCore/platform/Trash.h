#pragma once

#include "OrdovanCore/FileSystem.h"

namespace ordovan {

/// Moves an item to the user's Trash (freedesktop.org Trash specification 1.0) and returns where it lies there.
///
/// An item on the home Trash's volume goes to `$XDG_DATA_HOME/Trash`; any other to its own volume's `.Trash/$uid`
/// (only below a sticky directory that is no link) or `.Trash-$uid`. The info file is made first and exclusively, the
/// item is renamed without replacing, and the result is proved. Whatever fails, the item is where it was and no info
/// file is left behind. Never a copy, never a delete: no usable Trash is an error.
OrdovanResult<Url> moveToTrash(const Url& item);

}  // namespace ordovan
