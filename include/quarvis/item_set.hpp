#pragma once

#include <cstddef>
#include <ostream>
#include <set>
#include <string>
#include <utility>

#pragma GCC visibility push(default)

namespace quarvis::rule {

/// The name of an item: any bytes, the empty string included.
using Item = std::string;

/// A set of items, iterated in ascending byte order. A value type. A lookup or an insertion takes a
/// number of comparisons logarithmic in the size. An operation marked noexcept ends the program
/// when memory is exhausted.
class ItemSet {
  public:
    /// @{
    /// Iterates over constant items.
    using Iterator = std::set<Item>::iterator;
    using ConstIterator = std::set<Item>::const_iterator;
    /// @}

    /// The empty set.
    ItemSet() = default;

    /// The set of `item` alone. An item converts to it implicitly.
    ItemSet(const Item& item) { m_data.insert(item); }

    /// Inserts an item. Takes constant time when the item comes after all others.
    void add(Item item) noexcept { m_data.insert(m_data.end(), std::move(item)); }

    /// Inserts copies of all of `items`.
    void add(const ItemSet& items) noexcept;

    /// Removes all items.
    void clear() { m_data.clear(); }

    /// Whether `item` is in this set.
    bool contains(const Item& item) const { return m_data.contains(item); }

    /// Whether every item of `items` is in this set; always true for empty `items`. Looks the
    /// items up one by one until one is missing.
    bool contains(const ItemSet& items) const noexcept;

    /// The number of items.
    std::size_t size() const noexcept { return m_data.size(); }

    /// A copy of the first item; the set must not be empty.
    Item least() const { return *m_data.begin(); }

    /// @{
    /// In ascending byte order.
    Iterator begin() noexcept { return m_data.begin(); }
    Iterator end() noexcept { return m_data.end(); }
    ConstIterator begin() const noexcept { return m_data.begin(); }
    ConstIterator end() const noexcept { return m_data.end(); }
    /// @}

    /// Compares item by item up to the first difference, and returns what `std::string::compare`
    /// gives for the two items there. Returns -1 when `rhs` is a proper prefix of this set. Returns
    /// 0 for equal sets, but also when this set is a proper prefix of `rhs`; so a result of 0 does
    /// not mean equality. But a negative result is reliable: for two different sets a and b,
    /// exactly one of `a < b` and `b < a` holds.
    int cmp(const ItemSet& rhs) const noexcept;

    /// A strict total order: lexicographic by bytes, but a set comes before its own prefixes.
    /// {ab,cd} comes before {ab}, and {} comes last.
    bool operator<(const ItemSet& rhs) const { return cmp(rhs) < 0; }

    /// A copy of the union of both sets.
    ItemSet merge(const ItemSet& rhs) const;

    /// Writes "{a,b}": the items in ascending byte order, neither quoted nor escaped.
    std::ostream& writeInto(std::ostream& os) const;

    /// @{
    /// What `writeInto` writes.
    std::string toString() const;
    operator std::string() const { return toString(); }
    /// @}

  private:
    std::set<Item> m_data;
};

}  // namespace quarvis::rule

/// The same as `writeInto`. \relates quarvis::rule::ItemSet
std::ostream& operator<<(std::ostream& os, const quarvis::rule::ItemSet& items);

#pragma GCC visibility pop
