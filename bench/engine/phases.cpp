#include "phases.hpp"

#include <filesystem>
#include <fstream>
#include <numeric>
#include <vector>

#include <quarvis/mining/mine.hpp>

#include "engine_options.hpp"
#include "input.hpp"
#include "mine.hpp"
#include "oracle/mine.hpp"
#include "result_digest.hpp"
#include "result_files.hpp"
#include "support/check.hpp"
#include "support/child.hpp"
#include "support/conversion.hpp"
#include "support/quiet.hpp"
#include "support/temp_file.hpp"

namespace bench {

namespace {

using quarvis::mining::HistoryIndex;
using quarvis::mining::IndexBuilder;
using quarvis::mining::ItemSets;
using quarvis::mining::MiningOptions;
using quarvis::mining::Rules;

/// Ends the phase of counting when the engine reports that all rules are counted. Keeps what the
/// engine reports, to compare it with the result.
class PhaseObserver : public quarvis::mining::Observer {
  public:
    PhaseObserver(Stopwatch& watch, Phases& phases) : m_watch(watch), m_phases(phases) {}

    void levelFound(std::size_t size, std::size_t sets) override {
        check(size == m_levels.size() + 1, "a level is reported out of turn");
        m_levels.push_back(sets);
    }
    void rulesCounted(std::size_t rules) override {
        m_phases.counting = m_watch.lap();
        m_phases.counted = rules;
    }

    void checkLevels(const ItemSets& sets) const {
        for (std::size_t size = 1; size <= m_levels.size(); ++size)
            checkCount("sets of " + std::to_string(size) + " items", sets.count(size),
                       m_levels[size - 1]);
        check(m_levels.size() >= sets.levels(), "a level is not reported");
    }

  private:
    Stopwatch& m_watch;
    Phases& m_phases;
    std::vector<std::size_t> m_levels;
};

void countSets(const ItemSets& sets, Phases& phases) {
    phases.items = sets.count(1);
    phases.pairs = sets.count(2);
    phases.setCount = sets.size();
    for (std::size_t size = 1; size <= sets.levels(); ++size) {
        const std::vector<std::uint32_t>& counts = sets.level(size).count;
        phases.memberships += std::accumulate(counts.begin(), counts.end(), std::size_t{0});
    }
}

Phases phasesHere(const MiningOptions& options, const std::string& path) {
    const TempFile rulesFile;
    const TempFile itemSetFile;
    Phases phases{};
    Stopwatch watch;
    PhaseObserver observer(watch, phases);

    IndexBuilder builder = rowsOf(path);
    phases.reading = watch.lap();
    const HistoryIndex index = builder.freeze(options.minCount);
    phases.index = watch.lap();
    const ItemSets sets = findItemSets(index, options, observer);
    phases.itemSets = watch.lap();
    const Rules rules = findRules(index, sets, options, observer);
    phases.selection = watch.lap();
    {
        std::ofstream out(rulesFile.path());
        result_files::writeRules(out, index, rules);
    }
    {
        std::ofstream out(itemSetFile.path());
        result_files::writeItemSets(out, index, sets);
    }
    phases.writing = watch.lap();

    observer.checkLevels(sets);
    countSets(sets, phases);
    phases.fileBytes = std::filesystem::file_size(path);
    phases.histories = index.historyCount();
    phases.ruleCount = rules.size();
    phases.digest = digestOf({contentOf(rulesFile.path()), contentOf(itemSetFile.path())}, rules);
    return phases;
}

}  // namespace

Seconds Phases::search() const {
    Seconds sum = itemSets;
    sum += counting;
    sum += selection;
    return sum;
}

Seconds Phases::total() const {
    Seconds sum = search();
    for (const Seconds& phase : {reading, index, writing})
        sum += phase;
    return sum;
}

WholeRun minedByModel(const Configuration& config, const std::string& path) {
    return inChild([&] {
        const Quiet quiet;
        const quarvis::rule::TransactionSet txns = transactionsOf(path);
        const Stopwatch watch;
        const quarvis::rule::MiningResult result = quarvis::rule::mine(config, txns);
        const Seconds time = watch.elapsed();
        return WholeRun{time, digestOf(result)};
    });
}

WholeRun minedPlainly(const Configuration& config, const std::string& path) {
    return inChild([&] {
        const oracle::Settings settings = support::settingsOf(config);
        const oracle::Table table = support::tableOf(transactionsOf(path));
        const Stopwatch watch;
        const oracle::Outcome outcome = oracle::mine(settings, table);
        const Seconds time = watch.elapsed();
        return WholeRun{time, digestOf(outcome)};
    });
}

PhaseTimes repeatedPhases(std::size_t runs, const Configuration& config, const std::string& path) {
    PhaseTimes times{};
    const MiningOptions options = engineOptions(config);
    const std::uint64_t digest = minedByModel(config, path).digest;
    for (std::size_t run = 0; run < runs; ++run) {
        const Phases phases = inChild([&] { return phasesHere(options, path); });
        check(phases.digest == digest, "the phases do not give what the rule model gives");
        times.reading.add(phases.reading.cpu);
        times.index.add(phases.index.cpu);
        times.itemSets.add(phases.itemSets.cpu);
        times.counting.add(phases.counting.cpu);
        times.selection.add(phases.selection.cpu);
        times.writing.add(phases.writing.cpu);
        times.search.add(phases.search().cpu);
        times.total.add(phases.total());
        times.last = phases;
    }
    return times;
}

}  // namespace bench
