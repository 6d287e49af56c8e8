#include "OrdovanCore/platform/FileRecordStorage.h"

#include "OrdovanCore/platform/ExclusiveMove.h"
#include "OrdovanCore/platform/Failure.h"
#include "OrdovanCore/platform/FileLock.h"
#include "OrdovanCore/platform/Folders.h"
#include "OrdovanCore/platform/RegularFile.h"
#include "OrdovanCore/platform/SystemPath.h"
#include "OrdovanCore/platform/TemporaryFile.h"

#include <sys/stat.h>

#include <memory>
#include <string>
#include <utility>

namespace ordovan {

namespace {

constexpr std::size_t pieceSize = 256 << 10;

/// Gathers small pieces, so that a producer may hand over single words.
class BufferedWriter {
public:
    explicit BufferedWriter(TemporaryFile& file) : file_(file) { gathered_.reserve(pieceSize); }

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

    TemporaryFile& file_;
    std::string gathered_;
    int error_ = 0;
};

int writeDocument(const SystemPath& path, const RecordStorage::Producer& producer) {
    int error = makeFolders(parentPath(path.view()), 0700);
    if (error != 0) return error;
    TemporaryFile temporary(path.view());
    temporary.removeStale();
    error = temporary.make(0600);
    if (error == 0) error = temporary.setMode(0600);
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

int openForAppending(const char* path, Descriptor& opened) {
    opened = Descriptor::open(path, O_WRONLY | O_APPEND | O_NOFOLLOW | O_NONBLOCK);
    if (!opened) return errno == ELOOP || errno == EISDIR || errno == ENXIO ? EINVAL : errno;
    struct ::stat facts;
    if (::fstat(opened.get(), &facts) != 0) return errno;
    return S_ISREG(facts.st_mode) ? 0 : EINVAL;
}

/// Takes the lock of an open document, which has to be there still when that is done.
int hold(const Descriptor& document) {
    if (const int error = tryLock(document.get()); error != 0) return error;
    struct ::stat facts;
    if (::fstat(document.get(), &facts) != 0) return errno;
    return facts.st_nlink > 0 ? 0 : ENOENT;
}

class FileRunNotes final : public RunNotes {
public:
    explicit FileRunNotes(Descriptor file) : file_(std::move(file)) {}

    OrdovanResult<void> append(std::string_view text) override {
        while (!text.empty()) {
            const ::ssize_t written = ::write(file_.get(), text.data(), text.size());
            if (written < 0 && errno != EINTR) return outcome(errno);
            if (written > 0) text.remove_prefix(static_cast<std::size_t>(written));
        }
        return {};
    }
    OrdovanResult<void> sync() override {
        while (::fdatasync(file_.get()) != 0) {
            if (errno != EINTR) return outcome(errno);
        }
        return {};
    }

private:
    Descriptor file_;
};

}  // namespace

OrdovanResult<void> FileRecordStorage::read(const Url& file, const Sink& sink) {
    const SystemPath path(file);
    return outcome(path.error() != 0 ? path.error() : readDocument(path.text(), sink));
}

OrdovanResult<void> FileRecordStorage::write(const Url& file, const Producer& producer) {
    const SystemPath path(file);
    return outcome(path.error() != 0 ? path.error() : writeDocument(path, producer));
}

OrdovanResult<std::unique_ptr<RunNotes>> FileRecordStorage::openNotes(const Url& file) {
    const SystemPath path(file);
    Descriptor opened;
    int error = path.error() != 0 ? path.error() : openForAppending(path.text(), opened);
    if (error == 0) error = hold(opened);
    if (error != 0) return std::unexpected(OrdovanSystemError::posix(error));
    return std::make_unique<FileRunNotes>(std::move(opened));
}

OrdovanResult<void> FileRecordStorage::remove(const Url& file) {
    const SystemPath path(file);
    if (path.error() != 0) return outcome(path.error());
    if (::unlink(path.text()) != 0) return outcome(errno == ENOENT ? 0 : errno);
    // So that a power cut does not bring it back. Where it can not be flushed it is gone all the same.
    static_cast<void>(syncFolderOf(path.text()));
    return {};
}

OrdovanResult<void> FileRecordStorage::setAside(const Url& file, const Url& to) {
    const SystemPath from(file), target(to);
    if (from.error() != 0) return outcome(from.error());
    if (target.error() != 0) return outcome(target.error());
    const int error = moveExclusively(from.text(), target.text());
    if (error == 0) {
        const std::lock_guard guard(mutex_);
        setAside_.push_back({file, to});
    }
    return outcome(error);
}

std::vector<FileRecordStorage::SetAside> FileRecordStorage::allSetAside() const {
    const std::lock_guard guard(mutex_);
    return setAside_;
}

}  // namespace ordovan
