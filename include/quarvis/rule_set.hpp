#pragma once

#include <cstddef>
#include <iosfwd>
#include <map>
#include <string>
#include <utility>

#include <quarvis/implication.hpp>

#pragma GCC visibility push(default)

namespace quarvis::rule {

/// Rules and their statistics, in `RuleOrder`. A lookup takes a number of rule comparisons
/// logarithmic in the size.
class RuleSet {
  public:
    /// The statistics of a rule "A => S". n(X) is the number of histories that have every item of
    /// X at some time, A u S is the union of both sides, and N is the number of all histories.
    ///
    /// The formulas hold for mined rules; no measure of a mined rule is NaN. They are evaluated in
    /// double precision on the shares n(X)/N. Statistics from elsewhere, such as a file, hold
    /// whatever was assigned. Only `count` and `support` depend on the order in time and on the
    /// window; the other measures tell whether A and S occur together.
    struct Stats {
        /// The number of histories in which S newly follows A, within the window if there is one.
        /// At most `icount`.
        std::size_t count = 0;

        /// n(A u S).
        std::size_t icount = 0;

        /// `count` / N, from 0 to 1.
        double support = 0;

        /// n(A u S) / n(A), from 0 to 1; 0 when n(A) is 0. The share of the histories with A that
        /// also have S. Agrawal, Imielinski, Swami: Mining Association Rules between Sets of Items
        /// in Large Databases (1993).
        double confidence = 0;

        /// N n(A u S) / (n(A) n(S)), from 0 to N; 0 when n(A) or n(S) is 0. The number of histories
        /// that have both, divided by the number expected if A and S were independent: 1 when they
        /// are, less when they avoid each other. Brin, Motwani, Ullman, Tsur: Dynamic Itemset
        /// Counting and Implication Rules for Market Basket Data (1997), there called interest.
        double lift = 0;

        /// (1 - n(S)/N) / (1 - `confidence`), from 0 to infinity; infinite when `confidence` is 1.
        /// The expected number of histories with A but not S if the two were independent, divided
        /// by the actual number: 1 when they are independent. Brin et al. (1997).
        double conviction = 0;

        /// n(A u S) / n(S), from 0 to 1; 0 when n(S) is 0. The confidence of the converse rule.
        double probability = 0;

        /// n(A u S) / (n(S) - n(A u S)), from 0 to infinity; infinite when both counts are equal.
        /// The odds that a history with S also has A. Not the measure that the literature calls
        /// the certainty factor.
        double certainty = 0;
    };

    /// @{
    /// The container of the rules, and iterators over pairs of a rule and its statistics.
    using Map = std::map<Rule, Stats, RuleOrder>;
    using Iterator = Map::iterator;
    using ConstIterator = Map::const_iterator;
    /// @}

    /// The number of rules.
    std::size_t size() const { return m_data.size(); }

    /// @{
    /// The statistics of `r`, created with all fields zero when absent. Takes constant time for a
    /// rule that comes after all others.
    Stats& operator[](const Rule& r) { return m_data.try_emplace(m_data.end(), r)->second; }
    Stats& operator[](Rule&& r) { return m_data.try_emplace(m_data.end(), std::move(r))->second; }
    /// @}

    /// @{
    /// The statistics of `r`. Throws `std::out_of_range` when absent.
    Stats& at(const Rule& r) { return m_data.at(r); }
    const Stats& at(const Rule& r) const { return m_data.at(r); }
    /// @}

    /// Removes every rule that fails a threshold. The bounds are inclusive; a NaN fails. Prints a
    /// line to standard error for each rule that stays: the rule, ": ", its support, ",", the
    /// threshold `minSupport`, ",", its confidence, ",", its lift. Takes time linear in the size,
    /// most of it for printing, since each line is flushed.
    void filter(std::size_t minCount, double minSupport, double minConfidence, double minLift,
                double maxConviction);

    /// @{
    /// In `RuleOrder`.
    Iterator begin() noexcept { return m_data.begin(); }
    Iterator end() noexcept { return m_data.end(); }
    ConstIterator begin() const noexcept { return m_data.begin(); }
    ConstIterator end() const noexcept { return m_data.end(); }
    /// @}

    /// Replaces the set by the content of a rules file whose cells are separated by `delim`. The
    /// measures have the precision of the file. Empty lines are skipped. A side that is a single
    /// character is lost: it reads as the empty set (see `moxtel::string::trim`).
    ///
    /// Throws a pointer to a `moxtel::IOException` for a rule without "=>", a missing column or an
    /// excess cell. The handler deletes it; the rules read before stay. Each line costs the parsing
    /// of its cells and one lookup, which takes constant time when the file is in `RuleOrder`.
    void readInto(std::istream& in, char delim);

    /// The same, from the file `path`. A file that cannot be opened reads as empty. A read that
    /// fails throws `moxtel::io::FileError`, by value.
    void readInto(const std::string& path, char delim);

    /// Writes the rules file: a line of column titles, then one line per rule with its text and its
    /// statistics, separated by tabs. Numbers are formatted as the stream is set; items are neither
    /// quoted nor escaped. The stream is flushed after each line, which costs one system call per
    /// line on a file. Finally prints the number of rules to standard error.
    void write(std::ostream& os) const;

    /// The same, to the file `path`, which is replaced. When it cannot be opened, only the number
    /// of rules is printed. A write that fails throws `moxtel::io::FileError`; the file then ends
    /// with a whole line where the system allows it.
    void write(const std::string& path) const;

  private:
    Map m_data;
};

}  // namespace quarvis::rule

#pragma GCC visibility pop
