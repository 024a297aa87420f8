#include "order_kernels.hpp"

#include <vector>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace quarvis::mining {

namespace {

void comparePortable(const std::uint8_t* item, const std::uint8_t* set, std::size_t words,
                     std::uint64_t* before, std::uint64_t* with, std::uint64_t* after) {
    for (std::size_t word = 0; word < words; ++word, item += 64, set += 64) {
        std::uint64_t less = 0;
        std::uint64_t equal = 0;
        std::uint64_t greater = 0;
        for (std::size_t lane = 0; lane < 64; ++lane) {
            const bool present = item[lane] != ABSENT && set[lane] != ABSENT;
            less |= std::uint64_t{present && item[lane] < set[lane]} << lane;
            equal |= std::uint64_t{present && item[lane] == set[lane]} << lane;
            greater |= std::uint64_t{present && item[lane] > set[lane]} << lane;
        }
        before[word] = less;
        with[word] = equal;
        after[word] = greater;
    }
}

#if defined(__x86_64__)

// AVX2 has no comparison of unsigned bytes. A byte is not above another one if it is the minimum of
// both.

/// The highest bits of 32 bytes.
__attribute__((target("avx2"))) inline std::uint64_t maskOf(__m256i bytes) {
    return static_cast<std::uint32_t>(_mm256_movemask_epi8(bytes));
}

__attribute__((target("avx2"))) void compareAvx2(const std::uint8_t* item, const std::uint8_t* set,
                                                 std::size_t words, std::uint64_t* before,
                                                 std::uint64_t* with, std::uint64_t* after) {
    const __m256i absent = _mm256_set1_epi8(static_cast<char>(ABSENT));
    for (std::size_t word = 0; word < words; ++word) {
        before[word] = with[word] = after[word] = 0;
        for (std::size_t half = 0; half < 64; half += 32, item += 32, set += 32) {
            const __m256i a = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(item));
            const __m256i b = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(set));
            const __m256i least = _mm256_min_epu8(a, b);
            const std::uint64_t lacking = maskOf(_mm256_cmpeq_epi8(_mm256_max_epu8(a, b), absent));
            const std::uint64_t notAbove = maskOf(_mm256_cmpeq_epi8(least, a));
            const std::uint64_t notBelow = maskOf(_mm256_cmpeq_epi8(least, b));
            before[word] |= (notAbove & ~notBelow & ~lacking) << half;
            with[word] |= (notAbove & notBelow & ~lacking) << half;
            after[word] |= (notBelow & ~notAbove & ~lacking) << half;
        }
    }
}

__attribute__((target("avx512f,avx512bw"))) void compareAvx512(
    const std::uint8_t* item, const std::uint8_t* set, std::size_t words, std::uint64_t* before,
    std::uint64_t* with, std::uint64_t* after) {
    const __m512i absent = _mm512_set1_epi8(static_cast<char>(ABSENT));
    for (std::size_t word = 0; word < words; ++word, item += 64, set += 64) {
        const __m512i a = _mm512_loadu_si512(item);
        const __m512i b = _mm512_loadu_si512(set);
        const __mmask64 present = _mm512_cmpneq_epu8_mask(_mm512_max_epu8(a, b), absent);
        before[word] = _mm512_mask_cmplt_epu8_mask(present, a, b);
        with[word] = _mm512_mask_cmpeq_epu8_mask(present, a, b);
        after[word] = _mm512_mask_cmpgt_epu8_mask(present, a, b);
    }
}

#endif

std::vector<OrderKernels> findKernels() {
    std::vector<OrderKernels> found;
#if defined(__x86_64__)
    if (__builtin_cpu_supports("avx512bw"))
        found.push_back({"avx512", compareAvx512});
    if (__builtin_cpu_supports("avx2"))
        found.push_back({"avx2", compareAvx2});
#endif
    found.push_back({"portable", comparePortable});
    return found;
}

}  // namespace

std::span<const OrderKernels> supportedOrderKernels() {
    static const std::vector<OrderKernels> KERNELS = findKernels();
    return KERNELS;
}

const OrderKernels& orderKernels() {
    static const OrderKernels& best = supportedOrderKernels().front();
    return best;
}

}  // namespace quarvis::mining
