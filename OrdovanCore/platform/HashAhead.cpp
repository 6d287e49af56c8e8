#include "OrdovanCore/platform/HashAhead.h"

#include "OrdovanCore/platform/FileHash.h"
#include "OrdovanCore/platform/RegularFile.h"
#include "OrdovanCore/platform/SystemPath.h"

#include <linux/magic.h>
#include <sys/vfs.h>

#include <algorithm>
#include <condition_variable>
#include <ctime>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <unordered_map>
#include <vector>

namespace ordovan {
namespace {

/// How far the workers run ahead of the run, in files. Their results are small; what is bounded is the reading of
/// files that a cancelled run will not come to.
constexpr std::size_t window = 128;

/// No more workers than this: beyond it, the disk is what one waits for.
constexpr unsigned mostWorkers = 4;

/// What must be the same for a file to be untouched.
struct Stamp {
    ::dev_t device;
    ::ino_t inode;
    ::off_t size;
    ::timespec modified, changed;

    explicit Stamp(const struct ::stat& facts)
        : device(facts.st_dev),
          inode(facts.st_ino),
          size(facts.st_size),
          modified(facts.st_mtim),
          changed(facts.st_ctim) {}

    friend bool operator==(const Stamp& a, const Stamp& b) {
        const auto same = [](const ::timespec& x, const ::timespec& y) {
            return x.tv_sec == y.tv_sec && x.tv_nsec == y.tv_nsec;
        };
        return a.device == b.device && a.inode == b.inode && a.size == b.size && same(a.modified, b.modified) &&
               same(a.changed, b.changed);
    }
};

double secondsOf(const ::timespec& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/// How coarse an open file's time stamps may be, in seconds: two changes within that may leave the same stamp. A
/// kernel tick (at most 10 ms) and some on the file systems of a local disk; unknown, so long, on all others.
double stampGranularity(int descriptor) {
    struct ::statfs facts;
    if (::fstatfs(descriptor, &facts) != 0) return 3.0;
    switch (facts.f_type) {
        case EXT4_SUPER_MAGIC:
        case XFS_SUPER_MAGIC:
        case BTRFS_SUPER_MAGIC:
        case TMPFS_MAGIC:
        case F2FS_SUPER_MAGIC:
            return 0.1;
        default:
            return 3.0;
    }
}

struct Hashed {
    Stamp stamp;
    std::string hash;
};

/// The file's hash and the stamp it is good for; nothing when it can not be vouched for.
std::optional<Hashed> hashNow(const Url& url, const std::function<bool()>& shouldContinue) {
    const SystemPath path(url);
    RegularFile file;
    if (path.error() != 0 || file.open(path.text()) != 0) return std::nullopt;
    ::timespec now;
    ::clock_gettime(CLOCK_REALTIME, &now);
    const double age = secondsOf(now) - secondsOf(file.facts.st_ctim);
    if (age < stampGranularity(file.descriptor.get())) return std::nullopt;
    auto hash = hashOfOpenFile(file.descriptor.get(), shouldContinue);
    struct ::stat after;
    if (!hash || ::fstat(file.descriptor.get(), &after) != 0) return std::nullopt;
    if (!(Stamp(file.facts) == Stamp(after))) return std::nullopt;
    return Hashed{Stamp(after), std::move(*hash)};
}

bool isUntouched(const Url& url, const Stamp& stamp) {
    const SystemPath path(url);
    RegularFile file;
    return path.error() == 0 && file.open(path.text()) == 0 && Stamp(file.facts) == stamp;
}

}  // namespace

/// The files of the run and how far the workers are with them.
class HashAheadFileSystem::Queue {
public:
    explicit Queue(std::span<const Url> files) : items_(files.size()) {
        positions_.reserve(files.size());
        for (std::size_t i = 0; i < files.size(); ++i) {
            items_[i].url = files[i];
            positions_.emplace(items_[i].url.path(), i);
        }
        const unsigned workers = std::clamp(std::thread::hardware_concurrency(), 1U, mostWorkers);
        for (unsigned i = 0; i < workers; ++i) {
            workers_.emplace_back([this](const std::stop_token& stop) { work(stop); });
        }
    }

    ~Queue() {
        for (std::jthread& worker : workers_) worker.request_stop();
        room_.notify_all();
    }

    /// What was hashed ahead for this file, waiting for the worker that is at it. Nothing when no worker had come to
    /// it yet (none will then), or when it was handed out before.
    std::optional<Hashed> take(const Url& url) {
        const auto position = positions_.find(url.path());
        if (position == positions_.end()) return std::nullopt;
        std::unique_lock lock(mutex_);
        Item& item = items_[position->second];
        reached_ = std::max(reached_, position->second + 1);
        room_.notify_all();
        if (item.state == State::waiting) item.state = State::done;
        done_.wait(lock, [&] { return item.state == State::done; });
        return std::exchange(item.hashed, std::nullopt);
    }

private:
    enum class State { waiting, claimed, done };
    struct Item {
        Url url;
        State state = State::waiting;
        std::optional<Hashed> hashed;
    };

    void work(const std::stop_token& stop) {
        std::unique_lock lock(mutex_);
        for (;;) {
            room_.wait(lock, stop,
                       [&] { return std::max(next_, reached_) < std::min(items_.size(), reached_ + window); });
            if (stop.stop_requested()) return;
            next_ = std::max(next_, reached_);
            if (next_ >= items_.size()) return;
            Item& item = items_[next_++];
            if (item.state != State::waiting) continue;
            item.state = State::claimed;
            lock.unlock();
            auto hashed = hashNow(item.url, [&] { return !stop.stop_requested(); });
            lock.lock();
            item.hashed = std::move(hashed);
            item.state = State::done;
            done_.notify_all();
        }
    }

    std::vector<Item> items_;
    std::unordered_map<std::string_view, std::size_t> positions_;
    std::mutex mutex_;
    std::condition_variable done_;
    std::condition_variable_any room_;
    std::size_t next_ = 0;     // the first file no worker has looked at
    std::size_t reached_ = 0;  // one past the last file the run has asked for
    std::vector<std::jthread> workers_;
};

HashAheadFileSystem::HashAheadFileSystem(OrdovanFileSystem& fs, std::span<const Url> files) : fs_(fs) {
    if (files.size() > 1) queue_ = std::make_unique<Queue>(files);
}

HashAheadFileSystem::~HashAheadFileSystem() = default;

OrdovanResult<std::string> HashAheadFileSystem::contentHash(const Url& url) {
    std::optional<Hashed> ahead = queue_ == nullptr ? std::nullopt : queue_->take(url);
    if (ahead && isUntouched(url, ahead->stamp)) {
        ++handedOut_;
        return std::move(ahead->hash);
    }
    return fs_.contentHash(url);
}

}  // namespace ordovan
