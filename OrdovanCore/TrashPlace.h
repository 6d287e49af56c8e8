#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ordovan {

/// True for a path that leads into a Trash, judged by its text in normal form: a piece ".Trash", ".Trashes" or
/// ".Trash-" with a user's number, or the pieces "Trash" and "files" one behind the other.
[[nodiscard]] bool isInTrash(std::string_view path);

/// Where the Trash keeps what it knows about an item that lies directly in its "files" folder (freedesktop.org Trash
/// specification 1.0); nothing for any other path, or for one that is not textually normal.
[[nodiscard]] std::optional<std::string> trashInfoPath(std::string_view item);

}  // namespace ordovan
