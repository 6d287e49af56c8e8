#pragma once

#include "OrdovanCore/FileSystem.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace ordovan {

/// SHA-256 of what an open file holds from its current position on, read in pieces of 1 MiB: 64 lower-case hexadecimal
/// digits. `shouldContinue` (may be empty) is asked before each piece; ECANCELED once it says false. With a `size` the
/// reading ends after that many bytes, without a look for more: for callers who ask afterwards whether the file is
/// still that large. Any thread.
OrdovanResult<std::string> hashOfOpenFile(int descriptor, const std::function<bool()>& shouldContinue = {},
                                          std::optional<std::int64_t> size = std::nullopt);

}  // namespace ordovan
