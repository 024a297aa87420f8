#include "duel_table.hpp"

#include <vector>

#include "samples.hpp"

namespace bench {

DuelTable::DuelTable(const std::string& title, const std::string& unit, std::size_t runs)
    : m_table(title + ": million " + unit + " a second of processor time, medians of " +
                  std::to_string(runs) + " runs",
              {"what", "here", "least..greatest", "standard", "least..greatest", "time ratio"}),
      m_runs(runs) {}

void DuelTable::measure(const std::string& name, std::size_t number,
                        const std::function<void()>& here, const std::function<void()>& standard) {
    const std::vector<Times> times =
        inTurns(m_runs, {[&] { return timed(here); }, [&] { return timed(standard); }});
    const auto speed = [number](double seconds) {
        return fixed(static_cast<double>(number) / seconds / 1e6, 2);
    };
    std::vector<std::string> cells{name};
    for (const Times& side : times) {
        cells.push_back(speed(side.cpu.median()));
        cells.push_back(speed(side.cpu.greatest()) + ".." + speed(side.cpu.least()));
    }
    cells.push_back(fixed(times[0].cpu.median() / times[1].cpu.median(), 2));
    m_table.row(cells);
}

}  // namespace bench
