#pragma once

#include <cstddef>
#include <istream>
#include <map>
#include <string>

#include <quarvis/item_set.hpp>

#pragma GCC visibility push(default)

namespace quarvis::rule {

/// The transactions of one entity in ascending time, at most one item set per time. A lookup is
/// logarithmic in the number of transactions. An operation marked noexcept ends the program when
/// memory is exhausted.
class History {
  public:
    /// A point in time, in the unit of the input. A window is a difference of two times.
    using Time = unsigned int;

    /// @{
    /// Iterates over pairs of a time and its item set.
    using Iterator = std::map<Time, ItemSet>::iterator;
    using ConstIterator = std::map<Time, ItemSet>::const_iterator;
    /// @}

    /// @{
    /// The item set at `t`. Throws `std::domain_error` when there is no transaction at `t`.
    ItemSet& at(Time t);
    const ItemSet& at(Time t) const;
    /// @}

    /// The item set at `t`, created empty when absent. Takes constant time when `t` is later than
    /// all other times.
    ItemSet& operator[](Time t) noexcept { return m_data.try_emplace(m_data.end(), t)->second; }

    /// Whether there is a transaction at `t`.
    bool contains(Time t) const { return m_data.contains(t); }

    /// The number of transactions.
    std::size_t size() const noexcept { return m_data.size(); }

    /// Whether each of `items` occurs in some transaction, not necessarily the same one. A history
    /// without transactions contains nothing, not even the empty set.
    ///
    /// Copies the items of one transaction after the other until all of `items` are found. To ask
    /// often, keep the result of `allItems` instead.
    bool contains(const ItemSet& items) const;

    /// A copy of the union of all transactions. Costs one set insertion per item of each
    /// transaction.
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
    /// Iterates over pairs of an entity's key and its history.
    using Iterator = std::map<std::string, History>::iterator;
    using ConstIterator = std::map<std::string, History>::const_iterator;
    /// @}

    /// The number of histories.
    std::size_t size() const noexcept { return m_data.size(); }

    /// The number of transactions in all histories. Takes time linear in the number of histories.
    std::size_t transactionCount() const noexcept;

    /// The count of an item set: the number of histories that contain it. Calls
    /// `History::contains` on each history, so it may copy every item. No result is cached.
    std::size_t count(const ItemSet& items) const;

    /// @{
    /// In ascending byte order of the keys.
    Iterator begin() noexcept { return m_data.begin(); }
    Iterator end() noexcept { return m_data.end(); }
    ConstIterator begin() const noexcept { return m_data.begin(); }
    ConstIterator end() const noexcept { return m_data.end(); }
    /// @}

    /// Merges a transaction file into the set. The first line is a header and is discarded. Each
    /// further row holds an entity's key, a time and any number of items. Rows may come in any
    /// order; rows of the same entity and time form one transaction. Cells may be quoted
    /// (`moxtel::io::RFC4180DelimitedRowFormat`) and are not trimmed. Empty item cells are skipped.
    /// No input is rejected: a time that is not a number reads as 0, and a row without a time cell
    /// takes its time from the row after it.
    ///
    /// Costs at most two map lookups per row, one set insertion per item, and the memory for the
    /// items of one row. Exceptions of the stream propagate; everything read before stays in the
    /// set, including the items of the row being read.
    void readInto(std::istream& in, char delim);

    /// The same, from the file `path`. A file that cannot be opened reads as empty. A read that
    /// fails throws `moxtel::io::FileError`.
    void readInto(const std::string& path, char delim);

  private:
    std::map<std::string, History> m_data;
};

}  // namespace quarvis::rule

#pragma GCC visibility pop
