#include <algorithm>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include <moxtel/integer.hpp>
#include <moxtel/parse.hpp>
#include <moxtel/table.hpp>

#include <quarvis/history.hpp>

namespace quarvis::rule {

using moxtel::io::DelimitedRowParser;
using moxtel::string::parse;

namespace {

/// The rows of a file, one after the other.
class Rows {
  public:
    Rows(std::istream& in, char delim)
        : m_parser(DelimitedRowParser::createRFC4180(in, delim, nullptr)) {}

    /// Whether there was another row, which is then the one that the others tell of.
    bool next() {
        if (!m_parser.hasRow())
            return false;
        if (!m_parser.takeRow(m_cells, 2))
            m_readCells();
        return true;
    }

    std::string_view key() const { return m_cells[0]; }
    History::Time time() const { return parse<History::Time>(std::string(m_cells[1])); }
    std::span<const std::string_view> items() const { return std::span(m_cells).subspan(2); }

  private:
    void m_readCells() {
        m_texts.clear();
        // A missing cell is no error: what follows the line end is read in its place.
        for (int i = 0; i < 2; ++i) {
            m_parser.hasCell();
            m_texts.push_back(m_parser.nextCell());
        }
        while (m_parser.hasCell())
            m_texts.push_back(m_parser.nextCell());
        m_cells.assign(m_texts.begin(), m_texts.end());
    }

    DelimitedRowParser m_parser;
    std::vector<std::string_view> m_cells;
    std::vector<std::string> m_texts;  ///< Cells that are in no buffer.
};

/// Puts the items of a row into their set, in order: that takes a set less time than to find a
/// place for each, and sorting them by their first bytes as numbers takes less than comparing
/// names.
class SortedItems {
  public:
    void put(std::span<const std::string_view> items, ItemSet& target) {
        if (items.size() == 1 && !items[0].empty()) {
            target.add(Item(items[0]));
            return;
        }
        m_order.clear();
        for (const std::string_view item : items)
            if (!item.empty())
                m_order.push_back({s_firstBytes(item), item});
        std::sort(m_order.begin(), m_order.end());
        for (const Place& place : m_order)
            target.add(Item(place.item));
    }

  private:
    struct Place {
        std::uint64_t firstBytes;
        std::string_view item;

        bool operator<(const Place& other) const {
            return firstBytes != other.firstBytes ? firstBytes < other.firstBytes
                                                  : item < other.item;
        }
    };

    /// Numbers that are in the order of the texts, or equal; a text that ends counts as going on
    /// with zeros.
    static std::uint64_t s_firstBytes(std::string_view item) {
        std::uint64_t bytes = 0;
        std::memcpy(&bytes, item.data(), std::min(item.size(), sizeof(bytes)));
        return moxtel::toHostEndian64(bytes, moxtel::ENDIAN_BIG);
    }

    std::vector<Place> m_order;
};

}  // namespace

void TransactionSet::readInto(std::istream& in, char delim) {
    std::string header;
    std::getline(in, header);
    Rows rows(in, delim);
    SortedItems items;
    // Rows of one entity, or of one transaction, often follow each other, and so do entities in
    // their order.
    auto entity = m_data.end();
    History::Time lastTime = 0;
    ItemSet* transaction = nullptr;
    while (rows.next()) {
        const int order = entity == m_data.end() ? -1 : rows.key().compare(entity->first);
        if (order != 0) {
            std::string key(rows.key());
            entity = order > 0 && entity == std::prev(m_data.end())
                         ? m_data.try_emplace(m_data.end(), std::move(key))
                         : m_data.try_emplace(std::move(key)).first;
            transaction = nullptr;
        }
        const History::Time time = rows.time();
        if (transaction == nullptr || time != lastTime) {
            transaction = &entity->second[time];
            lastTime = time;
        }
        items.put(rows.items(), *transaction);
    }
}

void TransactionSet::readInto(const std::string& path, char delim) {
    // Larger than a stream's own: a row that reaches over its end is read cell by cell.
    std::vector<char> buffer(1 << 16);
    std::ifstream in;
    in.rdbuf()->pubsetbuf(buffer.data(), static_cast<std::streamsize>(buffer.size()));
    in.open(path);
    readInto(in, delim);
}

}  // namespace quarvis::rule
