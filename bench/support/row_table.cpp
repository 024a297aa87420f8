#include "row_table.hpp"

#include <string>
#include <vector>

#include "digits.hpp"
#include "draws.hpp"
#include "shuffle.hpp"

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

}  // namespace

std::size_t RowTable::rowSize() const {
    return KEY_AND_TIME + itemsOfRow * TAB_AND_ITEM + 1;
}

void RowTable::write(std::ostream& os) const {
    Draws draws(SEED);
    const std::vector<std::uint32_t> order = shuffledNumbers(shuffled ? rows : 0, draws);

    os << "entity\ttime\titems\n";
    std::string line;
    for (std::size_t i = 0; i < rows; ++i) {
        const std::size_t row = shuffled ? order[i] : i;
        line.clear();
        appendDigits(line, 'e', row / rowsOfEntity, 9);
        line += '\t';
        appendDigits(line, '1', row % rowsOfEntity, 9);
        for (std::size_t cell = 0; cell < itemsOfRow; ++cell) {
            line += '\t';
            appendDigits(line, 'i', mixed(row * itemsOfRow + cell) % items, 8);
        }
        os << line << '\n';
    }
}

}  // namespace bench
