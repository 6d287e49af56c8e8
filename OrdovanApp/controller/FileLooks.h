#pragma once

#include "OrdovanApp/controller/CancelFlag.h"
#include "OrdovanApp/controller/TaskRunner.h"
#include "OrdovanCore/ContentReading.h"
#include "OrdovanCore/Url.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>

/// The beginning of a file.
struct FileBeginning {
    std::string bytes;
    bool isWhole = false;    ///< nothing follows
    bool couldRead = false;  ///< false where it is no regular file, or could not be read; then there are no bytes
};

/// Reads the beginnings of files, one at a time, so that a view can show what is in them. Only regular files are
/// opened: links, FIFOs and devices never. Confined to the controller's thread; reading is done on background tasks.
class FileLooks {
public:
    /// Runs on a background thread.
    using Examine = std::function<void(const FileBeginning&)>;

    /// `contents` may be null: then nothing can be read. Both outlive it and the tasks that it starts.
    FileLooks(ordovan::TaskRunner& tasks, OrdovanContentReading* contents) : tasks_(tasks), contents_(contents) {}
    ~FileLooks() { cancel(); }
    FileLooks(const FileLooks&) = delete;
    FileLooks& operator=(const FileLooks&) = delete;

    /// Reads the first bytes of a file, at most `limit`, hands them to `examine` and then calls `examined` on the
    /// controller's thread. Only the last look counts: those before it are given up and never call `examined`.
    void look(const Url& file, std::size_t limit, Examine examine, std::function<void()> examined);
    /// Gives up the look under way.
    void cancel();

private:
    struct Look {
        Url file;
        std::size_t limit = 0;
        Examine examine;
        std::function<void()> examined;
    };

    void start(Look look);
    void finished();

    ordovan::TaskRunner& tasks_;
    OrdovanContentReading* contents_;
    std::shared_ptr<CancelFlag> flag_;  // of the task that works; null when none does
    std::optional<Look> next_;
    std::shared_ptr<const bool> alive_ = std::make_shared<const bool>(true);
};
