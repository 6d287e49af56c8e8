#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <utility>

namespace ordovan {

/// How the controller gets long work off its own thread.
class TaskRunner {
public:
    using Call = std::function<void()>;

    virtual ~TaskRunner() = default;

    /// Runs `work` on a background thread and then `done` on the controller's thread. Tasks may run side by side and
    /// finish in any order. Called on the controller's thread.
    virtual void run(Call work, Call done) = 0;

    /// Runs `call` on the controller's thread, soon and in the order of posting. Called on any thread; what a task
    /// posts is run before that task's `done`.
    virtual void post(Call call) = 0;

    /// Runs `work` in the background and hands what it returns to `done` on the controller's thread.
    template <class Work, class Done>
    void compute(Work work, Done done) {
        auto result = std::make_shared<std::optional<decltype(work())>>();
        run([result, work = std::move(work)]() mutable { result->emplace(work()); },
            [result, done = std::move(done)]() mutable { done(*std::exchange(*result, std::nullopt)); });
    }
};

}  // namespace ordovan
