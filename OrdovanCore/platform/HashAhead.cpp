#include "OrdovanCore/platform/HashAhead.h"

#include "OrdovanCore/platform/ConfinedFolders.h"
#include "OrdovanCore/platform/FileHash.h"
#include "OrdovanCore/platform/RegularFile.h"
#include "OrdovanCore/platform/SameFile.h"
#include "OrdovanCore/platform/SystemPath.h"
#include "OrdovanCore/platform/WriterProbe.h"

#include <linux/magic.h>
#include <sys/resource.h>
#include <sys/vfs.h>

#include <algorithm>
#include <condition_variable>
#include <ctime>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <thread>
#include <unordered_map>
#include <vector>

namespace ordovan {
namespace {

/// How far the workers run ahead of the run, in files. Their results are small; what is bounded is the reading of
/// files that a cancelled run will not come to.
constexpr std::size_t window = 4096;

/// By how much a worker is nicer than the run (sched(7)): about a third of its share where both want the processor.
constexpr int politeness = 5;

/// No more workers than this: beyond it, the disk is what one waits for.
constexpr unsigned mostWorkers = 4;

double secondsOf(const ::timespec& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/// How coarse time stamps may be, in seconds, on the file systems of a local disk: two changes within that may leave
/// the same stamp. A kernel tick (at most 10 ms) and some.
constexpr double stampGranularity = 0.1;

/// True for file systems whose stamps are that fine and never come from a cache of another machine's.
bool hasReliableStamps(int descriptor) {
    struct ::statfs facts;
    if (::fstatfs(descriptor, &facts) != 0) return false;
    switch (facts.f_type) {
        case EXT4_SUPER_MAGIC:
        case XFS_SUPER_MAGIC:
        case BTRFS_SUPER_MAGIC:
        case F2FS_SUPER_MAGIC:
            return true;
        default:
            return false;
    }
}

struct Hashed {
    struct ::stat facts;  ///< of the file that the hash is good for
    std::string hash;
};

/// Hashes files on one worker.
class Hasher {
public:
    explicit Hasher(const HashAheadFileSystem::Options& options) : options_(options), folders_(options.root) {}

    /// The file's hash and the file it is good for; nothing when it can not be vouched for.
    std::optional<Hashed> hash(const Url& url, const std::function<bool()>& shouldContinue) {
        RegularFile file;
        if (!open(url, file) || !isReliable(file)) return std::nullopt;
        if (now() - secondsOf(file.facts.st_ctim) < stampGranularity) return std::nullopt;
        if (writers_.isWrittenAtStart(file)) return std::nullopt;
        auto hash = hashOfOpenFile(file.descriptor.get(), shouldContinue, file.facts.st_size);
        struct ::stat after;
        if (!hash || ::fstat(file.descriptor.get(), &after) != 0) return std::nullopt;
        if (!isUnwritten(file.facts, after) || writers_.isWrittenAtEnd(file)) return std::nullopt;
        return Hashed{after, std::move(*hash)};
    }

private:
    /// Opens a file that may be read. What is no regular file is not even opened: opening a FIFO wakes whoever waits at
    /// its other end, and opening a device may do anything.
    bool open(const Url& url, RegularFile& file) {
        const SystemPath path(url);
        if (path.error() != 0) return false;
        if (!options_.root.empty() && folders_.leadsBelow(path.view()))
            return folders_.openFile(path.view(), file) == 0;
        struct ::stat before;
        if (::lstat(path.text(), &before) != 0 || !S_ISREG(before.st_mode)) return false;
        return (!options_.mayRead || options_.mayRead(url)) && file.open(path.text()) == 0;
    }

    [[nodiscard]] double now() const {
        if (options_.clock) return options_.clock();
        ::timespec time;
        static_cast<void>(::clock_gettime(CLOCK_REALTIME, &time));
        return secondsOf(time);
    }

    /// Files come volume by volume, so the last answer mostly holds.
    bool isReliable(const RegularFile& file) {
        if (options_.trustsEveryFileSystem) return true;
        if (device_ != file.facts.st_dev) {
            device_ = file.facts.st_dev;
            reliable_ = hasReliableStamps(file.descriptor.get());
        }
        return reliable_;
    }

    const HashAheadFileSystem::Options& options_;
    ConfinedFolders folders_;
    WriterProbe writers_;
    std::optional<::dev_t> device_;
    bool reliable_ = false;
};

bool isStillThere(const Url& url, const struct ::stat& before) {
    const SystemPath path(url);
    struct ::stat facts;
    return path.error() == 0 && ::lstat(path.text(), &facts) == 0 && isUntouched(before, facts);
}

}  // namespace

/// The files of the run and how far the workers are with them.
class HashAheadFileSystem::Queue {
public:
    Queue(std::span<const Url> files, Options options) : options_(std::move(options)), items_(files.size()) {
        positions_.reserve(files.size());
        for (std::size_t i = 0; i < files.size(); ++i) {
            items_[i].url = files[i];
            positions_.emplace(items_[i].url.path(), i);
        }
        const unsigned workers = std::clamp(std::thread::hardware_concurrency(), 1U, mostWorkers);
        try {
            for (unsigned i = 0; i < workers; ++i) {
                workers_.emplace_back([this](const std::stop_token& stop) { work(stop); });
            }
        } catch (const std::system_error&) {
            // No more threads to be had: those there are do the work, or else the run hashes each file in its turn.
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
        if (idle_ > 0 && hasRoom()) room_.notify_one();
        if (item.state == State::waiting) item.state = State::done;
        awaited_ = &item;
        done_.wait(lock, [&] { return item.state == State::done; });
        awaited_ = nullptr;
        return std::exchange(item.hashed, std::nullopt);
    }

private:
    enum class State { waiting, claimed, done };
    struct Item {
        Url url;
        State state = State::waiting;
        std::optional<Hashed> hashed;
    };

    /// Room for half a window is waited for, so that a worker is woken for many files and not for each.
    [[nodiscard]] bool hasRoom() const {
        return next_ < items_.size() && (next_ <= reached_ + window / 2 || reached_ + window >= items_.size());
    }

    [[nodiscard]] bool mayGoOn() const { return next_ < std::min(items_.size(), reached_ + window); }

    /// The next file that nobody has come to, once there is room for it. Null when there is none or the end was asked
    /// for.
    Item* claim(const std::stop_token& stop) {
        std::unique_lock lock(mutex_);
        while (!stop.stop_requested() && next_ < items_.size()) {
            if (!mayGoOn()) {
                ++idle_;
                room_.wait(lock, stop, [this] { return hasRoom(); });
                --idle_;
                continue;
            }
            next_ = std::min(std::max(next_, reached_), items_.size() - 1);
            Item& item = items_[next_++];
            if (item.state != State::waiting) continue;
            item.state = State::claimed;
            return &item;
        }
        return nullptr;
    }

    void work(const std::stop_token& stop) {
        // The run itself is what one waits for. On Linux this is the thread's own (setpriority(2)).
        static_cast<void>(::setpriority(PRIO_PROCESS, 0, politeness));
        Hasher hasher(options_);
        while (Item* const item = claim(stop)) {
            auto hashed = hasher.hash(item->url, [&] { return !stop.stop_requested(); });
            const std::lock_guard guard(mutex_);
            item->hashed = std::move(hashed);
            item->state = State::done;
            if (awaited_ == item) done_.notify_one();
        }
    }

    const Options options_;
    std::vector<Item> items_;
    std::unordered_map<std::string_view, std::size_t> positions_;
    std::mutex mutex_;
    std::condition_variable done_;
    std::condition_variable_any room_;
    std::size_t next_ = 0;     // the first file no worker has looked at
    std::size_t reached_ = 0;  // one past the last file the run has asked for
    unsigned idle_ = 0;        // workers waiting for room
    const Item* awaited_ = nullptr;
    std::vector<std::jthread> workers_;
};

HashAheadFileSystem::HashAheadFileSystem(OrdovanFileSystem& fs, std::span<const Url> files, Options options)
    : fs_(fs), vouch_(options.vouch) {
    if (files.size() > 1) queue_ = std::make_unique<Queue>(files, std::move(options));
}

HashAheadFileSystem::~HashAheadFileSystem() = default;

OrdovanResult<std::string> HashAheadFileSystem::contentHash(const Url& url) {
    std::optional<Hashed> ahead = queue_ == nullptr ? std::nullopt : queue_->take(url);
    if (ahead && (vouch_ ? vouch_(url, ahead->facts) : isStillThere(url, ahead->facts))) {
        ++handedOut_;
        return std::move(ahead->hash);
    }
    return fs_.contentHash(url);
}

}  // namespace ordovan
