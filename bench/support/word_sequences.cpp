#include "word_sequences.hpp"

#include <string>
#include <vector>

#include "digits.hpp"
#include "draws.hpp"
#include "shuffle.hpp"
#include "zipf.hpp"

namespace bench {

void WordSequences::write(std::ostream& os) const {
    Draws draws(seed);
    const Zipf frequency(words, exponent);
    const std::vector<std::uint32_t> name = shuffledNumbers(words, draws);

    os << "sequence\tposition\tword\n";
    std::string rows;
    for (std::size_t sequence = 0; sequence < sequences; ++sequence) {
        rows.clear();
        for (std::size_t position = 1; position <= length; ++position) {
            appendDigits(rows, 's', sequence, 7);
            rows += '\t' + std::to_string(position) + '\t';
            appendDigits(rows, 'w', name[frequency.draw(draws)], 6);
            rows += '\n';
        }
        os << rows;
    }
}

}  // namespace bench
