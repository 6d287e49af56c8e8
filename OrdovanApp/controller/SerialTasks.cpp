#include "OrdovanApp/controller/SerialTasks.h"

#include <deque>
#include <mutex>
#include <optional>
#include <utility>

namespace ordovan {

/// What waits for its turn. Shared by the controller's thread, which fills it, and the one task that empties it.
class SerialTasks::Line {
public:
    struct Item {
        TaskRunner::Call work;
        TaskRunner::Call done;
    };

    /// Whether a task is needed to empty the line: none is at it.
    [[nodiscard]] bool add(Item item) {
        const std::lock_guard guard(lock_);
        items_.push_back(std::move(item));
        return !std::exchange(isBeingEmptied_, true);
    }

    /// Where there is nothing, who empties it goes.
    [[nodiscard]] std::optional<Item> next() {
        const std::lock_guard guard(lock_);
        if (items_.empty()) {
            isBeingEmptied_ = false;
            return std::nullopt;
        }
        Item item = std::move(items_.front());
        items_.pop_front();
        return item;
    }

private:
    std::mutex lock_;
    std::deque<Item> items_;
    bool isBeingEmptied_ = false;
};

SerialTasks::SerialTasks(TaskRunner& tasks) : tasks_(tasks), line_(std::make_shared<Line>()) {}

void SerialTasks::run(TaskRunner::Call work, TaskRunner::Call done) {
    if (!line_->add({std::move(work), std::move(done)})) return;
    tasks_.run(
        [line = line_, &tasks = tasks_] {
            while (auto item = line->next()) {
                item->work();
                item->work = nullptr;
                tasks.post(std::move(item->done));
            }
        },
        [] {});
}

}  // namespace ordovan
