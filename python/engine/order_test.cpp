#include "order_test.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <map>
#include <mutex>
#include <utility>
#include <vector>

#include <quarvis/mining/shuffle.hpp>

#include "each_rule.hpp"
#include "item_times.hpp"

namespace binding {

using quarvis::mining::HistoryIndex;
using quarvis::mining::MiningOptions;
using quarvis::mining::Rank;
using quarvis::mining::Rule;
using quarvis::mining::Splits;

namespace {

/// Passes on cancellation from the watch to any thread. Reports nothing to the watch, which only
/// the calling thread may use.
class QuietObserver : public quarvis::mining::Observer {
  public:
    explicit QuietObserver(const Watch& watch) : m_watch(watch) {}
    bool isCancelled() const override { return m_watch.isCancelled(); }

  private:
    const Watch& m_watch;
};

using Side = std::vector<Rank>;

/// Stores and numbers the rules that are listed in any data set. Thread-safe.
class ListedRules {
  public:
    std::uint32_t numberOf(const Rule& rule) {
        Key key{{rule.antecedent.begin(), rule.antecedent.end()},
                {rule.subsequent.begin(), rule.subsequent.end()}};
        const std::lock_guard lock(m_mutex);
        const auto number = static_cast<std::uint32_t>(m_numbers.size());
        const auto [entry, isNew] = m_numbers.try_emplace(std::move(key), number);
        if (isNew)
            m_rules.push_back(&entry->first);
        return entry->second;
    }

    std::size_t size() const { return m_rules.size(); }

    Rule operator[](std::size_t number) const {
        Rule rule{};
        rule.antecedent = m_rules[number]->first;
        rule.subsequent = m_rules[number]->second;
        return rule;
    }

  private:
    using Key = std::pair<Side, Side>;

    std::mutex m_mutex;
    std::map<Key, std::uint32_t> m_numbers;
    std::vector<const Key*> m_rules;  // by number
};

/// A rule that is listed in a data set.
struct Listed {
    std::uint32_t rule;
    std::uint32_t count;
};

class OrderTest {
  public:
    OrderTest(const Found& found, const MiningOptions& options, std::uint32_t permutations,
              std::uint64_t seed, unsigned threads, Watch& watch)
        : m_found(found),
          m_options(options),
          m_seed(seed),
          m_threads(threads),
          m_watch(watch),
          m_listed(std::size_t{permutations} + 1) {
        m_options.threads = 1;
        m_options.thresholds = {};
    }

    void run() {
        m_watch.beginStep("permutations");
        forEachPlace(m_listed.size(), m_threads, m_watch,
                     [this] { return [this](std::size_t set) { m_list(set); }; });
        m_watch.beginStep("means");
        m_sums.resize(m_rules.size());
        m_squares.resize(m_rules.size());
        forEachPlace(m_listed.size(), m_threads, m_watch,
                     [this] { return [this](std::size_t set) { m_sum(set); }; });
        m_findMaxima();
    }

    /// Sets the columns for the rules of the run.
    void tell(std::vector<double>& p, std::vector<double>& pMax, std::vector<double>& mean,
              std::vector<double>& deviation) {
        const auto sets = static_cast<double>(m_listed.size());
        std::vector<std::uint32_t> atLeast(m_rules.size());
        std::vector<std::uint32_t> observed(m_rules.size());
        for (const Listed& listed : m_listed.front())
            observed[listed.rule] = listed.count;
        for (const std::vector<Listed>& set : m_listed)
            for (const Listed& listed : set)
                if (listed.count >= observed[listed.rule])
                    ++atLeast[listed.rule];
        for (std::size_t place = 0; place < m_found.rules.size(); ++place) {
            const Rule rule = m_found.rules[place];
            const std::uint32_t number = m_rules.numberOf(rule);
            const double statistic = m_statistic({number, rule.count});
            const auto asFar =
                m_maxima.end() - std::lower_bound(m_maxima.begin(), m_maxima.end(), statistic);
            p.push_back(atLeast[number] / sets);
            pMax.push_back(static_cast<double>(asFar) / sets);
            mean.push_back(m_mean(number));
            deviation.push_back(m_deviation(number));
        }
    }

  private:
    /// The data for 0, otherwise a permutation.
    HistoryIndex m_dataSet(std::size_t set) const {
        constexpr std::uint64_t step = 0x9e3779b97f4a7c15U;
        return set == 0 ? *m_found.index
                        : quarvis::mining::shuffleTimes(*m_found.index, m_seed + set * step);
    }

    void m_list(std::size_t set) {
        QuietObserver observer(m_watch);
        const quarvis::mining::Rules rules =
            findRules(m_dataSet(set), *m_found.itemSets, m_options, observer);
        for (std::size_t place = 0; place < rules.size(); ++place)
            if (m_found.allows(rules[place]))
                m_listed[set].push_back({m_rules.numberOf(rules[place]), rules[place].count});
    }

    void m_sum(std::size_t set) {
        const HistoryIndex index = m_dataSet(set);
        const ItemTimes times(index);
        RuleTimesSearch search(times, m_options.window);
        std::vector<std::uint64_t> counts;
        counts.reserve(m_rules.size());
        for (std::size_t rule = 0; rule < m_rules.size(); ++rule) {
            m_watch.endIfAsked();
            counts.push_back(search.find(m_rules[rule]).lags.size());
        }
        // Sums of integers do not depend on the order in which threads add.
        const std::lock_guard lock(m_mutex);
        for (std::size_t rule = 0; rule < counts.size(); ++rule) {
            m_sums[rule] += counts[rule];
            m_squares[rule] += counts[rule] * counts[rule];
        }
    }

    double m_mean(std::uint32_t rule) const {
        return static_cast<double>(m_sums[rule]) / static_cast<double>(m_listed.size());
    }

    double m_deviation(std::uint32_t rule) const {
        const double mean = m_mean(rule);
        const double square =
            static_cast<double>(m_squares[rule]) / static_cast<double>(m_listed.size());
        return std::sqrt(std::max(0.0, square - mean * mean));
    }

    double m_statistic(const Listed& listed) const {
        const double deviation = m_deviation(listed.rule);
        return deviation > 0 ? std::max(0.0, (listed.count - m_mean(listed.rule)) / deviation) : 0;
    }

    void m_findMaxima() {
        for (const std::vector<Listed>& set : m_listed) {
            double most = 0;
            for (const Listed& listed : set)
                most = std::max(most, m_statistic(listed));
            m_maxima.push_back(most);
        }
        std::sort(m_maxima.begin(), m_maxima.end());
    }

    const Found& m_found;
    MiningOptions m_options;
    std::uint64_t m_seed;
    unsigned m_threads;
    Watch& m_watch;
    ListedRules m_rules;
    std::vector<std::vector<Listed>> m_listed;  // by data set
    std::mutex m_mutex;
    std::vector<std::uint64_t> m_sums;     // of the counts of each rule
    std::vector<std::uint64_t> m_squares;  // of the squares of these counts
    std::vector<double> m_maxima;          // of each data set, ascending
};

/// The number of rules that can be proposed from all sets.
double proposedRules(const Found& found, Splits splits) {
    double proposed = 0;
    for (std::size_t size = 2; size <= found.itemSets->levels(); ++size) {
        const auto k = static_cast<double>(size);
        const double each = splits == Splits::ALL ? std::exp2(k) - 2 : k * (k + 1) / 2 - 1;
        proposed += each * static_cast<double>(found.itemSets->count(size));
    }
    return proposed;
}

}  // namespace

Columns testOrder(const Found& found, const MiningOptions& options, std::uint32_t permutations,
                  std::uint64_t seed, unsigned threads, Watch& watch) {
    std::vector<double> p;
    std::vector<double> pMax;
    std::vector<double> mean;
    std::vector<double> deviation;
    watch.run([&] {
        OrderTest test(found, options, permutations, seed, threads, watch);
        test.run();
        test.tell(p, pMax, mean, deviation);
    });
    Columns columns;
    columns["p"] = arrayOf(std::move(p));
    columns["p_max"] = arrayOf(std::move(pMax));
    columns["mean"] = arrayOf(std::move(mean));
    columns["deviation"] = arrayOf(std::move(deviation));
    columns["proposed"] = proposedRules(found, options.splits);
    return columns;
}

}  // namespace binding
