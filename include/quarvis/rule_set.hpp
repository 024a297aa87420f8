#pragma once

#include <cstddef>
#include <istream>
#include <map>
#include <ostream>
#include <string>
#include <utility>

#include <quarvis/implication.hpp>

namespace quarvis::rule {

/// Rules and their statistics, in `RuleOrder`.
class RuleSet {
  public:
    /// The statistics of a rule "A => S". Counts are numbers of histories.
    struct Stats {
        std::size_t count = 0;   ///< Histories in which the rule held.
        std::size_t icount = 0;  ///< Histories that contain the items of both sides.
        double support = 0;      ///< `count` over all histories.
        double confidence = 0;   ///< The measures from here on: of A, S and their union alone.
        double lift = 0;
        double conviction = 0;
        double probability = 0;
        double certainty = 0;
    };
    using Map = std::map<Rule, Stats, RuleOrder>;
    using Iterator = Map::iterator;
    using ConstIterator = Map::const_iterator;

    std::size_t size() const { return m_data.size(); }

    /// The statistics of `r`, created with every field zero when absent. Takes constant time for
    /// a rule that comes after all others.
    Stats& operator[](const Rule& r) { return m_data.try_emplace(m_data.end(), r)->second; }
    Stats& operator[](Rule&& r) { return m_data.try_emplace(m_data.end(), std::move(r))->second; }

    /// The statistics of `r`. Throws `std::out_of_range` when absent.
    Stats& at(const Rule& r) { return m_data.at(r); }
    const Stats& at(const Rule& r) const { return m_data.at(r); }

    /// Removes every rule that fails a threshold. The bounds are inclusive; a NaN fails. For each
    /// rule that stays a line goes to standard error: the rule, ": ", its support, ",", the
    /// threshold `minSupport`, ",", its confidence, ",", its lift.
    void filter(std::size_t minCount, double minSupport, double minConfidence, double minLift,
                double maxConviction);

    Iterator begin() noexcept { return m_data.begin(); }
    Iterator end() noexcept { return m_data.end(); }
    ConstIterator begin() const noexcept { return m_data.begin(); }
    ConstIterator end() const noexcept { return m_data.end(); }

    /// Replaces the set by the content of a rules file whose cells are separated by `delim`; the
    /// measures have the digits that the file has. Empty lines are skipped. Rules whose sides are
    /// single characters do not survive (see `moxtel::string::trim`).
    ///
    /// Throws a pointer to a `moxtel::IOException`, which the handler deletes, for a rule without
    /// "=>", a missing column or a cell too many; the rules read before stay.
    void readInto(std::istream& in, char delim);

    /// As above from the file `path`; one that cannot be opened reads as empty.
    void readInto(const std::string& path, char delim);

    /// Writes the rules file: a line of column titles, then a line for each rule with its text and
    /// its statistics, separated by tabs. Numbers have the stream's formatting, items are neither
    /// quoted nor escaped, and the stream is flushed after each line. At the end the number of
    /// rules goes to standard error.
    void write(std::ostream& os) const;

    /// As above into the file `path`, which is replaced; when it cannot be opened nothing is
    /// written but the number of rules.
    void write(const std::string& path) const;

  private:
    Map m_data;
};

}  // namespace quarvis::rule
