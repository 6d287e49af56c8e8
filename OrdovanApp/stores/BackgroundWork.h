#pragma once

#include <functional>

namespace ordovan {

/// Takes what may wait for a disk or for another process off the thread of a store: runs `work` on another thread, when
/// all that was given to it before is done, and then `done` on the store's thread. Called on the store's thread.
using BackgroundWork = std::function<void(std::function<void()> work, std::function<void()> done)>;

}  // namespace ordovan
