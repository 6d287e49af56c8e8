#pragma once

#include "OrdovanCore/FileSystem.h"
#include "OrdovanCore/platform/LibrarySha256.h"
#include "OrdovanCore/platform/Sha256Blocks.h"
#include "OrdovanCore/platform/ShaNi.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace ordovan {

/// SHA-256 (FIPS 180-4) of one message after the other, by the processor's own instructions (see `ShaNi`); without them
/// by the system's cryptography library. One object is not shared between threads.
class Sha256 {
public:
    explicit Sha256(bool byInstructions = ShaNi::isAvailable()) : byInstructions_(byInstructions) {}

    /// Starts a digest; what was added before is forgotten. False when the library has no SHA-256 or no memory.
    [[nodiscard]] bool begin();
    /// Adds bytes to the digest begun. False when the library failed.
    [[nodiscard]] bool add(const void* bytes, std::size_t size);
    /// Ends the digest: 64 lower-case hexadecimal digits, or the empty text when the library failed.
    [[nodiscard]] std::string finish();

private:
    void compress(const unsigned char* bytes, std::size_t blocks);

    bool byInstructions_;
    Sha256State state_ = sha256Start;
    std::uint64_t size_ = 0;
    std::array<unsigned char, sha256BlockSize> rest_{};  ///< `size_` modulo its size bytes, not yet compressed
    LibrarySha256 library_;
};

/// The digest of bytes in memory: 64 lower-case hexadecimal digits. Error: ENOTSUP without a working library. Any
/// thread.
OrdovanResult<std::string> sha256(std::string_view bytes);

}  // namespace ordovan
