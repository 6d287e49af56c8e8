#pragma once

#include "OrdovanCore/Executor.h"

#include <cstddef>

namespace ordovan {

/// Asks and tells the control of one run. Once the control has said to stop, it is not asked again. Used by the
/// run's one thread; the control outlives it.
class RunProgress {
public:
    RunProgress(const OrdovanRunControl& control, std::size_t total) : control_(control), total_(total) {}

    /// Whether the next file may be touched.
    [[nodiscard]] bool mayContinue() {
        if (!stopped_ && control_.shouldContinue) stopped_ = !control_.shouldContinue();
        return !stopped_;
    }

    /// To be called after each file that was not left out by a stop.
    void fileDone() {
        ++done_;
        if (control_.progressed) control_.progressed(done_, total_);
    }

private:
    const OrdovanRunControl& control_;
    std::size_t total_;
    std::size_t done_ = 0;
    bool stopped_ = false;
};

}  // namespace ordovan
