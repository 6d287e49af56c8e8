#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace ordovan::proofs {

/// True when all of a proof is to be run (ORDOVAN_PROVE=long, as `scripts/prove --long` sets it), and not only the
/// share of it that every run of the tests has time for.
inline bool isLong() {
    const char* set = std::getenv("ORDOVAN_PROVE");
    return set != nullptr && std::string_view(set) == "long";
}

/// As many as the run at hand has time for.
inline std::size_t rounds(std::size_t share, std::size_t all) {
    return isLong() ? all : share;
}

/// Says what was proved, in a line that `scripts/prove` makes a row of its table.
inline void tell(std::string_view proof, std::size_t count, std::string_view what) {
    std::printf("PROOF\t%.*s\t%zu\t%.*s\n", static_cast<int>(proof.size()), proof.data(), count,
                static_cast<int>(what.size()), what.data());
    std::fflush(stdout);
}

/// Says, loudly, what could not be tried here.
inline void tellSkipped(std::string_view proof, std::string_view why) {
    std::printf("PROOF\t%.*s\t0\tNOT TRIED: %.*s\n", static_cast<int>(proof.size()), proof.data(),
                static_cast<int>(why.size()), why.data());
    std::fflush(stdout);
}

/// Numbers that look random and are the same for the same seed everywhere (SplitMix64, Steele et al. 2014).
class Dice {
public:
    explicit Dice(std::uint64_t seed) : state_(seed) {}

    std::uint64_t next() {
        std::uint64_t z = (state_ += 0x9E3779B97F4A7C15U);
        z = (z ^ (z >> 30U)) * 0xBF58476D1CE4E5B9U;
        z = (z ^ (z >> 27U)) * 0x94D049BB133111EBU;
        return z ^ (z >> 31U);
    }
    /// From 0 to one less than `count`.
    std::size_t below(std::size_t count) { return static_cast<std::size_t>(next() % count); }

private:
    std::uint64_t state_;
};

}  // namespace ordovan::proofs
