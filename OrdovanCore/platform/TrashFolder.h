#pragma once

#include "OrdovanCore/platform/ConfinedFolders.h"
#include "OrdovanCore/platform/Descriptor.h"
#include "OrdovanCore/platform/FolderEntry.h"

#include <sys/stat.h>
#include <sys/types.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <string_view>

namespace ordovan {

// Functions may be called from any thread; one object is used by one thread at a time.

/// Where a folder is mounted: a rename stays within one device and one mount.
struct Mount {
    ::dev_t device = 0;
    std::uint64_t id = 0;  ///< 0 where the kernel does not tell

    /// Of an open folder; nothing when it can not be told.
    static std::optional<Mount> of(const Descriptor& folder);
    friend bool operator==(const Mount&, const Mount&) = default;
};

/// An item on its way to a Trash, held by its folder so that a renamed parent does not lead elsewhere.
struct TrashItem {
    Descriptor folder;           ///< opened with O_PATH
    std::string folderPath;      ///< with all links resolved
    std::optional<Mount> mount;  ///< of the folder
    std::string name;
    struct ::stat facts{};  ///< of the item itself

    [[nodiscard]] std::string path() const;
    [[nodiscard]] FolderEntry entry() const { return {folder.get(), name.c_str()}; }

    /// Finds an item by its absolute path. Its folder is opened, and the user's right to take items out of it asked
    /// for, unless it is the one of the item before. One below the root of `confined` (null for none) is reached as
    /// that says. Returns 0 or the errno.
    int find(std::string_view itemPath, ConfinedFolders* confined = nullptr);

private:
    int findFolder(std::string_view path);
    int takeFolder(std::string_view path, const ConfinedFolders::Folder& held);
    int useFolder(std::string_view path, Descriptor opened);

    std::string askedPath_;  // by which the folder was opened
    struct ::stat folderFacts_{};
};

/// The places for a Trash, in the order in which they are tried (freedesktop.org Trash specification 1.0).
enum class TrashKind {
    home,    ///< "Trash" in the user's data folder
    shared,  ///< ".Trash/$uid" at the top of the item's volume, where an administrator made a sticky ".Trash"
    own,     ///< ".Trash-$uid" at the top of the item's volume
};
inline constexpr std::array trashKinds = {TrashKind::home, TrashKind::shared, TrashKind::own};

/// Whether an open folder may be part of a Trash of the user's: it belongs to him and is not open to everybody's
/// changes. On file systems that give every file the same owner, ownership tells nothing and every folder may be.
[[nodiscard]] bool isPrivate(const Descriptor& folder);

/// A Trash that may be used: its folders are no links, belong to the user and are not open to everybody's changes.
struct TrashFolder {
    Descriptor files;  ///< opened with O_PATH, as the next one
    Descriptor info;
    std::string path;          ///< of the Trash
    std::string top;           ///< what info files tell their paths relative to; empty for the home Trash
    std::size_t maxNameBytes;  ///< that its file system takes

    /// Opens the item's Trash of a kind; what is missing of it is made with mode 0700. Fails with an errno: EXDEV when
    /// the home Trash is on another device than the item, EPERM when a folder is not the user's own.
    static std::expected<TrashFolder, int> open(TrashKind kind, const TrashItem& item);

    /// The item's path as its info file is to tell it.
    [[nodiscard]] std::string storedPath(const TrashItem& item) const;
};

}  // namespace ordovan
