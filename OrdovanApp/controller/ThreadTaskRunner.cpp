#include "OrdovanApp/controller/ThreadTaskRunner.h"

#include <QCoreApplication>
#include <QEvent>
#include <QObject>

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
        try {
            threads_.emplace(id, std::jthread([this, id, task] {
                                 task->work();
                                 task->work = nullptr;
                                 deliver({std::move(task->done), id});
                             }));
        } catch (const std::system_error&) {
            // The system has no thread to give: slow is better than not at all.
            task->work();
            deliver({std::move(task->done), id});
        }
    }

    void post(Call call) { deliver({std::move(call), std::nullopt}); }

protected:
    bool event(QEvent* event) override {
        if (event->type() != QEvent::User) return QObject::event(event);
        std::vector<Delivery> deliveries;
        {
            const std::lock_guard guard(lock_);
            deliveries.swap(deliveries_);
        }
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
        deliveries_.push_back(std::move(delivery));
        if (deliveries_.size() == 1) QCoreApplication::postEvent(this, new QEvent(QEvent::User));
    }

    std::mutex lock_;
    std::vector<Delivery> deliveries_;  // behind the lock
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

}  // namespace ordovan
