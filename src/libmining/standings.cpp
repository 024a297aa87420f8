#include "standings.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <cassert>
#include <cstring>
#include <limits>
#include <optional>
#include <stdexcept>
#include <utility>

#include "tasks.hpp"

namespace quarvis::mining {

namespace {

constexpr std::uint32_t NONE = std::numeric_limits<std::uint32_t>::max();
constexpr std::uint32_t IRRELEVANT = NONE - 1;

/// After this many histories, merging stops if fewer than a sixteenth of them had the masks of
/// another.
constexpr std::size_t TRIAL = 2048;

/// Up to this many items are sorted by counting, for each of them, the lesser ones.
constexpr std::size_t FEW = 32;

/// The bits [begin, end) of one word.
std::uint64_t rangeMask(std::size_t begin, std::size_t end) {
    return begin < end ? ~std::uint64_t{0} >> (64 - (end - begin)) << begin : 0;
}

/// Sets the bits [begin, end).
void setRange(std::uint64_t* words, std::size_t begin, std::size_t end) {
    while (begin < end) {
        const std::size_t bits = std::min(end - begin, 64 - begin % 64);
        words[begin / 64] |= rangeMask(begin % 64, begin % 64 + bits);
        begin += bits;
    }
}

void setBit(std::uint64_t* words, std::size_t bit) {
    words[bit / 64] |= std::uint64_t{1} << (bit % 64);
}

}  // namespace

/// Adds histories one by one, each in two passes over its transactions: the first finds the
/// moments, the second fills the masks.
class StandingsBuilder {
  public:
    /// Makes room for `entries` items of histories.
    StandingsBuilder(const HistoryIndex& index, const std::vector<bool>& relevant,
                     std::uint64_t window, std::size_t entries)
        : m_index(index), m_window(window), m_slotOf(index.itemCount()), m_table(64, NONE) {
        for (std::size_t item = 0; item < index.itemCount(); ++item)
            m_slotOf[item] = relevant[item] ? NONE : IRRELEVANT;
        m_made.m_items.reserve(entries);
        m_made.m_masks.reserve(2 * entries);
        m_made.m_orders.reserve(window == 0 ? entries : 0);
    }

    void add(HistoryId history) {
        m_readTransactions(history);
        if (m_moments > 0) {
            m_words = (m_moments + 63) / 64;
            m_slotMasks.assign(m_slotItems.size() * 3 * m_words, 0);
            if (m_words == 1)
                m_fillMasks<true>();
            else
                m_fillMasks<false>();
            m_keep();
        }
        for (const Rank item : m_slotItems)
            m_slotOf[at(item)] = NONE;
    }

    /// Adds the histories that another builder of the same index has made.
    void append(const StandingsBuilder& other) {
        const Standings& from = other.m_made;
        const bool areHashed = m_areHashed() && other.m_areHashed();
        for (std::size_t history = 0; history < from.historyCount(); ++history) {
            const Standings::History& original = from.m_histories[history];
            const std::size_t entries = from.endEntry(history) - original.entry;
            const std::size_t words = entries * original.words;
            Standings::History added = original;
            m_place(added, entries);
            s_extend(m_made.m_items, from.m_items, original.entry, entries);
            s_extend(m_made.m_masks, from.m_masks, 2 * original.mask, 2 * words);
            if (m_window == 0)
                s_extend(m_made.m_orders, from.m_orders, original.entry, entries);
            if (from.anyPresent()) {
                m_made.m_present.resize(added.mask, 0);
                s_extend(m_made.m_present, from.m_present, original.mask, words);
            } else if (m_made.anyPresent()) {
                m_made.m_present.resize(added.mask + words, 0);
            }
            if (areHashed)
                m_mergeLast(other.m_hashes[history]);
        }
    }

    /// Returns the standings so far, without the places of the items, and leaves this empty.
    Standings take() { return std::move(m_made); }

  private:
    /// A transaction with relevant items, whose occurrences end at `end` in m_occurrences.
    struct Transaction {
        std::uint64_t time;
        std::uint32_t end;
        std::uint32_t moments;  // the number of moments before it
        bool isMoment;
    };

    struct Occurrence {
        std::uint32_t slot;
        bool isFresh;
    };

    /// Finds the relevant occurrences of a history, and numbers its moments.
    void m_readTransactions(HistoryId history) {
        m_transactions.clear();
        m_occurrences.clear();
        m_slotItems.clear();
        m_last.clear();
        m_moments = 0;
        const std::size_t end = m_index.endTransaction(history);
        for (std::size_t place = m_index.firstTransaction(history); place < end; ++place) {
            const auto here = static_cast<std::uint32_t>(m_transactions.size());
            const std::uint64_t time = m_index.time(place);
            const std::size_t before = m_occurrences.size();
            bool anyFresh = false;
            for (const Rank item : m_index.items(place)) {
                std::uint32_t& slot = m_slotOf[at(item)];
                if (slot == IRRELEVANT)
                    continue;
                bool isFresh = slot == NONE;
                if (isFresh) {
                    slot = static_cast<std::uint32_t>(m_slotItems.size());
                    m_slotItems.push_back(item);
                    m_last.push_back(time);
                } else {
                    isFresh = !m_within(m_last[slot], time);
                    m_last[slot] = time;
                }
                m_occurrences.push_back({slot, isFresh});
                anyFresh = anyFresh || isFresh;
            }
            if (m_occurrences.size() == before)
                continue;
            const bool isMoment =
                anyFresh && here > 0 && m_within(m_transactions.back().time, time);
            m_transactions.push_back({time, static_cast<std::uint32_t>(m_occurrences.size()),
                                      static_cast<std::uint32_t>(m_moments), isMoment});
            m_moments += isMoment ? 1 : 0;
        }
    }

    bool m_within(std::uint64_t earlier, std::uint64_t later) const {
        return m_window == 0 || later - earlier <= m_window;
    }

    /// The masks of a slot, in the order new, recent, present.
    std::uint64_t* m_masksOf(std::size_t slot) { return &m_slotMasks[slot * 3 * m_words]; }

    template <bool ONE_WORD>
    void m_fillMasks() {
        const std::size_t words = ONE_WORD ? 1 : m_words;
        std::size_t after = 0;  // the first transaction for which the current one is too old
        std::size_t occurrence = 0;
        for (const Transaction& now : m_transactions) {
            while (after < m_transactions.size() && m_within(now.time, m_transactions[after].time))
                ++after;
            const std::size_t firstRecent = now.moments + (now.isMoment ? 1 : 0);
            const std::size_t endRecent =
                after < m_transactions.size() ? m_transactions[after].moments : m_moments;
            const std::uint64_t recent = ONE_WORD ? rangeMask(firstRecent, endRecent) : 0;
            for (; occurrence < now.end; ++occurrence) {
                const auto [slot, isFresh] = m_occurrences[occurrence];
                std::uint64_t* const fresh = &m_slotMasks[std::size_t{slot} * 3 * words];
                if (now.isMoment)
                    setBit(isFresh ? fresh : fresh + 2 * words, now.moments);
                if (ONE_WORD)
                    fresh[1] |= recent;
                else if (isFresh || m_window != 0)
                    setRange(fresh + words, firstRecent, endRecent);
            }
        }
    }

    /// Lists the slots of the items that are new or recent at some moment, by ascending item.
    void m_sortSlots() {
        m_order.clear();
        for (std::uint32_t slot = 0; slot < m_slotItems.size(); ++slot)
            if (std::any_of(m_masksOf(slot), m_masksOf(slot) + 2 * m_words,
                            [](std::uint64_t word) { return word != 0; }))
                m_order.push_back(slot);
        if (m_order.size() > FEW) {
            std::sort(m_order.begin(), m_order.end(), [this](std::uint32_t a, std::uint32_t b) {
                return m_slotItems[a] < m_slotItems[b];
            });
            return;
        }
        // Counting the lesser items takes no branches.
        std::array<std::uint32_t, FEW> items;
        std::array<std::uint32_t, FEW> slots;
        const std::size_t size = m_order.size();
        for (std::size_t i = 0; i < size; ++i) {
            slots[i] = m_order[i];
            items[i] = static_cast<std::uint32_t>(at(m_slotItems[slots[i]]));
        }
        for (std::size_t i = 0; i < size; ++i) {
            std::uint32_t lesser = 0;
            for (std::size_t j = 0; j < size; ++j)
                lesser += items[j] < items[i] ? 1 : 0;
            m_order[lesser] = slots[i];
        }
    }

    /// Adds the history, or its weight to a history with the same masks.
    void m_keep() {
        m_sortSlots();
        Standings::History added{0, 1, static_cast<std::uint32_t>(m_words), 0};
        m_place(added, m_order.size());
        m_append(added.entry, added.mask);
        if (++m_kept > TRIAL && 16 * m_alike < m_kept)
            return;
        m_mergeLast(m_hashFrom(added.entry, added.mask));
    }

    /// Adds a history of `entries` items. The items and their masks are appended later.
    void m_place(Standings::History& added, std::size_t entries) {
        const std::size_t entry = m_made.m_items.size();
        if (entry + entries >= NONE)
            throw std::length_error("too many items of histories");
        added.entry = static_cast<std::uint32_t>(entry);
        added.mask = m_made.m_masks.size() / 2;
        m_made.m_histories.push_back(added);
    }

    /// Appends `size` values of `from`, from `begin` on.
    template <class T>
    static void s_extend(LargeVector<T>& to, const LargeVector<T>& from, std::size_t begin,
                         std::size_t size) {
        to.insert(to.end(), from.data() + begin, from.data() + begin + size);
    }

    /// Whether merging has not stopped so far.
    bool m_areHashed() const { return m_hashes.size() == m_made.historyCount(); }

    /// If another history has the masks of the last one, whose hash this is, adds the weight of the
    /// last one to it and drops the last one.
    void m_mergeLast(std::uint64_t hash) {
        const auto number = static_cast<std::uint32_t>(m_made.historyCount() - 1);
        const std::uint32_t alike = m_findOrAdd(hash, number);
        if (alike == number)
            return;
        ++m_alike;
        const Standings::History last = m_made.m_histories.back();
        m_made.m_histories[alike].weight += last.weight;
        m_made.m_histories.pop_back();
        m_made.m_items.resize(last.entry);
        m_made.m_masks.resize(2 * last.mask);
        m_made.m_orders.resize(m_window == 0 ? last.entry : 0);
        m_made.m_present.resize(m_made.anyPresent() ? last.mask : 0, 0);
        m_hashes.resize(number);
    }

    /// Appends the items and their masks, which begin at `entry` and `mask`.
    void m_append(std::size_t entry, std::size_t mask) {
        m_made.m_items.resize(entry + m_order.size());
        m_made.m_masks.resize(2 * (mask + m_order.size() * m_words));
        Rank* item = &m_made.m_items[entry];
        std::uint64_t* target = &m_made.m_masks[2 * mask];
        std::uint64_t any = 0;
        for (const std::uint32_t slot : m_order) {
            const std::uint64_t* const masks = m_masksOf(slot);
            if (m_window == 0)
                m_made.m_orders.push_back(m_orderOf(masks));
            *item++ = m_slotItems[slot];
            target = std::copy(masks, masks + 2 * m_words, target);
            for (std::size_t word = 0; word < m_words; ++word)
                any |= masks[2 * m_words + word];
        }
        if (any == 0 && !m_made.anyPresent())
            return;
        m_made.m_present.resize(m_made.m_masks.size() / 2, 0);
        std::uint64_t* present = &m_made.m_present[mask];
        for (const std::uint32_t slot : m_order)
            present = std::copy_n(m_masksOf(slot) + 2 * m_words, m_words, present);
    }

    /// The order of an item (see `Standings::order`). Without a window an item is new at one moment
    /// at most: that of its first occurrence, unless it is in the first transaction.
    std::uint8_t m_orderOf(const std::uint64_t* fresh) const {
        const std::size_t words = std::min(m_words, Standings::ORDERED_WORDS);
        for (std::size_t word = 0; word < words; ++word)
            if (fresh[word] != 0) {
                assert(std::has_single_bit(fresh[word]));
                return static_cast<std::uint8_t>(
                    64 * word + static_cast<std::size_t>(std::countr_zero(fresh[word])) + 1);
            }
        return 0;
    }

    /// A hash of the items and masks from these places on.
    std::uint64_t m_hashFrom(std::size_t entry, std::size_t mask) const {
        std::uint64_t hash = m_words;
        for (; entry < m_made.m_items.size(); ++entry)
            s_mix(hash, at(m_made.m_items[entry]));
        for (std::size_t word = 2 * mask; word < m_made.m_masks.size(); ++word)
            s_mix(hash, m_made.m_masks[word]);
        return hash;
    }

    static void s_mix(std::uint64_t& hash, std::uint64_t word) {
        hash = (hash ^ word) * 0x9e3779b97f4a7c15U;
        hash ^= hash >> 32;
    }

    /// Returns the history with the masks of the last one; if there is none, adds the last one,
    /// `number`, and returns it.
    std::uint32_t m_findOrAdd(std::uint64_t hash, std::uint32_t number) {
        if (2 * m_made.historyCount() > m_table.size())
            m_growTable();
        m_hashes.push_back(hash);
        std::size_t slot = hash & (m_table.size() - 1);
        for (; m_table[slot] != NONE; slot = (slot + 1) & (m_table.size() - 1))
            if (m_hashes[m_table[slot]] == hash && m_areAlike(m_table[slot], number))
                return m_table[slot];
        m_table[slot] = number;
        return number;
    }

    bool m_areAlike(std::uint32_t a, std::uint32_t b) const {
        const Standings::History& left = m_made.m_histories[a];
        const Standings::History& right = m_made.m_histories[b];
        const std::size_t entries = m_made.endEntry(b) - right.entry;
        if (left.words != right.words || m_made.endEntry(a) - left.entry != entries)
            return false;
        const auto equal = [](const auto& array, std::size_t first, std::size_t second,
                              std::size_t size) {
            return std::equal(array.data() + first, array.data() + first + size,
                              array.data() + second);
        };
        const std::size_t words = entries * left.words;
        return equal(m_made.m_items, left.entry, right.entry, entries) &&
               equal(m_made.m_masks, 2 * left.mask, 2 * right.mask, 2 * words) &&
               (!m_made.anyPresent() || equal(m_made.m_present, left.mask, right.mask, words));
    }

    void m_growTable() {
        m_table.assign(2 * m_table.size(), NONE);
        for (std::uint32_t history = 0; history < m_hashes.size(); ++history) {
            std::size_t slot = m_hashes[history] & (m_table.size() - 1);
            while (m_table[slot] != NONE)
                slot = (slot + 1) & (m_table.size() - 1);
            m_table[slot] = history;
        }
    }

    Standings m_made;
    const HistoryIndex& m_index;
    std::uint64_t m_window;

    // The current history. Its distinct items have slots, in the order of their first occurrence.
    std::vector<std::uint32_t> m_slotOf;  // by rank, or NONE, or IRRELEVANT
    std::vector<Rank> m_slotItems;
    std::vector<Occurrence> m_occurrences;  // of all its transactions
    std::vector<Transaction> m_transactions;
    std::vector<std::uint64_t> m_last;  // by slot: its last time
    std::size_t m_moments = 0;
    std::size_t m_words = 0;
    std::vector<std::uint64_t> m_slotMasks;
    std::vector<std::uint32_t> m_order;

    std::size_t m_kept = 0;
    std::size_t m_alike = 0;
    std::vector<std::uint32_t> m_table;   // histories by hash, or NONE
    std::vector<std::uint64_t> m_hashes;  // by history
};

Standings::Standings(const Shard& shard, const std::vector<bool>& relevant, std::uint64_t window,
                     unsigned threads, Step& step) {
    std::size_t entries = 0;
    for (std::uint32_t item = 0; item < relevant.size(); ++item)
        if (relevant[item])
            entries += shard.index->count(Rank{item});
    // Unused room costs nothing, but growing does.
    entries = std::min(entries, shard.index->occurrenceCount());
    std::vector<std::optional<StandingsBuilder>> builders(threads);
    workOnParts(threads, step, [&](std::size_t part) {
        Work work(step);
        StandingsBuilder builder(*shard.index, relevant, window,
                                 part == 0 ? entries : entries / threads);
        const Shard own = shard.part(part, threads);
        for (std::size_t history = own.begin; history < own.end; ++history) {
            const HistoryId id{static_cast<std::uint32_t>(history)};
            builder.add(id);
            work.add(50 *
                     (1 + shard.index->endTransaction(id) - shard.index->firstTransaction(id)));
        }
        builders[part].emplace(std::move(builder));
    });
    for (std::size_t part = 1; part < threads; ++part)
        builders.front()->append(*builders[part]);
    *this = builders.front()->take();
    m_listPlaces(shard.index->itemCount(), threads, step);
}

void Standings::m_listPlaces(std::size_t items, unsigned threads, Step& step) {
    /// By part of the histories and by item: the number of places, then where the next one goes.
    std::vector<std::vector<std::uint32_t>> next(threads);
    const auto onHistories = [&](std::size_t part, auto each) {
        const auto [begin, end] = partOf(historyCount(), part, threads);
        for (std::size_t history = begin; history < end; ++history)
            each(static_cast<std::uint32_t>(history), m_histories[history].entry,
                 static_cast<std::uint32_t>(endEntry(history)));
    };
    workOnParts(threads, step, [&](std::size_t part) {
        std::vector<std::uint32_t> counts(items);
        onHistories(part, [&](std::uint32_t, std::uint32_t entry, std::uint32_t end) {
            for (; entry < end; ++entry)
                ++counts[at(m_items[entry])];
        });
        next[part] = std::move(counts);
    });
    m_begin.assign(items + 1, 0);
    for (std::size_t item = 0; item < items; ++item) {
        m_begin[item + 1] = m_begin[item];
        for (std::vector<std::uint32_t>& places : next)
            m_begin[item + 1] += std::exchange(places[item], m_begin[item + 1]);
    }
    m_places.resize(m_items.size());
    workOnParts(threads, step, [&](std::size_t part) {
        std::uint32_t* const place = next[part].data();
        onHistories(part, [&](std::uint32_t history, std::uint32_t entry, std::uint32_t end) {
            for (; entry < end; ++entry)
                m_places[place[at(m_items[entry])]++] = {history, entry};
        });
    });
}

}  // namespace quarvis::mining
