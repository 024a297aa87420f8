#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include <quarvis/mining/ids.hpp>

#pragma GCC visibility push(default)

namespace quarvis::mining {

/// A rule "A => S" with its counts and measures. Counts are numbers of histories, and n(X) is the
/// number of histories that hold every item of X, at whatever times. Only `count` and `support`
/// depend on order and window. The other measures are those of `measures.hpp`, applied to the
/// supports n(X)/N, where N is the number of all histories.
struct Rule {
    std::span<const Rank> antecedent;  ///< A, ascending, not empty.
    std::span<const Rank> subsequent;  ///< S, ascending, not empty.

    std::uint32_t count;            ///< Histories in which S newly follows A within the window.
    std::uint32_t unionCount;       ///< n(A u S).
    std::uint32_t antecedentCount;  ///< n(A).
    std::uint32_t subsequentCount;  ///< n(S).

    double support;  ///< `count` / N.

    /// @{
    /// The measure of that name.
    double confidence;
    double lift;
    double conviction;
    double probability;
    double certainty;
    /// @}
};

/// Fills in the measures of a rule, including `support`, from its counts and the number of all
/// histories.
void measure(Rule& rule, std::size_t histories);

/// Whether rule `a` stands before rule `b` in the rules file: by antecedent, then by subsequent.
/// Sides compare lexicographically by rank, except that a side comes before its own prefixes: {p,q}
/// before p.
bool standsBefore(const Rule& a, const Rule& b);

class [[gnu::visibility("hidden")]] RuleSelection;  // not for users, so not exported

/// The rules of a run in the order of the rules file (see `standsBefore`). The counts of a rule are
/// stored, 32 bytes and its items; its measures are computed whenever it is asked for.
class Rules {
  public:
    /// @{
    /// The number of rules, and whether it is 0.
    std::size_t size() const { return m_rules.size(); }
    bool empty() const { return m_rules.empty(); }
    /// @}

    /// The rule at a place. Its sides are valid as long as this object.
    Rule operator[](std::size_t place) const;

  private:
    friend class RuleSelection;

    struct Stored {
        /// Sets nothing, so that the threads that fill an array touch its memory first.
        Stored() {}

        std::size_t begin;  // of the sides in m_ranks: the antecedent, then the subsequent
        std::uint32_t antecedent;
        std::uint32_t subsequent;
        std::uint32_t count;
        std::uint32_t unionCount;
        std::uint32_t antecedentCount;
        std::uint32_t subsequentCount;
    };

    /// A rule without its measures. `ranks` has the sides of all rules.
    static Rule s_counted(const Stored& stored, const Rank* ranks);

    std::size_t m_histories = 0;
    std::vector<Rank> m_ranks;  // of the sides of all rules
    std::vector<Stored> m_rules;
};

}  // namespace quarvis::mining

#pragma GCC visibility pop
