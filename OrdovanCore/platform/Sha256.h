#pragma once

#include "OrdovanCore/FileSystem.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace ordovan {

/// SHA-256 (FIPS 180-4) by the system's cryptography library, one digest after the other with one context: making a
/// context costs more than hashing a small file. One object is not shared between threads.
class Sha256 {
public:
    Sha256();
    ~Sha256();
    Sha256(const Sha256&) = delete;
    Sha256& operator=(const Sha256&) = delete;

    /// Starts a digest; what was added before is forgotten. False when the library has no SHA-256 or no memory.
    [[nodiscard]] bool begin();
    /// Starts where another digest is, which goes on by itself. False when there is no memory.
    [[nodiscard]] bool beginAt(const Sha256& other);
    /// Adds bytes to the digest begun.
    [[nodiscard]] bool add(const void* bytes, std::size_t size);
    /// Ends the digest: 64 lower-case hexadecimal digits, or the empty text when the library failed.
    [[nodiscard]] std::string finish();

private:
    struct State;
    std::unique_ptr<State> state_;
};

/// The digest of bytes in memory: 64 lower-case hexadecimal digits. Error: ENOTSUP without a working library.
OrdovanResult<std::string> sha256(std::string_view bytes);

}  // namespace ordovan
