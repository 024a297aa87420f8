#include <quarvis/mining/occurrences.hpp>

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace quarvis::mining {

namespace {

/// The result of a transaction that passes all tests.
constexpr int PASSED = static_cast<int>(Miss::ANTECEDENT_PRESENT) + 1;

}  // namespace

/// Tests each history for a rule, whose items are numbered, those of the antecedent first.
class OccurrenceSearch {
  public:
    OccurrenceSearch(const HistoryIndex& index, std::span<const Rank> antecedent,
                     std::span<const Rank> subsequent, std::uint64_t window)
        : m_index(index),
          m_window(window),
          m_antecedent(antecedent.size()),
          m_numberOf(index.itemCount(), NONE),
          m_items(antecedent.size() + subsequent.size()) {
        if (antecedent.empty() || subsequent.empty())
            throw std::invalid_argument("a rule without items on one side");
        std::uint32_t number = 0;
        for (const std::span<const Rank> side : {antecedent, subsequent})
            for (const Rank item : side) {
                if (at(item) >= index.itemCount() || m_numberOf[at(item)] != NONE)
                    throw std::invalid_argument("an item of a rule that is unknown or comes twice");
                m_numberOf[at(item)] = number++;
            }
    }

    Occurrences run() {
        for (std::uint32_t history = 0; history < m_index.historyCount(); ++history)
            m_visit(HistoryId{history});
        return std::move(m_found);
    }

  private:
    static constexpr std::uint32_t NONE = std::numeric_limits<std::uint32_t>::max();

    /// An item of the rule, in the current history.
    struct Item {
        bool occurred = false;  // before the current transaction
        bool isThere = false;   // in the current transaction
        std::uint64_t last = 0;
    };

    /// The items [begin, end) of one side of the rule; the reverse rule swaps the sides.
    struct Side {
        const Item* begin;
        const Item* end;

        template <class Test>
        bool all(Test test) const {
            return std::all_of(begin, end, test);
        }
        template <class Test>
        bool any(Test test) const {
            return std::any_of(begin, end, test);
        }
    };

    void m_visit(HistoryId history) {
        const Side antecedent{m_items.data(), m_items.data() + m_antecedent};
        const Side subsequent{antecedent.end, m_items.data() + m_items.size()};
        std::fill(m_items.begin(), m_items.end(), Item());
        const std::size_t begin = m_found.m_times.size();
        Occurrence occurrence{history, false, 0, {}, Miss::SUBSEQUENT_APART};
        int furthest = 0;
        bool reverseCounts = false;
        const std::size_t end = m_index.endTransaction(history);
        for (std::size_t place = m_index.firstTransaction(history); place < end; ++place) {
            if (!m_enter(place))
                continue;
            const std::uint64_t time = m_index.time(place);
            const int reached = m_test(antecedent, subsequent, time);
            furthest = std::max(furthest, reached);
            if (reached == PASSED && !occurrence.counts) {
                occurrence.counts = true;
                occurrence.time = time;
                for (const Item* item = antecedent.begin; item != antecedent.end; ++item)
                    m_found.m_times.push_back(item->last);
            }
            reverseCounts = reverseCounts || m_test(subsequent, antecedent, time) == PASSED;
            m_leave(time);
        }
        if (!std::all_of(m_items.begin(), m_items.end(),
                         [](const Item& item) { return item.occurred; })) {
            m_found.m_times.resize(begin);
            return;
        }
        if (!occurrence.counts)
            occurrence.miss = Miss{static_cast<std::uint8_t>(furthest)};
        m_found.m_histories.push_back(occurrence);
        m_found.m_begin.push_back(m_found.m_times.size());
        m_found.m_count += occurrence.counts ? 1 : 0;
        m_found.m_reverseCount += reverseCounts ? 1 : 0;
    }

    /// Marks the items of the rule that a transaction holds. Returns whether there are any.
    bool m_enter(std::size_t place) {
        bool any = false;
        for (const Rank rank : m_index.items(place))
            if (const std::uint32_t number = m_numberOf[at(rank)]; number != NONE) {
                m_items[number].isThere = true;
                any = true;
            }
        return any;
    }

    void m_leave(std::uint64_t time) {
        for (Item& item : m_items)
            if (item.isThere)
                item = {true, false, time};
    }

    bool m_isRecent(const Item& item, std::uint64_t time) const {
        return item.occurred && (m_window == 0 || time - item.last <= m_window);
    }

    /// The first test that the current transaction fails, as a Miss; or PASSED.
    int m_test(const Side& antecedent, const Side& subsequent, std::uint64_t time) const {
        const auto isThere = [](const Item& item) { return item.isThere; };
        const auto occurred = [](const Item& item) { return item.occurred; };
        const auto isRecent = [this, time](const Item& item) { return m_isRecent(item, time); };
        const auto failed = [](Miss miss) { return static_cast<int>(miss); };
        if (!subsequent.all(isThere))
            return failed(Miss::SUBSEQUENT_APART);
        if (!antecedent.all([](const Item& item) { return item.occurred || item.isThere; }))
            return failed(Miss::OTHER_ORDER);
        if (!antecedent.all(occurred))
            return failed(Miss::SAME_TIME);
        if (!antecedent.all(isRecent))
            return failed(Miss::TOO_LATE);
        if (subsequent.any(isRecent))
            return failed(Miss::NOT_NEW);
        if (antecedent.all(isThere))
            return failed(Miss::ANTECEDENT_PRESENT);
        return PASSED;
    }

    const HistoryIndex& m_index;
    std::uint64_t m_window;
    std::size_t m_antecedent;
    std::vector<std::uint32_t> m_numberOf;  // by rank, or NONE
    std::vector<Item> m_items;              // by number
    Occurrences m_found;
};

Occurrences findOccurrences(const HistoryIndex& index, std::span<const Rank> antecedent,
                            std::span<const Rank> subsequent, std::uint64_t window) {
    return OccurrenceSearch(index, antecedent, subsequent, window).run();
}

}  // namespace quarvis::mining
