#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include <quarvis/mining/history_index.hpp>
#include <quarvis/mining/rules.hpp>

namespace binding {

/// An index turned by item: for each item the histories and times at which it occurs, in this
/// order. Rules of few items are so looked at where their items are, and nowhere else; 12 bytes an
/// occurrence.
class ItemTimes {
  public:
    explicit ItemTimes(const quarvis::mining::HistoryIndex& index);

    /// The occurrences of an item are [begin(item), end(item)).
    std::size_t begin(quarvis::mining::Rank item) const { return m_begin[at(item)]; }
    std::size_t end(quarvis::mining::Rank item) const { return m_begin[at(item) + 1]; }

    std::uint32_t history(std::size_t occurrence) const { return m_histories[occurrence]; }
    std::uint64_t time(std::size_t occurrence) const { return m_times[occurrence]; }

    /// The first occurrence of [from, to) in this history or a later one.
    std::size_t seek(std::size_t from, std::size_t to, std::uint32_t history) const;

  private:
    std::vector<std::size_t> m_begin;  // by rank, and the end of the last
    std::vector<std::uint32_t> m_histories;
    std::vector<std::uint64_t> m_times;
};

/// How a rule comes about in the histories.
struct RuleTimes {
    /// Of each history that the rule counts in, ascending: the time of its first such transaction
    /// less the time at which the last item of the antecedent had occurred.
    std::vector<std::uint64_t> lags;

    std::uint32_t reverseCount = 0;  ///< The histories in which the reverse rule counts.
};

/// Looks at rules one after the other. A window of 0 is the whole past.
class RuleTimesSearch {
  public:
    RuleTimesSearch(const ItemTimes& times, std::uint64_t window)
        : m_times(times), m_window(window) {}

    RuleTimes find(const quarvis::mining::Rule& rule);

  private:
    /// An item of the rule with its occurrences that are still to come.
    struct Item {
        std::size_t next;
        std::size_t end;
        bool isThere;
        std::optional<std::uint64_t> last;
    };

    bool m_align();
    void m_visit(std::size_t antecedent, RuleTimes& found);
    bool m_counts(std::span<const Item> antecedent, std::span<const Item> subsequent,
                  std::uint64_t time) const;

    const ItemTimes& m_times;
    std::uint64_t m_window;
    std::vector<Item> m_items;
};

}  // namespace binding
