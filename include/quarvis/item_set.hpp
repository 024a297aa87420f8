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

/// A set of items, iterated in ascending byte order. A value type; the operations marked noexcept
/// end the program when memory is exhausted. To look an item up, or to put one in, takes a number
/// of comparisons that is logarithmic in the size.
class ItemSet {
  public:
    /// @{
    /// Over constant items.
    using Iterator = std::set<Item>::iterator;
    using ConstIterator = std::set<Item>::const_iterator;
    /// @}

    /// The empty set.
    ItemSet() = default;

    /// The set of `item` alone; every item converts to it.
    ItemSet(const Item& item) { m_data.insert(item); }

    /// Puts an item in, in constant time where it comes after all others.
    void add(Item item) noexcept { m_data.insert(m_data.end(), std::move(item)); }

    /// Puts copies of all of `items` in.
    void add(const ItemSet& items) noexcept;

    /// Leaves the empty set.
    void clear() { m_data.clear(); }

    /// Whether `item` is in this set.
    bool contains(const Item& item) const { return m_data.contains(item); }

    /// Whether every item of `items` is in this set; so the empty set is in every set. Looks them
    /// up one by one, until one is missing.
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

    /// Compares item by item: at the first difference what `std::string::compare` gives for the
    /// two items, and -1 when this set goes on after the other has ended. When only the other goes
    /// on the result is 0, as for equal sets: only the sign "less" tells sets apart, and through
    /// `operator<` it does so for any two different sets. Looks at no item after that difference.
    int cmp(const ItemSet& rhs) const noexcept;

    /// A strict total order: lexicographic by bytes, a set before its own prefixes. {ab,cd} comes
    /// before {ab}, and {} after everything else.
    bool operator<(const ItemSet& rhs) const { return cmp(rhs) < 0; }

    /// The union of both sets; copies their items.
    ItemSet merge(const ItemSet& rhs) const;

    /// Writes "{a,b}": the items in order, neither quoted nor escaped.
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

/// As `writeInto`. \relates quarvis::rule::ItemSet
std::ostream& operator<<(std::ostream& os, const quarvis::rule::ItemSet& items);

#pragma GCC visibility pop
