#pragma once

#include "OrdovanApp/controller/TaskRunner.h"

#include <cstddef>
#include <deque>
#include <utility>

namespace ordovan::test {

/// A task runner in which nothing happens by itself: a test says when work is done and when results arrive.
class ManualTaskRunner final : public TaskRunner {
public:
    void run(Call work, Call done) override { waiting_.push_back({std::move(work), std::move(done)}); }
    void post(Call call) override { arriving_.push_back(std::move(call)); }

    /// Tasks whose work has not been done.
    [[nodiscard]] std::size_t waiting() const { return waiting_.size(); }

    /// Does the work of a waiting task, the oldest unless told otherwise. Its result does not arrive yet.
    void work(std::size_t position = 0) {
        Task task = std::move(waiting_.at(position));
        waiting_.erase(waiting_.begin() + static_cast<std::ptrdiff_t>(position));
        task.work();
        post(std::move(task.done));
    }

    /// Lets everything arrive that is on its way, in order.
    void deliver() {
        while (!arriving_.empty()) {
            const Call call = std::move(arriving_.front());
            arriving_.pop_front();
            call();
        }
    }

    /// Until nothing is left to do.
    void finish() {
        deliver();
        while (!waiting_.empty()) {
            work();
            deliver();
        }
    }

private:
    struct Task {
        Call work;
        Call done;
    };
    std::deque<Task> waiting_;
    std::deque<Call> arriving_;
};

}  // namespace ordovan::test
