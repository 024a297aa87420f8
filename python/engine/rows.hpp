#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <variant>

#include <quarvis/mining/history_index.hpp>
#include <quarvis/mining/index_builder.hpp>

#include "arrays.hpp"
#include "watch.hpp"

namespace binding {

using IndexPointer = std::shared_ptr<const quarvis::mining::HistoryIndex>;
using TimeColumn = std::variant<Column<std::uint32_t>, Column<std::uint64_t>>;

/// Rows as columns of codes and the names of the items. Shares the columns with Python.
class Rows {
  public:
    /// The columns have one length; entities are below `histories`, items are codes of the names or
    /// `NO_ITEM`. The names, given by offsets and bytes, differ.
    Rows(Column<std::uint32_t> entities, TimeColumn times, Column<std::uint32_t> items,
         std::size_t histories, const Column<std::int64_t>& nameOffsets,
         const Column<std::uint8_t>& nameBytes);

    /// The index of the items that are in `minCount` histories or more. Works without the
    /// interpreter's lock, under the watch.
    IndexPointer index(std::uint32_t minCount, Watch& watch) const;

    /// A shard of all items, whose ranks are the codes where the names are in byte order.
    IndexPointer shard() const;

  private:
    Column<std::uint32_t> m_entities;
    TimeColumn m_times;
    Column<std::uint32_t> m_items;
    std::size_t m_histories;
    quarvis::mining::Dictionary m_names;
};

/// Items without histories, by names in byte order. Throws `std::invalid_argument` for names in
/// another order and for another number of counts.
IndexPointer itemIndex(const Column<std::int64_t>& nameOffsets,
                       const Column<std::uint8_t>& nameBytes, const Column<std::uint32_t>& counts,
                       std::uint32_t minCount);

/// Reads a transaction file by the rules of the tool, which accepts whatever it finds; a file that
/// cannot be opened reads as empty. Gives a dictionary of the columns `entities`, `times` and
/// `items`, one row an item or an itemless row, and of the names `entity_names` and `item_names`.
Columns readTransactions(const std::string& path);

}  // namespace binding
