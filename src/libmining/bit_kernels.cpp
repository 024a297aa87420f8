#include "bit_kernels.hpp"

#include <vector>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

/// All forms are the same two loops, inlined into functions that are compiled for different
/// processors. They differ only in how they intersect a pair of bitmaps. If the target is null, the
/// intersection is counted but not stored.
namespace quarvis::mining {

namespace {

#define QUARVIS_INLINE inline __attribute__((always_inline))

/// Takes a word at a time.
struct ByWord {
    static QUARVIS_INLINE std::uint32_t intersect(const std::uint64_t* a, const std::uint64_t* b,
                                                  std::size_t words, std::uint64_t* target) {
        int bits = 0;
        for (std::size_t i = 0; i < words; ++i) {
            const std::uint64_t both = a[i] & b[i];
            if (target != nullptr)
                target[i] = both;
            bits += __builtin_popcountll(both);
        }
        return static_cast<std::uint32_t>(bits);
    }
};

template <class Form>
QUARVIS_INLINE std::size_t joinLoop(const std::uint64_t* a, const std::uint64_t* b, std::size_t n,
                                    std::size_t words, std::uint32_t least, std::uint64_t* result,
                                    std::uint32_t* kept, std::uint32_t* counts) {
    std::size_t found = 0;
    for (std::size_t i = 0; i < n; ++i, b += words) {
        const std::uint32_t count = Form::intersect(a, b, words, result);
        kept[found] = static_cast<std::uint32_t>(i);
        counts[found] = count;
        const bool frequent = count >= least;
        found += frequent ? 1 : 0;
        result += frequent ? words : 0;
    }
    return found;
}

template <class Form>
QUARVIS_INLINE void countLoop(const std::uint64_t* a, const std::uint64_t* b, std::size_t n,
                              std::size_t words, std::uint32_t* counts) {
    for (std::size_t i = 0; i < n; ++i, b += words)
        counts[i] = Form::intersect(a, b, words, nullptr);
}

std::size_t joinPortable(const std::uint64_t* a, const std::uint64_t* b, std::size_t n,
                         std::size_t words, std::uint32_t least, std::uint64_t* result,
                         std::uint32_t* kept, std::uint32_t* counts) {
    return joinLoop<ByWord>(a, b, n, words, least, result, kept, counts);
}

void countPortable(const std::uint64_t* a, const std::uint64_t* b, std::size_t n, std::size_t words,
                   std::uint32_t* counts) {
    countLoop<ByWord>(a, b, n, words, counts);
}

#if defined(__x86_64__)

/// Takes four words at a time and counts their bits by nibbles, with a table in a register. The
/// last words are counted by popcnt. W. Mula, N. Kurz, D. Lemire: Faster Population Counts Using
/// AVX2 Instructions (2018).
struct ByNibble {
    __attribute__((target("avx2,popcnt"))) static std::uint32_t intersect(const std::uint64_t* a,
                                                                          const std::uint64_t* b,
                                                                          std::size_t words,
                                                                          std::uint64_t* target) {
        if (words < 16)
            return ByWord::intersect(a, b, words, target);
        const __m256i table = _mm256_setr_epi8(0, 1, 1, 2, 1, 2, 2, 3, 1, 2, 2, 3, 2, 3, 3, 4, 0, 1,
                                               1, 2, 1, 2, 2, 3, 1, 2, 2, 3, 2, 3, 3, 4);
        const __m256i nibble = _mm256_set1_epi8(0x0f);
        const __m256i zero = _mm256_setzero_si256();
        __m256i sums = zero;
        std::size_t i = 0;
        for (; i + 4 <= words; i += 4) {
            const __m256i both =
                _mm256_and_si256(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(a + i)),
                                 _mm256_loadu_si256(reinterpret_cast<const __m256i*>(b + i)));
            if (target != nullptr)
                _mm256_storeu_si256(reinterpret_cast<__m256i*>(target + i), both);
            const __m256i low = _mm256_shuffle_epi8(table, _mm256_and_si256(both, nibble));
            const __m256i high =
                _mm256_shuffle_epi8(table, _mm256_and_si256(_mm256_srli_epi16(both, 4), nibble));
            sums = _mm256_add_epi64(sums, _mm256_sad_epu8(_mm256_add_epi8(low, high), zero));
        }
        alignas(32) std::uint64_t lanes[4];
        _mm256_store_si256(reinterpret_cast<__m256i*>(lanes), sums);
        return static_cast<std::uint32_t>(lanes[0] + lanes[1] + lanes[2] + lanes[3]) +
               ByWord::intersect(a + i, b + i, words - i, target == nullptr ? target : target + i);
    }
};

__attribute__((target("popcnt"))) std::size_t joinPopcnt(const std::uint64_t* a,
                                                         const std::uint64_t* b, std::size_t n,
                                                         std::size_t words, std::uint32_t least,
                                                         std::uint64_t* result, std::uint32_t* kept,
                                                         std::uint32_t* counts) {
    if (words == 1)
        return joinLoop<ByWord>(a, b, n, 1, least, result, kept, counts);
    if (words == 2)
        return joinLoop<ByWord>(a, b, n, 2, least, result, kept, counts);
    return joinLoop<ByWord>(a, b, n, words, least, result, kept, counts);
}

__attribute__((target("popcnt"))) void countPopcnt(const std::uint64_t* a, const std::uint64_t* b,
                                                   std::size_t n, std::size_t words,
                                                   std::uint32_t* counts) {
    if (words == 1)
        return countLoop<ByWord>(a, b, n, 1, counts);
    if (words == 2)
        return countLoop<ByWord>(a, b, n, 2, counts);
    return countLoop<ByWord>(a, b, n, words, counts);
}

__attribute__((target("avx2,popcnt"))) std::size_t joinAvx2(
    const std::uint64_t* a, const std::uint64_t* b, std::size_t n, std::size_t words,
    std::uint32_t least, std::uint64_t* result, std::uint32_t* kept, std::uint32_t* counts) {
    if (words < 16)
        return joinPopcnt(a, b, n, words, least, result, kept, counts);
    return joinLoop<ByNibble>(a, b, n, words, least, result, kept, counts);
}

__attribute__((target("avx2,popcnt"))) void countAvx2(const std::uint64_t* a,
                                                      const std::uint64_t* b, std::size_t n,
                                                      std::size_t words, std::uint32_t* counts) {
    if (words < 16)
        return countPopcnt(a, b, n, words, counts);
    return countLoop<ByNibble>(a, b, n, words, counts);
}

#endif

std::vector<BitKernels> findKernels() {
    std::vector<BitKernels> found;
#if defined(__x86_64__)
    if (__builtin_cpu_supports("avx2") && __builtin_cpu_supports("popcnt"))
        found.push_back({"avx2", joinAvx2, countAvx2});
    if (__builtin_cpu_supports("popcnt"))
        found.push_back({"popcnt", joinPopcnt, countPopcnt});
#endif
    found.push_back({"portable", joinPortable, countPortable});
    return found;
}

#undef QUARVIS_INLINE

}  // namespace

std::span<const BitKernels> supportedBitKernels() {
    static const std::vector<BitKernels> KERNELS = findKernels();
    return KERNELS;
}

const BitKernels& bitKernels() {
    static const BitKernels& best = supportedBitKernels().front();
    return best;
}

}  // namespace quarvis::mining
