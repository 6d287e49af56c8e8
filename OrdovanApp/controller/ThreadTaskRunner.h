#pragma once

#include "OrdovanApp/controller/TaskRunner.h"

#include <chrono>
#include <memory>

namespace ordovan {

/// One thread for each task, results through the event loop of the thread that made the runner (the controller's).
///
/// Destruction waits for the work that is under way; results that were not delivered by then are dropped. Needs a
/// QCoreApplication for deliveries.
class ThreadTaskRunner final : public TaskRunner {
public:
    ThreadTaskRunner();
    ~ThreadTaskRunner() override;
    ThreadTaskRunner(const ThreadTaskRunner&) = delete;
    ThreadTaskRunner& operator=(const ThreadTaskRunner&) = delete;

    void run(Call work, Call done) override;
    void post(Call call) override;

    /// Waits until the work of all tasks is done, at most this long. True when it is; results may still be undelivered.
    /// On the controller's thread.
    [[nodiscard]] bool waitForWork(std::chrono::milliseconds longest);

private:
    class Mailbox;
    std::unique_ptr<Mailbox> mailbox_;
};

}  // namespace ordovan
