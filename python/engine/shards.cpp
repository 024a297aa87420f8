#include "shards.hpp"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include <nanobind/stl/shared_ptr.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/tuple.h>
#include <nanobind/stl/vector.h>

#include <quarvis/mining/index_bytes.hpp>
#include <quarvis/mining/level_run.hpp>
#include <quarvis/mining/shard_counter.hpp>
#include <quarvis/mining/shuffle.hpp>

#include "arrays.hpp"
#include "found.hpp"
#include "rows.hpp"
#include "shard_questions.hpp"

/// \file
/// Shards and states of runs are passed as bytes, counts as columns. A block is a tuple of two
/// first items and a number. Tallies of rules are bytes, 24 per rule, in the layout of `RuleTally`.
namespace binding {

using quarvis::mining::BudgetExceeded;
using quarvis::mining::FrequentCandidates;
using quarvis::mining::HistoryIndex;
using quarvis::mining::LevelBlock;
using quarvis::mining::LevelRun;
using quarvis::mining::MiningOptions;
using quarvis::mining::Rank;
using quarvis::mining::RuleTally;
using quarvis::mining::ShardCounter;

namespace {

using Block = std::tuple<std::uint32_t, std::uint32_t, std::uint64_t>;

LevelBlock blockOf(const Block& block) {
    return {std::get<0>(block), std::get<1>(block), std::get<2>(block)};
}

std::vector<Block> toPython(const std::vector<LevelBlock>& blocks) {
    std::vector<Block> tuples;
    for (const LevelBlock& block : blocks)
        tuples.emplace_back(block.begin, block.end, block.count);
    return tuples;
}

nb::bytes toPython(const std::string& bytes) {
    return nb::bytes(bytes.data(), bytes.size());
}

nb::bytes toPython(const std::vector<RuleTally>& tallies) {
    return nb::bytes(tallies.data(), tallies.size() * sizeof(RuleTally));
}

std::span<const char> charsOf(const nb::bytes& bytes) {
    return {bytes.c_str(), bytes.size()};
}

std::vector<RuleTally> talliesOf(const nb::bytes& bytes) {
    if (bytes.size() % sizeof(RuleTally) != 0)
        throw std::invalid_argument("tallies that are cut off");
    std::vector<RuleTally> tallies(bytes.size() / sizeof(RuleTally));
    if (!tallies.empty())
        std::memcpy(tallies.data(), bytes.data(), bytes.size());
    return tallies;
}

IndexPointer shardOf(const nb::bytes& bytes) {
    const std::span<const char> chars = charsOf(bytes);
    const nb::gil_scoped_release released;
    return std::make_shared<const HistoryIndex>(quarvis::mining::indexFromBytes(chars));
}

/// Counts on one shard for a run. Keeps both alive.
class ShardWork {
  public:
    ShardWork(IndexPointer shard, std::shared_ptr<const LevelRun> run)
        : m_shard(std::move(shard)),
          m_run(std::move(run)),
          m_counter(*m_shard, *m_run, m_observer) {}

    void countCandidates(
        const Block& block,
        const nb::ndarray<std::uint32_t, nb::ndim<1>, nb::c_contig, nb::device::cpu>& sums) {
        const nb::gil_scoped_release released;
        m_counter.countCandidates(blockOf(block), {sums.data(), sums.size()});
    }

    nb::bytes tallyRules(const Block& block) {
        std::vector<RuleTally> tallies;
        {
            const nb::gil_scoped_release released;
            tallies = m_counter.tallyRules(blockOf(block));
        }
        return toPython(tallies);
    }

  private:
    IndexPointer m_shard;
    std::shared_ptr<const LevelRun> m_run;
    quarvis::mining::Observer m_observer;
    ShardCounter m_counter;
};

/// The tallies of the rules that are met in at least `least` histories.
nb::bytes frequentTallies(const nb::bytes& bytes, std::uint32_t least) {
    std::vector<RuleTally> tallies = talliesOf(bytes);
    std::erase_if(tallies, [least](const RuleTally& tally) { return tally.met < least; });
    return toPython(tallies);
}

/// A running sum of tallies.
class TallySum {
  public:
    void add(const nb::bytes& bytes) {
        const std::vector<RuleTally> tallies = talliesOf(bytes);
        const nb::gil_scoped_release released;
        quarvis::mining::addTallies(m_sum, tallies);
    }
    nb::bytes bytes() const { return toPython(m_sum); }

  private:
    std::vector<RuleTally> m_sum;
};

using FrequentColumns = std::vector<std::tuple<Column<std::uint32_t>, Column<std::uint32_t>>>;

void addLevel(LevelRun& run, std::uint64_t most, const FrequentColumns& blocks) {
    std::vector<FrequentCandidates> frequent;
    for (const auto& [places, counts] : blocks)
        frequent.push_back({{places.data(), places.data() + places.size()},
                            {counts.data(), counts.data() + counts.size()}});
    const nb::gil_scoped_release released;
    run.addLevel(most, frequent);
}

Found foundOf(const LevelRun& run, const IndexPointer& items, std::size_t histories,
              std::size_t first, std::size_t most) {
    const nb::gil_scoped_release released;
    quarvis::mining::Result result = run.result(histories, first, most);
    return Found{items,
                 std::make_shared<const quarvis::mining::ItemSets>(std::move(result.itemSets)),
                 RuleList(std::move(result.rules)),
                 {},
                 {},
                 {}};
}

/// How far the run came, as in `BudgetExceeded`: sets by size, and a least count to try next.
std::tuple<std::vector<std::size_t>, std::uint32_t> reachOf(const LevelRun& run) {
    // The kind of limit is not used.
    const BudgetExceeded reached =
        quarvis::mining::exceeded(BudgetExceeded::Limit::BYTES, run.itemSets());
    return {reached.levels(), reached.advisedCount()};
}

Pair sidesOf(const LevelRun& run, std::size_t size, const nb::bytes& bytes) {
    Lists antecedents;
    Lists subsequents;
    std::vector<Rank> antecedent;
    std::vector<Rank> subsequent;
    for (const RuleTally& rule : talliesOf(bytes)) {
        run.sides(size, rule, antecedent, subsequent);
        antecedents.add(antecedent);
        subsequents.add(subsequent);
    }
    return nb::make_tuple(binding::toPython(std::move(antecedents)),
                          binding::toPython(std::move(subsequents)));
}

}  // namespace

void addShards(nb::module_& module) {
    nb::class_<LevelRun>(module, "LevelRun", "The state of a run over shards, level by level.")
        .def(
            "__init__",
            [](LevelRun* run, const Column<std::uint32_t>& counts, const MiningOptions& options) {
                new (run) LevelRun({counts.data(), counts.data() + counts.size()}, options);
            },
            nb::arg("counts"), nb::arg("options"))
        .def_static(
            "from_bytes",
            [](const nb::bytes& bytes) { return LevelRun::fromBytes(charsOf(bytes)); },
            nb::arg("bytes"))
        .def("to_bytes", [](const LevelRun& run) { return toPython(run.bytes()); })
        .def(
            "bytes_for_candidates",
            [](const LevelRun& run, const Block& block) {
                return toPython(run.bytesForCandidates(blockOf(block)));
            },
            nb::arg("block"))
        .def("bytes_for_rules", [](const LevelRun& run) { return toPython(run.bytesForRules()); })
        .def_prop_ro("size", &LevelRun::size)
        .def_prop_ro("memory", &LevelRun::memory)
        .def_prop_ro("min_count", [](const LevelRun& run) { return run.options().minCount; })
        .def_prop_ro("window", [](const LevelRun& run) { return run.options().window; })
        .def_prop_ro("has_candidates", &LevelRun::hasCandidates)
        .def_prop_ro("rule_size", &LevelRun::ruleSize)
        .def_prop_ro("rule_count", &LevelRun::ruleCount)
        .def("set_count", &LevelRun::setCount, nb::arg("size"))
        .def("reach", &reachOf, "The number of sets of each size, and a least count to try next.")
        .def(
            "candidates",
            [](const LevelRun& run, std::uint64_t most) { return toPython(run.candidates(most)); },
            nb::arg("most"), "The candidates of the next level, in blocks.")
        .def(
            "rules",
            [](const LevelRun& run, std::uint64_t most) { return toPython(run.rules(most)); },
            nb::arg("most"), "The rules of the size that is tallied next, in blocks.")
        .def("add_level", &addLevel, nb::arg("most"), nb::arg("blocks"),
             "Ends a level: by block, the places of the frequent candidates and their counts.")
        .def(
            "add_rules",
            [](LevelRun& run, const nb::bytes& tallies) { run.addRules(talliesOf(tallies)); },
            nb::arg("tallies"), "Ends a size of rules.")
        .def("without_rules", &LevelRun::withoutRules, "The same sets, without rules.")
        .def("sides", &sidesOf, nb::arg("size"), nb::arg("tallies"),
             "The sides of rules of a size, as two lists of ranks.")
        .def("found", &foundOf, nb::arg("items"), nb::arg("histories"), nb::arg("first") = 0,
             nb::arg("most") = static_cast<std::size_t>(-1),
             "The result among so many histories, with all or some of the rules.");
    nb::class_<ShardWork>(module, "ShardWork", "Counts candidates and rules of a run on one shard.")
        .def(nb::init<IndexPointer, std::shared_ptr<const LevelRun>>(), nb::arg("shard"),
             nb::arg("run"))
        .def("count_candidates", &ShardWork::countCandidates, nb::arg("block"), nb::arg("sums"),
             "Adds to the sums of a block.")
        .def("tally_rules", &ShardWork::tallyRules, nb::arg("block"));
    nb::class_<TallySum>(module, "TallySum", "Sums tallies of rules.")
        .def(nb::init<>())
        .def("add", &TallySum::add, nb::arg("tallies"))
        .def("to_bytes", &TallySum::bytes);
    module.def("frequent_tallies", &frequentTallies, nb::arg("tallies"), nb::arg("least"),
               "The tallies of rules that are met often enough.");
    module.def("shard", &shardOf, nb::arg("bytes"), "A shard from its bytes.");
    module.def(
        "shard_bytes",
        [](const HistoryIndex& shard) {
            std::string bytes;
            {
                const nb::gil_scoped_release released;
                bytes = quarvis::mining::indexToBytes(shard);
            }
            return toPython(bytes);
        },
        nb::arg("shard"));
    module.def(
        "shuffled_shard",
        [](const IndexPointer& shard, const LevelRun& run, std::uint64_t seed,
           std::uint64_t first) {
            const nb::gil_scoped_release released;
            return std::make_shared<const HistoryIndex>(quarvis::mining::shuffleTimes(
                quarvis::mining::withoutRareItems(*shard, run), seed, first));
        },
        nb::arg("shard"), nb::arg("run"), nb::arg("seed"), nb::arg("first"),
        "The shard with times permuted, its histories numbered from the first on.");
    module.def("items", &itemIndex, nb::arg("name_offsets"), nb::arg("name_bytes"),
               nb::arg("counts"), nb::arg("min_count"), "An index of items without histories.");
    module.def("count_rules", &countRules, nb::arg("shard"), nb::arg("window"),
               nb::arg("left_offsets"), nb::arg("left"), nb::arg("right_offsets"), nb::arg("right"),
               "The number of histories in which each rule counts.");
    module.def("count_sets", &countSets, nb::arg("shard"), nb::arg("offsets"), nb::arg("ranks"),
               "The number of histories that hold each set.");
}

}  // namespace binding
