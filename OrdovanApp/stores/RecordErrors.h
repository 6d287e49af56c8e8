#pragma once

#include "OrdovanCore/FileSystem.h"
#include "OrdovanCore/RecordStorage.h"

#include <cerrno>
#include <functional>

namespace ordovan {

/// True for the errors that say that a document is not there at all, rather than that it can not be read.
[[nodiscard]] inline bool isAbsent(const OrdovanSystemError& error) {
    return error.domain == OrdovanSystemError::Domain::posix && (error.code == ENOENT || error.code == ENOTDIR);
}

/// Renames a document that can not be used to `nameAt(nowEpoch)`, or to the name of one of the seconds after it when
/// another document was set aside in the same second. False when none of that works.
[[nodiscard]] inline bool setAside(RecordStorage& storage, const Url& file,
                                   const std::function<Url(double epoch)>& nameAt, double nowEpoch) {
    constexpr int tries = 100;
    for (int i = 0; i < tries; ++i) {
        const auto done = storage.setAside(file, nameAt(nowEpoch + i));
        if (done) return true;
        if (done.error() != OrdovanSystemError::posix(EEXIST)) return false;
    }
    return false;
}

}  // namespace ordovan
