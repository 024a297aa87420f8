#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <map>
#include <set>
#include <vector>

#include <quarvis/mining/history_index.hpp>
#include <quarvis/mining/item_sets.hpp>

namespace mining_tests {

using quarvis::mining::HistoryId;
using quarvis::mining::HistoryIndex;
using quarvis::mining::Rank;

/// Ascending items.
using Set = std::vector<Rank>;

/// Item sets and their counts. Sets of one size are in lexicographic order.
using CountedSets = std::map<Set, std::uint32_t>;

/// The items of each history.
inline std::vector<std::set<Rank>> itemsOfHistories(const HistoryIndex& index) {
    std::vector<std::set<Rank>> histories(index.historyCount());
    for (std::uint32_t history = 0; history < histories.size(); ++history)
        for (std::size_t place = index.firstTransaction(HistoryId{history});
             place < index.endTransaction(HistoryId{history}); ++place)
            for (const Rank item : index.items(place))
                histories[history].insert(item);
    return histories;
}

/// The frequent sets of at most `maxSize` items, from lists of the histories that hold each item.
class NaiveSets {
  public:
    NaiveSets(const HistoryIndex& index, std::uint32_t minCount, std::size_t maxSize)
        : m_minCount(minCount), m_maxSize(maxSize), m_holders(index.itemCount()) {
        const std::vector<std::set<Rank>> histories = itemsOfHistories(index);
        std::vector<std::size_t> all;
        for (std::size_t history = 0; history < histories.size(); ++history) {
            all.push_back(history);
            for (const Rank item : histories[history])
                m_holders[static_cast<std::size_t>(item)].push_back(history);
        }
        m_extend({}, all, 0);
    }

    const CountedSets& found() const { return m_found; }

  private:
    void m_extend(const Set& prefix, const std::vector<std::size_t>& holders, std::size_t first) {
        if (prefix.size() == m_maxSize)
            return;
        for (std::size_t item = first; item < m_holders.size(); ++item) {
            std::vector<std::size_t> both;
            std::set_intersection(holders.begin(), holders.end(), m_holders[item].begin(),
                                  m_holders[item].end(), std::back_inserter(both));
            if (both.size() < m_minCount)
                continue;
            Set set = prefix;
            set.push_back(Rank(item));
            m_found[set] = static_cast<std::uint32_t>(both.size());
            m_extend(set, both, item + 1);
        }
    }

    std::uint32_t m_minCount;
    std::size_t m_maxSize;
    std::vector<std::vector<std::size_t>> m_holders;  // by item
    CountedSets m_found;
};

inline CountedSets naiveSets(const HistoryIndex& index, std::uint32_t minCount,
                             std::size_t maxSize = 64) {
    return NaiveSets(index, minCount, maxSize).found();
}

/// The sets of a size.
inline CountedSets ofSize(const CountedSets& sets, std::size_t size) {
    CountedSets chosen;
    for (const auto& [set, count] : sets)
        if (set.size() == size)
            chosen[set] = count;
    return chosen;
}

/// All sets of a trie, by the walk up from each.
inline CountedSets setsOf(const quarvis::mining::ItemSets& sets) {
    CountedSets all;
    for (std::size_t size = 1; size <= sets.levels(); ++size)
        for (std::size_t set = 0; set < sets.count(size); ++set) {
            Set items(size);
            sets.items(size, set, items.data());
            all[items] = sets.level(size).count[set];
        }
    return all;
}

}  // namespace mining_tests
