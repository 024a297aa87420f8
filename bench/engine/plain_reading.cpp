#include "plain_reading.hpp"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <numeric>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace bench {

namespace {

/// Calls `beginRow(entity, time)` and `item(text)` for the cells of the file. Empty items are
/// skipped.
template <class BeginRow, class Item>
void readCells(const std::string& path, BeginRow beginRow, Item item) {
    std::ifstream in(path);
    std::string line;
    std::getline(in, line);
    while (std::getline(in, line)) {
        const std::string_view cells = line;
        std::size_t tab = cells.find('\t');
        const auto time =
            static_cast<unsigned int>(std::strtoul(line.c_str() + tab + 1, nullptr, 10));
        beginRow(cells.substr(0, tab), time);
        tab = cells.find('\t', tab + 1);
        while (tab != std::string_view::npos) {
            const std::size_t begin = tab + 1;
            tab = cells.find('\t', begin);
            if (const std::size_t end = std::min(tab, cells.size()); end != begin)
                item(cells.substr(begin, end - begin));
        }
    }
}

struct TextHash {
    using is_transparent = void;  // NOLINT(readability-identifier-naming): the standard's name
    std::size_t operator()(std::string_view text) const {
        return std::hash<std::string_view>()(text);
    }
};

/// Numbers names from 0 on, in the order in which they are met.
class Numbers {
  public:
    std::uint32_t of(std::string_view name) {
        if (const auto known = m_numbers.find(name); known != m_numbers.end())
            return known->second;
        const auto number = static_cast<std::uint32_t>(m_names.size());
        m_numbers.emplace(name, number);
        m_names.emplace_back(name);
        return number;
    }

    std::vector<std::string> takeNames() { return std::move(m_names); }

  private:
    std::unordered_map<std::string, std::uint32_t, TextHash, std::equal_to<>> m_numbers;
    std::vector<std::string> m_names;
};

/// Numbers the items in byte order, and renumbers them in the rows.
void sortItems(FlatHistories& histories) {
    std::vector<std::uint32_t> order(histories.items.size());
    std::iota(order.begin(), order.end(), 0U);
    std::sort(order.begin(), order.end(), [&](std::uint32_t a, std::uint32_t b) {
        return histories.items[a] < histories.items[b];
    });
    std::vector<std::uint32_t> rank(order.size());
    std::vector<std::string> items;
    for (const std::uint32_t item : order) {
        rank[item] = static_cast<std::uint32_t>(items.size());
        items.push_back(std::move(histories.items[item]));
    }
    histories.items = std::move(items);
    for (FlatHistories::Row& row : histories.rows)
        row.item = rank[row.item];
}

}  // namespace

PlainHistories readPlainly(const std::string& path) {
    PlainHistories histories;
    std::set<std::string>* items = nullptr;
    readCells(
        path,
        [&](std::string_view entity, unsigned int time) {
            items = &histories[std::string(entity)][time];
        },
        [&](std::string_view item) { items->insert(std::string(item)); });
    return histories;
}

PlainHistories readWithHints(const std::string& path) {
    PlainHistories histories;
    PlainHistories::iterator history = histories.end();
    std::set<std::string>* items = nullptr;
    readCells(
        path,
        [&](std::string_view entity, unsigned int time) {
            if (history == histories.end() || history->first != entity)
                history = histories.try_emplace(std::string(entity)).first;
            items = &history->second[time];
        },
        [&](std::string_view item) { items->insert(items->end(), std::string(item)); });
    return histories;
}

FlatHistories readFlat(const std::string& path) {
    Numbers entities;
    Numbers items;
    FlatHistories histories;
    FlatHistories::Row row{};
    readCells(
        path,
        [&](std::string_view entity, unsigned int time) {
            row.entity = entities.of(entity);
            row.time = time;
        },
        [&](std::string_view item) {
            row.item = items.of(item);
            histories.rows.push_back(row);
        });
    histories.entities = entities.takeNames();
    histories.items = items.takeNames();
    sortItems(histories);
    std::sort(histories.rows.begin(), histories.rows.end());
    histories.rows.erase(std::unique(histories.rows.begin(), histories.rows.end()),
                         histories.rows.end());
    histories.rows.shrink_to_fit();
    return histories;
}

}  // namespace bench
