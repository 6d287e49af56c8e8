#pragma once

#include <functional>

namespace ordovan {

/// The current time in seconds since 1970-01-01 00:00 UTC.
using Clock = std::function<double()>;

/// The system's wall clock. Any thread.
[[nodiscard]] double systemTime();

}  // namespace ordovan
