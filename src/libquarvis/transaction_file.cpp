#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <moxtel/integer.hpp>

#include <quarvis/history.hpp>
#include <quarvis/transaction_reader.hpp>

namespace quarvis::rule {

namespace {

/// Finds the transaction that a row belongs to. Fast when successive rows have the same entity or
/// the same transaction, and when entities come in ascending order.
class Places {
  public:
    explicit Places(std::map<std::string, History>& histories)
        : m_histories(histories), m_entity(histories.end()) {}

    /// The transaction, created empty when absent.
    ItemSet& at(std::string_view key, History::Time time) {
        const int order = m_entity == m_histories.end() ? -1 : key.compare(m_entity->first);
        if (order != 0) {
            // A useless hint costs a comparison of keys. So the hint is given only when the row
            // before had the greatest key.
            m_entity = order > 0 && m_entity == std::prev(m_histories.end())
                           ? m_histories.try_emplace(m_histories.end(), std::string(key))
                           : m_histories.try_emplace(std::string(key)).first;
            m_transaction = nullptr;
        }
        if (m_transaction == nullptr || time != m_time) {
            m_transaction = &m_entity->second[time];
            m_time = time;
        }
        return *m_transaction;
    }

  private:
    std::map<std::string, History>& m_histories;
    std::map<std::string, History>::iterator m_entity;
    ItemSet* m_transaction = nullptr;
    History::Time m_time = 0;
};

/// Inserts the items of a row into their set in ascending order, which is faster than a search for
/// each item. Sorts by the first bytes as numbers, which is faster than comparing names.
class Sorter {
  public:
    void put(std::span<const std::string_view> texts, ItemSet& target) {
        if (texts.size() == 1) {
            target.add(Item(texts[0]));
            return;
        }
        m_order.clear();
        for (std::size_t i = 0; i < texts.size(); ++i)
            m_order.push_back({s_firstBytes(texts[i]), i});
        std::sort(m_order.begin(), m_order.end(), [&](const Entry& a, const Entry& b) {
            return a.firstBytes != b.firstBytes ? a.firstBytes < b.firstBytes
                                                : texts[a.text] < texts[b.text];
        });
        for (const Entry& entry : m_order)
            target.add(Item(texts[entry.text]));
    }

  private:
    struct Entry {
        std::uint64_t firstBytes;
        std::size_t text;
    };

    /// The first eight bytes as a number, padded with zeros. The numbers of two texts are in the
    /// order of the texts, or equal.
    static std::uint64_t s_firstBytes(std::string_view text) {
        std::uint64_t bytes = 0;
        std::memcpy(&bytes, text.data(), std::min(text.size(), sizeof(bytes)));
        return moxtel::toHostEndian64(bytes, moxtel::ENDIAN_BIG);
    }

    std::vector<Entry> m_order;
};

}  // namespace

void TransactionSet::readInto(std::istream& in, char delim) {
    TransactionReader rows(in, delim);
    Places places(m_data);
    Sorter sorter;
    while (rows.next())
        sorter.put(rows.items(), places.at(rows.entity(), rows.time()));
}

void TransactionSet::readInto(const std::string& path, char delim) {
    TransactionFile file(path);
    readInto(file.stream(), delim);
}

}  // namespace quarvis::rule
