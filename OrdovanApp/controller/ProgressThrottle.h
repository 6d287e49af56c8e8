#pragma once

#include <memory>

/// Thins out the progress of one run to some ten tellings a second. Copies share what they know; used by one thread at
/// a time.
class ProgressThrottle {
public:
    /// Whether to tell of what was reached at this time (seconds, of any clock); the last step always.
    [[nodiscard]] bool isDue(double now, bool isLast) const {
        const bool soon = now >= *told_ && now < *told_ + secondsBetween;
        if (soon && !isLast) return false;
        *told_ = now;
        return true;
    }

private:
    static constexpr double secondsBetween = 0.1;
    std::shared_ptr<double> told_ = std::make_shared<double>(0);
};
