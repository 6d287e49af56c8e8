#pragma once

#include <ctime>
#include <string>
#include <string_view>

namespace ordovan {

/// The name an item gets in a Trash at a given attempt, counted from 1. The first is the item's own name; later ones
/// carry their number in front of the extension ("report 2.pdf"). Shortened, before the number and where possible
/// before the extension, so that name and ".trashinfo" fit in 255 bytes (NAME_MAX); a UTF-8 sequence is never split.
[[nodiscard]] std::string trashedName(std::string_view name, unsigned attempt);

/// The content of an item's info file (freedesktop.org Trash specification 1.0): `path` as it is to be stored, its
/// bytes percent-encoded here (RFC 2396; all but unreserved characters and "/"), and the time of deletion in local
/// time.
[[nodiscard]] std::string trashInfoText(std::string_view path, std::time_t deleted);

}  // namespace ordovan
