#include "oracle/frequent_sets.hpp"

#include <algorithm>
#include <iterator>

namespace oracle {

namespace {

bool differInTheLastItem(const NumberedItems& a, const NumberedItems& b) {
    return std::equal(a.begin(), std::prev(a.end()), b.begin(), std::prev(b.end()));
}

/// `a` with the last item of `b`.
FrequentSet joined(const FrequentSet& a, const FrequentSet& b) {
    FrequentSet both;
    both.items = a.items;
    both.items.push_back(b.items.back());
    std::set_intersection(a.histories.begin(), a.histories.end(), b.histories.begin(),
                          b.histories.end(), std::back_inserter(both.histories));
    return both;
}

}  // namespace

Level firstLevel(const NumberedTable& table, std::size_t minCount) {
    Level level;
    for (std::size_t item = 0; item < table.names.size(); ++item)
        level.push_back({{static_cast<ItemNumber>(item)}, {}});
    for (std::size_t history = 0; history < table.histories.size(); ++history)
        for (const auto& [item, times] : table.histories[history])
            level[item].histories.push_back(history);
    std::erase_if(level, [minCount](const FrequentSet& set) { return set.count() < minCount; });
    return level;
}

Level nextLevel(const Level& level, std::size_t minCount) {
    Level next;
    for (auto a = level.begin(); a != level.end(); ++a)
        for (auto b = std::next(a); b != level.end() && differInTheLastItem(a->items, b->items);
             ++b) {
            FrequentSet both = joined(*a, *b);
            if (both.count() >= minCount)
                next.push_back(std::move(both));
        }
    return next;
}

}  // namespace oracle
