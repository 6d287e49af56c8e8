#pragma once

#include "OrdovanCore/Url.h"

#include <cstddef>
#include <span>

namespace OrdovanFolderCleanup {

/// Removes the folders that held the given files, and those above them, as far as they lie strictly inside `within`
/// and are now empty but for a regular ".DS_Store", which goes with its folder. Deepest first; links are neither
/// followed nor removed; rmdir(2) has the last word, so a file that arrives meanwhile is never lost. Returns the
/// number of folders removed. Never fails: a folder that can not be removed stays and is not counted. Nothing is
/// flushed: after a power cut a folder may be there again, empty. Any thread.
[[nodiscard]] std::size_t removeEmptyFolders(std::span<const Url> thatHeld, const Url& within);

}  // namespace OrdovanFolderCleanup
