#pragma once

#include "OrdovanCore/Executor.h"

#include <string>

namespace ordovan {

/// What became of one file of a run. A value; any thread.
struct Verdict {
    OrdovanExecutionStatus status;
    std::string message;  ///< a sentence for the user
};

}  // namespace ordovan
