#pragma once

#include <string_view>

/// Files that a program is still downloading, or has given up: moved away, the download could not go on.
namespace OrdovanPartialDownloads {

/// Whether a file's name (its last path component) says that it is a partial download: something, a dot and one of the
/// endings of such files, in upper or lower case. Only the name is looked at. Any thread.
[[nodiscard]] bool isPartialDownload(std::string_view name);

/// What is said of one that is proposed: the reason alone, and as a sentence for the user.
inline constexpr std::string_view reason = "This looks like an unfinished download";
inline constexpr std::string_view sentence =
    "This looks like an unfinished download; it is left out unless you tick it.";

}  // namespace OrdovanPartialDownloads
