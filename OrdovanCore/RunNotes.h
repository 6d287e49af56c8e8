#pragma once

#include "OrdovanCore/FileSystem.h"

#include <string_view>

namespace ordovan {

/// The port through which a run adds to its stored record what it has done. Used by the run's one thread. Errors are
/// the system's, unchanged.
class RunNotes {
public:
    virtual ~RunNotes() = default;

    /// Adds some text at the end of the record. It has left this process when the call returns, and so survives its
    /// end, but not a power cut. On an error a part of it may have been added.
    virtual OrdovanResult<void> append(std::string_view text) = 0;

    /// Comes back when all that was added is on disk (fdatasync(2)).
    virtual OrdovanResult<void> sync() = 0;
};

}  // namespace ordovan
