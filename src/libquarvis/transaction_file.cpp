#include <algorithm>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <map>
#include <span>
#include <string>
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

/// Where the items of rows go. Rows of one entity, or of one transaction, often follow each other,
/// and so do entities in their order.
class Places {
  public:
    explicit Places(std::map<std::string, History>& histories)
        : m_histories(histories), m_entity(histories.end()) {}

    /// The transaction, created empty when absent.
    ItemSet& at(std::string_view key, History::Time time) {
        const int order = m_entity == m_histories.end() ? -1 : key.compare(m_entity->first);
        if (order != 0) {
            // A hint in vain costs a comparison of keys: it is given where the last row had the
            // last key.
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

/// Puts the items of a row into their set, in order: that takes a set less time than to find a
/// place for each, and sorting them by their first bytes as numbers takes less than comparing
/// names.
class Sorter {
  public:
    /// The texts, of strings, are moved away; empty ones are no items.
    template <class Text>
    void put(std::span<Text> texts, ItemSet& target) {
        if (texts.size() == 1 && !texts[0].empty()) {
            target.add(Item(std::move(texts[0])));
            return;
        }
        m_order.clear();
        for (std::size_t i = 0; i < texts.size(); ++i)
            if (!texts[i].empty())
                m_order.push_back({s_firstBytes(texts[i]), i});
        std::sort(m_order.begin(), m_order.end(), [&](const Entry& a, const Entry& b) {
            return a.firstBytes != b.firstBytes ? a.firstBytes < b.firstBytes
                                                : texts[a.text] < texts[b.text];
        });
        for (const Entry& entry : m_order)
            target.add(Item(std::move(texts[entry.text])));
    }

  private:
    struct Entry {
        std::uint64_t firstBytes;
        std::size_t text;
    };

    /// Numbers that are in the order of the texts, or equal; a text that ends counts as going on
    /// with zeros.
    static std::uint64_t s_firstBytes(std::string_view text) {
        std::uint64_t bytes = 0;
        std::memcpy(&bytes, text.data(), std::min(text.size(), sizeof(bytes)));
        return moxtel::toHostEndian64(bytes, moxtel::ENDIAN_BIG);
    }

    std::vector<Entry> m_order;
};

/// Reads the rows of a file.
class Rows {
  public:
    Rows(std::istream& in, char delim, Places places)
        : m_parser(DelimitedRowParser::createRFC4180(in, delim, nullptr)), m_places(places) {}

    /// Reads a row; whether there was one. What was read of a row when the stream throws, stays.
    bool readRow() {
        if (!m_parser.hasRow())
            return false;
        if (m_parser.takeRow(m_cells, 2))
            m_sorter.put(std::span(m_cells).subspan(2),
                         m_places.at(m_cells[0], s_timeOf(std::string(m_cells[1]))));
        else
            m_readCells();
        return true;
    }

  private:
    void m_readCells() {
        // A missing cell is no error: what follows the line end is read in its place.
        m_parser.hasCell();
        const std::string key = m_parser.nextCell();
        m_parser.hasCell();
        ItemSet& target = m_places.at(key, s_timeOf(m_parser.nextCell()));
        m_items.clear();
        try {
            while (m_parser.hasCell())
                if (Item item = m_parser.nextCell(); !item.empty())
                    m_items.push_back(std::move(item));
        } catch (...) {
            m_sorter.put(std::span(m_items), target);
            throw;
        }
        m_sorter.put(std::span(m_items), target);
    }

    static History::Time s_timeOf(const std::string& cell) { return parse<History::Time>(cell); }

    DelimitedRowParser m_parser;
    Places m_places;
    Sorter m_sorter;
    std::vector<std::string_view> m_cells;  ///< Of a row that stands in the buffer of the stream.
    std::vector<Item> m_items;              ///< Of any other.
};

}  // namespace

void TransactionSet::readInto(std::istream& in, char delim) {
    std::string header;
    std::getline(in, header);
    Rows rows(in, delim, Places(m_data));
    while (rows.readRow())
        continue;
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
