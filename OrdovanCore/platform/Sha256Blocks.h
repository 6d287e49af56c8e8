#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace ordovan {

// Pure; any thread.

/// The running state of SHA-256 between two blocks: the words H0 to H7 (FIPS 180-4, section 6.2).
using Sha256State = std::array<std::uint32_t, 8>;

/// Before the first block (FIPS 180-4, section 5.3.3).
inline constexpr Sha256State sha256Start = {0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
                                            0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};

/// Bytes of a block: 512 bits (FIPS 180-4, section 1).
inline constexpr std::size_t sha256BlockSize = 64;

/// A message's end as whole blocks: what does not fill a block, a one bit, zeros, and the length in bits (FIPS 180-4,
/// section 5.1.1). `rest` is less than a block, `messageSize` in bytes; there is room for two blocks at `into`. Returns
/// how many blocks it is.
std::size_t endOfMessage(std::span<const unsigned char> rest, std::uint64_t messageSize, unsigned char* into);

/// A digest as 64 lower-case hexadecimal digits.
[[nodiscard]] std::string hexadecimal(const Sha256State& digest);

}  // namespace ordovan
