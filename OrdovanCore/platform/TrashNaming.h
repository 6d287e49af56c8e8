#pragma once

#include <cstddef>
#include <ctime>
#include <string>
#include <string_view>

namespace ordovan {

// By the freedesktop.org Trash specification 1.0. Pure, but that the local time is asked for; any thread.

/// What an info file's name has behind the item's.
inline constexpr std::string_view trashInfoSuffix = ".trashinfo";

/// What an info file begins with.
inline constexpr std::string_view trashInfoHead = "[Trash Info]";

/// The name an item gets in a Trash at a given attempt, counted from 1. The first is the item's own name; later ones
/// carry their number in front of the extension ("report 2.pdf"). Shortened, before the number and where possible
/// before the extension, so that name and `trashInfoSuffix` fit in `maxNameBytes` (at least 64; NAME_MAX is 255); a
/// UTF-8 sequence is never split.
[[nodiscard]] std::string trashedName(std::string_view name, unsigned attempt, std::size_t maxNameBytes = 255);

/// The content of an item's info file: `path` as it is to be stored, its bytes percent-encoded here (RFC 2396; all but
/// unreserved characters and "/"), and the time of deletion, without a zone as the Trash specification has it: in the
/// local time of the process (localtime_r(3)).
[[nodiscard]] std::string trashInfoText(std::string_view path, std::time_t deleted);

}  // namespace ordovan
