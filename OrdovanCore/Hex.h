#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace ordovan {

// Pure; any thread.

/// The value of a hexadecimal digit in either case; nothing for any other character.
[[nodiscard]] constexpr std::optional<unsigned char> hexValue(char c) noexcept {
    if (c >= '0' && c <= '9') return static_cast<unsigned char>(c - '0');
    if (c >= 'a' && c <= 'f') return static_cast<unsigned char>(c - 'a' + 10);
    if (c >= 'A' && c <= 'F') return static_cast<unsigned char>(c - 'A' + 10);
    return std::nullopt;
}

/// Appends the last `digits` hexadecimal digits of a number, in lower case, zeros in front.
inline void appendHex(std::string& out, std::uint32_t number, int digits) {
    for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4) out += "0123456789abcdef"[(number >> shift) & 15];
}

}  // namespace ordovan
