#pragma once

#include "OrdovanCore/Url.h"

#include <optional>

namespace ordovan {

/// The user's Downloads folder as the desktop names it (xdg-user-dirs), absolute and byte for byte; whether it exists
/// is not asked. Nothing where the user has none: it is switched off by having it point at the home folder
/// (user-dirs.dirs(5)), which is meant by nobody who says "Downloads". Any thread; looks at the disk.
[[nodiscard]] std::optional<Url> downloadsFolder();

}  // namespace ordovan
