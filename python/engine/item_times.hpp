#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include <quarvis/mining/history_index.hpp>
#include <quarvis/mining/rules.hpp>

namespace binding {

/// An inverted index: for each item its occurrences, sorted by history and then by time. With it, a
/// rule is evaluated only in the histories of its items. Takes 12 bytes per occurrence.
class ItemTimes {
  public:
    explicit ItemTimes(const quarvis::mining::HistoryIndex& index);

    /// The occurrences of an item are [begin(item), end(item)).
    std::size_t begin(quarvis::mining::Rank item) const { return m_begin[at(item)]; }
    std::size_t end(quarvis::mining::Rank item) const { return m_begin[at(item) + 1]; }

    std::uint32_t history(std::size_t occurrence) const { return m_histories[occurrence]; }
    std::uint64_t time(std::size_t occurrence) const { return m_times[occurrence]; }

    /// The first occurrence in [from, to) that is in this history or a later one; `to` if none is.
    std::size_t seek(std::size_t from, std::size_t to, std::uint32_t history) const;

  private:
    std::vector<std::size_t> m_begin;  // by rank; the last entry is the end
    std::vector<std::uint32_t> m_histories;
    std::vector<std::uint64_t> m_times;
};

/// The lags of a rule, and how often its reverse counts.
struct RuleTimes {
    /// One lag for each history that the rule counts in, ascending. A lag is the time of the first
    /// transaction that counts, minus the time of the last item of the antecedent before it.
    std::vector<std::uint64_t> lags;

    std::uint32_t reverseCount = 0;  ///< The number of histories in which the reverse rule counts.
};

/// Evaluates rules one after the other. A window of 0 means the whole past.
class RuleTimesSearch {
  public:
    RuleTimesSearch(const ItemTimes& times, std::uint64_t window)
        : m_times(times), m_window(window) {}

    RuleTimes find(const quarvis::mining::Rule& rule);

  private:
    /// An item of the rule, with its occurrences that were not visited yet.
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
