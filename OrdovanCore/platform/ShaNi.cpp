#include "OrdovanCore/platform/ShaNi.h"

#include <utility>

#if defined(__x86_64__)
#include <cpuid.h>
#include <immintrin.h>
#endif

namespace ordovan::ShaNi {

#if defined(__x86_64__)

namespace {

/// The first 32 bits of the fractional parts of the cube roots of the first 64 primes (FIPS 180-4, section 4.2.2).
alignas(16) constexpr std::uint32_t roundConstants[64] = {
    0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
    0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
    0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
    0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
    0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
    0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
    0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
    0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2};

/// One message on its way: the state as the instructions want it, and the last 16 words of the message schedule.
struct Lane {
    __m128i abef, cdgh;
    __m128i words[4];
};

/// H0 to H7 in memory order to and from the two registers of the instructions.
__attribute__((target("sha,sse4.1,ssse3"), always_inline)) inline void load(Lane& lane, const Sha256State& state) {
    const __m128i dcba = _mm_loadu_si128(reinterpret_cast<const __m128i*>(&state[0]));
    const __m128i hgfe = _mm_loadu_si128(reinterpret_cast<const __m128i*>(&state[4]));
    const __m128i cdab = _mm_shuffle_epi32(dcba, 0xb1), efgh = _mm_shuffle_epi32(hgfe, 0x1b);
    lane.abef = _mm_alignr_epi8(cdab, efgh, 8);
    lane.cdgh = _mm_blend_epi16(efgh, cdab, 0xf0);
}

__attribute__((target("sha,sse4.1,ssse3"), always_inline)) inline void store(const Lane& lane, Sha256State& state) {
    const __m128i feba = _mm_shuffle_epi32(lane.abef, 0x1b), dchg = _mm_shuffle_epi32(lane.cdgh, 0xb1);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(&state[0]), _mm_blend_epi16(feba, dchg, 0xf0));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(&state[4]), _mm_alignr_epi8(dchg, feba, 8));
}

/// Four words of the block, for the first 16 rounds.
__attribute__((target("sha,sse4.1,ssse3"), always_inline)) inline void takeWords(Lane& lane, const unsigned char* block,
                                                                                 int quarter) {
    const __m128i bigEndian = _mm_set_epi64x(0x0c0d0e0f08090a0b, 0x0405060700010203);
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(block) + quarter);
    lane.words[quarter] = _mm_shuffle_epi8(bytes, bigEndian);
}

/// The next four words of the message schedule (FIPS 180-4, section 6.2.2, step 1), in place of the oldest four.
__attribute__((target("sha,sse4.1,ssse3"), always_inline)) inline void extendWords(Lane& lane, int quarter) {
    __m128i& oldest = lane.words[quarter];
    const __m128i second = lane.words[(quarter + 1) % 4], third = lane.words[(quarter + 2) % 4];
    const __m128i newest = lane.words[(quarter + 3) % 4];
    const __m128i sum = _mm_add_epi32(_mm_sha256msg1_epu32(oldest, second), _mm_alignr_epi8(newest, third, 4));
    oldest = _mm_sha256msg2_epu32(sum, newest);
}

__attribute__((target("sha,sse4.1,ssse3"), always_inline)) inline void fourRounds(Lane& lane, int quarter,
                                                                                  __m128i constants) {
    const __m128i sum = _mm_add_epi32(lane.words[quarter], constants);
    lane.cdgh = _mm_sha256rnds2_epu32(lane.cdgh, lane.abef, sum);
    lane.abef = _mm_sha256rnds2_epu32(lane.abef, lane.cdgh, _mm_shuffle_epi32(sum, 0x0e));
}

template <int lanes>
__attribute__((target("sha,sse4.1,ssse3"))) void compressInStep(Sha256State* const* states,
                                                                const unsigned char* const* data, std::size_t blocks) {
    Lane lane[lanes];
#pragma GCC unroll 4
    for (int i = 0; i < lanes; ++i) load(lane[i], *states[i]);
    for (std::size_t at = 0; at < blocks * sha256BlockSize; at += sha256BlockSize) {
        __m128i abefBefore[lanes], cdghBefore[lanes];
#pragma GCC unroll 4
        for (int i = 0; i < lanes; ++i) {
            abefBefore[i] = lane[i].abef;
            cdghBefore[i] = lane[i].cdgh;
        }
#pragma GCC unroll 16
        for (int group = 0; group < 16; ++group) {
            const __m128i constants = _mm_load_si128(reinterpret_cast<const __m128i*>(roundConstants) + group);
#pragma GCC unroll 4
            for (int i = 0; i < lanes; ++i) {
                if (group < 4) {
                    takeWords(lane[i], data[i] + at, group);
                } else {
                    extendWords(lane[i], group % 4);
                }
                fourRounds(lane[i], group % 4, constants);
            }
        }
#pragma GCC unroll 4
        for (int i = 0; i < lanes; ++i) {
            lane[i].abef = _mm_add_epi32(lane[i].abef, abefBefore[i]);
            lane[i].cdgh = _mm_add_epi32(lane[i].cdgh, cdghBefore[i]);
        }
    }
#pragma GCC unroll 4
    for (int i = 0; i < lanes; ++i) store(lane[i], *states[i]);
}

bool detect() noexcept {
    unsigned a = 0, b = 0, c = 0, d = 0;
    if (__get_cpuid_count(7, 0, &a, &b, &c, &d) == 0 || (b & bit_SHA) == 0) return false;
    return __get_cpuid(1, &a, &b, &c, &d) != 0 && (c & bit_SSSE3) != 0 && (c & bit_SSE4_1) != 0;
}

}  // namespace

bool isAvailable() noexcept {
    static const bool available = detect();
    return available;
}

void compress(std::size_t lanes, Sha256State* const* states, const unsigned char* const* data,
              std::size_t blocks) noexcept {
    if (lanes == 3) {
        compressInStep<3>(states, data, blocks);
    } else if (lanes == 2) {
        compressInStep<2>(states, data, blocks);
    } else {
        compressInStep<1>(states, data, blocks);
    }
}

#else

bool isAvailable() noexcept {
    return false;
}

void compress(std::size_t, Sha256State* const*, const unsigned char* const*, std::size_t) noexcept {
    std::unreachable();
}

#endif

}  // namespace ordovan::ShaNi
