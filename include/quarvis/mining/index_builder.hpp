#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include <quarvis/mining/dictionary.hpp>
#include <quarvis/mining/history_index.hpp>
#include <quarvis/mining/observer.hpp>

#pragma GCC visibility push(default)

namespace quarvis::mining {

/// Collects rows of entity, time and items, in any order, and makes the history index of them.
///
/// A row is kept as codes: 8 bytes, or 12 with wide times, and 4 bytes an item; a row without items
/// counts as one with an item. Rows of one entity and time are one transaction, whose items are a
/// set.
class IndexBuilder {
  public:
    /// Without rows. The times of rows must fit in `timeWidth`.
    explicit IndexBuilder(TimeWidth timeWidth = TimeWidth::BITS_32);

    /// Begins a row: the transaction of the entity at this time, without items so far. Throws
    /// `std::out_of_range` for a time that has more than 32 bits where the builder's times have
    /// not, and `std::length_error` beyond 2^31 - 1 entities.
    void beginRow(std::string_view entity, std::uint64_t time);

    /// Adds an item to the row that was begun last; there must be one. Throws `std::length_error`
    /// beyond 2^31 - 1 items.
    void addItem(std::string_view item);

    /// A row of one item.
    void add(std::string_view entity, std::uint64_t time, std::string_view item) {
        beginRow(entity, time);
        addItem(item);
    }

    /// The entities met so far. Their codes are the numbers of their histories in the index.
    const Dictionary& entities() const { return m_entities; }

    /// Makes the index of the items that are in `minCount` histories or more, and leaves the
    /// builder without rows; the entities stay. Throws `std::length_error` beyond 2^32 - 2
    /// transactions or occurrences.
    HistoryIndex freeze(std::uint32_t minCount);

  private:
    friend class BuilderRows;

    // A row stands as entity, time (one word or two) and its items; the last item is marked, and
    // NO_ITEM stands for a row without one. Blocks are full but the last and never move.
    // The first one is small, as small runs are many.
    static constexpr std::size_t FIRST_BLOCK = std::size_t{1} << 10;
    static constexpr std::size_t BLOCK = std::size_t{1} << 16;
    static constexpr std::uint32_t LAST = std::uint32_t{1} << 31;

    void m_put(std::uint32_t word) {
        if (m_left == 0)
            m_newBlock();
        *m_next++ = word;
        --m_left;
    }
    void m_newBlock();
    void m_endRow();

    TimeWidth m_timeWidth;
    Dictionary m_entities;
    Dictionary m_items;
    std::vector<std::vector<std::uint32_t>> m_blocks;
    std::uint32_t* m_next = nullptr;
    std::size_t m_left = 0;

    // The row that is being added.
    Code m_entity = NO_ITEM;
    std::uint64_t m_time = 0;
    Code m_item = NO_ITEM;  // its last item so far, not put down yet
};

/// The index of rows that are columns of codes, as a data frame has them: row i is entity
/// `entities[i]` at `times[i]` with the item `items[i]`, a code of `names`, or `NO_ITEM`. The
/// columns have one length. Entities are numbers below `historyCount` and become the numbers of the
/// histories. Rows may come in any order and repeat. Throws `std::invalid_argument` for columns of
/// different lengths and for a number that is out of range, and `Cancelled` when the observer,
/// which is asked every few milliseconds, ends it.
HistoryIndex indexColumns(std::span<const std::uint32_t> entities,
                          std::span<const std::uint32_t> times,
                          std::span<const std::uint32_t> items, std::size_t historyCount,
                          const Dictionary& names, std::uint32_t minCount,
                          const Observer& observer = Observer());

/// The same with times of 64 bits.
HistoryIndex indexColumns(std::span<const std::uint32_t> entities,
                          std::span<const std::uint64_t> times,
                          std::span<const std::uint32_t> items, std::size_t historyCount,
                          const Dictionary& names, std::uint32_t minCount,
                          const Observer& observer = Observer());

/// @{
/// A shard of rows that are columns of codes, as for `indexColumns`: it keeps all items of `names`,
/// also those that none of its histories has, with the counts of its own histories. So shards of
/// the same names have the same ranks, whichever rows they have.
HistoryIndex shardColumns(std::span<const std::uint32_t> entities,
                          std::span<const std::uint32_t> times,
                          std::span<const std::uint32_t> items, std::size_t historyCount,
                          const Dictionary& names, const Observer& observer = Observer());
HistoryIndex shardColumns(std::span<const std::uint32_t> entities,
                          std::span<const std::uint64_t> times,
                          std::span<const std::uint32_t> items, std::size_t historyCount,
                          const Dictionary& names, const Observer& observer = Observer());
/// @}

/// Items without histories: rank i is name i of `names`, in `counts[i]` histories of some whole.
/// Throws `std::invalid_argument` for names that are not in byte order, for another number of
/// counts, and for counts below `minCount`.
HistoryIndex indexOfItems(const Dictionary& names, std::span<const std::uint32_t> counts,
                          std::uint32_t minCount);

}  // namespace quarvis::mining

#pragma GCC visibility pop
