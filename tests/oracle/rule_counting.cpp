#include "oracle/rule_counting.hpp"

#include <algorithm>
#include <iterator>

namespace oracle {

namespace {

bool occursAt(Time time, const Times& times) {
    return std::binary_search(times.begin(), times.end(), time);
}

/// Whether one of the times is before `time` and at most the window earlier.
bool occursBefore(Time time, const Times& times, Time window) {
    const auto after = std::lower_bound(times.begin(), times.end(), time);
    return after != times.begin() && (window == 0 || time - *std::prev(after) <= window);
}

bool countsAt(Time time, const TimesOfSet& times, Split split, Time window) {
    bool hasAllOfAntecedent = true;
    for (std::size_t item = 0; item < times.size(); ++item) {
        const bool isThere = occursAt(time, *times[item]);
        const bool wasBefore = occursBefore(time, *times[item], window);
        if (isOfAntecedent(split, item)) {
            if (!wasBefore)
                return false;
            hasAllOfAntecedent = hasAllOfAntecedent && isThere;
        } else if (!isThere || wasBefore) {
            return false;
        }
    }
    return !hasAllOfAntecedent;
}

}  // namespace

bool countsIn(const TimesOfSet& times, Split split, Time window) {
    std::size_t ofSubsequent = 0;
    while (isOfAntecedent(split, ofSubsequent))
        ++ofSubsequent;
    return std::any_of(times[ofSubsequent]->begin(), times[ofSubsequent]->end(),
                       [&](Time time) { return countsAt(time, times, split, window); });
}

std::vector<std::size_t> ruleCounts(const NumberedTable& table, const FrequentSet& set,
                                    const std::vector<Split>& splits, Time window) {
    std::vector<std::size_t> counts(splits.size());
    for (const std::size_t history : set.histories) {
        TimesOfSet times;
        for (const ItemNumber item : set.items)
            times.push_back(&table.histories[history].at(item));
        for (std::size_t i = 0; i < splits.size(); ++i)
            if (countsIn(times, splits[i], window))
                ++counts[i];
    }
    return counts;
}

}  // namespace oracle
