#include "OrdovanApp/controller/StoppableFileSystem.h"

#include "OrdovanCore/platform/Sha256.h"

#include <cerrno>
#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <utility>

namespace {

constexpr std::size_t pieceSize = std::size_t{1} << 20;

std::unexpected<OrdovanSystemError> failure(int errnoValue) {
    return std::unexpected(OrdovanSystemError::posix(errnoValue));
}

}  // namespace

bool StoppableFileSystem::beginFile() {
    isChanging_ = false;
    return !flag_.isCancelled();
}

OrdovanResult<std::string> StoppableFileSystem::contentHash(const Url& url) {
    if (isStopped()) return failure(ECANCELED);
    if (contents_ != nullptr && fs_.fileSize(url).value_or(0) > largeFile) return hashInPieces(url);
    return fs_.contentHash(url);
}

OrdovanResult<std::string> StoppableFileSystem::hashInPieces(const Url& url) const {
    const auto file = contents_->open(url);
    if (!file) return std::unexpected(file.error());
    ordovan::Sha256 digest;
    const auto piece = std::make_unique_for_overwrite<char[]>(pieceSize);
    bool digested = digest.begin();
    for (std::int64_t offset = 0; digested;) {
        if (isStopped()) return failure(ECANCELED);
        const auto got = (*file)->read(offset, std::span(piece.get(), pieceSize));
        if (!got) return std::unexpected(got.error());
        if (*got == 0) break;
        digested = digest.add(piece.get(), *got);
        offset += static_cast<std::int64_t>(*got);
    }
    std::string text = digested ? digest.finish() : std::string();
    if (text.empty()) return failure(ENOTSUP);
    return text;
}
