#pragma once

#include <cstddef>
#include <iosfwd>
#include <map>
#include <string>
#include <utility>

#include <quarvis/item_set.hpp>

#pragma GCC visibility push(default)

namespace quarvis::rule {

/// Item sets and their counts, in the order of `ItemSet`. The count of an item set is the number of
/// histories that contain it. A lookup takes a number of item-set comparisons logarithmic in the
/// size.
class ItemSetHistogram {
  public:
    /// @{
    /// Iterates over pairs of an item set and its count.
    using Iterator = std::map<ItemSet, std::size_t>::iterator;
    using ConstIterator = std::map<ItemSet, std::size_t>::const_iterator;
    /// @}

    /// The number of item sets.
    std::size_t size() const noexcept { return m_data.size(); }

    /// The count of `is`, created as 0 when absent.
    std::size_t& operator[](const ItemSet& is) { return m_data[is]; }

    /// @{
    /// The count of `is`. Throws `std::out_of_range` when absent.
    std::size_t& at(const ItemSet& is) { return m_data.at(is); }
    const std::size_t& at(const ItemSet& is) const { return m_data.at(is); }
    /// @}

    /// @{
    /// An iterator to `is`, or `end()` when absent.
    Iterator find(const ItemSet& is) { return m_data.find(is); }
    ConstIterator find(const ItemSet& is) const { return m_data.find(is); }
    /// @}

    /// @{
    /// Adds `is` with `count` when absent; otherwise does nothing. Takes constant time for a set
    /// that comes after all others.
    void add(const ItemSet& is, std::size_t count) { m_data.try_emplace(m_data.end(), is, count); }
    void add(ItemSet&& is, std::size_t count) {
        m_data.try_emplace(m_data.end(), std::move(is), count);
    }
    /// @}

    /// Removes the entry at `it`, which must not be `end()`. Takes constant time.
    void erase(Iterator it) { m_data.erase(it); }

    /// Removes `is`, which must be present.
    void erase(const ItemSet& is) { m_data.erase(m_data.find(is)); }

    /// @{
    /// In the order of `ItemSet`.
    Iterator begin() noexcept { return m_data.begin(); }
    Iterator end() noexcept { return m_data.end(); }
    ConstIterator begin() const noexcept { return m_data.begin(); }
    ConstIterator end() const noexcept { return m_data.end(); }
    /// @}

    /// @{
    /// Does nothing: item-set files are written only, never read back. The stream stays unread.
    void readInto(std::istream& in, char delim);
    void readInto(const std::string& path, char delim);
    /// @}

    /// Writes the item-set file: the line "Count", tab, "Item Set", then one line per set with its
    /// count, a tab and the set in braces. The stream is flushed after each line, which costs one
    /// system call per line on a file.
    void write(std::ostream& os) const;

    /// The same, to the file `path`, which is replaced. Does nothing when the file cannot be
    /// opened. A write that fails throws `moxtel::io::FileError`; the file then ends with a whole
    /// line where the system allows it.
    void write(const std::string& path) const;

  private:
    std::map<ItemSet, std::size_t> m_data;
};

}  // namespace quarvis::rule

#pragma GCC visibility pop
