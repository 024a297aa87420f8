#pragma once

#include <cstddef>
#include <utility>

#include <moxtel/iterator.hpp>

#pragma GCC visibility push(default)

namespace moxtel::util {

/// A map from keys to values, each key once. It owns both. Its walks all have the same order, that
/// of `iterator()`. A value is value-initialised before it is anything else. Keys need a copy
/// constructor; where a constructor throws, the map stays as it was.
template <class K, class V>
class Map {
  public:
    /// A key and its value, which may be changed.
    using Pair = std::pair<const K, V>;

    /// The number of pairs.
    virtual std::size_t size() const = 0;

    /// Whether the map has a pair of this key; it costs what `pairFor` costs.
    virtual bool containsKey(const K& key) const = 0;

    /// @{
    /// The pair of this key. When absent it is put in with a value-initialised value (0 for
    /// numbers) if `create`; otherwise, and in the const form, throws `NotFoundException` with the
    /// message "Key not found\n".
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
    /// As `pairFor`, the value alone. `operator[]` puts an absent key in, unless the map is const.
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
        return mem::Iterator<V>(new ValueIteratorStrategy<V, Pair>(iterator()));
    }
    mem::Iterator<const V> valueIterator() const {
        return mem::Iterator<const V>(new ValueIteratorStrategy<const V, const Pair>(iterator()));
    }
    /// @}

  private:
    /// A walk over one part of the pairs that another iterator walks over.
    template <class Part, class Entry>
    class PartIteratorStrategy : public mem::Iterator<Part>::Strategy {
      public:
        explicit PartIteratorStrategy(const mem::Iterator<Entry>& pairs) : m_pairs(pairs) {}
        bool hasNext() const override { return m_pairs.hasNext(); }
        void next() override { m_pairs.next(); }

      protected:
        mem::Iterator<Entry> m_pairs;
    };

    class KeyIteratorStrategy : public PartIteratorStrategy<const K, const Pair> {
      public:
        using PartIteratorStrategy<const K, const Pair>::PartIteratorStrategy;
        const K& current() override { return this->m_pairs->first; }
        const K& current() const override { return this->m_pairs->first; }
    };

    template <class Value, class Entry>
    class ValueIteratorStrategy : public PartIteratorStrategy<Value, Entry> {
      public:
        using PartIteratorStrategy<Value, Entry>::PartIteratorStrategy;
        Value& current() override { return this->m_pairs->second; }
        const Value& current() const override { return this->m_pairs->second; }
    };
};

}  // namespace moxtel::util

#pragma GCC visibility pop
