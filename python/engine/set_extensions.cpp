#include "set_extensions.hpp"

#include <algorithm>
#include <cstddef>
#include <span>
#include <utility>

/// \file
/// Finds the closed and the maximal sets (Pasquier, Bastide, Taouil, Lakhal: Discovering Frequent
/// Closed Itemsets for Association Rules, 1999; Bayardo: Efficiently Mining Long Patterns from
/// Databases, 1998). By anti-monotonicity, only extensions by one item need to be compared. So each
/// set marks its subsets that lack one item. One depth-first walk of the trie finds them. For each
/// item of a prefix, the place of the prefix without that item is known from the step before, and
/// an extended prefix without the same item is an extension of that place. So two sorted lists of
/// siblings are merged, and no set is searched from the root.
namespace binding {

using quarvis::mining::ItemSets;
using quarvis::mining::Level;
using quarvis::mining::Rank;

namespace {

constexpr std::uint8_t EXTENDED = 1;
constexpr std::uint8_t EXTENDED_BY_AS_MANY = 2;

class Extensions {
  public:
    Extensions(const Found& found, Watch& watch)
        : m_found(found), m_sets(*found.itemSets), m_watch(watch), m_marks(m_sets.levels()) {
        for (std::size_t size = 1; size <= m_sets.levels(); ++size)
            m_marks[size - 1].resize(m_sets.count(size));
        m_lacking.resize(m_sets.levels() + 1);
    }

    void run() {
        for (std::size_t item = 0; item < m_sets.count(1); ++item) {
            m_watch.progressed(item, m_sets.count(1));
            m_visit(1, item, {});
        }
    }

    std::vector<std::uint8_t> notClosed;
    std::vector<std::uint8_t> notMaximal;

  private:
    /// `lacking[i]` is the place of the set without its item i, for all items but the last; without
    /// the last item the set is its prefix. A subset that lacks one item is the prefix or comes
    /// later in the walk, so all marks of a set are made when the walk leaves it.
    void m_visit(std::size_t size, std::size_t set, std::span<const std::uint32_t> lacking) {
        m_watch.endIfAsked();
        const Level& level = m_sets.level(size);
        if (size > 1) {
            for (const std::uint32_t place : lacking)
                m_mark(size - 1, place, level.count[set]);
            m_mark(size - 1, level.prefix[set], level.count[set]);
        }
        const std::size_t begin = level.extensions[set];
        const std::size_t end = level.extensions[set + 1];
        if (begin != end) {
            m_findLacking(size, set, lacking);
            for (std::size_t extension = begin; extension < end; ++extension)
                m_visit(size + 1, extension,
                        std::span(m_lacking[size]).subspan((extension - begin) * size, size));
        }
        m_leave(m_marks[size - 1][set]);
    }

    /// Finds, for each extension of the set, the places of its subsets that lack one of the set's
    /// items.
    void m_findLacking(std::size_t size, std::size_t set, std::span<const std::uint32_t> lacking) {
        const Level& level = m_sets.level(size);
        const Level& above = m_sets.level(size + 1);
        const std::size_t begin = level.extensions[set];
        const std::size_t end = level.extensions[set + 1];
        std::vector<std::uint32_t>& places = m_lacking[size];
        places.resize((end - begin) * size);
        for (std::size_t item = 0; item < size; ++item) {
            // The set without the item is the prefix of the wanted subsets.
            auto sibling = level.last.begin();
            auto last = level.last.end();
            if (size > 1) {
                const Level& below = m_sets.level(size - 1);
                const std::size_t part = item + 1 < size ? lacking[item] : level.prefix[set];
                last = sibling + static_cast<std::ptrdiff_t>(below.extensions[part + 1]);
                sibling += static_cast<std::ptrdiff_t>(below.extensions[part]);
            }
            for (std::size_t extension = begin; extension < end; ++extension) {
                sibling = s_find(sibling, last, above.last[extension]);
                places[(extension - begin) * size + item] =
                    static_cast<std::uint32_t>(sibling - level.last.begin());
            }
        }
    }

    using Items = std::vector<Rank>::const_iterator;

    /// The first item that is not before the given one. Takes steps logarithmic in its distance.
    static Items s_find(Items begin, Items end, Rank item) {
        std::ptrdiff_t step = 1;
        while (end - begin > step && begin[step] < item) {
            begin += step;
            step *= 2;
        }
        return std::lower_bound(begin, begin + std::min(step + 1, end - begin), item);
    }

    void m_mark(std::size_t size, std::size_t set, std::uint32_t count) {
        std::uint8_t& mark = m_marks[size - 1][set];
        if (mark == (EXTENDED | EXTENDED_BY_AS_MANY))
            return;
        mark = m_sets.level(size).count[set] == count ? EXTENDED | EXTENDED_BY_AS_MANY : EXTENDED;
    }

    void m_leave(std::uint8_t mark) {
        if (m_found.listed.empty() || m_found.listed[m_place] != 0) {
            notMaximal.push_back((mark & EXTENDED) != 0 ? 1 : 0);
            notClosed.push_back((mark & EXTENDED_BY_AS_MANY) != 0 ? 1 : 0);
        }
        ++m_place;
    }

    const Found& m_found;
    const ItemSets& m_sets;
    Watch& m_watch;
    std::vector<std::vector<std::uint8_t>> m_marks;     // by size and place in the level
    std::vector<std::vector<std::uint32_t>> m_lacking;  // by size of the prefix, along one path
    std::size_t m_place = 0;                            // in the order of the file
};

}  // namespace

Columns itemSetExtensions(const Found& found, Watch& watch) {
    watch.beginStep("extensions");
    Extensions extensions(found, watch);
    watch.runInTime([&] { extensions.run(); }, *found.itemSets);
    Columns columns;
    columns["not_closed"] = arrayOf(std::move(extensions.notClosed));
    columns["not_maximal"] = arrayOf(std::move(extensions.notMaximal));
    return columns;
}

}  // namespace binding
