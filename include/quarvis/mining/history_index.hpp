#pragma once

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <quarvis/mining/ids.hpp>

#pragma GCC visibility push(default)

namespace quarvis::mining {

/// The number of bits of a point in time. The wide form takes four more bytes a transaction.
enum class TimeWidth : std::uint8_t { BITS_32 = 4, BITS_64 = 8 };

/// Histories in flat arrays: for each history its transactions by ascending time, for each
/// transaction its frequent items by ascending rank. An index is immutable and self-contained.
/// `IndexBuilder`, `indexColumns` and `indexFromBytes` make one.
///
/// Items that too few histories hold are left out, and so are transactions without any other item.
/// Histories are never left out. The index takes 4 bytes a history, 8 or 12 bytes a transaction, 4
/// bytes an item of a transaction, and the names. With times of 32 bits this is at most 12 bytes
/// for each occurrence of an item.
class HistoryIndex {
  public:
    /// A point in time at which an entity had frequent items.
    struct Transaction {
        std::uint64_t time;           ///< In the unit of the rows.
        std::span<const Rank> items;  ///< Ascending, at least one.
    };

    /// Makes an index without histories.
    HistoryIndex() = default;

    /// The number of histories, including those without frequent items.
    std::size_t historyCount() const { return m_historyBegin.size() - 1; }

    /// The number of frequent items. Ranks are less than this.
    std::size_t itemCount() const { return m_counts.size(); }

    /// The number of distinct pairs of entity and time in the rows that the index was made from. In
    /// a slice: the number of its transactions that have frequent items.
    std::uint64_t transactionCount() const { return m_transactionCount; }

    /// The least number of histories that an item had to be in to be kept.
    std::uint32_t minCount() const { return m_minCount; }

    /// The width of the stored times; `time` widens them to 64 bits.
    TimeWidth timeWidth() const { return m_timeWidth; }

    /// The name of an item. It is valid as long as the index.
    std::string_view name(Rank item) const {
        assert(at(item) < itemCount());
        const std::uint64_t begin = m_nameBegin[at(item)];
        return std::string_view(m_names).substr(begin, m_nameBegin[at(item) + 1] - begin);
    }

    /// The number of histories that hold the item. A slice keeps the count of the whole index.
    std::uint32_t count(Rank item) const {
        assert(at(item) < itemCount());
        return m_counts[at(item)];
    }

    /// @{
    /// The transactions of a history are [firstTransaction(history), endTransaction(history)).
    std::size_t firstTransaction(HistoryId history) const {
        assert(at(history) < historyCount());
        return m_historyBegin[at(history)];
    }
    std::size_t endTransaction(HistoryId history) const {
        assert(at(history) < historyCount());
        return m_historyBegin[at(history) + 1];
    }
    /// @}

    /// The transaction at a place, counted through all histories.
    Transaction transaction(std::size_t place) const { return {time(place), items(place)}; }

    /// @{
    /// The time or the items of the transaction at a place.
    std::uint64_t time(std::size_t place) const {
        assert(place + 1 < m_itemBegin.size());
        return m_timeWidth == TimeWidth::BITS_32 ? m_times32[place] : m_times64[place];
    }
    std::span<const Rank> items(std::size_t place) const {
        assert(place + 1 < m_itemBegin.size());
        return {m_items.data() + m_itemBegin[place], m_itemBegin[place + 1] - m_itemBegin[place]};
    }
    /// @}

    /// The number of items of all transactions together.
    std::size_t occurrenceCount() const { return m_items.size(); }

    /// Copies the histories [begin, end) into an index with the same items, names and counts: a
    /// shard that another process may count.
    HistoryIndex slice(HistoryId begin, HistoryId end) const;

    /// The number of bytes that the arrays take.
    std::size_t memory() const;

  private:
    friend class IndexParts;

    TimeWidth m_timeWidth = TimeWidth::BITS_32;
    std::uint32_t m_minCount = 0;
    std::uint64_t m_transactionCount = 0;
    std::string m_names;                           // of all items, in the order of their ranks
    std::vector<std::uint64_t> m_nameBegin = {0};  // by rank, and the end of the last
    std::vector<std::uint32_t> m_counts;           // by rank
    std::vector<std::uint32_t> m_historyBegin = {0};
    std::vector<std::uint32_t> m_times32;  // by transaction; one of the two is empty
    std::vector<std::uint64_t> m_times64;
    std::vector<std::uint32_t> m_itemBegin = {0};  // by transaction
    std::vector<Rank> m_items;
};

}  // namespace quarvis::mining

#pragma GCC visibility pop
