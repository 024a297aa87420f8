#pragma once

#include <cstddef>
#include <ostream>
#include <string>
#include <vector>

#include "oracle/random_table.hpp"

namespace mining_tests {

/// Random tables of a shape, as a parameter of tests.
struct Series {
    oracle::TableShape shape;
    std::size_t tables;  ///< How many of them are tried.
};

inline std::ostream& operator<<(std::ostream& os, const Series& series) {
    return os << series.shape;
}

/// The names item0, item1...
inline std::vector<std::string> itemNames(std::size_t number) {
    std::vector<std::string> names;
    for (std::size_t i = 0; i < number; ++i)
        names.push_back("item" + std::to_string(i));
    return names;
}

}  // namespace mining_tests
