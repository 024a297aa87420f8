#include "bit_kernels.hpp"

#include <bit>
#include <vector>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace quarvis::rule {

namespace {

/// Every form is this loop over single pairs, compiled for its processors.
template <auto CountCommon>
void countEach(const std::uint64_t* a, const std::uint64_t* const* b, std::size_t n,
               std::size_t words, std::uint32_t* counts) {
    for (std::size_t i = 0; i < n; ++i)
        counts[i] = CountCommon(a, b[i], words);
}

std::uint32_t countPortable(const std::uint64_t* a, const std::uint64_t* b, std::size_t words) {
    int bits = 0;
    for (std::size_t i = 0; i < words; ++i)
        bits += std::popcount(a[i] & b[i]);
    return static_cast<std::uint32_t>(bits);
}

#if defined(__x86_64__)

__attribute__((target("popcnt"))) std::uint32_t countPopcnt(const std::uint64_t* a,
                                                            const std::uint64_t* b,
                                                            std::size_t words) {
    std::uint64_t bits = 0;
    for (std::size_t i = 0; i < words; ++i)
        bits += static_cast<std::uint64_t>(__builtin_popcountll(a[i] & b[i]));
    return static_cast<std::uint32_t>(bits);
}

/// Counts 4 words at a time by nibbles, with a table in a register; the rest by popcnt. W. Mula,
/// N. Kurz, D. Lemire: Faster Population Counts Using AVX2 Instructions (2018).
__attribute__((target("avx2,popcnt"))) std::uint32_t countAvx2(const std::uint64_t* a,
                                                               const std::uint64_t* b,
                                                               std::size_t words) {
    std::uint64_t bits = 0;
    std::size_t i = 0;
    if (words >= 16) {
        const __m256i table = _mm256_setr_epi8(0, 1, 1, 2, 1, 2, 2, 3, 1, 2, 2, 3, 2, 3, 3, 4, 0, 1,
                                               1, 2, 1, 2, 2, 3, 1, 2, 2, 3, 2, 3, 3, 4);
        const __m256i nibble = _mm256_set1_epi8(0x0f);
        const __m256i zero = _mm256_setzero_si256();
        __m256i sums = zero;
        for (; i + 4 <= words; i += 4) {
            const __m256i both =
                _mm256_and_si256(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(a + i)),
                                 _mm256_loadu_si256(reinterpret_cast<const __m256i*>(b + i)));
            const __m256i low = _mm256_shuffle_epi8(table, _mm256_and_si256(both, nibble));
            const __m256i high =
                _mm256_shuffle_epi8(table, _mm256_and_si256(_mm256_srli_epi16(both, 4), nibble));
            sums = _mm256_add_epi64(sums, _mm256_sad_epu8(_mm256_add_epi8(low, high), zero));
        }
        alignas(32) std::uint64_t lanes[4];
        _mm256_store_si256(reinterpret_cast<__m256i*>(lanes), sums);
        bits = lanes[0] + lanes[1] + lanes[2] + lanes[3];
    }
    for (; i < words; ++i)
        bits += static_cast<std::uint64_t>(__builtin_popcountll(a[i] & b[i]));
    return static_cast<std::uint32_t>(bits);
}

#endif

std::vector<BitKernels> findKernels() {
    std::vector<BitKernels> found;
#if defined(__x86_64__)
    if (__builtin_cpu_supports("avx2") && __builtin_cpu_supports("popcnt"))
        found.push_back({"avx2", countAvx2, countEach<countAvx2>});
    if (__builtin_cpu_supports("popcnt"))
        found.push_back({"popcnt", countPopcnt, countEach<countPopcnt>});
#endif
    found.push_back({"portable", countPortable, countEach<countPortable>});
    return found;
}

}  // namespace

std::span<const BitKernels> supportedBitKernels() {
    static const std::vector<BitKernels> KERNELS = findKernels();
    return KERNELS;
}

const BitKernels& bitKernels() {
    static const BitKernels& best = supportedBitKernels().front();
    return best;
}

}  // namespace quarvis::rule
