#include "OrdovanCore/platform/ContentReader.h"

#include "OrdovanCore/platform/RegularFile.h"
#include "OrdovanCore/platform/SystemPath.h"

#include <sys/uio.h>

namespace {

class OpenFile final : public OrdovanOpenContent {
public:
    explicit OpenFile(ordovan::RegularFile file) : file_(std::move(file)) {}

    [[nodiscard]] Identity identity() const override { return {file_.facts.st_dev, file_.facts.st_ino}; }
    [[nodiscard]] std::uint64_t linkCount() const override { return file_.facts.st_nlink; }

    OrdovanResult<std::size_t> read(std::int64_t offset, std::span<char> into) override {
        for (;;) {
            const ::ssize_t got = ::pread(file_.descriptor.get(), into.data(), into.size(), offset);
            if (got >= 0) return static_cast<std::size_t>(got);
            if (errno != EINTR) return std::unexpected(OrdovanSystemError::posix(errno));
        }
    }

    OrdovanResult<std::size_t> readAtHand(std::int64_t offset, std::span<char> into) override {
        if (offset < 0) return read(offset, into);  // preadv2(2) takes -1 for the current position
        const ::iovec room{into.data(), into.size()};
        const ::ssize_t got = ::preadv2(file_.descriptor.get(), &room, 1, offset, RWF_NOWAIT);
        if (got >= 0) return static_cast<std::size_t>(got);
        if (errno != EAGAIN) return read(offset, into);  // EOPNOTSUPP on some file systems
        static_cast<void>(
            ::posix_fadvise(file_.descriptor.get(), offset, static_cast<::off_t>(into.size()), POSIX_FADV_WILLNEED));
        return std::unexpected(OrdovanSystemError::posix(EAGAIN));
    }

private:
    ordovan::RegularFile file_;
};

}  // namespace

OrdovanResult<std::unique_ptr<OrdovanOpenContent>> SystemContentReader::open(const Url& url) {
    const ordovan::SystemPath path(url);
    ordovan::RegularFile file;
    const int error = path.error() != 0 ? path.error() : file.open(path.text());
    if (error != 0) return std::unexpected(OrdovanSystemError::posix(error));
    return std::make_unique<OpenFile>(std::move(file));
}
