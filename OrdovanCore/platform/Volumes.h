#pragma once

#include "OrdovanCore/Url.h"

#include <optional>

namespace ordovan {

/// Whether names in this folder differ by case: by its casefold flag (ioctl_iflags(2)), its file system's type
/// (statfs(2)), and, for types that do not tell (FUSE, network), by looking an existing name up in the other case.
/// Only reads. Nothing when it can not be told; take that as "they do not differ". Any thread.
std::optional<bool> supportsCaseSensitiveNames(const Url& folder);

}  // namespace ordovan
