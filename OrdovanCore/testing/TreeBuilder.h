#pragma once

#include "OrdovanCore/testing/MemoryFileSystem.h"

#include <initializer_list>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ordovan::testing {

/// One item of a tree to be built, by its path relative to the tree's folder.
struct TreeItem {
    enum class Kind { file, directory, link, hardLink, fifo };
    std::string path;
    Kind kind = Kind::file;
    std::string content = {};  ///< of a file its bytes, of a link its target, of a hard link the other name's path
};

/// Reads one item from its short form:
///
///     "a/"              a folder
///     "a/x.pdf = hello" a file with a content (after the first " = ")
///     "a/empty"         an empty file
///     "a/l -> ../x"     a symbolic link, its target as it stands
///     "b == a/x.pdf"    a hard link to an item made before
///     "fifo|"           a FIFO
///
/// Names that the short form can not express are given as `TreeItem`.
[[nodiscard]] TreeItem treeItem(std::string_view text);

/// Reads a whole tree.
[[nodiscard]] std::vector<TreeItem> tree(std::initializer_list<std::string_view> items);

/// Builds a tree below a folder, which is made like every missing folder in it. Ends the process when that is not
/// possible. Modes are 0755 for folders and 0644 for files whatever the umask.
void build(MemoryFileSystem& fs, std::string_view below, std::span<const TreeItem> items);
void build(MemoryFileSystem& fs, std::string_view below, std::initializer_list<std::string_view> items);

/// The same on the disk.
void buildOnDisk(std::string_view below, std::span<const TreeItem> items);
void buildOnDisk(std::string_view below, std::initializer_list<std::string_view> items);

/// An item in one line, everything that a move must keep: kind, permission bits, and for a file the modification time
/// to the nanosecond, the number of names and the content; for a link its target. Folders change their times with
/// their content, and so have none here. Content over 64 bytes, or not printable ASCII, stands as its SHA-256.
///
///     "file 0644 1600000002.000000000 x1 = hello"    "folder 0755"    "link -> ../x"    "fifo 0644"
[[nodiscard]] std::string describe(const MemoryItem& item);

/// Every item below a folder of the disk, by relative path, as `MemoryFileSystem::snapshot` gives it. Nothing is
/// followed. What can not be read is described by its errno; a socket or device by its kind.
[[nodiscard]] std::map<std::string, std::string> describeTree(std::string_view below);

}  // namespace ordovan::testing
