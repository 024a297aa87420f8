#include "shard_questions.hpp"

#include <cstddef>
#include <stdexcept>
#include <utility>
#include <vector>

#include "item_times.hpp"
#include "set_counts.hpp"

namespace binding {

using quarvis::mining::Rank;

namespace {

/// Lists of ranks of a shard, each with at least one item.
class RankLists {
  public:
    RankLists(const Column<std::int64_t>& offsets, const Column<std::uint32_t>& ranks,
              std::size_t items)
        : m_offsets(valuesOf(offsets)), m_ranks(valuesOf(ranks)), m_items(items) {}

    std::size_t size() const { return m_offsets.empty() ? 0 : m_offsets.size() - 1; }

    void take(std::size_t list, std::vector<Rank>& ranks) const {
        const std::int64_t begin = m_offsets[list];
        const std::int64_t end = m_offsets[list + 1];
        if (begin < 0 || begin >= end || static_cast<std::size_t>(end) > m_ranks.size())
            throw std::invalid_argument("offsets of lists that are out of range");
        ranks.clear();
        for (std::int64_t place = begin; place < end; ++place) {
            const std::uint32_t rank = m_ranks[static_cast<std::size_t>(place)];
            if (rank >= m_items)
                throw std::invalid_argument("an item that is not there");
            ranks.push_back(Rank{rank});
        }
    }

  private:
    std::span<const std::int64_t> m_offsets;
    std::span<const std::uint32_t> m_ranks;
    std::size_t m_items;
};

}  // namespace

Array<std::uint32_t> countRules(const IndexPointer& shard, std::uint64_t window,
                                const Column<std::int64_t>& leftOffsets,
                                const Column<std::uint32_t>& left,
                                const Column<std::int64_t>& rightOffsets,
                                const Column<std::uint32_t>& right) {
    std::vector<std::uint32_t> counts;
    {
        const nb::gil_scoped_release released;
        const RankLists antecedents(leftOffsets, left, shard->itemCount());
        const RankLists subsequents(rightOffsets, right, shard->itemCount());
        if (antecedents.size() != subsequents.size())
            throw std::invalid_argument("columns of different lengths");
        const ItemTimes times(*shard);
        RuleTimesSearch search(times, window);
        std::vector<Rank> antecedent;
        std::vector<Rank> subsequent;
        for (std::size_t rule = 0; rule < antecedents.size(); ++rule) {
            antecedents.take(rule, antecedent);
            subsequents.take(rule, subsequent);
            quarvis::mining::Rule asked{};
            asked.antecedent = antecedent;
            asked.subsequent = subsequent;
            counts.push_back(static_cast<std::uint32_t>(search.find(asked).lags.size()));
        }
    }
    return arrayOf(std::move(counts));
}

Array<std::uint32_t> countSets(const IndexPointer& shard, const Column<std::int64_t>& offsets,
                               const Column<std::uint32_t>& ranks) {
    std::vector<std::uint32_t> counts;
    {
        const nb::gil_scoped_release released;
        const RankLists sets(offsets, ranks, shard->itemCount());
        SetCounts search(*shard);
        std::vector<Rank> items;
        for (std::size_t set = 0; set < sets.size(); ++set) {
            sets.take(set, items);
            counts.push_back(search.count(items));
        }
    }
    return arrayOf(std::move(counts));
}

}  // namespace binding
