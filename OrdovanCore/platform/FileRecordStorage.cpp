#include "OrdovanCore/platform/FileRecordStorage.h"

#include "OrdovanCore/Uuid.h"
#include "OrdovanCore/platform/ExclusiveMove.h"
#include "OrdovanCore/platform/Folders.h"
#include "OrdovanCore/platform/RegularFile.h"
#include "OrdovanCore/platform/SystemPath.h"

#include <dirent.h>
#include <sys/file.h>

#include <memory>
#include <string>

namespace ordovan {

namespace {

constexpr std::size_t pieceSize = 256 << 10;

OrdovanResult<void> outcome(int error) {
    if (error != 0) return std::unexpected(OrdovanSystemError::posix(error));
    return {};
}

/// The temporary file of a document that is being written: hidden, in the same folder, named after the document and a
/// UUID, mode 0600. Removed at the end unless it became the document. While it is being written it is locked, so
/// that one left by a process that died can be told from one in use.
class Temporary {
public:
    explicit Temporary(std::string_view document)
        : folder_(parentPath(document)), prefix_("." + std::string(lastPathComponent(document)).substr(0, 200) + ".") {}
    ~Temporary() {
        if (!path_.empty()) ::unlink(path_.c_str());
    }
    Temporary(const Temporary&) = delete;
    Temporary& operator=(const Temporary&) = delete;

    [[nodiscard]] int make() {
        for (;;) {
            path_ = folder_ + "/" + prefix_ + Uuid::random().text();
            file_ = Descriptor::open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, 0600);
            if (!file_) {
                path_.clear();
                return errno;
            }
            if (::fchmod(file_.get(), 0600) != 0) return errno;  // whatever the umask
            lock_ = Descriptor(::fcntl(file_.get(), F_DUPFD_CLOEXEC, 0));
            if (!lock_) return errno;
            // Another writer that was just sweeping up may hold it and remove it; then make another.
            const bool taken = ::flock(lock_.get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
            struct ::stat facts;
            if (!taken && ::lstat(path_.c_str(), &facts) == 0) return 0;
        }
    }

    [[nodiscard]] int write(std::string_view bytes) {
        while (!bytes.empty()) {
            const ::ssize_t written = ::write(file_.get(), bytes.data(), bytes.size());
            if (written < 0 && errno == EINTR) continue;
            if (written < 0) return errno;
            bytes.remove_prefix(static_cast<std::size_t>(written));
        }
        return 0;
    }

    /// Flushes it and renames it over the document.
    [[nodiscard]] int become(const char* document) {
        if (::fsync(file_.get()) != 0) return errno;
        const int error = file_.close();
        if (error != 0) return error;
        if (::rename(path_.c_str(), document) != 0) return errno;
        path_.clear();
        return syncFolderOf(document);
    }

    /// Removes the document's temporaries that nobody holds: what a power cut or a killed process left.
    void removeStale() const {
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

private:
    std::string folder_;
    std::string prefix_;
    std::string path_;  // empty when there is nothing to remove
    Descriptor file_;
    Descriptor lock_;
};

/// Gathers small pieces, so that a producer may hand over single words.
class BufferedWriter {
public:
    explicit BufferedWriter(Temporary& file) : file_(file) { gathered_.reserve(pieceSize); }

    bool add(std::string_view piece) {
        if (gathered_.size() + piece.size() > pieceSize && !flush()) return false;
        if (piece.size() >= pieceSize) return put(piece);
        gathered_ += piece;
        return error_ == 0;
    }
    bool flush() {
        const bool done = put(gathered_);
        gathered_.clear();
        return done;
    }
    [[nodiscard]] int error() const { return error_; }

private:
    bool put(std::string_view bytes) {
        if (error_ == 0) error_ = file_.write(bytes);
        return error_ == 0;
    }

    Temporary& file_;
    std::string gathered_;
    int error_ = 0;
};

int writeDocument(const SystemPath& path, const RecordStorage::Producer& producer) {
    int error = makeFolders(parentPath(path.view()), 0700);
    if (error != 0) return error;
    Temporary temporary(path.view());
    temporary.removeStale();
    error = temporary.make();
    if (error != 0) return error;
    BufferedWriter writer(temporary);
    const bool produced = producer([&](std::string_view piece) { return writer.add(piece); });
    if (produced) writer.flush();
    if (writer.error() != 0) return writer.error();
    return produced ? temporary.become(path.text()) : ECANCELED;
}

int readDocument(const char* path, const RecordStorage::Sink& sink) {
    RegularFile file;
    const int error = file.open(path);
    if (error != 0) return error == ELOOP || error == EISDIR ? EINVAL : error;
    const auto piece = std::make_unique_for_overwrite<char[]>(pieceSize);
    for (;;) {
        const ::ssize_t got = ::read(file.descriptor.get(), piece.get(), pieceSize);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return errno;
        if (got == 0) return 0;
        if (!sink({piece.get(), static_cast<std::size_t>(got)})) return ECANCELED;
    }
}

}  // namespace

OrdovanResult<void> FileRecordStorage::read(const Url& file, const Sink& sink) {
    const SystemPath path(file);
    return outcome(path.error() != 0 ? path.error() : readDocument(path.text(), sink));
}

OrdovanResult<void> FileRecordStorage::write(const Url& file, const Producer& producer) {
    const SystemPath path(file);
    return outcome(path.error() != 0 ? path.error() : writeDocument(path, producer));
}

OrdovanResult<void> FileRecordStorage::remove(const Url& file) {
    const SystemPath path(file);
    if (path.error() != 0) return outcome(path.error());
    return outcome(::unlink(path.text()) == 0 || errno == ENOENT ? 0 : errno);
}

OrdovanResult<void> FileRecordStorage::setAside(const Url& file, const Url& to) {
    const SystemPath from(file), target(to);
    if (from.error() != 0) return outcome(from.error());
    if (target.error() != 0) return outcome(target.error());
    return outcome(moveExclusively(from.text(), target.text()));
}

}  // namespace ordovan
