#include "pair_tallies.hpp"

#include <algorithm>
#include <memory>

#include "tasks.hpp"

namespace quarvis::mining {

namespace {

constexpr std::uint32_t NONE = static_cast<std::uint32_t>(-1);

/// How many counters a strip of the matrix has.
constexpr std::size_t STRIP_SIZE = std::size_t{1} << 18;

/// A counter for each of the two rules of a pair: that of the forward one in the lower half, which
/// never overflows as no count is above the number of histories.
using Counters = std::uint64_t;

Counters counters(bool forward, bool backward, Counters weight) {
    return (forward ? weight : 0) | (backward ? weight << 32 : 0);
}

PairTallies::Pair pairOf(Counters counters) {
    return {static_cast<std::uint32_t>(counters), static_cast<std::uint32_t>(counters >> 32)};
}

/// The items that are in some history, numbered by ascending rank.
struct Numbers {
    std::vector<Rank> items;
    std::vector<std::uint32_t> numbers;  // by rank, or NONE

    explicit Numbers(const Standings& standings) : numbers(standings.itemCount(), NONE) {
        for (std::uint32_t item = 0; item < standings.itemCount(); ++item) {
            if (standings.places(Rank{item}).empty())
                continue;
            numbers[item] = static_cast<std::uint32_t>(items.size());
            items.push_back(Rank{item});
        }
    }
};

/// Counts a strip of the matrix after the other.
class StripCounter {
  public:
    StripCounter(const Standings& standings, const Numbers& numbers)
        : m_standings(standings), m_numbers(numbers) {}

    /// Counts for the first items of the numbers [begin, end).
    void count(std::size_t begin, std::size_t end, Work& work) {
        m_begin = begin;
        m_end = end;
        m_met.assign((end - begin) * m_numbers.items.size(), 0);
        std::size_t entry = 0;
        for (std::size_t history = 0; history < m_standings.historyCount(); ++history) {
            const std::size_t next = m_standings.endEntry(history);
            work.add(m_addHistory(history, entry, next));
            entry = next;
        }
    }

    PairTallies::Pair met(std::size_t first, std::size_t second) const {
        return pairOf(m_met[(first - m_begin) * m_numbers.items.size() + second]);
    }

  private:
    /// Its items are the entries [entry, end). What it cost, in nanoseconds or so.
    std::size_t m_addHistory(std::size_t history, std::size_t entry, std::size_t end) {
        m_items.resize(end - entry);
        for (std::size_t i = 0; i < m_items.size(); ++i)
            m_items[i] = m_numbers.numbers[at(m_standings.item(entry + i))];
        const Standings::Masks masks = m_standings.masks(history, entry);
        const Counters weight = m_standings.weight(history);
        const auto from = std::lower_bound(m_items.begin(), m_items.end(), m_begin);
        std::size_t cost = 5 + m_items.size();
        for (auto first = static_cast<std::size_t>(from - m_items.begin());
             first < m_items.size() && m_items[first] < m_end; ++first) {
            if (masks.words == 1)
                m_addPairs<true>(masks, first, weight);
            else
                m_addPairs<false>(masks, first, weight);
            cost += (m_items.size() - first) * masks.words;
        }
        return cost;
    }

    /// Adds the pairs of an item of a history with all later ones; `all` are the masks of the first
    /// of its items.
    template <bool ONE_WORD>
    void m_addPairs(const Standings::Masks& all, std::size_t first, Counters weight) {
        const std::size_t words = ONE_WORD ? 1 : all.words;
        const Standings::Masks masks = all.after(first);
        const std::uint64_t* fresh = masks.fresh;
        Counters* const row = &m_met[(m_items[first] - m_begin) * m_numbers.items.size()];
        for (std::size_t second = first + 1; second < m_items.size(); ++second) {
            fresh += 2 * words;
            std::uint64_t forward = 0;
            std::uint64_t backward = 0;
            for (std::size_t word = 0; word < words; ++word) {
                forward |= masks.fresh[words + word] & fresh[word];
                backward |= masks.fresh[word] & fresh[words + word];
            }
            row[m_items[second]] += counters(forward != 0, backward != 0, weight);
        }
    }

    const Standings& m_standings;
    const Numbers& m_numbers;
    std::size_t m_begin = 0;
    std::size_t m_end = 0;
    std::vector<Counters> m_met;
    std::vector<std::uint32_t> m_items;
};

}  // namespace

PairTallies::PairTallies(const Standings& standings, const ItemSets& sets, unsigned threads,
                         Step& step)
    : m_met(sets.count(2)) {
    const Numbers numbers(standings);
    const std::size_t items = numbers.items.size();
    if (items == 0 || m_met.empty())
        return;
    const std::size_t rows = std::clamp<std::size_t>(STRIP_SIZE / items, 1, items / threads + 1);
    const Level& pairs = sets.level(2);
    const auto makeWorker = [&](unsigned) {
        return [&, work = std::make_unique<Work>(step),
                counter = StripCounter(standings, numbers)](std::size_t strip) mutable {
            const std::size_t begin = strip * rows;
            const std::size_t end = std::min(begin + rows, items);
            counter.count(begin, end, *work);
            for (std::size_t pair = 0; pair < pairs.size(); ++pair) {
                const Rank rank = sets.level(1).last[pairs.prefix[pair]];
                const std::uint32_t first = numbers.numbers[at(rank)];
                const std::uint32_t second = numbers.numbers[at(pairs.last[pair])];
                if (first >= begin && first < end && second != NONE)
                    m_met[pair] = counter.met(first, second);
            }
        };
    };
    workOn((items + rows - 1) / rows, threads, step, makeWorker, [](std::size_t) {});
}

PairTallies::Pair countPair(const Standings& standings, Rank a, Rank b) {
    PairTallies::Pair counted;
    auto right = standings.places(b).begin();
    const auto end = standings.places(b).end();
    for (const Standings::Place& left : standings.places(a)) {
        while (right != end && right->history < left.history)
            ++right;
        if (right == end)
            break;
        if (right->history != left.history)
            continue;
        const Standings::Masks first = standings.masks(left.history, left.entry);
        const Standings::Masks second = first.after(right->entry - left.entry);
        bool forward = false;
        bool backward = false;
        for (std::size_t word = 0; word < first.words; ++word) {
            std::uint64_t after = first.recent()[word] & second.fresh[word];
            std::uint64_t before = second.recent()[word] & first.fresh[word];
            if (standings.anyPresent()) {
                after &= ~first.present[word];
                before &= ~second.present[word];
            }
            forward = forward || after != 0;
            backward = backward || before != 0;
        }
        counted.forward += forward ? standings.weight(left.history) : 0;
        counted.backward += backward ? standings.weight(left.history) : 0;
    }
    return counted;
}

}  // namespace quarvis::mining
