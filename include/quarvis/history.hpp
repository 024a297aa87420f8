#pragma once

#include <cstddef>
#include <istream>
#include <map>
#include <string>

#include <quarvis/item_set.hpp>

#pragma GCC visibility push(default)

namespace quarvis::rule {

/// The transactions of one entity, in ascending time: at most one item set a time. A lookup takes
/// time logarithmic in their number. An operation marked noexcept ends the program when memory is
/// exhausted.
class History {
  public:
    /// A point in time in the unit of the input; windows are differences of times.
    using Time = unsigned int;

    /// @{
    /// Over pairs of a time and its item set.
    using Iterator = std::map<Time, ItemSet>::iterator;
    using ConstIterator = std::map<Time, ItemSet>::const_iterator;
    /// @}

    /// @{
    /// The item set at `t`. Throws `std::domain_error` when there is no transaction at `t`.
    ItemSet& at(Time t);
    const ItemSet& at(Time t) const;
    /// @}

    /// The item set at `t`, created empty when absent; in constant time where `t` comes after all
    /// others.
    ItemSet& operator[](Time t) noexcept { return m_data.try_emplace(m_data.end(), t)->second; }

    /// Whether there is a transaction at `t`.
    bool contains(Time t) const { return m_data.contains(t); }

    /// The number of transactions.
    std::size_t size() const noexcept { return m_data.size(); }

    /// Whether the entity had every one of `items` at some time or other. A history without
    /// transactions contains nothing, not even the empty set.
    ///
    /// Collects copies of the items, from the first transaction on until all of `items` are there:
    /// who asks this often had better keep what `allItems` gives.
    bool contains(const ItemSet& items) const;

    /// The union of the item sets of all transactions: a copy, and a set insertion for each item of
    /// each transaction.
    ItemSet allItems() const;

    /// @{
    /// In ascending time.
    Iterator begin() noexcept { return m_data.begin(); }
    Iterator end() noexcept { return m_data.end(); }
    ConstIterator begin() const noexcept { return m_data.begin(); }
    ConstIterator end() const noexcept { return m_data.end(); }
    /// @}

  private:
    [[noreturn]] static void m_missing(Time t);

    std::map<Time, ItemSet> m_data;
};

/// The histories of all entities, in ascending byte order of their keys.
class TransactionSet {
  public:
    /// @{
    /// Over pairs of an entity's key and its history.
    using Iterator = std::map<std::string, History>::iterator;
    using ConstIterator = std::map<std::string, History>::const_iterator;
    /// @}

    /// The number of histories.
    std::size_t size() const noexcept { return m_data.size(); }

    /// The number of transactions in all histories, in time linear in the number of histories.
    std::size_t transactionCount() const noexcept;

    /// The count of an item set: the number of histories that contain it. It asks each history
    /// `contains`, and so may copy every item there is; nothing is kept from call to call.
    std::size_t count(const ItemSet& items) const;

    /// @{
    /// In ascending byte order of the keys.
    Iterator begin() noexcept { return m_data.begin(); }
    Iterator end() noexcept { return m_data.end(); }
    ConstIterator begin() const noexcept { return m_data.begin(); }
    ConstIterator end() const noexcept { return m_data.end(); }
    /// @}

    /// Merges a transaction file into the set: a header line, which is discarded, then one row a
    /// transaction or a part of one, with the entity's key, the time and any number of items.
    /// Cells may be quoted (`moxtel::io::RFC4180DelimitedRowFormat`) and are not trimmed; empty
    /// item cells are skipped; rows come in any order, and rows of one entity and time make one
    /// transaction. Nothing is rejected: a time that is not a number is 0, and a row without a time
    /// cell takes it from the row after it.
    ///
    /// Reading costs at most two map lookups a row and a set insertion an item, and the memory for
    /// the items of one row. What the stream throws propagates; what was read before stays, of the
    /// row at hand its items too.
    void readInto(std::istream& in, char delim);

    /// As above from the file `path`; one that cannot be opened reads as empty, and a read that
    /// fails throws `moxtel::io::FileError`.
    void readInto(const std::string& path, char delim);

  private:
    std::map<std::string, History> m_data;
};

}  // namespace quarvis::rule

#pragma GCC visibility pop
