#include "weighted_bits.hpp"

namespace quarvis::mining {

namespace {

/// The loop of `intersectWeighted`, inlined into functions that are compiled for different
/// processors.
inline __attribute__((always_inline)) std::uint32_t intersectLoop(
    const std::uint64_t* bits, const std::uint64_t* mask, const std::uint64_t* tops,
    const std::uint32_t* weights, std::size_t n, std::uint64_t* result) {
    std::uint64_t sum = 0;
    for (std::size_t i = 0; i < n; ++i) {
        std::uint64_t counted = bits[i] & mask[i];
        result[i] = counted;
        if (tops != nullptr)
            // The sum carries into the top of a field exactly if one of the field's lower bits is
            // set.
            counted = (((counted & ~tops[i]) + ~tops[i]) | counted) & tops[i];
        sum += static_cast<std::uint64_t>(__builtin_popcountll(counted)) * weights[i];
    }
    return static_cast<std::uint32_t>(sum);
}

using Intersect = std::uint32_t (*)(const std::uint64_t* bits, const std::uint64_t* mask,
                                    const std::uint64_t* tops, const std::uint32_t* weights,
                                    std::size_t n, std::uint64_t* result);

std::uint32_t intersectPortable(const std::uint64_t* bits, const std::uint64_t* mask,
                                const std::uint64_t* tops, const std::uint32_t* weights,
                                std::size_t n, std::uint64_t* result) {
    return tops == nullptr ? intersectLoop(bits, mask, nullptr, weights, n, result)
                           : intersectLoop(bits, mask, tops, weights, n, result);
}

#if defined(__x86_64__)

__attribute__((target("popcnt"))) std::uint32_t intersectPopcnt(
    const std::uint64_t* bits, const std::uint64_t* mask, const std::uint64_t* tops,
    const std::uint32_t* weights, std::size_t n, std::uint64_t* result) {
    return tops == nullptr ? intersectLoop(bits, mask, nullptr, weights, n, result)
                           : intersectLoop(bits, mask, tops, weights, n, result);
}

__attribute__((target("avx512f,avx512vl,avx512vpopcntdq,popcnt"))) std::uint32_t intersectAvx512(
    const std::uint64_t* bits, const std::uint64_t* mask, const std::uint64_t* tops,
    const std::uint32_t* weights, std::size_t n, std::uint64_t* result) {
    return tops == nullptr ? intersectLoop(bits, mask, nullptr, weights, n, result)
                           : intersectLoop(bits, mask, tops, weights, n, result);
}

#endif

Intersect findIntersect() {
#if defined(__x86_64__)
    if (__builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512vpopcntdq"))
        return intersectAvx512;
    if (__builtin_cpu_supports("popcnt"))
        return intersectPopcnt;
#endif
    return intersectPortable;
}

}  // namespace

std::uint32_t intersectWeighted(const std::uint64_t* bits, const std::uint64_t* mask,
                                const std::uint64_t* tops, const std::uint32_t* weights,
                                std::size_t n, std::uint64_t* result) {
    static const Intersect INTERSECT = findIntersect();
    return INTERSECT(bits, mask, tops, weights, n, result);
}

}  // namespace quarvis::mining
