#include "rule_counting.hpp"

#include <algorithm>
#include <optional>
#include <span>

#include "group_walk.hpp"
#include "pair_orders.hpp"

namespace quarvis::rule {

namespace {

using Time = History::Time;
using Times = std::span<const Time>;

/// How an item stands at a moment of a history.
enum class Standing {
    FRESH,   ///< It occurs, and did not within the window before.
    RECENT,  ///< It occurred within the window before, and may occur now.
    ABSENT,  ///< It neither occurs nor did it within the window before.
};

Standing standing(Times times, Time now, Time window) {
    if (window == 0)
        return times.front() < now    ? Standing::RECENT
               : times.front() == now ? Standing::FRESH
                                      : Standing::ABSENT;
    const auto at = std::lower_bound(times.begin(), times.end(), now);
    if (at != times.begin() && now - *(at - 1) <= window)
        return Standing::RECENT;
    return at != times.end() && *at == now ? Standing::FRESH : Standing::ABSENT;
}

/// Counts the rules of one set, history by history.
///
/// At any moment at most one of the rules can be met: its subsequent must be all the fresh items,
/// its antecedent all the recent ones. As an antecedent is a run of neighbours, the first or the
/// last item of the set is in the subsequent, so only the moments matter at which one of these is
/// fresh.
class RuleCounter {
  public:
    RuleCounter(const HistoryIndex& index, Time window, std::uint32_t least, std::size_t size)
        : m_index(index),
          m_window(window),
          m_least(least),
          m_size(size),
          m_times(size),
          m_tallies(size * size) {}

    /// Begins a set that is in `histories` histories.
    void begin(const Rank* items, std::uint32_t histories) {
        m_items = items;
        m_left = histories;
        m_best = 0;
        std::fill(m_tallies.begin(), m_tallies.end(), Tally());
    }

    /// Counts the next history; false when no rule of the set can reach the least count any more.
    bool visit(HistoryId history) {
        --m_left;
        for (std::size_t i = 0; i < m_size; ++i)
            m_times[i] = m_index.times(m_index.entry(m_items[i], history));
        if (m_window == 0) {
            m_test(std::max(m_times.front().front(), m_times.back().front()), history);
        } else {
            m_testWhereFresh(m_times.front(), history);
            m_testWhereFresh(m_times.back(), history);
        }
        return m_best + m_left >= m_least;
    }

    /// Whether some rule of the set is met in the least number of histories; those that are counted
    /// in as many are added to `rules`.
    bool finish(std::uint32_t set, std::vector<CountedRule>& rules) const {
        if (m_best < m_least)
            return false;
        for (std::uint32_t first = 0; first < m_size; ++first)
            for (std::uint32_t last = first; last < m_size; ++last) {
                const std::uint32_t count = m_tallies[first * m_size + last].counted;
                if (count >= m_least)
                    rules.push_back({set, static_cast<std::uint32_t>(m_size), first, last, count});
            }
        return true;
    }

  private:
    static constexpr HistoryId NO_HISTORY = static_cast<HistoryId>(-1);

    /// The histories that one rule is met in and counted in, and the last of each.
    struct Tally {
        std::uint32_t met = 0;
        std::uint32_t counted = 0;
        HistoryId lastMet = NO_HISTORY;
        HistoryId lastCounted = NO_HISTORY;
    };

    void m_testWhereFresh(Times times, HistoryId history) {
        for (std::size_t i = 0; i < times.size(); ++i)
            if (i == 0 || times[i] - times[i - 1] > m_window)
                m_test(times[i], history);
    }

    /// Tallies the rule that is met at `now`, if one is.
    void m_test(Time now, HistoryId history) {
        std::size_t first = 0;
        std::size_t recent = 0;
        for (std::size_t i = 0; i < m_size; ++i) {
            const Standing item = standing(m_times[i], now, m_window);
            if (item == Standing::ABSENT)
                return;
            if (item == Standing::RECENT) {
                if (recent == 0)
                    first = i;
                if (i != first + recent++)
                    return;
            }
        }
        if (recent == 0 || recent == m_size)
            return;
        Tally& rule = m_tallies[first * m_size + first + recent - 1];
        if (rule.lastMet != history) {
            rule.lastMet = history;
            m_best = std::max(m_best, ++rule.met);
        }
        if (rule.lastCounted != history && !m_allOccur(first, recent, now)) {
            rule.lastCounted = history;
            ++rule.counted;
        }
    }

    bool m_allOccur(std::size_t first, std::size_t items, Time now) const {
        return std::all_of(&m_times[first], &m_times[first] + items, [now](Times times) {
            return std::binary_search(times.begin(), times.end(), now);
        });
    }

    const HistoryIndex& m_index;
    Time m_window;
    std::uint32_t m_least;
    std::size_t m_size;
    const Rank* m_items = nullptr;
    std::uint32_t m_left = 0;      // histories to come
    std::uint32_t m_best = 0;      // the greatest number of histories that a rule is met in
    std::vector<Times> m_times;    // of each item in the history at hand
    std::vector<Tally> m_tallies;  // of the rule of the run [first, last]: first * size + last
};

/// The items that make a live pair with one first item.
class LivePartners {
  public:
    LivePartners(const FrequentSets& sets, const std::vector<bool>& livePairs)
        : m_sets(sets), m_livePairs(livePairs), m_partner(sets.level(1).size()) {}

    bool contains(Rank first, Rank item) {
        if (first != m_first)
            m_enter(first);
        return m_partner[item];
    }

  private:
    void m_enter(Rank first) {
        m_partner.assign(m_partner.size(), false);
        m_first = first;
        const Level& items = m_sets.level(1);
        for (std::uint32_t pair = items.extensions[first]; pair < items.extensions[first + 1];
             ++pair)
            m_partner[m_sets.level(2).last[pair]] = m_livePairs[pair];
    }

    const FrequentSets& m_sets;
    const std::vector<bool>& m_livePairs;
    Rank m_first = static_cast<Rank>(-1);
    std::vector<bool> m_partner;
};

}  // namespace

std::size_t proposeRules(std::size_t sets, std::size_t size) {
    return sets * (size * (size + 1) / 2 - 1);
}

void mineRules(const Configuration& config, const HistoryIndex& index, const FrequentSets& sets,
               std::size_t size, RuleHistogram& counts) {
    const std::uint32_t least = std::max<std::uint32_t>(config.minCount, 1);
    const Level& level = sets.level(size);
    RuleCounter counter(index, config.windowSize, least, size);
    LivePartners partners(sets, counts.livePairs);
    std::vector<bool> live(level.size(), false);
    std::vector<Rank> items(size);
    std::optional<PairOrders> orders;
    if (size == 2 && config.windowSize == 0)
        orders.emplace(index, sets, least);
    for (GroupWalk group(index, sets, size); group.next(1);) {
        const bool livePrefix = size == 2 || counts.liveSets[level.prefix[group.begin()]];
        std::copy(group.prefixItems().begin(), group.prefixItems().end(), items.begin());
        for (std::size_t set = group.begin(); set < group.end(); ++set) {
            items.back() = level.last[set];
            if (level.count[set] < least ||
                !(livePrefix || partners.contains(items.front(), items.back())) ||
                (orders && !orders->mayReach(least, items.front(), items.back())))
                continue;
            counter.begin(items.data(), level.count[set]);
            forEachCommon(group.prefixCover(), group.lastCover(set), group.histories().size(),
                          [&](Position at) { return counter.visit(group.histories()[at]); });
            live[set] = counter.finish(static_cast<std::uint32_t>(set), counts.rules);
        }
    }
    if (size == 2)
        counts.livePairs = live;
    counts.liveSets = std::move(live);
}

}  // namespace quarvis::rule
