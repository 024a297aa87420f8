#pragma once

#include <cstdint>
#include <string>

#include <quarvis/mining/history_index.hpp>
#include <quarvis/mining/index_builder.hpp>
#include <quarvis/rule.hpp>

/// A transaction file, as the engine and as the rule model read it.
namespace bench {

/// The rows of the file, as the tool reads them.
quarvis::mining::IndexBuilder rowsOf(const std::string& path);

/// The index of the items that at least `minCount` histories hold.
quarvis::mining::HistoryIndex indexOf(const std::string& path, std::uint32_t minCount);

/// The histories as sets and strings.
quarvis::rule::TransactionSet transactionsOf(const std::string& path);

}  // namespace bench
