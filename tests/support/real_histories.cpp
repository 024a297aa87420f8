#include "support/real_histories.hpp"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <istream>
#include <set>
#include <sstream>

namespace support {

namespace {

std::filesystem::path pathOf(const std::string& file) {
    const char* const folder = std::getenv("QUARVIS_DATA");
    return folder == nullptr ? std::filesystem::path() : std::filesystem::path(folder) / file;
}

/// The header of a transaction file and the rows of its first `number` entities.
std::string rowsOf(std::istream& file, std::size_t number) {
    std::set<std::string> entities;
    std::string rows;
    std::string row;
    std::getline(file, row);
    rows += row + '\n';
    while (std::getline(file, row)) {
        const std::string entity = row.substr(0, row.find('\t'));
        if (entities.size() < number)
            entities.insert(entity);
        if (entities.contains(entity))
            rows += row + '\n';
    }
    return rows;
}

}  // namespace

bool hasRealFile(const std::string& file) {
    return std::filesystem::is_regular_file(pathOf(file));
}

quarvis::rule::TransactionSet realHistories(const std::string& file, std::size_t histories) {
    std::ifstream stream(pathOf(file));
    std::istringstream rows(rowsOf(stream, histories));
    quarvis::rule::TransactionSet txns;
    txns.readInto(rows, '\t');
    return txns;
}

}  // namespace support
