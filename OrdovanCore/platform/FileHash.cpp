#include "OrdovanCore/platform/FileHash.h"

#include "OrdovanCore/platform/Sha256.h"

#include <unistd.h>

#include <cerrno>
#include <memory>

namespace ordovan {
namespace {

constexpr std::size_t pieceSize = 1 << 20;

/// What hashing needs for every file anew, kept for the thread: memory stays at one piece however large the file.
struct Hashing {
    Sha256 digest;
    std::unique_ptr<char[]> piece = std::make_unique_for_overwrite<char[]>(pieceSize);
};

}  // namespace

OrdovanResult<std::string> hashOfOpenFile(int descriptor, const std::function<bool()>& shouldContinue,
                                          std::optional<std::int64_t> size) {
    static thread_local Hashing hashing;
    bool digested = hashing.digest.begin();
    std::int64_t total = 0;
    while (digested && (!size || total < *size)) {
        if (shouldContinue && !shouldContinue()) return std::unexpected(OrdovanSystemError::posix(ECANCELED));
        const ::ssize_t got = ::read(descriptor, hashing.piece.get(), pieceSize);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return std::unexpected(OrdovanSystemError::posix(errno));
        if (got == 0) break;
        digested = hashing.digest.add(hashing.piece.get(), static_cast<std::size_t>(got));
        total += got;
    }
    std::string text = digested ? hashing.digest.finish() : std::string();
    if (text.empty()) return std::unexpected(OrdovanSystemError::posix(ENOTSUP));
    return text;
}

}  // namespace ordovan
