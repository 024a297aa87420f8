#pragma once

#include <quarvis/mining/history_index.hpp>

namespace quarvis::mining {

/// Access to the arrays of an index, for code that makes, cuts, writes and reads indexes.
class IndexParts {
  public:
    explicit IndexParts(HistoryIndex& index)
        : timeWidth(index.m_timeWidth),
          minCount(index.m_minCount),
          transactionCount(index.m_transactionCount),
          names(index.m_names),
          nameBegin(index.m_nameBegin),
          counts(index.m_counts),
          historyBegin(index.m_historyBegin),
          times32(index.m_times32),
          times64(index.m_times64),
          itemBegin(index.m_itemBegin),
          items(index.m_items) {}

    TimeWidth& timeWidth;
    std::uint32_t& minCount;
    std::uint64_t& transactionCount;
    std::string& names;
    std::vector<std::uint64_t>& nameBegin;
    std::vector<std::uint32_t>& counts;
    std::vector<std::uint32_t>& historyBegin;
    std::vector<std::uint32_t>& times32;
    std::vector<std::uint64_t>& times64;
    std::vector<std::uint32_t>& itemBegin;
    std::vector<Rank>& items;
};

}  // namespace quarvis::mining
