#include "OrdovanApp/controller/ThreadTaskRunner.h"

#include <QCoreApplication>
#include <QEvent>
#include <QObject>

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace ordovan {

/// Lives on the controller's thread. The calls wait in a list of our own; an event only wakes the loop, so that many
/// posts cost one wake-up and closures never pass through the event queue.
class ThreadTaskRunner::Mailbox final : public QObject {
public:
    ~Mailbox() override { threads_.clear(); }

    void start(Call work, Call done) {
        const std::uint64_t id = nextID_++;
        auto task = std::make_shared<Task>(Task{std::move(work), std::move(done)});
        const auto finish = [this, id, task] {
            task->work();
            task->work = nullptr;
            deliver({std::move(task->done), id});
        };
        {
            const std::lock_guard guard(lock_);
            ++atWork_;
        }
        try {
            threads_.emplace(id, std::jthread(finish));
        } catch (const std::system_error&) {
            // The system has no thread to give: slow is better than not at all.
            finish();
        }
    }

    void post(Call call) { deliver({std::move(call), std::nullopt}); }

    bool waitForWork(std::chrono::milliseconds longest) {
        std::unique_lock guard(lock_);
        return workDone_.wait_for(guard, longest, [this] { return atWork_ == 0; });
    }

protected:
    bool event(QEvent* event) override {
        // Locked before the event is looked at: another thread made it behind this lock. Qt's own lock orders the two
        // as well, but Qt is not built for the thread sanitizer, which would take them for a race.
        std::unique_lock guard(lock_);
        const bool isWakeUp = event->type() == QEvent::User;
        std::vector<Delivery> deliveries;
        if (isWakeUp) deliveries.swap(deliveries_);
        guard.unlock();
        if (!isWakeUp) return QObject::event(event);
        for (Delivery& delivery : deliveries) {
            if (delivery.finishedTask) threads_.erase(*delivery.finishedTask);
            delivery.call();
            delivery.call = nullptr;
        }
        return true;
    }

private:
    struct Task {
        Call work;
        Call done;
    };
    struct Delivery {
        Call call;
        std::optional<std::uint64_t> finishedTask;
    };

    void deliver(Delivery delivery) {
        const std::lock_guard guard(lock_);
        if (delivery.finishedTask && --atWork_ == 0) workDone_.notify_all();
        deliveries_.push_back(std::move(delivery));
        if (deliveries_.size() == 1) QCoreApplication::postEvent(this, new QEvent(QEvent::User));
    }

    std::mutex lock_;
    std::condition_variable workDone_;
    std::vector<Delivery> deliveries_;  // behind the lock
    std::size_t atWork_ = 0;            // behind the lock: tasks whose work is not done
    std::uint64_t nextID_ = 0;
    std::map<std::uint64_t, std::jthread> threads_;  // controller's thread only; erasing one joins it
};

ThreadTaskRunner::ThreadTaskRunner() : mailbox_(std::make_unique<Mailbox>()) {}
ThreadTaskRunner::~ThreadTaskRunner() = default;

void ThreadTaskRunner::run(Call work, Call done) {
    mailbox_->start(std::move(work), std::move(done));
}

void ThreadTaskRunner::post(Call call) {
    mailbox_->post(std::move(call));
}

bool ThreadTaskRunner::waitForWork(std::chrono::milliseconds longest) {
    return mailbox_->waitForWork(longest);
}

}  // namespace ordovan
