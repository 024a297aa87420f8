#include "samples.hpp"

#include <algorithm>

namespace bench {

double Samples::median() const {
    std::vector<double> sorted = m_samples;
    std::sort(sorted.begin(), sorted.end());
    const std::size_t half = sorted.size() / 2;
    return sorted.size() % 2 != 0 ? sorted[half] : (sorted[half - 1] + sorted[half]) / 2;
}

double Samples::least() const {
    return *std::min_element(m_samples.begin(), m_samples.end());
}

double Samples::greatest() const {
    return *std::max_element(m_samples.begin(), m_samples.end());
}

void Times::add(const Seconds& seconds) {
    wall.add(seconds.wall);
    cpu.add(seconds.cpu);
}

std::vector<Times> inTurns(std::size_t runs,
                           const std::vector<std::function<Seconds()>>& contestants) {
    std::vector<Times> times(contestants.size());
    for (std::size_t run = 0; run < runs; ++run)
        for (std::size_t i = 0; i < contestants.size(); ++i) {
            const std::size_t at = run % 2 == 0 ? i : contestants.size() - 1 - i;
            times[at].add(contestants[at]());
        }
    return times;
}

}  // namespace bench
