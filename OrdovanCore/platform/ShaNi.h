#pragma once

#include "OrdovanCore/platform/Sha256Blocks.h"

#include <cstddef>

namespace ordovan {

/// SHA-256's compression of blocks by the processor's own instructions for it. One message keeps such a processor half
/// busy, as each round waits for the one before; several messages in step fill the gaps. Without state; any thread.
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
