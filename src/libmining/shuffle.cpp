#include <quarvis/mining/shuffle.hpp>

#include <cstddef>
#include <limits>
#include <numeric>
#include <span>
#include <utility>
#include <vector>

#include "index_parts.hpp"

namespace quarvis::mining {

namespace {

/// SplitMix64: numbers of 64 bits, all equally likely.
class Draws {
  public:
    explicit Draws(std::uint64_t seed) : m_state(seed) {}

    std::uint64_t next() {
        m_state += 0x9e3779b97f4a7c15U;
        std::uint64_t z = m_state;
        z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9U;
        z = (z ^ (z >> 27)) * 0x94d049bb133111ebU;
        return z ^ (z >> 31);
    }

    /// A number below `bound`, all equally likely. Draws beyond the last multiple of `bound` are
    /// repeated.
    std::uint64_t below(std::uint64_t bound) {
        const std::uint64_t excess =
            (std::numeric_limits<std::uint64_t>::max() % bound + 1) % bound;
        std::uint64_t number = next();
        while (number > std::numeric_limits<std::uint64_t>::max() - excess)
            number = next();
        return number % bound;
    }

  private:
    std::uint64_t m_state;
};

void shuffle(std::span<std::size_t> places, Draws& draws) {
    for (std::size_t left = places.size(); left > 1; --left)
        std::swap(places[left - 1], places[draws.below(left)]);
}

}  // namespace

HistoryIndex shuffleTimes(const HistoryIndex& index, std::uint64_t seed, std::uint64_t first) {
    HistoryIndex shuffled = index;
    IndexParts parts(shuffled);
    parts.items.clear();
    parts.itemBegin.assign(1, 0);
    const std::uint64_t mixed = Draws(seed).next();
    std::vector<std::size_t> places;
    for (std::uint32_t number = 0; number < index.historyCount(); ++number) {
        const HistoryId history{number};
        const std::size_t begin = index.firstTransaction(history);
        places.resize(index.endTransaction(history) - begin);
        std::iota(places.begin(), places.end(), begin);
        Draws draws(mixed ^ Draws(first + number).next());
        shuffle(places, draws);
        for (const std::size_t place : places) {
            const std::span<const Rank> items = index.items(place);
            parts.items.insert(parts.items.end(), items.begin(), items.end());
            parts.itemBegin.push_back(static_cast<std::uint32_t>(parts.items.size()));
        }
    }
    return shuffled;
}

}  // namespace quarvis::mining
