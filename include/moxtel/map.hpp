#pragma once

#include <cstddef>
#include <iterator>
#include <utility>

#include <moxtel/iterator.hpp>

#pragma GCC visibility push(default)

namespace moxtel::util {

/// A map from keys to values, each key once. It owns both. All its walks have the order of
/// `iterator()`. A new value is value-initialised. Keys need a copy constructor; where a
/// constructor throws, the map stays as it was. A map belongs to one thread.
template <class K, class V>
class Map {
    /// A walk over one part of the pairs that another iterator walks over. It shares the position
    /// of that iterator.
    template <class Part, class Entry>
    class PartIteratorStrategy : public mem::Iterator<Part>::Strategy {
      public:
        explicit PartIteratorStrategy(const mem::Iterator<Entry>& pairs) : m_pairs(pairs) {}
        bool hasNext() const override { return m_pairs.hasNext(); }
        void next() override { m_pairs.next(); }

      protected:
        mem::Iterator<Entry> m_pairs;
    };

    template <class Value, class Entry>
    class SecondIteratorStrategy : public PartIteratorStrategy<Value, Entry> {
      public:
        using PartIteratorStrategy<Value, Entry>::PartIteratorStrategy;
        Value& current() override { return this->m_pairs->second; }
        const Value& current() const override { return this->m_pairs->second; }
    };

  public:
    /// A key and its value, which may be changed.
    using Pair = std::pair<const K, V>;

    /// The keys of the pairs that an iterator walks over; `Iterator<const K>` takes ownership of
    /// it.
    class KeyIteratorStrategy : public PartIteratorStrategy<const K, const Pair> {
      public:
        using PartIteratorStrategy<const K, const Pair>::PartIteratorStrategy;
        const K& current() override { return this->m_pairs->first; }
        const K& current() const override { return this->m_pairs->first; }
    };

    /// @{
    /// The values of the pairs that an iterator walks over; an `Iterator<V>` or, of pairs that
    /// cannot be changed, an `Iterator<const V>` takes ownership of it.
    using ValueIteratorStrategy = SecondIteratorStrategy<V, Pair>;
    using ConstValueIteratorStrategy = SecondIteratorStrategy<const V, const Pair>;
    /// @}

    /// The number of pairs.
    virtual std::size_t size() const = 0;

    /// Whether the map has a pair of this key; it costs what `pairFor` costs.
    virtual bool containsKey(const K& key) const = 0;

    /// @{
    /// The pair of this key. An absent key is put in with a value-initialised value (0 for numbers)
    /// if `create`. Otherwise, and in the const form, the operation throws `NotFoundException` with
    /// the message "Key not found\n".
    virtual Pair& pairFor(const K& key, bool create) = 0;
    virtual const Pair& pairFor(const K& key) const = 0;
    /// @}

    /// Takes a key and its value out and destroys them; ignores an absent key.
    virtual void erase(const K& key) = 0;

    /// Destroys all pairs. A map may be unusable afterwards, as its class says.
    virtual void clear() = 0;

    /// @{
    /// A walk over the pairs, in the order that the class promises.
    virtual mem::Iterator<Pair> iterator() = 0;
    virtual mem::Iterator<const Pair> iterator() const = 0;
    /// @}

    virtual ~Map() = default;

    /// @{
    /// The map as an input range of its pairs, in the order of `iterator()`.
    mem::InputIterator<Pair> begin() { return iterator().begin(); }
    mem::InputIterator<const Pair> begin() const { return iterator().begin(); }
    std::default_sentinel_t end() const noexcept { return {}; }
    /// @}

    /// @{
    /// The value of `pairFor`. `operator[]` puts an absent key in, unless the map is const.
    V& lookup(const K& key, bool create) { return pairFor(key, create).second; }
    const V& lookup(const K& key) const { return pairFor(key).second; }
    V& operator[](const K& key) { return lookup(key, true); }
    const V& operator[](const K& key) const { return lookup(key); }
    /// @}

    /// @{
    /// Walks over the keys or the values alone.
    mem::Iterator<const K> keyIterator() const {
        return mem::Iterator<const K>(new KeyIteratorStrategy(iterator()));
    }
    mem::Iterator<V> valueIterator() {
        return mem::Iterator<V>(new ValueIteratorStrategy(iterator()));
    }
    mem::Iterator<const V> valueIterator() const {
        return mem::Iterator<const V>(new ConstValueIteratorStrategy(iterator()));
    }
    /// @}

  protected:
    Map() = default;

    /// @{
    /// For classes of maps; there is nothing in this one.
    Map(const Map&) = default;
    Map& operator=(const Map&) = default;
    /// @}
};

}  // namespace moxtel::util

#pragma GCC visibility pop
