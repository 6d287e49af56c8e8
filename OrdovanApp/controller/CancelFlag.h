#pragma once

#include <mutex>

/// A request to stop, shared between the controller and one background task. Both ends may be used from any thread.
class CancelFlag {
public:
    void cancel() {
        const std::lock_guard guard(lock_);
        cancelled_ = true;
    }

    [[nodiscard]] bool isCancelled() const {
        const std::lock_guard guard(lock_);
        return cancelled_;
    }

private:
    mutable std::mutex lock_;
    bool cancelled_ = false;
};
