#pragma once

#include "OrdovanCore/FileSystem.h"

#include <expected>

namespace ordovan {

// Pure; any thread.

/// What an operation of a port yields that failed with this errno.
[[nodiscard]] inline std::unexpected<OrdovanSystemError> failure(int error) {
    return std::unexpected(OrdovanSystemError::posix(error));
}

/// What an operation yields that ended with this errno, 0 for success.
[[nodiscard]] inline OrdovanResult<void> outcome(int error) {
    if (error != 0) return failure(error);
    return {};
}

}  // namespace ordovan
