#pragma once

#include "OrdovanCore/platform/RegularFile.h"

#include <sys/types.h>

#include <optional>

namespace ordovan {

/// Asks the kernel whether a file is open for writing somewhere, a writable mapping of it included, by taking a read
/// lease on it (fcntl(2), F_SETLEASE) and giving it back at once. Whoever opens the file for writing in that instant
/// waits no longer than that. Used by one thread.
///
/// Says no as well where that can not be told: for a file of another user, on file systems without leases, in a sandbox
/// that refuses what makes a lease harmless, and on network volumes, whose answer means nothing.
class WriterProbe {
public:
    /// Before a file is read.
    [[nodiscard]] bool isWrittenAtStart(const RegularFile& file);
    /// After it was read, with the same object. The file is to be closed soon: the lease ends with that.
    [[nodiscard]] bool isWrittenAtEnd(const RegularFile& file) const;

    /// False for the types (statfs(2)) of network file systems.
    [[nodiscard]] static bool knowsWriters(unsigned long fileSystemType);

private:
    // Files come volume by volume, so the last answer mostly holds.
    std::optional<::dev_t> device_;
    bool isTold_ = false;
};

}  // namespace ordovan
