#pragma once

#include <cstddef>
#include <cstdint>

#include <quarvis/mining/history_index.hpp>
#include <quarvis/mining/index_builder.hpp>
#include <quarvis/rule.hpp>

#include "plain_reading.hpp"

namespace bench {

/// Histories as the engine has them. The builder keeps the names of the entities.
struct IndexedHistories {
    quarvis::mining::IndexBuilder builder;
    quarvis::mining::HistoryIndex index;
};

/// The content of a container of histories, whatever its type. Transactions without items are left
/// out, because the index does not keep them.
struct Content {
    std::uint64_t digest;
    std::size_t occurrences;  ///< Items of transactions.
};

Content digested(const IndexedHistories& histories);
Content digested(const FlatHistories& histories);
Content digested(const PlainHistories& histories);
Content digested(const quarvis::rule::TransactionSet& histories);

}  // namespace bench
