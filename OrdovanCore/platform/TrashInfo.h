#pragma once

#include "OrdovanCore/platform/Descriptor.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace ordovan {

/// The info file of an item on its way into a Trash; taken away again at the end unless it was kept. Used by one
/// thread.
class InfoFile {
public:
    InfoFile() = default;
    ~InfoFile();
    InfoFile(const InfoFile&) = delete;
    InfoFile& operator=(const InfoFile&) = delete;

    /// Makes it exclusively in an open folder, which outlives it. Returns 0 or the errno.
    int make(const Descriptor& folder, std::string name, std::string_view text);
    /// Starts to write it to the disk, as `InfoFlusher` says. Returns 0 or the errno.
    int startWriting();
    /// Leaves it where it is.
    Descriptor keep();

private:
    const Descriptor* folder_ = nullptr;
    std::string name_;
    Descriptor file_;
};

/// Sends many info files on their way to the disk, in batches on a thread of its own, or on the caller's where no more
/// threads can be started. Used by one thread.
///
/// A file system with a journal brings a new file's name and a rename to the disk in their order, but the text of the
/// file may follow half a minute later: after a power cut the Trash then holds items of which nobody knows where they
/// were. Starting the write of its blocks (sync_file_range(2)), without waiting for its end, is no guarantee, but
/// leaves of that half minute only what a batch and the write take. Waiting for each (fsync(2)) takes several times as
/// long as all the rest. In no case is the item itself in danger.
class InfoFlusher {
public:
    /// Comes back when all files were sent on their way.
    ~InfoFlusher();
    InfoFlusher() = default;
    InfoFlusher(const InfoFlusher&) = delete;
    InfoFlusher& operator=(const InfoFlusher&) = delete;

    void add(Descriptor file);

private:
    using Clock = std::chrono::steady_clock;

    void handOver();
    bool hasThread();
    void work(const std::stop_token& stop);

    std::vector<Descriptor> batch_;
    Clock::time_point last_;  // when a file was added

    std::mutex mutex_;
    std::condition_variable_any more_;
    std::vector<Descriptor> handedOver_;
    std::jthread thread_;
};

/// Removes what a Trash knows about an item that has just been put back: taken out of its "files" folder, and standing
/// at the very place that the info file tells (`originalPlace`). `movedTo` is where it was moved; without it the item
/// was removed after being copied, and a regular file must stand at that place. In every other case nothing happens:
/// for a path that is no such place (`trashInfoPath`), an item that is still there or may be, an info file that is a
/// link, a folder or something else, or lies behind a link; and for a folder that only looks like a Trash, whose items
/// are moved elsewhere.
///
/// The item leaves first, so that a crash in between leaves an info file without an item, which every reader passes
/// over, and never an item that no file manager can put back. Nothing is flushed, and a failure is not told. Any
/// thread.
void forgetTrashInfo(std::string_view item, std::optional<std::string_view> movedTo);

}  // namespace ordovan
