#pragma once

#include <compare>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

/// Reads transaction files by `std::getline` and `find`, for comparison. Files must have no quotes,
/// and each row must have an entity and a time.
namespace bench {

/// Histories as sets and strings, like those of the rule model.
using PlainHistories = std::map<std::string, std::map<unsigned int, std::set<std::string>>>;

/// Each cell is looked up in its container.
PlainHistories readPlainly(const std::string& path);

/// Takes two shortcuts that the library takes too and that do not concern text: rows of one entity
/// are often adjacent, and items often come in order.
PlainHistories readWithHints(const std::string& path);

/// Histories as numbers, like those of the index: sorted rows without repetition. Entities are
/// numbered as they are met, items in byte order.
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
