#include <algorithm>
#include <limits>
#include <memory>
#include <new>
#include <utility>
#include <vector>

#include <quarvis/mining/mine.hpp>

#include "check_options.hpp"
#include "item_set_walk.hpp"
#include "tasks.hpp"
#include "walk_costs.hpp"

namespace quarvis::mining {

namespace {

/// The search over the whole index. Where it is short it is one walk. Where it is not, it goes on a
/// level at a time, each told as soon as it is known, until the levels shrink.
class Search {
  public:
    Search(const HistoryIndex& index, const MiningOptions& options, Observer& observer)
        : m_options(options),
          m_observer(observer),
          m_maxSize(options.maxSize == 0 ? std::numeric_limits<std::size_t>::max()
                                         : options.maxSize),
          m_order(index, options.minCount),
          m_shard(Shard::whole(index)) {
        m_sets.link(m_order.size());
    }

    ItemSets run() {
        m_observer.levelFound(1, m_order.size());
        if (m_maxSize > 1 && m_order.size() > 0)
            m_findLarger();
        for (std::size_t size = m_reported + 1; size <= m_sets.maxSize(); ++size)
            m_observer.levelFound(size, m_sets.count(size));
        if (m_sets.maxSize() < m_maxSize && m_sets.maxSize() + 1 > m_reported)
            m_observer.levelFound(m_sets.maxSize() + 1, 0);
        Step step(m_observer);
        return std::move(m_sets).ordered(m_order, m_options.threads, step);
    }

  private:
    void m_findLarger() {
        Step step(m_observer);
        Work work(step);
        m_baskets = std::make_unique<Baskets>(m_shard, m_order, &work);
        if (m_isShort())
            return;
        while (m_walkLevel())
            continue;
        if (m_sets.maxSize() == m_reported)
            m_walk(m_maxSize, Step::NO_LIMIT);
    }

    /// Finds the next level; whether to go on so.
    bool m_walkLevel() {
        const std::size_t size = m_reported + 1;
        m_walk(size, Step::NO_LIMIT);
        m_reported = size;
        m_observer.levelFound(size, m_sets.count(size));
        return size < m_maxSize &&
               (size == 2 ? m_sets.count(size) > 0 : m_sets.count(size) >= m_sets.count(size - 1));
    }

    /// Tries to find everything in one walk; false when that is not short, or when there is not
    /// enough memory for it, so that whoever waits sees the levels up to there.
    bool m_isShort() {
        try {
            m_walk(m_maxSize, walk_costs::SHORT_SEARCH);
            return true;
        } catch (const OutOfBudget&) {
            return false;
        } catch (const std::bad_alloc&) {
            return false;
        }
    }

    /// Finds the sets from the first size that is not known up to `maxSize`.
    void m_walk(std::size_t maxSize, std::uint64_t limit) {
        const ItemSetWalk::Scope scope{&m_sets, m_sets.maxSize(), maxSize};
        if (scope.knownSize >= maxSize)
            return;
        Step step(m_observer, limit);
        std::vector<FoundSets> found(m_options.threads);
        std::vector<Part> parts(m_order.size());
        const auto makeWorker = [&](unsigned thread) {
            return [&, thread, work = std::make_unique<Work>(step),
                    walk = std::unique_ptr<ItemSetWalk>()](std::size_t task) mutable {
                if (!walk)
                    walk =
                        std::make_unique<ItemSetWalk>(*m_baskets, m_options.minCount, scope, *work);
                parts[task].thread = thread;
                parts[task].begins = found[thread].sizes();
                walk->walk(WalkItem{static_cast<std::uint32_t>(task)}, found[thread]);
                parts[task].ends = found[thread].sizes();
            };
        };
        workOn(m_order.size(), m_options.threads, step, makeWorker,
               [&](std::size_t done) { m_observer.progressed(done, m_order.size()); });
        if (m_options.threads == 1 && scope.knownSize == 1) {
            m_sets = std::move(found[0]);
        } else {
            for (const Part& part : parts)
                m_sets.append(found[part.thread], part.begins, part.ends);
        }
        m_sets.link(m_order.size());
    }

    /// The sets of a first item, as its thread found them: places in each of the levels.
    struct Part {
        unsigned thread = 0;
        std::vector<std::size_t> begins;
        std::vector<std::size_t> ends;
    };

    const MiningOptions& m_options;
    Observer& m_observer;
    std::size_t m_maxSize;
    WalkOrder m_order;
    Shard m_shard;
    std::unique_ptr<Baskets> m_baskets;
    FoundSets m_sets;
    std::size_t m_reported = 1;
};

}  // namespace

ItemSets findItemSets(const HistoryIndex& index, const MiningOptions& options, Observer& observer) {
    checkOptions(index, options);
    return Search(index, options, observer).run();
}

}  // namespace quarvis::mining
