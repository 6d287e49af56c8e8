#include "OrdovanCore/platform/Sha256Blocks.h"

#include "OrdovanCore/Hex.h"

#include <algorithm>
#include <cstring>

namespace ordovan {

std::size_t endOfMessage(std::span<const unsigned char> rest, std::uint64_t messageSize, unsigned char* into) {
    const std::size_t blocks = rest.size() + 1 + sizeof messageSize <= sha256BlockSize ? 1 : 2;
    std::memset(into, 0, blocks * sha256BlockSize);
    std::ranges::copy(rest, into);
    into[rest.size()] = 0x80;
    const std::uint64_t bits = messageSize * 8;
    for (std::size_t i = 0; i < sizeof bits; ++i) {
        into[blocks * sha256BlockSize - 1 - i] = static_cast<unsigned char>(bits >> (8 * i));
    }
    return blocks;
}

std::string hexadecimal(const Sha256State& digest) {
    constexpr int wordDigits = 8;
    std::string text;
    text.reserve(wordDigits * digest.size());
    for (const std::uint32_t word : digest) appendHex(text, word, wordDigits);
    return text;
}

}  // namespace ordovan
