#include "baskets.hpp"

#include <algorithm>
#include <cassert>
#include <limits>
#include <optional>
#include <stdexcept>
#include <utility>

#include "tasks.hpp"

namespace quarvis::mining {

namespace {

constexpr std::uint32_t NONE = std::numeric_limits<std::uint32_t>::max();
constexpr const char* TOO_MANY = "too many items of histories";

}  // namespace

/// A range of the histories of a shard, which one thread converts.
///
/// Items are sorted by two transpositions: first the histories of each item are listed, and then
/// each item, in ascending order, is written into the histories of its list.
class Baskets::Part {
  public:
    /// Finds the distinct items of each history, in no particular order. `room` is the number of
    /// items to make room for.
    Part(const Shard& shard, const WalkOrder& order, std::size_t room, Work& work)
        : m_next(order.size()) {
        m_items.reserve(room);
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
                    m_items.push_back(item);
                }
            work.add(1 + 5 * (m_items.size() - m_begin.back()));
            m_endHistory();
        }
    }

    /// The number of elements that its items and end marks take.
    std::size_t places() const { return m_items.size() + m_histories(); }

    /// The number of histories of this part that hold an item.
    std::uint32_t count(std::size_t item) const { return m_next[item]; }

    /// Sets where the places of an item begin for this part. The places of the next part follow.
    void beginAt(std::size_t item, std::uint32_t place) { m_next[item] = place; }

    /// Hands its items over to the baskets, which then need not allocate.
    LargeVector<WalkItem> takeItems() { return std::move(m_items); }

    /// Writes its items, from `first` on, and their places. If its items were handed over, they are
    /// at the beginning of the items of `made`.
    void fill(Baskets& made, std::size_t first) {
        const WalkItem* const items = m_items.empty() ? made.m_items.data() : m_items.data();
        std::vector<std::uint32_t> next = m_next;
        const std::size_t histories = m_histories();
        for (std::uint32_t history = 0; history < histories; ++history)
            for (std::size_t i = m_begin[history]; i < m_begin[history + 1]; ++i)
                made.m_places[next[at(items[i])]++] = history;

        for (std::size_t history = 0; history < histories; ++history) {
            m_begin[history] += static_cast<std::uint32_t>(first + history);
            made.m_items[first + m_begin[history + 1] + history] = END;
        }
        for (std::uint32_t item = 0; item < m_next.size(); ++item)
            for (std::uint32_t i = m_next[item]; i < next[item]; ++i) {
                std::uint32_t& place = m_begin[made.m_places[i]];
                made.m_items[place] = WalkItem{item};
                made.m_places[i] = place++;
            }
        assert(std::all_of(m_begin.begin(), m_begin.end() - 1,
                           [&](std::uint32_t place) { return made.m_items[place] == END; }));
    }

  private:
    std::size_t m_histories() const { return m_begin.size() - 1; }

    void m_endHistory() {
        if (m_items.size() - m_begin.back() < 2) {
            m_items.resize(m_begin.back());
            return;
        }
        for (std::size_t i = m_begin.back(); i < m_items.size(); ++i)
            ++m_next[at(m_items[i])];
        // Each history adds an end mark.
        if (m_items.size() + m_begin.size() >= NONE)
            throw std::length_error(TOO_MANY);
        m_begin.push_back(static_cast<std::uint32_t>(m_items.size()));
    }

    LargeVector<WalkItem> m_items;
    std::vector<std::uint32_t> m_begin = {0};  // by history that is kept, and the end of the last
    std::vector<std::uint32_t> m_next;         // by item: its count, then where its places begin
};

Baskets::Baskets(const Shard& shard, const WalkOrder& order, unsigned threads, Step& step)
    : m_begin(order.size() + 1) {
    std::vector<std::optional<Part>> parts(threads);
    // The first part makes room for all items and end marks.
    std::size_t items = 0;
    for (std::uint32_t item = 0; item < order.size(); ++item)
        items += order.count(WalkItem{item});
    items = std::min(items, shard.index->occurrenceCount());
    workOnParts(threads, step, [&](std::size_t part) {
        Work work(step);
        parts[part].emplace(shard.part(part, threads), order,
                            part == 0 ? items + (shard.end - shard.begin) : items / threads, work);
    });

    for (std::size_t item = 0; item < order.size(); ++item) {
        m_begin[item + 1] = m_begin[item];
        for (std::optional<Part>& part : parts) {
            const std::uint32_t count = part->count(item);
            part->beginAt(item, m_begin[item + 1]);
            m_begin[item + 1] += count;
        }
    }
    std::vector<std::size_t> first(threads + 1);
    for (std::size_t part = 0; part < threads; ++part)
        first[part + 1] = first[part] + parts[part]->places();
    if (first.back() >= NONE)
        throw std::length_error(TOO_MANY);
    m_items = parts.front()->takeItems();
    m_items.resize(first.back());
    m_places.resize(m_begin.back());
    workOnParts(threads, step, [&](std::size_t part) { parts[part]->fill(*this, first[part]); });
}

}  // namespace quarvis::mining
