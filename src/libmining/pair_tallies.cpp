#include "pair_tallies.hpp"

#include <algorithm>
#include <memory>
#include <numeric>

#include "tasks.hpp"

namespace quarvis::mining {

namespace {

constexpr std::uint32_t NONE = static_cast<std::uint32_t>(-1);

/// The number of counters of a strip.
constexpr std::size_t STRIP_SIZE = std::size_t{1} << 18;

/// The counters of both rules of a pair; that of the forward rule is the lower half. It does not
/// overflow, because no count is greater than the number of histories.
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

/// Counts the matrix strip by strip.
class StripCounter {
  public:
    StripCounter(const Standings& standings, const Numbers& numbers)
        : m_standings(standings), m_numbers(numbers) {}

    /// Counts the strip of the first items with the numbers [begin, end).
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
    /// Adds the history whose items are the entries [entry, end). Returns the cost in units of
    /// work.
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

    /// Adds the pairs of an item of a history with all later items. `all` are the masks of the
    /// history's first item.
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

/// Counts the pairs of each first item in the histories of that item.
class ItemCounter {
  public:
    ItemCounter(const Standings& standings, const Level& pairs)
        : m_standings(standings), m_pairs(pairs), m_pairOf(standings.itemCount(), NONE) {}

    /// Counts the pairs [begin, end) of the item into `met`.
    void count(Rank first, std::size_t begin, std::size_t end, std::vector<PairTallies::Pair>& met,
               Work& work) {
        if (begin == end)
            return;
        for (std::size_t pair = begin; pair < end; ++pair)
            m_pairOf[at(m_pairs.last[pair])] = static_cast<std::uint32_t>(pair);
        for (const Standings::Place& place : m_standings.places(first)) {
            const Standings::Masks own = m_standings.masks(place.history, place.entry);
            const std::uint32_t weight = m_standings.weight(place.history);
            const std::size_t last = m_standings.endEntry(place.history);
            for (std::size_t entry = place.entry + std::size_t{1}; entry < last; ++entry)
                if (const std::uint32_t pair = m_pairOf[at(m_standings.item(entry))]; pair != NONE)
                    s_add(own, own.after(entry - place.entry), weight, met[pair]);
            work.add(2 * (last - place.entry) + 5);
        }
        for (std::size_t pair = begin; pair < end; ++pair)
            m_pairOf[at(m_pairs.last[pair])] = NONE;
    }

  private:
    static void s_add(const Standings::Masks& first, const Standings::Masks& second,
                      std::uint32_t weight, PairTallies::Pair& met) {
        std::uint64_t forward = 0;
        std::uint64_t backward = 0;
        for (std::size_t word = 0; word < first.words; ++word) {
            forward |= first.recent()[word] & second.fresh[word];
            backward |= first.fresh[word] & second.recent()[word];
        }
        met.forward += forward != 0 ? weight : 0;
        met.backward += backward != 0 ? weight : 0;
    }

    const Standings& m_standings;
    const Level& m_pairs;
    std::vector<std::uint32_t> m_pairOf;  // by rank, or NONE
};

/// The strips of the matrix: the numbers of their first items, then an end. A strip has at most
/// STRIP_SIZE counters unless it has a single item, and each thread gets about as many pairs.
class Strips {
  public:
    Strips(const Standings& standings, const Numbers& numbers, unsigned threads) {
        const std::size_t items = numbers.items.size();
        std::vector<std::size_t> pairs(items);  // by first item: its pairs in all histories
        for (std::size_t history = 0; history < standings.historyCount(); ++history) {
            const std::size_t end = standings.endEntry(history);
            for (std::size_t entry = m_entries; entry < end; ++entry)
                pairs[numbers.numbers[at(standings.item(entry))]] += end - entry - 1;
            m_entries = end;
        }
        m_pairs = std::accumulate(pairs.begin(), pairs.end(), std::size_t{0});
        const std::size_t most = std::max<std::size_t>(STRIP_SIZE / items, 1);
        std::size_t taken = 0;
        for (std::size_t item = 0; item < items; ++item) {
            if (item - m_begin.back() == most || taken >= m_pairs / threads + 1) {
                m_begin.push_back(item);
                taken = 0;
            }
            taken += pairs[item];
        }
        m_begin.push_back(items);
    }

    std::size_t count() const { return m_begin.size() - 1; }
    std::size_t begin(std::size_t strip) const { return m_begin[strip]; }
    std::size_t end(std::size_t strip) const { return m_begin[strip + 1]; }

    /// Whether a pass over all histories for each strip is cheaper than visiting the histories of
    /// each first item, which may be anywhere in memory. Both ways look once at each pair of items
    /// of a history.
    bool pay(std::size_t histories) const {
        constexpr std::size_t far = 3;
        return count() * (m_entries + 5 * histories) <= far * m_pairs;
    }

  private:
    std::vector<std::size_t> m_begin = {0};
    std::size_t m_entries = 0;  // items of all histories
    std::size_t m_pairs = 0;    // pairs of items of all histories
};

}  // namespace

PairTallies::PairTallies(const Standings& standings, const ItemSets& sets, unsigned threads,
                         Step& step)
    : m_met(sets.count(2)) {
    const Numbers numbers(standings);
    if (numbers.items.empty() || m_met.empty())
        return;
    const Strips strips(standings, numbers, threads);
    const Level& firsts = sets.level(1);
    const Level& pairs = sets.level(2);
    if (!strips.pay(standings.historyCount())) {
        const auto makeWorker = [&](unsigned) {
            return [&, work = std::make_unique<Work>(step),
                    counter = ItemCounter(standings, pairs)](std::size_t first) mutable {
                counter.count(firsts.last[first], firsts.extensions[first],
                              firsts.extensions[first + 1], m_met, *work);
            };
        };
        workOn(firsts.size(), threads, step, makeWorker, [](std::size_t) {});
        return;
    }
    const auto makeWorker = [&](unsigned) {
        return [&, work = std::make_unique<Work>(step),
                counter = StripCounter(standings, numbers)](std::size_t strip) mutable {
            const std::size_t begin = strips.begin(strip);
            const std::size_t end = strips.end(strip);
            counter.count(begin, end, *work);
            auto first = static_cast<std::size_t>(
                std::lower_bound(firsts.last.begin(), firsts.last.end(), numbers.items[begin]) -
                firsts.last.begin());
            for (; first < firsts.size() && firsts.last[first] <= numbers.items[end - 1]; ++first) {
                const std::uint32_t number = numbers.numbers[at(firsts.last[first])];
                for (std::size_t pair = firsts.extensions[first];
                     number != NONE && pair < firsts.extensions[first + 1]; ++pair)
                    if (const std::uint32_t other = numbers.numbers[at(pairs.last[pair])];
                        other != NONE)
                        m_met[pair] = counter.met(number, other);
            }
        };
    };
    workOn(strips.count(), threads, step, makeWorker, [](std::size_t) {});
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
