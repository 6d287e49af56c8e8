#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <optional>

namespace ordovan {

/// SHA-256 (FIPS 180-4) by the system's cryptography library (OpenSSL 3, libcrypto.so.3), one digest after the other
/// with one context: making a context costs more than hashing a small file. The library is loaded when a digest is
/// first begun, as loading and setting it up takes longer than a whole command in a small folder. One object is not
/// shared between threads.
class LibrarySha256 {
public:
    LibrarySha256();
    ~LibrarySha256();
    LibrarySha256(const LibrarySha256&) = delete;
    LibrarySha256& operator=(const LibrarySha256&) = delete;

    /// Starts a digest; what was added before is forgotten. False when there is no such library, or no memory.
    [[nodiscard]] bool begin();
    /// Starts where another digest is, which goes on by itself. False when there is no memory.
    [[nodiscard]] bool beginAt(const LibrarySha256& other);
    /// Adds bytes to the digest begun.
    [[nodiscard]] bool add(const void* bytes, std::size_t size);
    /// Ends the digest; nothing when the library failed.
    [[nodiscard]] std::optional<std::array<unsigned char, 32>> finish();

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace ordovan
