#include "history_index.hpp"

#include <algorithm>
#include <limits>
#include <numeric>
#include <stdexcept>

#include "interner.hpp"

namespace quarvis::rule {

namespace {

constexpr std::uint32_t NONE = std::numeric_limits<std::uint32_t>::max();

/// An item is given a bitmap when it is in more than one of this many histories.
constexpr std::size_t BITMAP_SPARSITY = 128;

std::uint32_t checked(std::size_t n) {
    if (n >= NONE)
        throw std::length_error("too many histories or items to index");
    return static_cast<std::uint32_t>(n);
}

/// The transactions once through, as far as the index needs them: every item in the order of its
/// first occurrence, and the occurrences as places in that order.
struct Occurrences {
    struct Item {
        const quarvis::rule::Item* name;
        std::uint32_t histories = 0;    // that it is in
        std::uint32_t occurrences = 0;  // transactions that it is in
        HistoryId last = NONE;          // the history that was counted last
    };
    struct Transaction {
        HistoryId history;
        History::Time time;
        std::uint32_t size;
    };
    std::vector<Item> items;
    std::vector<Transaction> transactions;
    std::vector<std::uint32_t> stream;  // item places, in the order of the transactions

    explicit Occurrences(const TransactionSet& txns) {
        Interner places;
        HistoryId history = 0;
        std::vector<const quarvis::rule::Item*> names;
        for (const auto& [key, times] : txns) {
            for (const auto& [time, itemSet] : times) {
                transactions.push_back({history, time, static_cast<std::uint32_t>(itemSet.size())});
                // Most of the time goes into waiting for the names, so those of a transaction are
                // asked for all at once.
                names.clear();
                for (const auto& name : itemSet) {
                    __builtin_prefetch(name.data());
                    names.push_back(&name);
                }
                for (const auto* const name : names)
                    m_add(*name, places.number(*name), history);
            }
            ++history;
        }
        checked(stream.size());
    }

  private:
    void m_add(const quarvis::rule::Item& name, std::uint32_t place, HistoryId history) {
        if (place == items.size())
            items.push_back({&name});
        Item& item = items[place];
        if (item.last != history) {
            item.last = history;
            ++item.histories;
        }
        ++item.occurrences;
        stream.push_back(place);
    }
};

}  // namespace

HistoryIndex::HistoryIndex(const TransactionSet& txns, std::size_t minCount) {
    checked(txns.size());
    const Occurrences all(txns);

    std::vector<std::uint32_t> frequent;  // places, by rank
    for (std::uint32_t place = 0; place < all.items.size(); ++place)
        if (all.items[place].histories >= minCount)
            frequent.push_back(place);
    std::sort(frequent.begin(), frequent.end(), [&all](std::uint32_t a, std::uint32_t b) {
        return *all.items[a].name < *all.items[b].name;
    });

    std::vector<Rank> rankOf(all.items.size(), NONE);
    std::vector<std::uint32_t> nextOccurrence;
    m_entryBegin.push_back(0);
    std::uint32_t occurrences = 0;
    for (const std::uint32_t place : frequent) {
        const Occurrences::Item& item = all.items[place];
        rankOf[place] = static_cast<Rank>(m_names.size());
        m_names.push_back(item.name);
        m_entryBegin.push_back(m_entryBegin.back() + item.histories);
        nextOccurrence.push_back(occurrences);
        occurrences += item.occurrences;
    }
    const std::size_t entries = m_entryBegin.back();
    m_items.reserve(entries);
    m_entryHistory.resize(entries);
    m_occurrenceBegin.resize(entries + 1);
    m_occurrenceBegin[entries] = occurrences;
    m_occurrences.resize(occurrences);

    std::vector<Entry> nextEntry(m_entryBegin.begin(), m_entryBegin.end() - 1);
    std::vector<HistoryId> lastHistory(itemCount(), NONE);
    m_historyBegin.push_back(0);
    const auto closeHistory = [this] {
        std::sort(m_items.begin() + m_historyBegin.back(), m_items.end());
        m_historyBegin.push_back(static_cast<std::uint32_t>(m_items.size()));
    };
    auto place = all.stream.begin();
    for (const auto& [history, time, size] : all.transactions) {
        while (historyCount() < history)
            closeHistory();
        for (std::uint32_t n = size; n > 0; --n) {
            const Rank item = rankOf[*place++];
            if (item == NONE)
                continue;
            if (lastHistory[item] != history) {
                lastHistory[item] = history;
                const Entry entry = nextEntry[item]++;
                m_entryHistory[entry] = history;
                m_occurrenceBegin[entry] = nextOccurrence[item];
                m_items.push_back(item);
            }
            m_occurrences[nextOccurrence[item]++] = time;
        }
    }
    while (historyCount() < txns.size())
        closeHistory();
    m_makeBitmaps();
}

void HistoryIndex::m_makeBitmaps() {
    const std::size_t words = (historyCount() + 63) / 64;
    m_bitmap.assign(itemCount(), NO_BITMAP);
    std::size_t size = 0;
    for (Rank item = 0; item < itemCount(); ++item)
        if (count(item) * BITMAP_SPARSITY > historyCount()) {
            m_bitmap[item] = size;
            size += words;
        }
    m_words.assign(size, 0);
    m_wordRank.resize(size);
    for (Rank item = 0; item < itemCount(); ++item) {
        if (!hasBitmap(item))
            continue;
        std::uint64_t* const bits = m_words.data() + m_bitmap[item];
        for (const HistoryId history : histories(item))
            bits[history / 64] |= std::uint64_t{1} << (history % 64);
        Entry entry = m_entryBegin[item];
        for (std::size_t word = 0; word < words; ++word) {
            m_wordRank[m_bitmap[item] + word] = entry;
            entry += static_cast<Entry>(std::popcount(bits[word]));
        }
    }
}

HistoryIndex::Entry HistoryIndex::m_searchEntry(Rank item, HistoryId history) const {
    const std::span<const HistoryId> all = histories(item);
    const auto found = std::lower_bound(all.begin(), all.end(), history);
    return m_entryBegin[item] + static_cast<Entry>(found - all.begin());
}

std::size_t HistoryIndex::memory() const {
    const auto bytes = [](const auto& array) { return array.capacity() * sizeof(array[0]); };
    return bytes(m_names) + bytes(m_historyBegin) + bytes(m_items) + bytes(m_entryBegin) +
           bytes(m_entryHistory) + bytes(m_occurrenceBegin) + bytes(m_occurrences) +
           bytes(m_bitmap) + bytes(m_words) + bytes(m_wordRank);
}

}  // namespace quarvis::rule
