#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include <quarvis/rule.hpp>

namespace quarvis::rule {

/// A frequent item, as its place among the frequent items in byte order. Comparing the ascending
/// rank sequences of two sets compares the sets.
using Rank = std::uint32_t;

/// A history, as its place in the transaction set.
using HistoryId = std::uint32_t;

/// The occurrences of the frequent items of a transaction set, in flat arrays, by history and by
/// item. Infrequent items are not in it.
///
/// An entry stands for one item in one history and has the times at which the item occurs there.
/// Entries are numbered by item, those of an item by history. With E entries and O occurrences
/// the index takes 12 E + 4 O bytes, and for each item in more than a 128th of the histories a
/// bitmap over them with its running counts, at most 24 bytes an entry.
class HistoryIndex {
  public:
    using Time = History::Time;
    using Entry = std::uint32_t;

    /// Indexes the items that are in `minCount` histories or more. `txns` must outlive the index,
    /// which refers to its item names. Throws `std::length_error` beyond 2^32 - 1 histories,
    /// entries or occurrences.
    HistoryIndex(const TransactionSet& txns, std::size_t minCount);

    std::size_t historyCount() const { return m_historyBegin.size() - 1; }
    std::size_t itemCount() const { return m_names.size(); }

    const Item& name(Rank item) const { return *m_names[item]; }

    /// The number of histories that the item is in.
    std::uint32_t count(Rank item) const { return m_entryBegin[item + 1] - m_entryBegin[item]; }

    /// The frequent items of a history, ascending.
    std::span<const Rank> items(HistoryId history) const {
        return s_slice(m_items, m_historyBegin[history], m_historyBegin[history + 1]);
    }

    /// The histories that the item is in, ascending.
    std::span<const HistoryId> histories(Rank item) const {
        return s_slice(m_entryHistory, m_entryBegin[item], m_entryBegin[item + 1]);
    }

    /// The times of an entry, ascending; at least one.
    std::span<const Time> times(Entry entry) const {
        return s_slice(m_occurrences, m_occurrenceBegin[entry], m_occurrenceBegin[entry + 1]);
    }

    /// The entry of an item in a history that it is in. Constant time where the item has a bitmap,
    /// else a binary search in its histories.
    Entry entry(Rank item, HistoryId history) const {
        const std::size_t bitmap = m_bitmap[item];
        if (bitmap == NO_BITMAP)
            return m_searchEntry(item, history);
        const std::size_t word = history / 64;
        const std::uint64_t below = (std::uint64_t{1} << (history % 64)) - 1;
        return m_wordRank[bitmap + word] +
               static_cast<Entry>(std::popcount(m_words[bitmap + word] & below));
    }

    bool hasBitmap(Rank item) const { return m_bitmap[item] != NO_BITMAP; }

    /// Whether the item, which has a bitmap, is in the history.
    bool inBitmap(Rank item, HistoryId history) const {
        return (m_words[m_bitmap[item] + history / 64] >> (history % 64) & 1) != 0;
    }

    /// Bytes that the arrays take.
    std::size_t memory() const;

  private:
    static constexpr std::size_t NO_BITMAP = static_cast<std::size_t>(-1);

    template <class T>
    static std::span<const T> s_slice(const std::vector<T>& all, std::size_t begin,
                                      std::size_t end) {
        return {all.data() + begin, end - begin};
    }

    void m_makeBitmaps();
    Entry m_searchEntry(Rank item, HistoryId history) const;

    std::vector<const Item*> m_names;           // by rank
    std::vector<std::uint32_t> m_historyBegin;  // by history: where its items begin
    std::vector<Rank> m_items;
    std::vector<Entry> m_entryBegin;               // by rank: its first entry
    std::vector<HistoryId> m_entryHistory;         // by entry
    std::vector<std::uint32_t> m_occurrenceBegin;  // by entry: where its times begin
    std::vector<Time> m_occurrences;

    std::vector<std::size_t> m_bitmap;  // by rank: where its words begin, or NO_BITMAP
    std::vector<std::uint64_t> m_words;
    std::vector<Entry> m_wordRank;  // by word: the item's first entry at or after it
};

}  // namespace quarvis::rule
