#pragma once

#include "OrdovanCore/FileSystem.h"
#include "OrdovanCore/RecordStorage.h"

#include <cerrno>
#include <functional>

namespace ordovan {

/// Renames a document that can not be used to `nameAt(nowEpoch)`, or to the name of one of the seconds after it when
/// another document was set aside in the same second. False when none of that works. Times are seconds since 1970-01-01
/// UTC. Any thread.
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
