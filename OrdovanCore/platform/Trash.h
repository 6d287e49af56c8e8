#pragma once

#include "OrdovanCore/FileSystem.h"
#include "OrdovanCore/platform/TrashFolder.h"
#include "OrdovanCore/platform/TrashInfo.h"

#include <sys/stat.h>

#include <functional>
#include <optional>
#include <string>

namespace ordovan {

/// What a move to the Trash insists on.
struct TrashTerms {
    /// How an item below its root is reached; null for none.
    ConfinedFolders* confined = nullptr;
    /// The item, untouched since it was examined so (EBUSY otherwise); null for any.
    const struct ::stat* was = nullptr;
    /// Called before a move that takes more than one step (`MoveWays`); null for nobody.
    const std::function<void(const std::string& hiddenName)>* announce = nullptr;
    /// Set when something of the item may be in the Trash though it was to be taken out again, and when it may have a
    /// hidden name; never cleared. Null where nobody wants to know.
    bool* leavesSomething = nullptr;
};

/// Moves items to the user's Trash (freedesktop.org Trash specification 1.0). One object serves one run on one thread:
/// it keeps the last item's folder and Trash open, so that their volume can not be unmounted before the run is over.
///
/// An item on the home Trash's device goes to `$XDG_DATA_HOME/Trash` ("~/.local/share" where the variable is empty or
/// relative); any other, and one that the kernel refuses to rename there, to its own volume's `.Trash/$uid` (only
/// below a sticky directory that is no link) or `.Trash-$uid`. Folders of the Trash that are links, another user's or
/// open to everybody's changes are not used. The info file is made first and exclusively (how it comes to the disk is
/// told by `InfoFlusher`), the item is renamed without replacing, and the result is proved. A taken name gets a number;
/// finding one takes few looks however many items of that name there are.
///
/// Whatever fails, the item is where it was and no info file is left behind, as far as the Trash lets go of them: what
/// may be left there keeps its info file, by which it is found. Never a copy, never a delete: no usable Trash is an
/// error.
class TrashSession {
public:
    /// Returns where the item lies. Errors: the system's own; EBUSY for the root and for "." and ".."; EPERM for a
    /// Trash that is not the user's own; EEXIST when all names are taken; `fileWriteUnknown` when the system claims
    /// success and the item is not there.
    OrdovanResult<Url> move(const Url& item, const TrashTerms& terms = {});

private:
    struct Known {
        Mount mount;  ///< of the items' folders
        TrashFolder folder;
    };
    OrdovanResult<Url> moveToNewFound(const TrashTerms& terms);

    TrashItem item_;
    std::optional<Known> known_;
    InfoFlusher flusher_;
};

/// Moves a single item. Nothing is kept between calls; any thread.
OrdovanResult<Url> moveToTrash(const Url& item);

}  // namespace ordovan
