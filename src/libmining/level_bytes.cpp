#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include <quarvis/mining/level_run.hpp>

#include "byte_arrays.hpp"
#include "level_state.hpp"

/// \file
/// The state of a run as bytes: the letters "QVLEVEL" and a zero byte; the numbers of the header;
/// the counts of the items; for each level from pairs on, the number of its sets, their parents,
/// last items and counts; the live rules and the counted rules, each as columns of splits, sizes,
/// sets and counts; and a checksum. The reader checks all of it.
namespace quarvis::mining {

namespace {

constexpr char MAGIC[8] = {'Q', 'V', 'L', 'E', 'V', 'E', 'L', '\0'};
constexpr std::uint64_t VERSION = 1;

class Damage : public RunFormatError {
  public:
    explicit Damage(const char* what)
        : RunFormatError(std::string("not a state of a run: ") + what) {}
};

using Reader = ByteReader<Damage>;

void require(bool holds, const char* what) {
    Reader::require(holds, what);
}

/// By level, from pairs on: the range of the sets that are written.
using Ranges = std::vector<std::pair<std::size_t, std::size_t>>;

Ranges allOf(const FoundSets& found) {
    Ranges ranges;
    for (const std::size_t number : found.sizes())
        ranges.emplace_back(0, number);
    return ranges;
}

/// The sets that begin with the first items of a block.
Ranges rangesOf(const FoundSets& found, const LevelBlock& block) {
    Ranges ranges;
    std::size_t begin = found.pairBegin().at(block.begin);
    std::size_t end = found.pairBegin().at(block.end);
    for (std::size_t size = 2; size <= found.maxSize(); ++size) {
        ranges.emplace_back(begin, end);
        if (size < found.maxSize()) {
            begin = found.level(size).extensions[begin];
            end = found.level(size).extensions[end];
        }
    }
    return ranges;
}

void putSets(ByteWriter& writer, const FoundSets& found, const Ranges& ranges) {
    writer.number(std::uint64_t{ranges.size()});
    std::uint32_t shift = 0;  // where the written sets of the level below begin
    for (std::size_t size = 2; size < ranges.size() + 2; ++size) {
        const FoundSets::Level& level = found.level(size);
        const auto [begin, end] = ranges[size - 2];
        std::vector<std::uint32_t> parents(
            level.parent.begin() + static_cast<std::ptrdiff_t>(begin),
            level.parent.begin() + static_cast<std::ptrdiff_t>(end));
        for (std::uint32_t& parent : parents)
            parent -= shift;
        writer.number(std::uint64_t{parents.size()});
        writer.array(std::span<const std::uint32_t>(parents));
        writer.array(std::span(level.last).subspan(begin, end - begin));
        writer.array(std::span(level.count).subspan(begin, end - begin));
        shift = static_cast<std::uint32_t>(begin);
    }
}

template <class Rules, class Split, class Count>
void putRules(ByteWriter& writer, const Rules& rules, Split splitOf, Count countOf) {
    std::vector<std::uint64_t> splits;
    std::vector<std::uint32_t> sizes;
    std::vector<std::uint32_t> sets;
    std::vector<std::uint32_t> counts;
    for (const auto& rule : rules) {
        splits.push_back(splitOf(rule).split);
        sizes.push_back(splitOf(rule).size);
        sets.push_back(splitOf(rule).set);
        counts.push_back(countOf(rule));
    }
    writer.number(std::uint64_t{splits.size()});
    writer.array(std::span<const std::uint64_t>(splits));
    for (const auto& column : {sizes, sets, counts})
        writer.array(std::span<const std::uint32_t>(column));
}

/// The parts of a state that are written besides the items and the settings.
struct Parts {
    Ranges ranges;
    bool live;
    bool rules;
};

std::string written(const LevelState& state, const Parts& parts) {
    ByteWriter writer;
    for (const char letter : MAGIC)
        writer.number(letter);
    const MiningOptions& options = state.options;
    const Thresholds& bounds = options.thresholds;
    writer.number(VERSION);
    for (const std::uint64_t number :
         {std::uint64_t{options.minCount}, std::uint64_t{options.maxSize}, options.window,
          std::uint64_t{options.splits == Splits::ALL}, std::uint64_t{state.searched},
          std::uint64_t{state.tallied}, std::uint64_t{state.ruled},
          std::uint64_t{state.counts.size()}})
        writer.number(number);
    for (const double bound :
         {bounds.minSupport, bounds.minConfidence, bounds.minLift, bounds.maxConviction})
        writer.number(std::bit_cast<std::uint64_t>(bound));
    writer.array(std::span<const std::uint32_t>(state.counts));
    putSets(writer, state.found, parts.ranges);
    const std::vector<SplitSet> noLive;
    const std::vector<CountedRule> noRules;
    putRules(
        writer, parts.live ? state.live : noLive, [](const SplitSet& rule) { return rule; },
        [](const SplitSet&) { return std::uint32_t{0}; });
    putRules(
        writer, parts.rules ? state.rules : noRules,
        [](const CountedRule& rule) { return rule.rule; },
        [](const CountedRule& rule) { return rule.count; });
    return std::move(writer).finished();
}

using Numbers = std::vector<std::uint32_t>;

void takeSets(Reader& reader, LevelState& state) {
    const auto levels = reader.number<std::uint64_t>();
    require(levels < MOST_ITEMS, "its sets are too large");
    std::size_t below = state.order.size();
    for (std::size_t size = 2; size < levels + 2; ++size) {
        const auto sets = reader.number<std::uint64_t>();
        const auto parents = reader.array<Numbers>(sets);
        const auto last = reader.array<std::vector<WalkItem>>(sets);
        const auto counts = reader.array<Numbers>(sets);
        for (std::size_t set = 0; set < sets; ++set) {
            const bool isFirst = set == 0 || parents[set] != parents[set - 1];
            const WalkItem before = !isFirst    ? last[set - 1]
                                    : size == 2 ? WalkItem{parents[set]}
                                                : WalkItem{0};
            require(parents[set] < below && (set == 0 || parents[set - 1] <= parents[set]) &&
                        at(last[set]) < state.order.size() &&
                        (before < last[set] || (isFirst && size > 2)),
                    "its sets are in disorder");
            if (size > 2)
                require(state.found.level(size - 1).last[parents[set]] < last[set],
                        "its sets are in disorder");
            state.found.add(size, parents[set], last[set], counts[set]);
        }
        require(sets > 0 || size == levels + 1, "it lacks a level");
        below = static_cast<std::size_t>(sets);
    }
    state.found.link(state.order.size());
}

template <class Add>
void takeRules(Reader& reader, const LevelState& state, Add add) {
    const auto number = reader.number<std::uint64_t>();
    const auto splits = reader.array<std::vector<std::uint64_t>>(number);
    const auto sizes = reader.array<Numbers>(number);
    const auto sets = reader.array<Numbers>(number);
    const auto counts = reader.array<Numbers>(number);
    SplitSet before{0, 0, 0};
    for (std::size_t i = 0; i < number; ++i) {
        const SplitSet rule{sizes[i], sets[i], splits[i]};
        require(rule.size >= 2 && rule.size <= state.found.maxSize() &&
                    rule.set < state.found.count(rule.size) && rule.split != 0 &&
                    rule.split < mining::allOf(rule.size) && before < rule,
                "its rules are in disorder");
        add(rule, counts[i]);
        before = rule;
    }
}

}  // namespace

LevelRun LevelRun::fromBytes(std::span<const char> bytes) {
    constexpr std::size_t sumSize = sizeof(std::uint64_t);
    require(bytes.size() >= sizeof MAGIC + sumSize, "it is cut off");
    require(std::equal(MAGIC, MAGIC + sizeof MAGIC, bytes.begin()), "its first letters are others");
    const std::span<const char> content = bytes.first(bytes.size() - sumSize);
    Reader reader(content.subspan(sizeof MAGIC));
    require(reader.number<std::uint64_t>() == VERSION, "its version is another");
    require(Reader(bytes.last(sumSize)).number<std::uint64_t>() == checksum(content),
            "its checksum does not agree");
    MiningOptions options;
    options.minCount = static_cast<std::uint32_t>(reader.number<std::uint64_t>());
    options.maxSize = static_cast<std::uint32_t>(reader.number<std::uint64_t>());
    options.window = reader.number<std::uint64_t>();
    options.splits = reader.number<std::uint64_t>() != 0 ? Splits::ALL : Splits::RUNS;
    const bool searched = reader.number<std::uint64_t>() != 0;
    const auto tallied = reader.number<std::uint64_t>();
    const bool ruled = reader.number<std::uint64_t>() != 0;
    const auto items = reader.number<std::uint64_t>();
    std::array<double, 4> bounds{};
    for (double& bound : bounds)
        bound = std::bit_cast<double>(reader.number<std::uint64_t>());
    options.thresholds = {bounds[0], bounds[1], bounds[2], bounds[3]};
    require(items < std::numeric_limits<std::uint32_t>::max(), "it is too large");
    auto state = std::make_unique<LevelState>(reader.array<Numbers>(items), options);
    takeSets(reader, *state);
    takeRules(reader, *state,
              [&state](const SplitSet& rule, std::uint32_t) { state->live.push_back(rule); });
    takeRules(reader, *state, [&state](const SplitSet& rule, std::uint32_t count) {
        state->rules.push_back({rule, count});
    });
    require(reader.atEnd(), "there is something behind it");
    require(tallied >= 1 && tallied <= state->found.maxSize(), "its rules are in disorder");
    state->searched = searched;
    state->tallied = static_cast<std::uint32_t>(tallied);
    state->ruled = ruled;
    return LevelRun(std::move(state));
}

std::string LevelRun::bytes() const {
    return written(*m_state, {allOf(m_state->found), true, true});
}

std::string LevelRun::bytesForCandidates(const LevelBlock& block) const {
    return written(*m_state, {rangesOf(m_state->found, block), false, false});
}

std::string LevelRun::bytesForRules() const {
    return written(*m_state, {allOf(m_state->found), true, false});
}

}  // namespace quarvis::mining
