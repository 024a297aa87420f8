#include "item_times.hpp"

#include <algorithm>
#include <limits>

namespace binding {

using quarvis::mining::HistoryId;
using quarvis::mining::HistoryIndex;
using quarvis::mining::Rank;

ItemTimes::ItemTimes(const HistoryIndex& index) : m_begin(index.itemCount() + 1) {
    const auto forEach = [&index](auto visit) {
        for (std::uint32_t history = 0; history < index.historyCount(); ++history)
            for (std::size_t place = index.firstTransaction(HistoryId{history});
                 place < index.endTransaction(HistoryId{history}); ++place)
                for (const Rank item : index.items(place))
                    visit(history, index.time(place), at(item));
    };
    forEach([this](std::uint32_t, std::uint64_t, std::size_t item) { ++m_begin[item + 1]; });
    for (std::size_t item = 0; item < index.itemCount(); ++item)
        m_begin[item + 1] += m_begin[item];
    m_histories.resize(index.occurrenceCount());
    m_times.resize(index.occurrenceCount());
    std::vector<std::size_t> next(m_begin.begin(), m_begin.end() - 1);
    forEach([&](std::uint32_t history, std::uint64_t time, std::size_t item) {
        const std::size_t occurrence = next[item]++;
        m_histories[occurrence] = history;
        m_times[occurrence] = time;
    });
}

std::size_t ItemTimes::seek(std::size_t from, std::size_t to, std::uint32_t history) const {
    // The steps double, since the occurrence is usually near.
    std::size_t step = 1;
    while (from + step < to && m_histories[from + step] < history) {
        from += step;
        step *= 2;
    }
    const auto begin = m_histories.begin();
    const auto first = begin + static_cast<std::ptrdiff_t>(from);
    const auto last = begin + static_cast<std::ptrdiff_t>(std::min(from + step + 1, to));
    return static_cast<std::size_t>(std::lower_bound(first, last, history) - begin);
}

RuleTimes RuleTimesSearch::find(const quarvis::mining::Rule& rule) {
    m_items.clear();
    for (const std::span<const Rank> side : {rule.antecedent, rule.subsequent})
        for (const Rank item : side)
            m_items.push_back({m_times.begin(item), m_times.end(item), false, std::nullopt});
    RuleTimes found;
    while (m_align())
        m_visit(rule.antecedent.size(), found);
    std::sort(found.lags.begin(), found.lags.end());
    return found;
}

/// Advances to the next history that has all of the items; false when there is none.
bool RuleTimesSearch::m_align() {
    std::uint32_t history = 0;
    for (std::size_t agreed = 0; agreed < m_items.size();) {
        for (Item& item : m_items) {
            item.next =
                item.next == item.end ? item.end : m_times.seek(item.next, item.end, history);
            if (item.next == item.end)
                return false;
            const std::uint32_t there = m_times.history(item.next);
            agreed = there == history ? agreed + 1 : 1;
            history = there;
            if (agreed >= m_items.size())
                break;
        }
    }
    return true;
}

/// Visits the transactions of a history that have any of the items.
void RuleTimesSearch::m_visit(std::size_t antecedent, RuleTimes& found) {
    const std::uint32_t history = m_times.history(m_items.front().next);
    const auto isHere = [&](const Item& item) {
        return item.next < item.end && m_times.history(item.next) == history;
    };
    const std::span<const Item> first(m_items.data(), antecedent);
    const std::span<const Item> second(m_items.data() + antecedent, m_items.size() - antecedent);
    for (Item& item : m_items)
        item.last.reset();
    bool counted = false;
    bool reverseCounted = false;
    for (;;) {
        std::optional<std::uint64_t> time;
        for (const Item& item : m_items)
            if (isHere(item))
                time = std::min(time.value_or(std::numeric_limits<std::uint64_t>::max()),
                                m_times.time(item.next));
        if (!time)
            break;
        for (Item& item : m_items)
            item.isThere = isHere(item) && m_times.time(item.next) == *time;
        if (!counted && m_counts(first, second, *time)) {
            counted = true;
            std::uint64_t complete = 0;
            for (const Item& item : first)
                complete = std::max(complete, *item.last);
            found.lags.push_back(*time - complete);
        }
        if (!reverseCounted && m_counts(second, first, *time)) {
            reverseCounted = true;
            ++found.reverseCount;
        }
        for (Item& item : m_items)
            if (item.isThere) {
                item.last = time;
                ++item.next;
            }
    }
}

bool RuleTimesSearch::m_counts(std::span<const Item> antecedent, std::span<const Item> subsequent,
                               std::uint64_t time) const {
    const auto isThere = [](const Item& item) { return item.isThere; };
    const auto isRecent = [this, time](const Item& item) {
        return item.last && (m_window == 0 || time - *item.last <= m_window);
    };
    return std::all_of(subsequent.begin(), subsequent.end(), isThere) &&
           !std::all_of(antecedent.begin(), antecedent.end(), isThere) &&
           std::all_of(antecedent.begin(), antecedent.end(), isRecent) &&
           std::none_of(subsequent.begin(), subsequent.end(), isRecent);
}

}  // namespace binding
