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
    /// The columns must have the same length. Entities must be below `histories`; items must be
    /// codes of the names or `NO_ITEM`. The names, given by offsets and bytes, must be distinct.
    Rows(Column<std::uint32_t> entities, TimeColumn times, Column<std::uint32_t> items,
         std::size_t histories, const Column<std::int64_t>& nameOffsets,
         const Column<std::uint8_t>& nameBytes);

    /// The index of the items that are in at least `minCount` histories. Releases the interpreter's
    /// lock while it works, under the watch.
    IndexPointer index(std::uint32_t minCount, Watch& watch) const;

    /// A shard of all items. If the names are in byte order, its ranks equal the codes.
    IndexPointer shard() const;

  private:
    Column<std::uint32_t> m_entities;
    TimeColumn m_times;
    Column<std::uint32_t> m_items;
    std::size_t m_histories;
    quarvis::mining::Dictionary m_names;
};

/// An index of items without histories. The names must be in byte order. Throws
/// `std::invalid_argument` if they are not, or if there is not one count per name.
IndexPointer itemIndex(const Column<std::int64_t>& nameOffsets,
                       const Column<std::uint8_t>& nameBytes, const Column<std::uint32_t>& counts,
                       std::uint32_t minCount);

/// Reads a transaction file as the tool does, which accepts any content. A file that cannot be
/// opened reads as empty. Returns the columns `entities`, `times` and `items`, with one row per
/// item and one for each row without items, and the names `entity_names` and `item_names`.
Columns readTransactions(const std::string& path);

}  // namespace binding
