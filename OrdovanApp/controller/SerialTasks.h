#pragma once

#include "OrdovanApp/controller/TaskRunner.h"

#include <memory>

namespace ordovan {

/// Tasks of a runner that are done one after the other, in the order in which they were given.
///
/// What was given to it is done even when it is gone by then: the runner counts as at work until nothing is left.
class SerialTasks {
public:
    /// `tasks` outlives the work.
    explicit SerialTasks(TaskRunner& tasks);

    /// Runs `work` on a background thread after the work of all earlier calls, and then `done` on the controller's
    /// thread. Called on the controller's thread.
    void run(TaskRunner::Call work, TaskRunner::Call done);

private:
    class Line;

    TaskRunner& tasks_;
    std::shared_ptr<Line> line_;
};

}  // namespace ordovan
