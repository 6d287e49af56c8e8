#pragma once

#include "OrdovanCore/platform/LibrarySha256.h"
#include "OrdovanCore/platform/Sha256Blocks.h"
#include "OrdovanCore/platform/ShaNi.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace ordovan {

/// The SHA-256 of the bytes a message begins with, to be gone on from. Copies go on independently of each other, so
/// that messages which begin alike need their beginning hashed once.
class Sha256Prefix {
public:
    /// Tells beginnings of one length apart: equal for equal bytes, and different for different ones as surely as
    /// SHA-256 is. After the last bytes it is the digest.
    [[nodiscard]] const Sha256State& state() const noexcept { return state_; }

private:
    friend class Sha256Streams;
    Sha256State state_ = sha256Start;
    std::uint64_t size_ = 0;
    std::shared_ptr<const LibrarySha256> library_;  // where the library does it; `state_` is the digest so far then
};

/// More bytes of one message.
struct Sha256Job {
    Sha256Prefix* prefix = nullptr;
    std::span<const char> bytes;
    bool last = false;  ///< the message ends with them; else their number is a multiple of 64
};

/// Hashes several messages in step, by the processor's own instructions (see `ShaNi`); without them one after the
/// other by the system's cryptography library. One object is not shared between threads.
class Sha256Streams {
public:
    explicit Sha256Streams(bool byInstructions = ShaNi::isAvailable()) : byInstructions_(byInstructions) {}

    /// Takes each job's bytes into its prefix; no prefix occurs twice. The more jobs, the less time each of them
    /// takes. False when the library failed; the prefixes are of no use then.
    [[nodiscard]] bool add(std::span<const Sha256Job> jobs);

private:
    struct Stream {
        Sha256State* state;
        const unsigned char* data;
        std::size_t blocks;
    };

    void runStreams();
    bool addByLibrary(const Sha256Job& job);

    bool byInstructions_;
    LibrarySha256 scratch_;
    std::vector<Stream> streams_;
    std::vector<std::array<unsigned char, 2 * sha256BlockSize>> ends_;
};

}  // namespace ordovan
