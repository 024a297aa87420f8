#include "sparse_baskets.hpp"

#include <algorithm>
#include <string>
#include <vector>

#include "digits.hpp"
#include "draws.hpp"
#include "shuffle.hpp"
#include "zipf.hpp"

namespace bench {

namespace {

using Items = std::vector<std::uint32_t>;

constexpr std::size_t LEAST_PATTERN = 2;  // items
constexpr double MEAN_MORE = 3;           // items of a pattern beyond the least
constexpr double PATTERN_EXPONENT = 1;
constexpr double LEFT_OUT = 0.1;  // the probability for an item of a pattern
constexpr std::uint64_t DAYS = 365;

void addNew(Items& items, std::uint32_t item) {
    if (std::find(items.begin(), items.end(), item) == items.end())
        items.push_back(item);
}

/// Draws the items of baskets.
class Shop {
  public:
    Shop(const SparseBaskets& shape, Draws& draws)
        : m_draws(draws),
          m_name(shuffledNumbers(shape.items, draws)),
          m_popularity(shape.items, shape.exponent),
          m_patternFrequency(shape.patterns, PATTERN_EXPONENT) {
        while (m_patterns.size() < shape.patterns)
            m_patterns.push_back(m_filled({}, LEAST_PATTERN + m_draws.poisson(MEAN_MORE)));
    }

    /// A basket of `size` items, or a few more when the last pattern brings them.
    Items basket(std::size_t size) {
        Items items;
        while (items.size() < size / 2)
            for (const std::uint32_t item : m_patterns[m_patternFrequency.draw(m_draws)])
                if (m_draws.uniform() >= LEFT_OUT)
                    addNew(items, item);
        return m_filled(std::move(items), size);
    }

  private:
    /// Adds single items up to `size`.
    Items m_filled(Items items, std::size_t size) {
        while (items.size() < size)
            addNew(items, m_name[m_popularity.draw(m_draws)]);
        return items;
    }

    Draws& m_draws;
    std::vector<std::uint32_t> m_name;  // by popularity: number in the item's name
    Zipf m_popularity;
    Zipf m_patternFrequency;
    std::vector<Items> m_patterns;
};

}  // namespace

void SparseBaskets::write(std::ostream& os) const {
    Draws draws(seed);
    Shop shop(*this, draws);

    os << "basket\tday\titems\n";
    std::string row;
    for (std::size_t basket = 0; basket < baskets; ++basket) {
        row.clear();
        appendDigits(row, 'b', basket, 7);
        row += '\t' + std::to_string(draws.below(DAYS));
        const std::size_t size = std::max<std::size_t>(draws.poisson(meanSize), 1);
        for (const std::uint32_t item : shop.basket(size)) {
            row += '\t';
            appendDigits(row, 'i', item, 6);
        }
        os << row << '\n';
    }
}

}  // namespace bench
