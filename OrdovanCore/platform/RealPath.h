#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ordovan {

/// The absolute path with every symbolic link and relative part resolved through the disk (realpath(3)); nothing when
/// it does not exist or can not be resolved. Any thread.
std::optional<std::string> realPath(std::string_view path);

}  // namespace ordovan
