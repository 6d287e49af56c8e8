#include "OrdovanCore/platform/TrashInfo.h"

#include "OrdovanCore/TrashPlace.h"
#include "OrdovanCore/Url.h"
#include "OrdovanCore/platform/RealPath.h"
#include "OrdovanCore/platform/RegularFile.h"
#include "OrdovanCore/platform/SameFile.h"

#include <string>
#include <system_error>
#include <utility>

namespace ordovan {

namespace {

bool isMissing(const std::string& path) {
    struct ::stat facts{};
    return ::lstat(path.c_str(), &facts) != 0 && errno == ENOENT;
}

/// The beginning of an info file, which holds all that programs write into one.
std::string textOf(const RegularFile& file) {
    std::string text(64 * 1024, '\0');
    const ::ssize_t got = ::pread(file.descriptor.get(), text.data(), text.size(), 0);
    text.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
    return text;
}

bool isRegularFile(const std::string& path) {
    struct ::stat facts{};
    return ::lstat(path.c_str(), &facts) == 0 && S_ISREG(facts.st_mode);
}

/// The path with the links on the way to it resolved.
std::string resolved(std::string_view path) {
    const auto folder = realPath(parentPath(path));
    return folder ? (*folder == "/" ? "/" : *folder + "/").append(lastPathComponent(path)) : std::string(path);
}

/// Returns 0, also where the system can not do it, or the errno.
int startWriting(const Descriptor& file) {
    return ::sync_file_range(file.get(), 0, 0, SYNC_FILE_RANGE_WRITE) == 0 || errno == ENOSYS ? 0 : errno;
}

}  // namespace

int InfoFile::make(const Descriptor& folder, std::string name, std::string_view text) {
    Descriptor file = Descriptor::openAt(folder.get(), name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, 0600);
    if (!file) return errno;
    folder_ = &folder;
    name_ = std::move(name);
    file_ = std::move(file);
    while (!text.empty()) {
        const ::ssize_t written = ::write(file_.get(), text.data(), text.size());
        if (written < 0 && errno != EINTR) return errno;
        if (written > 0) text.remove_prefix(static_cast<std::size_t>(written));
    }
    return 0;
}

int InfoFile::startWriting() {
    return ordovan::startWriting(file_);
}

Descriptor InfoFile::keep() {
    folder_ = nullptr;
    return std::move(file_);
}

InfoFile::~InfoFile() {
    struct ::stat ours{}, there{};
    if (folder_ == nullptr || ::fstat(file_.get(), &ours) != 0) return;
    const bool isOurs =
        ::fstatat(folder_->get(), name_.c_str(), &there, AT_SYMLINK_NOFOLLOW) == 0 && isSameFile(there, ours);
    if (isOurs) ::unlinkat(folder_->get(), name_.c_str(), 0);
}

void InfoFlusher::add(Descriptor file) {
    // Large enough that threads seldom meet, small enough for the limit of open files (1,024 by default).
    constexpr std::size_t batchSize = 64;
    constexpr auto pause = std::chrono::milliseconds(50);
    const Clock::time_point before = std::exchange(last_, Clock::now());
    batch_.push_back(std::move(file));
    if (batch_.size() == batchSize || last_ - before > pause) handOver();
}

InfoFlusher::~InfoFlusher() {
    if (!batch_.empty()) handOver();
    if (!thread_.joinable()) return;
    thread_.request_stop();
    thread_.join();
}

void InfoFlusher::handOver() {
    if (hasThread()) {
        const std::lock_guard lock(mutex_);
        if (handedOver_.empty()) {
            handedOver_.swap(batch_);
            more_.notify_one();
        }
    }
    // Where the thread does not keep up, the work is shared; where there is none, all of it is done here.
    for (const Descriptor& file : batch_) static_cast<void>(startWriting(file));
    batch_.clear();
}

/// Starts the thread when it is needed first, or again after the system had none to give.
bool InfoFlusher::hasThread() {
    if (thread_.joinable()) return true;
    try {
        thread_ = std::jthread([this](const std::stop_token& stop) { work(stop); });
    } catch (const std::system_error&) {
        return false;
    }
    return true;
}

void InfoFlusher::work(const std::stop_token& stop) {
    std::vector<Descriptor> taken;
    std::unique_lock lock(mutex_);
    while (more_.wait(lock, stop, [this] { return !handedOver_.empty(); })) {
        taken.swap(handedOver_);
        lock.unlock();
        // An error means that the text may be lost with the power, as it would be anyway.
        for (const Descriptor& file : taken) static_cast<void>(startWriting(file));
        taken.clear();
        lock.lock();
    }
}

void forgetTrashInfo(std::string_view item, std::optional<std::string_view> movedTo) {
    const auto path = trashInfoPath(item);
    if (!path || !isMissing(std::string(item))) return;
    // What takes the folder's name meanwhile is not what the file was read in.
    const Descriptor folder =
        Descriptor::open(std::string(parentPath(*path)).c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW);
    const std::string name(lastPathComponent(*path));
    const FolderEntry entry(folder.get(), name.c_str());
    RegularFile info;
    if (!folder || info.open(entry) != 0) return;
    const auto original = originalPlace(*path, textOf(info));
    if (!original) return;
    const bool isBack =
        !movedTo ? isRegularFile(*original) : *original == *movedTo || resolved(*original) == resolved(*movedTo);
    if (isBack) entry.unlink();
}

}  // namespace ordovan
