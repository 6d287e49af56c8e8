#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ordovan {

// Judged by text alone; the disk is never asked. Any thread.

/// True for the names that folders of Trash at the top of a volume have: ".Trash" and ".Trash-" with a user's number
/// (freedesktop.org Trash specification 1.0), and the ".Trashes" that another desktop leaves on disks that are carried
/// around.
[[nodiscard]] bool isTrashName(std::string_view name);

/// True for a path that leads into a Trash, judged by its text in normal form: a piece that `isTrashName`, or the
/// pieces "Trash" and "files" one behind the other.
[[nodiscard]] bool isInTrash(std::string_view path);

/// Where the Trash keeps what it knows about an item that lies directly in its "files" folder (freedesktop.org Trash
/// specification 1.0); nothing for any other path, or for one that is not textually normal.
[[nodiscard]] std::optional<std::string> trashInfoPath(std::string_view item);

/// The absolute place that an item came from, as its info file tells it: the first "Path" line, its percent-encoding
/// taken away, relative to the folder that holds the Trash folder where it is not absolute. Nothing where the text is
/// no info file's or tells of no place. `infoPath` is where the info file lies.
[[nodiscard]] std::optional<std::string> originalPlace(std::string_view infoPath, std::string_view infoText);

}  // namespace ordovan
