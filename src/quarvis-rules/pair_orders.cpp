#include "pair_orders.hpp"

#include <span>

namespace quarvis::rule {

namespace {

using Time = History::Time;

constexpr std::size_t MAX_BYTES = std::size_t{16} << 20;

/// A cache has room for what is needed of so many histories.
constexpr HistoryId BLOCK = 2048;

/// To visit a history for a pair takes about as long as so many comparisons of first times, and to
/// take up an entry of the index as long as so many.
constexpr std::size_t VISIT = 16;
constexpr std::size_t ENTRY = 16;

/// The first times of the items of some histories, added an item at a time.
class TimesBlock {
  public:
    /// Begins with other histories, without times.
    void enter(const HistoryIndex& index, HistoryId begin, HistoryId end) {
        m_begin = begin;
        m_histories.clear();
        std::uint32_t size = 0;
        for (HistoryId history = begin; history < end; ++history) {
            m_histories.push_back({size, 0});
            size += static_cast<std::uint32_t>(index.items(history).size());
        }
        m_times.resize(size);
    }

    /// Those added so far.
    std::span<const Time> of(HistoryId history) const {
        const Part& part = m_histories[history - m_begin];
        return std::span(m_times).subspan(part.begin, part.size);
    }

    void add(HistoryId history, Time time) {
        Part& part = m_histories[history - m_begin];
        m_times[part.begin + part.size++] = time;
    }

  private:
    struct Part {
        std::uint32_t begin;
        std::uint32_t size;
    };

    HistoryId m_begin = 0;
    std::vector<Part> m_histories;
    std::vector<Time> m_times;
};

/// About how many histories of a pair are visited: the better one of its two rules is met in half
/// of them, and is given up when the other half leaves less than `least`.
std::size_t visitsOf(std::uint32_t count, std::uint32_t least) {
    if (count < least)
        return 0;
    return std::min<std::size_t>(count, 2 * std::size_t{count - least + 1});
}

}  // namespace

PairOrders::PairOrders(const HistoryIndex& index, const FrequentSets& sets, std::uint32_t least) {
    m_makeRows(index, sets.level(2), least);
    if (!m_orders.empty())
        m_count(index);
}

void PairOrders::m_makeRows(const HistoryIndex& index, const Level& pairs, std::uint32_t least) {
    std::vector<std::size_t> visits(index.itemCount());
    for (std::size_t pair = 0; pair < pairs.size(); ++pair)
        visits[pairs.last[pair]] += visitsOf(pairs.count[pair], least);
    std::vector<std::size_t> comparisons(index.itemCount());
    std::size_t entries = 0;
    for (HistoryId history = 0; history < index.historyCount(); ++history) {
        std::size_t lesser = 0;
        for (const Rank item : index.items(history))
            comparisons[item] += lesser++;
        entries += lesser;
    }
    std::size_t size = 0;
    std::size_t saved = 0;
    m_rows.assign(index.itemCount(), NONE);
    for (Rank item = 0; item < index.itemCount(); ++item)
        if (visits[item] * VISIT > comparisons[item] &&
            (size + item) * sizeof(Order) <= MAX_BYTES) {
            m_rows[item] = size;
            size += item;
            saved += visits[item] * VISIT - comparisons[item];
        }
    if (saved > size + entries * ENTRY)
        m_orders.resize(size);
    else
        m_rows.assign(index.itemCount(), NONE);
}

/// Items are taken in their order, so that each finds the times of the lesser ones of its
/// histories.
void PairOrders::m_count(const HistoryIndex& index) {
    std::vector<std::uint32_t> taken(index.itemCount());  // by item: its histories before the block
    const auto histories = static_cast<HistoryId>(index.historyCount());
    TimesBlock times;
    for (HistoryId begin = 0; begin < histories;) {
        const HistoryId end = begin + std::min(BLOCK, histories - begin);
        times.enter(index, begin, end);
        HistoryIndex::Entry entries = 0;  // of all lesser items
        for (Rank item = 0; item < index.itemCount(); ++item) {
            const std::span<const HistoryId> in = index.histories(item);
            std::uint32_t& at = taken[item];
            for (; at < in.size() && in[at] < end; ++at) {
                const Time own = index.times(entries + at).front();
                if (m_rows[item] != NONE) {
                    const std::span<const Time> others = times.of(in[at]);
                    const std::span<const Rank> lesser = index.items(in[at]);
                    Order* const row = &m_orders[m_rows[item]];
                    for (std::size_t i = 0; i < others.size(); ++i) {
                        row[lesser[i]].before += others[i] < own ? 1 : 0;
                        row[lesser[i]].after += own < others[i] ? 1 : 0;
                    }
                }
                times.add(in[at], own);
            }
            entries += index.count(item);
        }
        begin = end;
    }
}

}  // namespace quarvis::rule
