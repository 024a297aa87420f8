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

/// How many bits a point in time has. The wide form costs four bytes more for each transaction.
enum class TimeWidth : std::uint8_t { BITS_32 = 4, BITS_64 = 8 };

/// Histories in flat arrays: for each history its transactions in ascending time, for each
/// transaction its frequent items in ascending rank. Immutable and self-contained; made by
/// `IndexBuilder`, by `indexColumns` or by `readIndex`.
///
/// Items that are in too few histories are left out, and so are transactions without any other
/// item; histories are not. The index takes 4 bytes a history, 8 or 12 bytes a transaction and 4
/// bytes an item of a transaction, so at most 12 bytes an occurrence with times of 32 bits, and the
/// names.
class HistoryIndex {
  public:
    /// A point in time at which an entity had frequent items.
    struct Transaction {
        std::uint64_t time;           ///< In the unit of the rows.
        std::span<const Rank> items;  ///< Ascending, at least one.
    };

    /// No histories.
    HistoryIndex() = default;

    /// All histories, also those without frequent items.
    std::size_t historyCount() const { return m_historyBegin.size() - 1; }

    /// The frequent items; ranks are below it.
    std::size_t itemCount() const { return m_counts.size(); }

    /// The distinct pairs of entity and time that the index was made from; in a slice, those of
    /// them that have frequent items.
    std::uint64_t transactionCount() const { return m_transactionCount; }

    /// The least number of histories of the items that were kept.
    std::uint32_t minCount() const { return m_minCount; }

    /// The width of the stored times; `time` widens them to 64 bits.
    TimeWidth timeWidth() const { return m_timeWidth; }

    /// The name of an item. Valid as long as the index.
    std::string_view name(Rank item) const {
        assert(at(item) < itemCount());
        const std::uint64_t begin = m_nameBegin[at(item)];
        return std::string_view(m_names).substr(begin, m_nameBegin[at(item) + 1] - begin);
    }

    /// The number of histories that the item is in. In a slice of an index it is that of the whole.
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

    /// A transaction by its place among those of all histories.
    Transaction transaction(std::size_t place) const { return {time(place), items(place)}; }

    /// @{
    /// A member of a transaction, by the transaction's place.
    std::uint64_t time(std::size_t place) const {
        assert(place + 1 < m_itemBegin.size());
        return m_timeWidth == TimeWidth::BITS_32 ? m_times32[place] : m_times64[place];
    }
    std::span<const Rank> items(std::size_t place) const {
        assert(place + 1 < m_itemBegin.size());
        return {m_items.data() + m_itemBegin[place], m_itemBegin[place + 1] - m_itemBegin[place]};
    }
    /// @}

    /// The items of all transactions together.
    std::size_t occurrenceCount() const { return m_items.size(); }

    /// The histories [begin, end) as an index of their own with the same items, names and counts:
    /// a shard that another process may count.
    HistoryIndex slice(HistoryId begin, HistoryId end) const;

    /// Bytes that the arrays take.
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
