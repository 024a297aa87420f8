#pragma once

#include <cstddef>
#include <utility>

#include <moxtel/linked_hash_set.hpp>
#include <moxtel/map.hpp>

#pragma GCC visibility push(default)

namespace moxtel::util {

/// A hash map that is walked in the order in which its keys were put in. It is a `LinkedHashSet` of
/// pairs, with the same costs and guarantees, also for moving and for the iterators of `begin` and
/// `end`. After `clear` no operation with a key may follow.
template <class K, class V>
class LinkedHashMap : public Map<K, V> {
  public:
    using typename Map<K, V>::Pair;

    /// An empty map of `buckets` buckets; 0 stands for the default of `LinkedHashSet`.
    explicit LinkedHashMap(std::size_t buckets = 0) : m_backing(buckets) {}

    /// @{
    /// Takes over the pairs of the other map.
    LinkedHashMap(LinkedHashMap&&) noexcept = default;
    LinkedHashMap& operator=(LinkedHashMap&&) noexcept = default;
    /// @}

    std::size_t size() const override { return m_backing.size(); }
    bool containsKey(const K& key) const override { return m_backing.containsKey(key); }
    Pair& pairFor(const K& key, bool create) override { return m_backing.lookupByKey(key, create); }
    const Pair& pairFor(const K& key) const override { return m_backing.lookupByKey(key); }
    void erase(const K& key) override { m_backing.eraseByKey(key); }
    void clear() override { m_backing.clear(); }
    mem::Iterator<Pair> iterator() override { return m_backing.iterator(); }
    mem::Iterator<const Pair> iterator() const override { return m_backing.iterator(); }

    /// @{
    /// The map as a forward range of its pairs, in the order of insertion.
    auto begin() noexcept { return m_backing.begin(); }
    auto end() noexcept { return m_backing.end(); }
    auto begin() const noexcept { return m_backing.begin(); }
    auto end() const noexcept { return m_backing.end(); }
    /// @}

  private:
    LinkedHashSet<Pair, KeyOperations<Pair>> m_backing;
};

}  // namespace moxtel::util

#pragma GCC visibility pop
