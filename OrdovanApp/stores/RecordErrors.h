#pragma once

#include "OrdovanCore/FileSystem.h"

#include <cerrno>

namespace ordovan {

/// True for the errors that say that a document is not there at all, rather than that it can not be read. Any thread.
[[nodiscard]] inline bool isAbsent(const OrdovanSystemError& error) {
    return error.domain == OrdovanSystemError::Domain::posix && (error.code == ENOENT || error.code == ENOTDIR);
}

}  // namespace ordovan
