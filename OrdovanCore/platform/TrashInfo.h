#pragma once

#include <string_view>

namespace ordovan {

/// Removes what a Trash knows about an item that has just been taken out of its "files" folder. Does nothing for a path
/// that is no such place (`trashInfoPath`), while the item is still there or may be, and for an info file that is none:
/// a link, a folder, or a text that begins in another way. A missing one is as good, an empty one (a power cut may
/// leave it so) is removed.
///
/// The item leaves first, so that a crash in between leaves an info file without an item, which every reader passes
/// over, and never an item that no file manager can put back.
void forgetTrashInfo(std::string_view item);

}  // namespace ordovan
