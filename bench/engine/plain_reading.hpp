#pragma once

#include <compare>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

/// Transaction files read by `std::getline` and `find`: what reading is compared with. Only files
/// without quotes, with an entity and a time in each row, are read right.
namespace bench {

/// Histories as sets and strings, like those of the rule model.
using PlainHistories = std::map<std::string, std::map<unsigned int, std::set<std::string>>>;

/// Each cell is looked up in its container.
PlainHistories readPlainly(const std::string& path);

/// With two shortcuts of the library that are none of the reading of text: rows of one entity often
/// follow each other, items often come in order.
PlainHistories readWithHints(const std::string& path);

/// Histories as numbers, like those of the index: sorted rows without repetition. Entities are
/// numbered as they come, items in byte order.
struct FlatHistories {
    struct Row {
        std::uint32_t entity;
        std::uint32_t time;
        std::uint32_t item;

        auto operator<=>(const Row&) const = default;
    };

    std::vector<std::string> entities;
    std::vector<std::string> items;
    std::vector<Row> rows;
};

/// Names are numbered by `std::unordered_map`, rows are sorted by `std::sort`.
FlatHistories readFlat(const std::string& path);

}  // namespace bench
