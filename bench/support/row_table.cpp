#include "row_table.hpp"

#include <cstdio>
#include <numeric>
#include <string>
#include <utility>
#include <vector>

#include "draws.hpp"

namespace bench {

namespace {

constexpr std::uint64_t SEED = 4180;
constexpr std::size_t KEY_AND_TIME = 9 + 1 + 9;
constexpr std::size_t TAB_AND_ITEM = 1 + 8;

/// A well mixed function of the number (Steele, Lea, Flood: Fast Splittable Pseudorandom Number
/// Generators, 2014).
std::uint64_t mixed(std::uint64_t n) {
    n += 0x9e3779b97f4a7c15U;
    n = (n ^ (n >> 30)) * 0xbf58476d1ce4e5b9U;
    n = (n ^ (n >> 27)) * 0x94d049bb133111ebU;
    return n ^ (n >> 31);
}

void appendDigits(std::string& text, char prefix, std::size_t number, std::size_t width) {
    text += prefix;
    text.append(width - 1, '0');
    for (std::size_t at = text.size(); number != 0; number /= 10)
        text[--at] = static_cast<char>('0' + number % 10);
}

}  // namespace

std::size_t RowTable::rowSize() const {
    return KEY_AND_TIME + itemsOfRow * TAB_AND_ITEM + 1;
}

void RowTable::write(std::ostream& os) const {
    std::vector<std::uint32_t> order(rows);
    std::iota(order.begin(), order.end(), 0U);
    Draws draws(SEED);
    for (std::size_t left = shuffled ? rows : 0; left > 1; --left)
        std::swap(order[left - 1], order[draws.below(left)]);

    os << "entity\ttime\titems\n";
    std::string line;
    for (const std::uint32_t row : order) {
        line.clear();
        appendDigits(line, 'e', row / rowsOfEntity, 9);
        line += '\t';
        appendDigits(line, '1', row % rowsOfEntity, 9);
        for (std::uint64_t i = 0; i < itemsOfRow; ++i) {
            line += '\t';
            appendDigits(line, 'i', mixed(row * std::uint64_t{itemsOfRow} + i) % items, 8);
        }
        os << line << '\n';
    }
}

}  // namespace bench
