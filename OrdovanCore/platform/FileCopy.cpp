#include "OrdovanCore/platform/FileCopy.h"

#include "OrdovanCore/platform/FileAttributes.h"
#include "OrdovanCore/platform/RegularFile.h"
#include "OrdovanCore/platform/SameFile.h"

#include <linux/fs.h>
#include <sys/ioctl.h>

#include <algorithm>
#include <cstddef>
#include <memory>

namespace ordovan {

namespace {

constexpr ::off_t pieceSize = 1 << 20;

/// A file made exclusively, taken away again unless it is kept.
class NewFile {
public:
    explicit NewFile(FolderEntry place)
        : place_(place),
          descriptor_(Descriptor::openAt(place.folder, place.name, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, 0600)) {
        error_ = descriptor_ ? 0 : errno;
        if (error_ == 0 && ::fstat(descriptor_.get(), &made_) != 0) error_ = errno;
    }
    ~NewFile() {
        struct ::stat there;
        if (error_ != 0 || kept_ || !place_.examine(there)) return;
        if (isSameFile(there, made_)) place_.unlink();
    }
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    [[nodiscard]] int error() const { return error_; }
    [[nodiscard]] int get() const { return descriptor_.get(); }
    [[nodiscard]] int close() { return descriptor_.close(); }
    void keep() { kept_ = true; }

private:
    FolderEntry place_;
    Descriptor descriptor_;
    struct ::stat made_{};
    int error_ = 0;
    bool kept_ = false;
};

int writeAll(int to, const char* bytes, std::size_t size, ::off_t at) {
    while (size > 0) {
        const ::ssize_t written = ::pwrite(to, bytes, size, at);
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) return errno;
        bytes += written;
        at += written;
        size -= static_cast<std::size_t>(written);
    }
    return 0;
}

/// Brings the content of one file into an empty one.
class ContentCopy {
public:
    ContentCopy(int from, int to, CopyWays ways) : from_(from), to_(to), ways_(ways) {}

    /// 0 or the errno; EBUSY when the file turned out shorter than it was.
    int run(::off_t size) {
        if (size == 0 || (ways_.shareExtents && ::ioctl(to_, FICLONE, from_) == 0)) return 0;
        for (::off_t at = 0; at < size;) {
            ::off_t begin = ::lseek(from_, at, SEEK_DATA);
            if (begin < 0 && errno == ENXIO) break;  // nothing but a hole up to the end
            if (begin < 0 && errno != EINVAL) return errno;
            if (begin < 0) begin = at;  // this file system does not tell holes: it is all data
            ::off_t end = ::lseek(from_, begin, SEEK_HOLE);
            if (end < 0 || end > size) end = size;
            const int error = copyExtent(begin, end);
            if (error != 0) return error;
            at = end;
        }
        return ::ftruncate(to_, size) == 0 ? 0 : errno;
    }

private:
    int copyExtent(::off_t begin, ::off_t end) {
        while (ways_.copyRange && begin < end) {
            ::off_t in = begin, out = begin;
            const ::ssize_t copied = ::copy_file_range(from_, &in, to_, &out, static_cast<std::size_t>(end - begin), 0);
            if (copied > 0) begin += copied;
            if (copied == 0) break;  // the end, or a file system that only claims to copy: reading will tell
            if (copied > 0 || errno == EINTR) continue;
            if (errno == ENOSPC || errno == EDQUOT || errno == EIO || errno == EFBIG) return errno;
            ways_.copyRange = false;  // not between these two; no use asking again
        }
        return readAndWrite(begin, end);
    }

    int readAndWrite(::off_t begin, ::off_t end) {
        if (begin >= end) return 0;
        const auto size = static_cast<std::size_t>(std::min(end - begin, pieceSize));
        const auto piece = std::make_unique_for_overwrite<char[]>(size);
        while (begin < end) {
            const auto wanted = static_cast<std::size_t>(std::min<::off_t>(end - begin, pieceSize));
            const ::ssize_t got = ::pread(from_, piece.get(), wanted, begin);
            if (got < 0 && errno == EINTR) continue;
            if (got < 0) return errno;
            if (got == 0) return EBUSY;
            const int error = writeAll(to_, piece.get(), static_cast<std::size_t>(got), begin);
            if (error != 0) return error;
            begin += got;
        }
        return 0;
    }

    int from_;
    int to_;
    CopyWays ways_;
};

/// True when file and name are what they were: not written, not replaced, not renamed.
bool isUnchanged(FolderEntry name, const RegularFile& file) {
    struct ::stat now, named;
    return file.examineAfresh(now) && name.examine(named) && isUnwritten(file.facts, now) &&
           isSameFile(file.facts, named);
}

/// Opens the source as far as it may be copied; 0 or the errno.
int openSource(RegularFile& source, FolderEntry from, const SourceTerms& terms) {
    const int error = source.open(from, RegularFile::Look::afresh);
    if (error != 0) return error == EISDIR ? EINVAL : error;
    if (terms.was != nullptr && !isUntouched(*terms.was, source.facts)) return EBUSY;
    return terms.writers != nullptr && terms.writers->isWrittenAtStart(source) ? EBUSY : 0;
}

}  // namespace

int copyExclusively(FolderEntry from, FolderEntry to, CopyWays ways, const SourceTerms& terms) {
    RegularFile source;
    int error = openSource(source, from, terms);
    if (error != 0) return error;
    NewFile target(to);
    error = target.error();
    if (error == 0) error = ContentCopy(source.descriptor.get(), target.get(), ways).run(source.facts.st_size);
    if (error == 0) error = copyAttributes(source.descriptor.get(), source.facts, target.get());
    if (error == 0 && ::fsync(target.get()) != 0) error = errno;
    if (error != 0) return error;
    // Whoever verifies the copy shall read what the device has, not what memory remembers.
    static_cast<void>(::posix_fadvise(target.get(), 0, 0, POSIX_FADV_DONTNEED));
    error = target.close();
    if (error == 0) error = ways.sync(to);
    if (error == 0 && !isUnchanged(from, source)) error = EBUSY;
    if (error == 0 && terms.writers != nullptr && terms.writers->isWrittenAtEnd(source)) error = EBUSY;
    if (error == 0) target.keep();
    return error;
}

}  // namespace ordovan
