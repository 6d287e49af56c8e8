#include "OrdovanCore/platform/Sha256.h"

#include "OrdovanCore/Hex.h"

#include <algorithm>
#include <cerrno>
#include <string>

namespace ordovan {

bool Sha256::begin() {
    if (!byInstructions_) return library_.begin();
    state_ = sha256Start;
    size_ = 0;
    return true;
}

bool Sha256::add(const void* bytes, std::size_t size) {
    if (!byInstructions_) return library_.add(bytes, size);
    const auto* next = static_cast<const unsigned char*>(bytes);
    const std::size_t held = size_ % sha256BlockSize;
    size_ += size;
    if (held > 0) {
        const std::size_t some = std::min(size, sha256BlockSize - held);
        std::copy_n(next, some, rest_.data() + held);
        if (held + some < sha256BlockSize) return true;
        compress(rest_.data(), 1);
        next += some;
        size -= some;
    }
    compress(next, size / sha256BlockSize);
    std::copy_n(next + size - size % sha256BlockSize, size % sha256BlockSize, rest_.data());
    return true;
}

std::string Sha256::finish() {
    if (!byInstructions_) {
        const auto digest = library_.finish();
        std::string text;
        if (digest) {
            for (const unsigned char byte : *digest) appendHex(text, byte, 2);
        }
        return text;
    }
    std::array<unsigned char, 2 * sha256BlockSize> end{};
    compress(end.data(), endOfMessage({rest_.data(), size_ % sha256BlockSize}, size_, end.data()));
    return hexadecimal(state_);
}

void Sha256::compress(const unsigned char* bytes, std::size_t blocks) {
    Sha256State* const state = &state_;
    ShaNi::compress(1, &state, &bytes, blocks);
}

OrdovanResult<std::string> sha256(std::string_view bytes) {
    static thread_local Sha256 digest;
    std::string text;
    if (digest.begin() && digest.add(bytes.data(), bytes.size())) text = digest.finish();
    if (text.empty()) return std::unexpected(OrdovanSystemError::posix(ENOTSUP));
    return text;
}

}  // namespace ordovan
