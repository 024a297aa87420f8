#pragma once

#include <cstddef>
#include <iosfwd>
#include <map>
#include <string>
#include <utility>

#include <quarvis/implication.hpp>

#pragma GCC visibility push(default)

namespace quarvis::rule {

/// Rules and their statistics, in `RuleOrder`. A lookup takes a number of comparisons of rules
/// that is logarithmic in the size.
class RuleSet {
  public:
    /// The statistics of a rule "A => S". Counts are numbers of histories: n(X) is the number of
    /// those that have every item of X at some time, A u S the union of both sides, and N the
    /// number of all histories.
    ///
    /// The formulas are those of rules that were mined, for which no measure is NaN; they are
    /// evaluated in double precision on the shares n(X)/N. The values of rules from elsewhere, say
    /// from a file, are whatever they were set to. Only `count` and `support` know of the order in
    /// time and of a window: the others tell whether A and S go together.
    struct Stats {
        /// Histories in which S newly follows A, within the window if there is one; at most
        /// `icount`.
        std::size_t count = 0;

        /// n(A u S).
        std::size_t icount = 0;

        /// `count` / N, from 0 to 1.
        double support = 0;

        /// n(A u S) / n(A), from 0 to 1; 0 where n(A) is 0. The share of the histories with A that
        /// have S too. Agrawal, Imielinski, Swami: Mining Association Rules between Sets of Items
        /// in Large Databases (1993).
        double confidence = 0;

        /// N n(A u S) / (n(A) n(S)), from 0 to N; 0 where n(A) or n(S) is 0. The histories that
        /// have both, over those that would if A and S were independent: 1 if they are, less if
        /// they avoid each other. Brin, Motwani, Ullman, Tsur: Dynamic Itemset Counting and
        /// Implication Rules for Market Basket Data (1997), there called interest.
        double lift = 0;

        /// (1 - n(S)/N) / (1 - `confidence`), from 0 to infinity; infinite where `confidence` is 1.
        /// The histories that would have A without S if the two were independent, over those that
        /// do: 1 if they are. Brin et al. (1997).
        double conviction = 0;

        /// n(A u S) / n(S), from 0 to 1; 0 where n(S) is 0. The confidence of the converse rule.
        double probability = 0;

        /// n(A u S) / (n(S) - n(A u S)), from 0 to infinity; infinite where both numbers are equal.
        /// The odds that a history with S has A too. It is not what the literature calls the
        /// certainty factor.
        double certainty = 0;
    };

    /// @{
    /// How the rules are kept, and iterators over pairs of a rule and its statistics.
    using Map = std::map<Rule, Stats, RuleOrder>;
    using Iterator = Map::iterator;
    using ConstIterator = Map::const_iterator;
    /// @}

    /// The number of rules.
    std::size_t size() const { return m_data.size(); }

    /// @{
    /// The statistics of `r`, created with every field zero when absent. Takes constant time for
    /// a rule that comes after all others.
    Stats& operator[](const Rule& r) { return m_data.try_emplace(m_data.end(), r)->second; }
    Stats& operator[](Rule&& r) { return m_data.try_emplace(m_data.end(), std::move(r))->second; }
    /// @}

    /// @{
    /// The statistics of `r`. Throws `std::out_of_range` when absent.
    Stats& at(const Rule& r) { return m_data.at(r); }
    const Stats& at(const Rule& r) const { return m_data.at(r); }
    /// @}

    /// Removes every rule that fails a threshold. The bounds are inclusive; a NaN fails. For each
    /// rule that stays a line goes to standard error: the rule, ": ", its support, ",", the
    /// threshold `minSupport`, ",", its confidence, ",", its lift. Takes time linear in the size,
    /// most of it for those lines, each of which is flushed.
    void filter(std::size_t minCount, double minSupport, double minConfidence, double minLift,
                double maxConviction);

    /// @{
    /// In `RuleOrder`.
    Iterator begin() noexcept { return m_data.begin(); }
    Iterator end() noexcept { return m_data.end(); }
    ConstIterator begin() const noexcept { return m_data.begin(); }
    ConstIterator end() const noexcept { return m_data.end(); }
    /// @}

    /// Replaces the set by the content of a rules file whose cells are separated by `delim`; the
    /// measures have the digits that the file has. Empty lines are skipped. Rules whose sides are
    /// single characters do not survive (see `moxtel::string::trim`).
    ///
    /// Throws a pointer to a `moxtel::IOException`, which the handler deletes, for a rule without
    /// "=>", a missing column or a cell too many; the rules read before stay. Each line costs the
    /// parsing of its cells and a lookup, a constant one where the file is in `RuleOrder`.
    void readInto(std::istream& in, char delim);

    /// As above from the file `path`; one that cannot be opened reads as empty. A read that fails
    /// throws `moxtel::io::FileError`, by value.
    void readInto(const std::string& path, char delim);

    /// Writes the rules file: a line of column titles, then a line for each rule with its text and
    /// its statistics, separated by tabs. Numbers have the stream's formatting, items are neither
    /// quoted nor escaped, and the stream is flushed after each line, which on a file costs a call
    /// of the system for each. At the end the number of rules goes to standard error.
    void write(std::ostream& os) const;

    /// As above into the file `path`, which is replaced; when it cannot be opened nothing is
    /// written but the number of rules. A write that fails throws `moxtel::io::FileError`, and the
    /// file has whole lines then, as far as the system lets it.
    void write(const std::string& path) const;

  private:
    Map m_data;
};

}  // namespace quarvis::rule

#pragma GCC visibility pop
