#include <algorithm>
#include <deque>
#include <limits>
#include <memory>
#include <new>
#include <utility>
#include <vector>

#include "check_options.hpp"
#include "exceeded.hpp"
#include "forecast.hpp"
#include "item_set_walk.hpp"
#include "steps.hpp"
#include "tasks.hpp"
#include "walk_costs.hpp"

namespace quarvis::mining {

namespace {

/// The search over a whole index. A short search is one `ItemSetWalk`. A long one goes level by
/// level and reports each level as soon as it is known; once levels shrink, one walk finds the
/// rest.
class Search {
  public:
    Search(const HistoryIndex& index, const MiningOptions& options, Observer& observer,
           Meter& meter)
        : m_options(options),
          m_observer(observer),
          m_meter(meter),
          m_maxSize(options.maxSize == 0 ? std::numeric_limits<std::size_t>::max()
                                         : options.maxSize),
          m_order(index, options.minCount),
          m_shard(Shard::whole(index)) {
        m_sets.link(m_order.size());
    }

    ItemSets run() {
        try {
            ItemSets sets = m_run();
            if (m_baskets)
                m_meter.gaveBack(m_baskets->bytes());
            return sets;
        } catch (const OverBudget& over) {
            std::vector<const FoundSets*> found = {&m_sets};
            for (const std::deque<FoundSets>& walked : m_walked)
                for (const FoundSets& block : walked)
                    found.push_back(&block);
            throw exceeded(over, m_order, found);
        }
    }

  private:
    /// A thread starts another block after this many sets. Arrays that grow are copied, and a copy
    /// cannot be interrupted, so short blocks keep a run responsive.
    static constexpr std::size_t BLOCK = std::size_t{1} << 20;

    ItemSets m_run() {
        m_meter.found(1, m_order.size());
        m_observer.levelFound(1, m_order.size());
        if (m_maxSize > 1 && m_order.size() > 0)
            m_findLarger();
        for (std::size_t size = m_reported + 1; size <= m_sets.maxSize(); ++size)
            m_observer.levelFound(size, m_sets.count(size));
        if (m_sets.maxSize() < m_maxSize && m_sets.maxSize() + 1 > m_reported)
            m_observer.levelFound(m_sets.maxSize() + 1, 0);
        Step step(m_observer, m_meter);
        return std::move(m_sets).ordered(m_order, m_options.threads, step);
    }

    void m_findLarger() {
        Step step(m_observer, m_meter);
        m_baskets = std::make_unique<Baskets>(m_shard, m_order, m_options.threads, step);
        m_meter.took(m_baskets->bytes());
        if (m_isShort())
            return;
        while (m_walkLevel())
            continue;
        if (m_sets.maxSize() == m_reported)
            m_walk(m_maxSize, Step::NO_LIMIT);
    }

    /// Finds and reports the next level. Returns whether to go on level by level.
    bool m_walkLevel() {
        const std::size_t size = m_reported + 1;
        Step step(m_observer, m_meter);
        m_observer.levelForecast(size, forecast(m_sets, m_order.size(), step));
        m_walk(size, Step::NO_LIMIT);
        m_sets.link(m_order.size(), m_options.threads, &step);
        m_reported = size;
        m_observer.levelFound(size, m_sets.count(size));
        return size < m_maxSize &&
               (size == 2 ? m_sets.count(size) > 0 : m_sets.count(size) >= m_sets.count(size - 1));
    }

    /// Tries to find everything in one walk. Returns false when the walk costs too much or runs out
    /// of memory, so that the observer sees the levels that can be found.
    bool m_isShort() {
        const Meter::Mark before = m_meter.mark();
        try {
            m_walk(m_maxSize, walk_costs::SHORT_SEARCH);
            return true;
        } catch (const TooLong&) {
        } catch (const std::bad_alloc&) {}
        m_walked.clear();
        m_meter.rewind(before);
        return false;
    }

    /// Finds the sets of more items than are known, up to `maxSize`. The walk may cost `limit`.
    void m_walk(std::size_t maxSize, std::uint64_t limit) {
        const ItemSetWalk::Scope scope{&m_sets, m_sets.maxSize(), maxSize};
        if (scope.knownSize >= maxSize)
            return;
        Step step(m_observer, m_meter, limit);
        m_walked.assign(m_options.threads, std::deque<FoundSets>(1));
        std::vector<FoundSets::Part> parts(m_order.size());
        const auto makeWorker = [&](unsigned thread) {
            return [&, thread, work = std::make_unique<Work>(step),
                    walk = std::unique_ptr<ItemSetWalk>()](std::size_t task) mutable {
                if (!walk)
                    walk =
                        std::make_unique<ItemSetWalk>(*m_baskets, m_options.minCount, scope, *work);
                std::deque<FoundSets>& blocks = m_walked[thread];
                if (blocks.back().size() >= BLOCK)
                    blocks.emplace_back();
                FoundSets& found = blocks.back();
                parts[task].from = &found;
                parts[task].begins = found.sizes();
                walk->walk(WalkItem{static_cast<std::uint32_t>(task)}, found);
                parts[task].ends = found.sizes();
            };
        };
        workOn(m_order.size(), m_options.threads, step, makeWorker,
               [&](std::size_t done) { m_observer.progressed(done, m_order.size()); });
        if (m_options.threads == 1 && scope.knownSize == 1 && m_walked[0].size() == 1)
            m_sets = std::move(m_walked[0].front());
        else
            m_sets.append(parts, m_options.threads, step);
        m_walked.clear();
    }

    const MiningOptions& m_options;
    Observer& m_observer;
    Meter& m_meter;
    std::size_t m_maxSize;
    WalkOrder m_order;
    Shard m_shard;
    std::unique_ptr<Baskets> m_baskets;
    FoundSets m_sets;
    std::vector<std::deque<FoundSets>> m_walked;  // by thread: what the current walk has found
    std::size_t m_reported = 1;
};

}  // namespace

ItemSets findItemSets(const HistoryIndex& index, const MiningOptions& options, Observer& observer,
                      Meter& meter) {
    checkOptions(index, options);
    return Search(index, options, observer, meter).run();
}

ItemSets findItemSets(const HistoryIndex& index, const MiningOptions& options, Observer& observer) {
    Meter meter(options.budget);
    return findItemSets(index, options, observer, meter);
}

}  // namespace quarvis::mining
