#include "oracle/brute_force.hpp"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <iterator>
#include <limits>
#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace oracle {

namespace {

constexpr double INFINITE = std::numeric_limits<double>::infinity();

/// A set of items: bit i stands for item i of the table in byte order.
using Set = std::uint32_t;

constexpr std::size_t MOST_ITEMS = std::numeric_limits<Set>::digits - 1;

/// The set of items at each time.
using SetHistory = std::map<Time, Set>;

/// Antecedent and subsequent.
using Rule = std::pair<Set, Set>;

struct Problem {
    std::vector<std::string> items;
    std::vector<SetHistory> histories;
};

bool isWithin(Set inner, Set outer) {
    return (inner & ~outer) == 0;
}

std::vector<Set> singleItems(Set set) {
    std::vector<Set> singles;
    for (Set rest = set; rest != 0; rest &= rest - 1)
        singles.push_back(rest & -rest);
    return singles;
}

Problem numbered(const Table& table) {
    std::set<std::string> names;
    for (const auto& history : table.histories)
        for (const auto& [time, items] : history)
            names.insert(items.begin(), items.end());

    if (names.size() > MOST_ITEMS)
        throw std::invalid_argument("too many items for the brute force");
    Problem problem;
    problem.items.assign(names.begin(), names.end());
    for (const auto& history : table.histories) {
        SetHistory& numbers = problem.histories.emplace_back();
        for (const auto& [time, items] : history)
            for (Set& set = numbers[time]; const std::string& item : items)
                set |= Set{1} << std::distance(names.begin(), names.find(item));
    }
    return problem;
}

/// The number of histories that hold the set, at whatever times.
std::size_t countOf(Set set, const Problem& problem) {
    return static_cast<std::size_t>(std::count_if(
        problem.histories.begin(), problem.histories.end(), [set](const SetHistory& history) {
            Set all = 0;
            for (const auto& [time, items] : history)
                all |= items;
            return isWithin(set, all);
        }));
}

/// The frequent sets of `size` items. They are what joining the frequent sets of one item less
/// gives, because every subset of a frequent set is frequent, and two of these subsets make up the
/// set.
std::map<Set, std::size_t> frequentSets(int size, std::size_t minCount, const Problem& problem) {
    std::map<Set, std::size_t> frequent;
    const Set end = Set{1} << problem.items.size();
    for (Set set = 0; set < end; ++set)
        if (std::popcount(set) == size)
            if (const std::size_t count = countOf(set, problem); count >= minCount)
                frequent[set] = count;
    return frequent;
}

/// The rules whose antecedent is a contiguous run of the items of a set, but not all of them.
std::vector<Rule> rulesByRuns(const std::map<Set, std::size_t>& sets) {
    std::vector<Rule> rules;
    for (const auto& [set, count] : sets)
        for (const Set first : singleItems(set))
            for (const Set last : singleItems(set)) {
                const Set span = (last | (last - 1)) & ~(first - 1);
                if (first <= last && (set & ~span) != 0)
                    rules.emplace_back(set & span, set & ~span);
            }
    return rules;
}

/// The rules whose antecedent is any part of a set. Counting down through the numbers that have
/// only bits of the set visits all its parts.
std::vector<Rule> allRules(const std::map<Set, std::size_t>& sets) {
    std::vector<Rule> rules;
    for (const auto& [set, count] : sets)
        for (Set part = (set - 1) & set; part != 0; part = (part - 1) & set)
            rules.emplace_back(part, set & ~part);
    return rules;
}

/// Whether the item occurs before `time` and at most `window` earlier. A window of 0 is the whole
/// past.
bool occursBefore(Time time, Set item, const SetHistory& history, Time window) {
    return std::any_of(history.begin(), history.end(), [&](const auto& transaction) {
        return transaction.first < time && isWithin(item, transaction.second) &&
               (window == 0 || time - transaction.first <= window);
    });
}

/// Whether the rule holds at some time: all of the subsequent occurs and none of it occurred
/// before, all of the antecedent occurred before and not all of it occurs. "Before" is within the
/// window.
bool holds(const Rule& rule, const SetHistory& history, Time window) {
    const std::vector<Set> as = singleItems(rule.first);
    const std::vector<Set> ss = singleItems(rule.second);
    return std::any_of(history.begin(), history.end(), [&](const auto& transaction) {
        const Set items = transaction.second;
        const auto wasBefore = [&](Set item) {
            return occursBefore(transaction.first, item, history, window);
        };
        return isWithin(rule.second, items) && !isWithin(rule.first, items) &&
               std::all_of(as.begin(), as.end(), wasBefore) &&
               std::none_of(ss.begin(), ss.end(), wasBefore);
    });
}

/// Item sets compare by the numbers of their items. The end of a set counts as greater than any
/// item, so a set comes before its own prefixes.
std::vector<int> sortKey(Set set) {
    std::vector<int> key;
    for (const Set item : singleItems(set))
        key.push_back(std::countr_zero(item));
    key.push_back(std::numeric_limits<int>::max());
    return key;
}

std::string listed(Set set, const Problem& problem) {
    std::string text;
    for (const Set item : singleItems(set)) {
        if (item != (set & -set))
            text += ',';
        text += problem.items[static_cast<std::size_t>(std::countr_zero(item))];
    }
    return text;
}

std::string braced(Set set, const Problem& problem) {
    return '{' + listed(set, problem) + '}';
}

std::string side(Set set, const Problem& problem) {
    return std::popcount(set) == 1 ? listed(set, problem) : braced(set, problem);
}

Outcome::Rule measured(const Rule& rule, std::size_t count, const Problem& problem) {
    const auto total = static_cast<double>(problem.histories.size());
    const auto supportOf = [&](Set set) {
        return static_cast<double>(countOf(set, problem)) / total;
    };
    const double both = supportOf(rule.first | rule.second);
    const double a = supportOf(rule.first);
    const double s = supportOf(rule.second);

    Outcome::Rule result;
    result.text = side(rule.first, problem) + " => " + side(rule.second, problem);
    result.count = count;
    result.icount = countOf(rule.first | rule.second, problem);
    result.support = static_cast<double>(count) / total;
    result.confidence = a == 0 ? 0 : both / a;
    result.lift = a * s == 0 ? 0 : both / (a * s);
    result.conviction = result.confidence == 1 ? INFINITE : (1 - s) / (1 - result.confidence);
    result.probability = s == 0 ? 0 : both / s;
    result.certainty = both == s ? INFINITE : both / (s - both);
    return result;
}

bool passes(const Outcome::Rule& rule, const Settings& settings) {
    return rule.count >= settings.minCount && rule.support >= settings.minSupport &&
           rule.confidence >= settings.minConfidence && rule.lift >= settings.minLift &&
           rule.conviction <= settings.maxConviction;
}

/// The levels of a run, with its results and messages so far.
class Run {
  public:
    Run(const Settings& settings, const Table& table)
        : m_settings(settings), m_problem(numbered(table)) {}

    Outcome outcome() {
        m_levels();
        m_say("preparing rules for reporting.");
        m_say("have " + std::to_string(m_rules.size()) + " rules.");

        Outcome outcome;
        for (const auto& [key, rule] : m_rules)
            outcome.rules.push_back(rule);
        for (const auto& [key, items] : m_itemSets)
            outcome.itemSets.push_back(items);
        outcome.messages = m_messages;
        return outcome;
    }

  private:
    using SortKey = std::vector<int>;

    void m_say(const std::string& text) { m_messages += "\t ... " + text + '\n'; }

    std::map<Set, std::size_t> m_recordFrequent(int size) {
        auto sets = frequentSets(size, m_settings.minCount, m_problem);
        for (const auto& [set, count] : sets)
            m_itemSets[sortKey(set)] = {braced(set, m_problem), count};
        return sets;
    }

    void m_levels() {
        m_say("calculated " + std::to_string(m_recordFrequent(1).size()) +
              " frequent item sets of size 1. ");
        std::size_t sets = m_level(1);
        if (sets == 0 || m_settings.maxOrder == 1)
            return;
        if (m_settings.maxOrder == 0) {
            m_say("mining rules until there are no more frequent item sets.");
            for (int order = 2; sets > 2; ++order)
                sets = m_level(order);
        } else {
            m_say("rules up to order " + std::to_string(m_settings.maxOrder) + " will be mined.");
            for (int order = 2; order <= static_cast<int>(m_settings.maxOrder); ++order)
                m_level(order);
        }
    }

    /// Mines the sets of `order` + 1 items and their rules, and returns the number of sets. Only
    /// the first level ends when it has no rules to deduce.
    std::size_t m_level(int order) {
        const auto sets = m_recordFrequent(order + 1);
        const std::vector<Rule> rules = m_settings.allSplits ? allRules(sets) : rulesByRuns(sets);
        m_say("calculated " + std::to_string(sets.size()) + " frequent item sets of size " +
              std::to_string(order + 1) + " with " + std::to_string(rules.size()) +
              " proposed rules.");
        if (order == 1 && rules.empty()) {
            m_say("no rules of order 1 found.");
            return 0;
        }
        m_say("deducing rules of order " + std::to_string(order) + '.');
        for (const Rule& rule : rules)
            m_deduce(rule);
        return sets.size();
    }

    /// A rule that holds nowhere is not listed, whatever the least count.
    void m_deduce(const Rule& rule) {
        const auto count = static_cast<std::size_t>(std::count_if(
            m_problem.histories.begin(), m_problem.histories.end(), [&](const SetHistory& history) {
                return holds(rule, history, m_settings.windowSize);
            }));
        if (count == 0)
            return;
        const Outcome::Rule result = measured(rule, count, m_problem);
        if (passes(result, m_settings))
            m_rules[{sortKey(rule.first), sortKey(rule.second)}] = result;
    }

    const Settings& m_settings;
    const Problem m_problem;
    std::map<SortKey, Outcome::ItemSet> m_itemSets;
    std::map<std::pair<SortKey, SortKey>, Outcome::Rule> m_rules;
    std::string m_messages;
};

}  // namespace

Outcome bruteForce(const Settings& settings, const Table& table) {
    return Run(settings, table).outcome();
}

}  // namespace oracle
