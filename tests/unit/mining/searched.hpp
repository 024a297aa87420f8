#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <quarvis/rule.hpp>

#include "frequent_sets.hpp"
#include "history_index.hpp"
#include "oracle/table.hpp"
#include "rule_counting.hpp"

namespace mining_tests {

using oracle::Table;

/// A table with its index and with the frequent sets of every size up to `maxSize` or, when that is
/// 0, up to the first size without any.
class Searched {
  public:
    Searched(const Table& table, std::uint32_t minCount, std::size_t maxSize = 0);
    Searched(const Searched&) = delete;
    Searched& operator=(const Searched&) = delete;

    const quarvis::rule::TransactionSet txns;
    const quarvis::rule::HistoryIndex index;
    quarvis::rule::FrequentSets sets;

    /// The items of a set, as "a,b".
    std::string namesOf(std::size_t size, std::size_t set) const;

    /// The sets of a size in the order of the level, as "a,b 2".
    std::vector<std::string> listed(std::size_t size) const;

    /// A rule as "a => b,c 2".
    std::string textOf(const quarvis::rule::CountedRule& rule) const;
};

}  // namespace mining_tests
