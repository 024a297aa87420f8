#include <algorithm>
#include <cstdint>
#include <fstream>
#include <utility>
#include <vector>

#include <moxtel/parse.hpp>
#include <moxtel/table.hpp>

#include <quarvis/history.hpp>

namespace quarvis::rule {

using moxtel::io::DelimitedRowParser;
using moxtel::string::parse;

namespace {

/// The items of one row. They go into their set in order, which takes a set less time than to find
/// a place for each, and sorting them by their first bytes as numbers takes less than comparing
/// names.
class RowItems {
  public:
    void add(Item&& item) { m_items.push_back(std::move(item)); }

    void moveInto(ItemSet& target) {
        if (m_items.size() == 1)
            target.add(std::move(m_items.front()));
        else
            m_moveSorted(target);
        m_items.clear();
    }

  private:
    struct Place {
        std::uint64_t firstBytes;
        std::size_t item;
    };

    void m_moveSorted(ItemSet& target) {
        m_order.clear();
        for (const Item& item : m_items)
            m_order.push_back({s_firstBytes(item), m_order.size()});
        std::sort(m_order.begin(), m_order.end(), [this](const Place& a, const Place& b) {
            return a.firstBytes != b.firstBytes ? a.firstBytes < b.firstBytes
                                                : m_items[a.item] < m_items[b.item];
        });
        for (const Place& place : m_order)
            target.add(std::move(m_items[place.item]));
    }

    /// Numbers that are in the order of the texts, or equal; a text that ends counts as going on
    /// with zeros.
    static std::uint64_t s_firstBytes(const Item& item) {
        std::uint64_t bytes = 0;
        for (std::size_t i = 0; i < sizeof(bytes); ++i)
            bytes = bytes << 8 | (i < item.size() ? static_cast<unsigned char>(item[i]) : 0U);
        return bytes;
    }

    std::vector<Item> m_items;
    std::vector<Place> m_order;
};

}  // namespace

void TransactionSet::readInto(std::istream& in, char delim) {
    std::string header;
    std::getline(in, header);
    DelimitedRowParser rows = DelimitedRowParser::createRFC4180(in, delim, nullptr);
    RowItems items;
    // Rows of one entity, or of one transaction, often follow each other.
    auto entity = m_data.end();
    History::Time lastTime = 0;
    ItemSet* transaction = nullptr;
    while (rows.hasRow()) {
        // A missing cell is no error: what follows the line end is read in its place.
        rows.hasCell();
        std::string key = rows.nextCell();
        rows.hasCell();
        const History::Time time = parse<History::Time>(rows.nextCell());
        if (entity == m_data.end() || entity->first != key) {
            entity = m_data.try_emplace(std::move(key)).first;
            transaction = nullptr;
        }
        if (transaction == nullptr || time != lastTime) {
            transaction = &entity->second[time];
            lastTime = time;
        }
        while (rows.hasCell()) {
            Item item = rows.nextCell();
            if (!item.empty())
                items.add(std::move(item));
        }
        items.moveInto(*transaction);
    }
}

void TransactionSet::readInto(const std::string& path, char delim) {
    std::ifstream in(path);
    readInto(in, delim);
}

}  // namespace quarvis::rule
