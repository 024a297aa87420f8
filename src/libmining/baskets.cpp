#include "baskets.hpp"

#include <cassert>
#include <limits>
#include <stdexcept>

namespace quarvis::mining {

namespace {

constexpr std::uint32_t NONE = std::numeric_limits<std::uint32_t>::max();

/// The distinct items of each history, in no order.
struct Unordered {
    std::vector<WalkItem> items;
    std::vector<std::uint32_t> begin = {0};  // by history that is kept, and the end of the last
    std::vector<std::uint32_t> counts;       // by item

    Unordered(const Shard& shard, const WalkOrder& order, Work* work) : counts(order.size()) {
        std::vector<std::uint32_t> last(order.size(), NONE);  // by item: the last history with it
        for (std::size_t history = shard.begin; history < shard.end; ++history) {
            const HistoryId id{static_cast<std::uint32_t>(history)};
            const std::size_t end = shard.index->endTransaction(id);
            for (std::size_t place = shard.index->firstTransaction(id); place < end; ++place)
                for (const Rank rank : shard.index->items(place)) {
                    const WalkItem item = order.item(rank);
                    if (item == WalkOrder::NOT_WALKED || last[at(item)] == history)
                        continue;
                    last[at(item)] = static_cast<std::uint32_t>(history);
                    items.push_back(item);
                }
            if (work != nullptr)
                work->add(1 + 5 * (items.size() - begin.back()));
            m_endHistory();
        }
    }

  private:
    void m_endHistory() {
        if (items.size() - begin.back() < 2) {
            items.resize(begin.back());
            return;
        }
        for (std::size_t i = begin.back(); i < items.size(); ++i)
            ++counts[at(items[i])];
        // A mark is added for each history.
        if (items.size() + begin.size() >= NONE)
            throw std::length_error("too many items of histories");
        begin.push_back(static_cast<std::uint32_t>(items.size()));
    }
};

}  // namespace

/// A transposition sorts the histories: their items are listed by item, and these lists, taken in
/// the order of the items, fill each history in that order.
Baskets::Baskets(const Shard& shard, const WalkOrder& order, Work* work)
    : m_begin(order.size() + 1) {
    Unordered histories(shard, order, work);
    for (std::size_t item = 0; item < order.size(); ++item)
        m_begin[item + 1] = m_begin[item] + histories.counts[item];

    m_places.resize(histories.items.size());
    std::vector<std::uint32_t> next(m_begin.begin(), m_begin.end() - 1);
    const std::size_t count = histories.begin.size() - 1;
    for (std::uint32_t history = 0; history < count; ++history)
        for (std::size_t i = histories.begin[history]; i < histories.begin[history + 1]; ++i)
            m_places[next[at(histories.items[i])]++] = history;

    m_items = std::move(histories.items);
    m_items.resize(m_places.size() + count);
    for (std::size_t history = 0; history < count; ++history) {
        m_items[histories.begin[history + 1] + history] = END;
        histories.begin[history] += static_cast<std::uint32_t>(history);
    }
    for (std::uint32_t item = 0; item < order.size(); ++item)
        for (std::uint32_t i = m_begin[item]; i < m_begin[item + 1]; ++i) {
            std::uint32_t& place = histories.begin[m_places[i]];
            assert(m_items[place] != END);
            m_items[place] = WalkItem{item};
            m_places[i] = place++;
        }
}

}  // namespace quarvis::mining
