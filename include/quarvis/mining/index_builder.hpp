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

/// Collects rows of entity, time and items, in any order, and makes a history index of them.
///
/// A row takes 8 bytes, or 12 with wide times, and 4 bytes an item; a row without items takes as
/// much as one with a single item. Rows of one entity and time form one transaction, whose items
/// are a set.
class IndexBuilder {
  public:
    /// Makes a builder without rows. The times of its rows must fit in `timeWidth`.
    explicit IndexBuilder(TimeWidth timeWidth = TimeWidth::BITS_32);

    /// Begins a row: a transaction of the entity at this time, which has no items yet. Throws
    /// `std::out_of_range` when the time needs more than 32 bits and the builder's times have 32,
    /// and `std::length_error` beyond 2^31 - 1 entities.
    void beginRow(std::string_view entity, std::uint64_t time);

    /// Adds an item to the current row, which `beginRow` must have begun. Throws
    /// `std::length_error` beyond 2^31 - 1 items.
    void addItem(std::string_view item);

    /// Adds a row of one item.
    void add(std::string_view entity, std::uint64_t time, std::string_view item) {
        beginRow(entity, time);
        addItem(item);
    }

    /// The entities so far. Their codes are the ids of their histories in the index.
    const Dictionary& entities() const { return m_entities; }

    /// Makes an index of the items that at least `minCount` histories hold. The builder is left
    /// without rows but keeps its entities. Throws `std::length_error` beyond 2^32 - 2 transactions
    /// or occurrences of items.
    HistoryIndex freeze(std::uint32_t minCount);

  private:
    friend class BuilderRows;

    // A row is stored as its entity, its time (one word or two) and its items. The last item is
    // marked, and NO_ITEM stands for a row without items. All blocks but the last are full, and
    // blocks never move. The first block is small because small runs are common.
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

    // The current row.
    Code m_entity = NO_ITEM;
    std::uint64_t m_time = 0;
    Code m_item = NO_ITEM;  // its last item so far, not stored yet
};

/// Makes an index from columns of codes, as a data frame has them. Row i says that entity
/// `entities[i]` had the item `items[i]` at the time `times[i]`; the item is a code of `names`, or
/// `NO_ITEM`. Entities are less than `historyCount` and become the ids of the histories. Rows may
/// come in any order and may repeat. Items that fewer than `minCount` histories hold are left out.
/// Throws `std::invalid_argument` when the columns differ in length or a code is out of range. The
/// observer is asked every few milliseconds whether to cancel, which throws `Cancelled`.
HistoryIndex indexColumns(std::span<const std::uint32_t> entities,
                          std::span<const std::uint32_t> times,
                          std::span<const std::uint32_t> items, std::size_t historyCount,
                          const Dictionary& names, std::uint32_t minCount,
                          const Observer& observer = Observer());

/// The same for times of 64 bits.
HistoryIndex indexColumns(std::span<const std::uint32_t> entities,
                          std::span<const std::uint64_t> times,
                          std::span<const std::uint32_t> items, std::size_t historyCount,
                          const Dictionary& names, std::uint32_t minCount,
                          const Observer& observer = Observer());

/// @{
/// Makes a shard from columns of codes, as `indexColumns` does, but keeps all items of `names`,
/// even those that none of its histories holds. Counts are those of the shard alone. Shards made
/// with the same names therefore have the same ranks, whatever their rows are.
HistoryIndex shardColumns(std::span<const std::uint32_t> entities,
                          std::span<const std::uint32_t> times,
                          std::span<const std::uint32_t> items, std::size_t historyCount,
                          const Dictionary& names, const Observer& observer = Observer());
HistoryIndex shardColumns(std::span<const std::uint32_t> entities,
                          std::span<const std::uint64_t> times,
                          std::span<const std::uint32_t> items, std::size_t historyCount,
                          const Dictionary& names, const Observer& observer = Observer());
/// @}

/// Makes an index that has items but no histories. Rank i is name i of `names` and has the count
/// `counts[i]`, which the caller took from the whole. Throws `std::invalid_argument` when the names
/// are not in byte order, when there are not as many counts as names, and when a count is below
/// `minCount`.
HistoryIndex indexOfItems(const Dictionary& names, std::span<const std::uint32_t> counts,
                          std::uint32_t minCount);

}  // namespace quarvis::mining

#pragma GCC visibility pop
