#pragma once

#include "OrdovanCore/platform/Descriptor.h"

#include <sys/stat.h>

#include <array>
#include <expected>
#include <string>
#include <string_view>

namespace ordovan {

/// An item on its way to a Trash, held by its folder so that a renamed parent does not lead elsewhere.
struct TrashItem {
    Descriptor folder;       ///< opened with O_PATH
    std::string folderPath;  ///< with all links resolved
    std::string name;
    struct ::stat facts{};  ///< of the item itself

    /// Finds an item by its absolute path and asks whether the user may take it out of its folder. Fails with an errno.
    static std::expected<TrashItem, int> open(std::string_view path);
};

/// The places for a Trash, in the order in which they are tried (freedesktop.org Trash specification 1.0).
enum class TrashKind {
    home,    ///< "Trash" in the user's data folder
    shared,  ///< ".Trash/$uid" at the top of the item's volume, where an administrator made a sticky ".Trash"
    own,     ///< ".Trash-$uid" at the top of the item's volume
};
inline constexpr std::array trashKinds = {TrashKind::home, TrashKind::shared, TrashKind::own};

/// A Trash that may be used: its folders are no links, belong to the user and are not open to everybody's changes.
struct TrashFolder {
    Descriptor files;  ///< opened with O_PATH, as the next one
    Descriptor info;
    std::string path;      ///< of the Trash
    std::string itemPath;  ///< of the item, as its info file is to tell it

    /// Opens the item's Trash of a kind; what is missing of it is made with mode 0700. Fails with an errno: EXDEV when
    /// the home Trash is on another device than the item, EPERM when a folder is not the user's own.
    static std::expected<TrashFolder, int> open(TrashKind kind, const TrashItem& item);
};

}  // namespace ordovan
