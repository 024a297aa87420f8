#include "event_log.hpp"

#include <algorithm>
#include <cmath>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "digits.hpp"
#include "draws.hpp"
#include "shuffle.hpp"
#include "zipf.hpp"

namespace bench {

namespace {

/// The numbers of activities, in the order in which they happen.
using Variant = std::vector<std::uint32_t>;

constexpr double ACTIVITY_EXPONENT = 1.2;
constexpr double VARIANT_EXPONENT = 1.0;
constexpr double SWAP_PROBABILITY = 0.1;

constexpr std::uint64_t HOUR = 3600;  // seconds
constexpr std::uint64_t DAY = 24 * HOUR;
constexpr std::uint64_t TWO_YEARS = 730 * DAY;
constexpr std::uint64_t FIRST_START = 1'262'304'000;  // the first second of 2010
constexpr double LEAST_MEAN_GAP = 3 * HOUR;
constexpr double GREATEST_MEAN_GAP = 6 * DAY;

/// Draws the variants of a log.
class Process {
  public:
    Process(const EventLog& log, Draws& draws)
        : m_log(log),
          m_draws(draws),
          m_popularity(log.activities, ACTIVITY_EXPONENT),
          m_position(shuffledNumbers(log.activities, draws)),
          m_name(shuffledNumbers(log.activities, draws)) {}

    /// All different.
    std::vector<Variant> variants() {
        std::set<Variant> known;
        std::vector<Variant> variants;
        while (variants.size() < m_log.variants) {
            Variant variant = m_draw();
            if (known.insert(variant).second)
                variants.push_back(std::move(variant));
        }
        return variants;
    }

  private:
    Variant m_draw() {
        const std::size_t length =
            m_log.leastLength + m_draws.below(m_log.greatestLength - m_log.leastLength + 1);
        Variant variant;
        while (variant.size() < length) {
            const std::uint32_t position = m_position[m_popularity.draw(m_draws)];
            if (std::find(variant.begin(), variant.end(), position) == variant.end())
                variant.push_back(position);
        }
        std::sort(variant.begin(), variant.end());
        for (std::size_t i = 1; i < length; ++i)
            if (m_draws.uniform() < SWAP_PROBABILITY)
                std::swap(variant[i - 1], variant[i]);
        for (std::uint32_t& activity : variant)
            activity = m_name[activity];
        return variant;
    }

    const EventLog& m_log;
    Draws& m_draws;
    Zipf m_popularity;
    std::vector<std::uint32_t> m_position;  // by popularity: place in the common order
    std::vector<std::uint32_t> m_name;      // by that place: number in the name
};

}  // namespace

void EventLog::write(std::ostream& os) const {
    Draws draws(seed);
    const std::vector<Variant> all = Process(*this, draws).variants();
    const Zipf frequency(variants, VARIANT_EXPONENT);

    os << "case\ttime\tactivity\n";
    std::string rows;
    for (std::size_t number = 0; number < cases; ++number) {
        std::uint64_t time = FIRST_START + draws.below(TWO_YEARS);
        const double meanGap =
            LEAST_MEAN_GAP * std::pow(GREATEST_MEAN_GAP / LEAST_MEAN_GAP, draws.uniform());
        rows.clear();
        for (const std::uint32_t activity : all[frequency.draw(draws)]) {
            appendDigits(rows, 'c', number, 6);
            rows += '\t' + std::to_string(time) + "\tactivity";
            appendDigits(rows, ' ', activity, 3);
            rows += '\n';
            time += 1 + static_cast<std::uint64_t>(draws.exponential(meanGap));
        }
        os << rows;
    }
}

}  // namespace bench
