#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace ordovan {

/// The running state of SHA-256 between two blocks: the words H0 to H7 (FIPS 180-4, section 6.2).
using Sha256State = std::array<std::uint32_t, 8>;

/// Before the first block (FIPS 180-4, section 5.3.3).
inline constexpr Sha256State sha256Start = {0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
                                            0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};

inline constexpr std::size_t sha256BlockSize = 64;

/// SHA-256's compression of blocks by the processor's own instructions for it. One message keeps such a processor
/// half busy, as each round waits for the one before; several messages in step fill the gaps.
namespace ShaNi {

/// How many messages in step are worth while.
inline constexpr std::size_t mostLanes = 3;

/// Whether this processor has the instructions (x86: SHA, SSSE3 and SSE4.1).
[[nodiscard]] bool isAvailable() noexcept;

/// Takes `blocks` blocks of each of `lanes` messages (1 to `mostLanes`) into its state. Only where it is available.
void compress(std::size_t lanes, Sha256State* const* states, const unsigned char* const* data,
              std::size_t blocks) noexcept;

}  // namespace ShaNi

}  // namespace ordovan
