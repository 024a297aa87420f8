#include "bare_pairs.hpp"

#include <algorithm>
#include <cstdio>
#include <vector>

#include "bit_kernels.hpp"
#include "input.hpp"
#include "support/child.hpp"

namespace bench {

namespace {

using quarvis::mining::at;
using quarvis::mining::HistoryId;
using quarvis::mining::HistoryIndex;
using quarvis::mining::Rank;

constexpr std::size_t WORD_BITS = 64;

/// The bitmaps of all items, contiguous.
std::vector<std::uint64_t> bitmapsOf(const HistoryIndex& index, std::size_t words) {
    std::vector<std::uint64_t> bits(index.itemCount() * words);
    for (std::size_t history = 0; history < index.historyCount(); ++history) {
        const HistoryId id{static_cast<std::uint32_t>(history)};
        for (std::size_t place = index.firstTransaction(id); place < index.endTransaction(id);
             ++place)
            for (const Rank item : index.items(place))
                bits[at(item) * words + history / WORD_BITS] |= std::uint64_t{1}
                                                                << (history % WORD_BITS);
    }
    return bits;
}

BarePairs intersectHere(const HistoryIndex& index, std::uint32_t minCount) {
    const std::size_t words = (index.historyCount() + WORD_BITS - 1) / WORD_BITS;
    const std::vector<std::uint64_t> bits = bitmapsOf(index, words);
    const quarvis::mining::BitKernels& kernels = quarvis::mining::bitKernels();
    std::vector<std::uint32_t> counts;

    BarePairs result{};
    const Stopwatch watch;
    for (std::size_t item = 0; item + 1 < index.itemCount(); ++item) {
        const std::uint64_t* const bitmap = bits.data() + item * words;
        counts.resize(index.itemCount() - item - 1);
        kernels.count(bitmap, bitmap + words, counts.size(), words, counts.data());
        result.frequent += static_cast<std::size_t>(
            std::count_if(counts.begin(), counts.end(),
                          [minCount](std::uint32_t count) { return count >= minCount; }));
    }
    result.time = watch.elapsed();
    return result;
}

}  // namespace

BarePairs intersectPairs(const std::string& path, std::uint32_t minCount) {
    return inChild([&] { return intersectHere(indexOf(path, minCount), minCount); });
}

void printKernels() {
    std::printf("kernels:   %s\n", quarvis::mining::bitKernels().name);
}

}  // namespace bench
