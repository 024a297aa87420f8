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

/// The search for frequent item sets: depth first over prefixes, each of which is extended by the
/// items after it in walk order.
///
/// The histories of a first item are its conditional database. In it every frequent partner of the
/// item gets a bitmap over these histories; a prefix and its extensions stand for an equivalence
/// class, in which the intersection of the bitmaps of two members counts, and is the bitmap of,
/// their union (M. J. Zaki: Scalable Algorithms for Association Mining, 2000). Where a class holds
/// few of the histories, its bitmaps are made anew over these alone. Partners are found by one walk
/// over the histories of the first item (T. Uno, M. Kiyomi, H. Arimura: LCM ver. 2, 2004, there
/// called occurrence deliver). As the rarest items come first, the bitmaps are short.
///
/// Up to a known size the walk follows sets that are already found, without counting; from there on
/// it counts. A walk writes to `found` in the order of the sets.
class ItemSetWalk {
  public:
    /// What the walk counts. Sets of up to `knownSize` items, at least 1, are taken from `known`,
    /// which is linked and has as many levels at least; `maxSize` is the size at which it ends.
    struct Scope {
        const FoundSets* known = nullptr;
        std::size_t knownSize = 1;
        std::size_t maxSize = static_cast<std::size_t>(-1);
    };

    ItemSetWalk(const Baskets& baskets, std::uint32_t minCount, const Scope& scope, Work& work);

    /// Adds to `found` the frequent sets of more than the known size whose first item is `item`,
    /// with their places among the known ones as parents of the least.
    void walk(WalkItem item, FoundSets& found);

    /// The candidates of size knownSize + 1 that begin with `item`: each known set with the last
    /// item of each later set of its class; or each later item, of a first item alone. Appends the
    /// count of each, frequent or not, in the order of the candidates.
    void count(WalkItem item, std::vector<std::uint32_t>& counts);

  private:
    /// The members of an equivalence class: the extensions of a prefix. Bitmaps stand one after the
    /// other.
    struct Class {
        std::size_t size = 0;   // of the members as sets
        std::size_t words = 0;  // of each bitmap
        std::vector<WalkItem> items;
        std::vector<std::uint32_t> counts;
        std::uint64_t* bitmaps = nullptr;
        std::size_t begin = 0;  // the place of the first member among the sets of its size

        const std::uint64_t* bitmap(std::size_t member) const { return bitmaps + member * words; }
    };

    /// How the histories of a first item were counted.
    struct Delivery {
        std::size_t histories;  // that were counted
        bool isDense;           // beside the items after the first one
        bool isVain;            // no item is frequent with the first one
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

    std::vector<std::uint32_t> m_delivered;  // by item: histories of the first one that hold it
    std::vector<std::pair<WalkItem, std::uint32_t>> m_frequent;
    std::vector<std::uint32_t> m_member;  // by item: its place among the partners, or NONE
    std::deque<Class> m_classes;          // by size
    std::vector<std::uint32_t> m_kept;
    std::vector<std::uint32_t> m_joined;  // counts
    std::vector<std::uint32_t> m_positions;
    Arena<std::uint64_t> m_arena;
};

}  // namespace quarvis::mining
