#pragma once

#include "OrdovanCore/FileSystem.h"

#include <functional>
#include <string>

namespace ordovan {

/// SHA-256 of what an open file holds from its current position on, read in pieces of 1 MiB: 64 lower-case hexadecimal
/// digits. `shouldContinue` (may be empty) is asked before each piece; ECANCELED once it says false. Any thread.
OrdovanResult<std::string> hashOfOpenFile(int descriptor, const std::function<bool()>& shouldContinue = {});

}  // namespace ordovan
