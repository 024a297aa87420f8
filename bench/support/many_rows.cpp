#include "many_rows.hpp"

#include <algorithm>
#include <string>
#include <vector>

#include "digits.hpp"
#include "draws.hpp"
#include "shuffle.hpp"
#include "zipf.hpp"

namespace bench {

namespace {

constexpr std::size_t BLOCK = std::size_t{1} << 20;  // bytes
constexpr double MEAN_ROWS = 10;                     // of an entity
constexpr std::uint64_t FIRST_TIME = 1'000'000;
constexpr std::uint64_t STARTS = 8'000'000;
constexpr std::uint64_t GREATEST_GAP = 10'000;

}  // namespace

std::size_t ManyRows::write(std::ostream& os) const {
    Draws draws(seed);
    const Zipf frequency(items, exponent);
    const std::vector<std::uint32_t> name = shuffledNumbers(items, draws);

    std::string block = "entity\ttime\titem\n";
    std::size_t entities = 0;
    for (std::size_t left = rows; left > 0; ++entities) {
        std::uint64_t time = FIRST_TIME + draws.below(STARTS);
        const std::size_t size = std::clamp<std::size_t>(draws.poisson(MEAN_ROWS), 1, left);
        for (std::size_t row = 0; row < size; ++row) {
            appendDigits(block, 'e', entities, 8);
            block += '\t' + std::to_string(time) + '\t';
            appendDigits(block, 'i', name[frequency.draw(draws)], 6);
            block += '\n';
            time += 1 + draws.below(GREATEST_GAP);
        }
        left -= size;
        if (block.size() >= BLOCK) {
            os << block;
            block.clear();
        }
    }
    os << block;
    return entities;
}

}  // namespace bench
