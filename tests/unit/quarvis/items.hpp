#pragma once

#include <cstddef>
#include <initializer_list>
#include <string>
#include <vector>

#include <quarvis/item_set.hpp>

namespace quarvis::test {

/// The set of `items`.
inline rule::ItemSet setOf(std::initializer_list<rule::Item> items) {
    rule::ItemSet set;
    for (const rule::Item& item : items)
        set.add(item);
    return set;
}

/// The items of `set` in iteration order. Unlike the text form, they distinguish {""} from {} and
/// {"a,b"} from {"a","b"}.
inline std::vector<rule::Item> itemsOf(const rule::ItemSet& set) {
    return {set.begin(), set.end()};
}

/// Every subset of `universe`, the empty one first.
inline std::vector<rule::ItemSet> subsetsOf(const std::vector<rule::Item>& universe) {
    std::vector<rule::ItemSet> subsets(std::size_t{1} << universe.size());
    for (std::size_t bits = 0; bits < subsets.size(); ++bits)
        for (std::size_t i = 0; i < universe.size(); ++i)
            if ((bits >> i & 1) != 0)
                subsets[bits].add(universe[i]);
    return subsets;
}

}  // namespace quarvis::test
