#include "plain_search.hpp"

#include <iterator>

namespace quarvis::rule::plain {

void oneSets(const Configuration&, const History& seq, ItemSetSupports& ret) {
    for (const Item& item : seq.allItems())
        ++ret[ItemSet(item)];
}

ItemSetSupports oneSets(const Configuration& config, const TransactionSet& txns) {
    ItemSetSupports ret;
    for (const auto& [key, history] : txns)
        oneSets(config, history, ret);
    filterCandidates(config, ret);
    return ret;
}

ItemSetSupports aprioriMerge(const Configuration& config, const ItemSetSupports& src,
                             ItemSetSupports& all, const TransactionSet& txns, std::size_t n) {
    ItemSetSupports ret;
    for (auto i = src.begin(); i != src.end(); ++i)
        for (auto j = std::next(i); j != src.end(); ++j) {
            const ItemSet dis = i->first.merge(j->first);
            if (dis.size() == n && ret.find(dis) == ret.end())
                ret.add(dis, txns.count(dis));
        }
    filterCandidates(config, ret);
    for (const auto& [items, count] : ret)
        all[items] = count;
    return ret;
}

void filterCandidates(const Configuration& config, ItemSetSupports& ret) {
    ItemSets infrequent;
    for (const auto& [items, count] : ret)
        if (count < config.minCount)
            infrequent.insert(items);
    for (const ItemSet& items : infrequent)
        ret.erase(items);
}

ItemSets toIS(const ItemSetSupports& src) {
    ItemSets sets;
    for (const auto& [items, count] : src)
        sets.insert(items);
    return sets;
}

}  // namespace quarvis::rule::plain
