#include "OrdovanCore/platform/TemporaryFile.h"

#include "OrdovanCore/Url.h"
#include "OrdovanCore/Uuid.h"
#include "OrdovanCore/platform/Folders.h"

#include <dirent.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cstddef>
#include <memory>

namespace ordovan {

TemporaryFile::TemporaryFile(std::string_view document)
    : folder_(parentPath(document)), prefix_("." + std::string(lastPathComponent(document)).substr(0, 200) + ".") {}

TemporaryFile::~TemporaryFile() {
    if (!path_.empty()) ::unlink(path_.c_str());
}

int TemporaryFile::make(::mode_t mode) {
    for (;;) {
        path_ = folder_ + "/" + prefix_ + Uuid::random().text();
        file_ = Descriptor::open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, mode);
        if (!file_) {
            path_.clear();
            return errno;
        }
        lock_ = Descriptor(::fcntl(file_.get(), F_DUPFD_CLOEXEC, 0));
        if (!lock_) return errno;
        // Another writer that was just sweeping up may hold it and remove it; then make another.
        const bool taken = ::flock(lock_.get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
        struct ::stat facts;
        if (!taken && ::lstat(path_.c_str(), &facts) == 0) return 0;
    }
}

int TemporaryFile::setMode(::mode_t mode) const {
    return ::fchmod(file_.get(), mode) == 0 ? 0 : errno;
}

int TemporaryFile::write(std::string_view bytes) const {
    while (!bytes.empty()) {
        const ::ssize_t written = ::write(file_.get(), bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) return errno;
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return 0;
}

int TemporaryFile::become(const char* document) {
    if (::fsync(file_.get()) != 0) return errno;
    const int error = file_.close();
    if (error != 0) return error;
    if (::rename(path_.c_str(), document) != 0) return errno;
    path_.clear();
    return syncFolderOf(document);
}

void TemporaryFile::removeStale() const {
    const std::unique_ptr<DIR, int (*)(DIR*)> listing(::opendir(folder_.c_str()), ::closedir);
    if (listing == nullptr) return;
    const int folder = ::dirfd(listing.get());
    while (const ::dirent* entry = ::readdir(listing.get())) {
        const std::string_view name = entry->d_name;
        if (!name.starts_with(prefix_) || !Uuid::parse(name.substr(prefix_.size()))) continue;
        const Descriptor stale = Descriptor::openAt(folder, entry->d_name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
        if (stale && ::flock(stale.get(), LOCK_EX | LOCK_NB) == 0) ::unlinkat(folder, entry->d_name, 0);
    }
}

}  // namespace ordovan
