#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <utility>
#include <vector>

#include "arena.hpp"
#include "baskets.hpp"
#include "found_sets.hpp"
#include "run_control.hpp"

namespace quarvis::mining {

/// Finds frequent item sets depth first: a prefix is extended by the items after its last one in
/// walk order.
///
/// The histories that hold a first item are its conditional database. One pass over it counts all
/// later items at once, which are the partners of the first item (T. Uno, M. Kiyomi, H. Arimura:
/// LCM ver. 2, 2004, there called occurrence deliver). Each frequent partner gets a bitmap over
/// these histories, its tid-set. The extensions of a prefix form an equivalence class. Intersecting
/// the bitmaps of two members gives the bitmap of their union, and its bits are the count of that
/// set (M. J. Zaki: Scalable Algorithms for Association Mining, 2000). If few of the histories hold
/// a prefix, the bitmaps of its class are rebuilt over these histories alone. Rare items come
/// first, so bitmaps are short.
///
/// Sets of up to a known size are not counted again: the walk follows them to reach the larger
/// ones. It takes two passes over the histories of each first item and an intersection for each
/// candidate, and holds the bitmaps along one path. Each thread needs a walk of its own.
class ItemSetWalk {
  public:
    /// What the walk finds: the sets of more than `knownSize` and at most `maxSize` items. Smaller
    /// sets are taken from `known`, which must be linked and have the sizes up to `knownSize`, at
    /// least 1.
    struct Scope {
        const FoundSets* known = nullptr;
        std::size_t knownSize = 1;
        std::size_t maxSize = static_cast<std::size_t>(-1);
    };

    ItemSetWalk(const Baskets& baskets, std::uint32_t minCount, const Scope& scope, Work& work);

    /// Adds to `found`, in their order, the frequent sets of the scope whose first item is `item`.
    /// The parents of the smallest of them are places in `known`.
    void walk(WalkItem item, FoundSets& found);

    /// Counts the candidates of size `knownSize` + 1 whose first item is `item`. Appends the count
    /// of each, frequent or not, in the order of `Candidates`.
    void count(WalkItem item, std::vector<std::uint32_t>& counts);

  private:
    /// An equivalence class: the extensions of one prefix. The bitmaps of its members are
    /// contiguous.
    struct Class {
        std::size_t size = 0;   // items of each member
        std::size_t words = 0;  // words of each bitmap
        std::vector<WalkItem> items;
        std::vector<std::uint32_t> counts;
        std::uint64_t* bitmaps = nullptr;
        std::size_t begin = 0;  // place of the first member among the sets of its size

        const std::uint64_t* bitmap(std::size_t member) const { return bitmaps + member * words; }
    };

    /// How the partners of a first item were counted.
    struct Delivery {
        std::size_t histories;  // histories that were counted
        bool isDense;           // whether scanning the counters is cheaper than another pass
        bool isVain;            // whether no partner is frequent
    };

    Delivery m_deliver(WalkItem item, std::uint32_t least);
    template <class Visit>
    void m_forDelivered(WalkItem item, const Delivery& delivery, Visit visit);
    Class& m_frequentPartners(WalkItem item);
    Class& m_knownPartners(WalkItem item);
    void m_makeBitmaps(WalkItem item, Class& partners);
    Class& m_followed(const Class& members, std::size_t member);
    void m_follow(const Class& members, FoundSets& found);
    void m_followAndCount(const Class& members, std::vector<std::uint32_t>& counts);
    void m_extend(const Class& members, FoundSets& found);
    void m_extendLast(const Class& members, FoundSets& found);
    void m_countJoins(const Class& members, std::size_t member);
    void m_shrink(const std::uint64_t* cover, std::size_t histories, Class& members);
    Class& m_emptyClass(std::size_t size);

    const Baskets& m_baskets;
    std::uint32_t m_minCount;
    Scope m_scope;
    Work& m_work;

    std::vector<std::uint32_t> m_delivered;  // by item: histories that hold it and the first item
    std::vector<std::pair<WalkItem, std::uint32_t>> m_frequent;
    std::vector<std::uint32_t> m_member;  // by item: where its bitmap begins, or NONE
    std::deque<Class> m_classes;          // by size
    std::vector<std::uint32_t> m_kept;
    std::vector<std::uint32_t> m_joined;  // the counts of joins
    std::vector<std::uint32_t> m_positions;
    Arena<std::uint64_t> m_arena;
};

}  // namespace quarvis::mining
