#include "shard.hpp"

#include <cassert>
#include <span>

namespace quarvis::mining {

namespace {

/// The number of items in all transactions of the histories before this one.
std::size_t itemsBefore(const HistoryIndex& index, std::size_t history) {
    if (history == 0)
        return 0;
    const HistoryId last{static_cast<std::uint32_t>(history - 1)};
    const std::size_t transactions = index.endTransaction(last);
    if (transactions == 0)
        return 0;
    const std::span<const Rank> items = index.items(transactions - 1);
    return static_cast<std::size_t>(items.data() + items.size() - index.items(0).data());
}

}  // namespace

Shard Shard::part(std::size_t part, std::size_t parts) const {
    assert(part < parts);
    const std::size_t before = itemsBefore(*index, begin);
    const std::size_t items = itemsBefore(*index, end) - before;
    const auto cut = [&](std::size_t of) {
        const std::size_t least = before + items / parts * of;
        std::size_t low = begin;
        std::size_t high = end;
        while (low < high) {
            const std::size_t middle = low + (high - low) / 2;
            if (itemsBefore(*index, middle) < least)
                low = middle + 1;
            else
                high = middle;
        }
        return low;
    };
    return {index, part == 0 ? begin : cut(part), part + 1 == parts ? end : cut(part + 1)};
}

}  // namespace quarvis::mining
