#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>
#include <vector>

#include <quarvis/mining/index_builder.hpp>
#include <quarvis/mining/index_bytes.hpp>
#include <quarvis/mining/shards.hpp>

#include "input.hpp"
#include "support/same_result.hpp"
#include "targets.hpp"

namespace fuzz {

namespace {

using quarvis::mining::Code;
using quarvis::mining::Dictionary;
using quarvis::mining::HistoryId;
using quarvis::mining::HistoryIndex;
using quarvis::mining::IndexBuilder;
using quarvis::mining::MiningOptions;
using quarvis::mining::Observer;
using quarvis::mining::Result;
using quarvis::mining::TimeWidth;

constexpr std::size_t MOST_HISTORIES = 300;
constexpr std::size_t MOST_ROWS = 500;

/// With few items, sets may have any size; with many, at most three items and a least count. Larger
/// sets and more rows are merely expensive.
constexpr std::size_t FEW_ITEMS = 6;
constexpr std::size_t MANY_ITEMS = 24;
constexpr std::size_t HUNDREDS_OF_ITEMS = 240;
constexpr std::uint32_t MOST_OF_MANY = 3;
constexpr std::uint32_t LEAST_COUNT_OF_MANY = 3;

/// All or some items of a transaction.
struct Row {
    std::uint32_t entity;
    std::uint64_t time;
    std::vector<std::string> items;
};

struct Case {
    std::vector<Row> rows;
    std::size_t histories = 0;
    std::uint32_t minCountOfIndex = 0;
    MiningOptions options;
};

/// Decodes four bytes per row: the history, the time, a bit for each of six successive items, and a
/// byte for the first of these items and for the number of successive histories that have the row,
/// at greater and greater times. Entities are numbered in the order in which they first occur.
std::vector<Row> rowsOf(Input& input, std::size_t items, std::uint64_t timeUnit,
                        std::size_t& histories) {
    std::vector<Row> rows;
    std::vector<std::uint32_t> numbers(MOST_HISTORIES, MOST_HISTORIES);
    while (!input.empty() && rows.size() < MOST_ROWS) {
        const std::size_t first = input.byte();
        const std::uint64_t time = input.byte();
        const unsigned bits = input.byte();
        const unsigned last = input.byte();
        const std::size_t number = std::size_t{1} << (bits >> 6) * 2;
        const std::size_t step = 1 + last / 128;
        for (std::size_t i = 0; i < number; ++i) {
            std::uint32_t& entity = numbers[(first + i * step) % MOST_HISTORIES];
            if (entity == MOST_HISTORIES)
                entity = static_cast<std::uint32_t>(histories++);
            Row& row = rows.emplace_back(Row{entity, (time + i / 16) * timeUnit, {}});
            for (unsigned item = 0; item < 6; ++item)
                if ((bits >> item) % 2 != 0)
                    row.items.push_back("item" + std::to_string((last + item) % items));
        }
    }
    return rows;
}

/// The first byte of a case determines the unit of time, the width of times and the items.
Case caseOf(Input& input, TimeWidth& timeWidth) {
    Case made;
    const unsigned kind = input.byte();
    timeWidth = kind % 2 == 0 ? TimeWidth::BITS_32 : TimeWidth::BITS_64;
    // Times are at most 271 units.
    const std::uint64_t timeUnit = kind / 2 % 2 == 0                 ? 1
                                   : timeWidth == TimeWidth::BITS_32 ? 0x00f00000
                                                                     : 0x00f0000000000001;
    const bool isMany = kind / 4 % 2 != 0;
    const std::size_t many = kind / 32 % 2 == 0 ? MANY_ITEMS : HUNDREDS_OF_ITEMS;
    MiningOptions& options = made.options;
    made.minCountOfIndex = input.byte() % 8;
    options.minCount = made.minCountOfIndex + input.byte() % 8;
    options.maxSize = input.byte() % 6;
    if (isMany) {
        options.minCount += LEAST_COUNT_OF_MANY;
        options.maxSize = 1 + options.maxSize % MOST_OF_MANY;
    }
    options.window = input.byte() * timeUnit;
    options.splits =
        kind / 8 % 2 == 0 ? quarvis::mining::Splits::RUNS : quarvis::mining::Splits::ALL;
    options.thresholds.minConfidence = kind / 16 % 2 == 0 ? 0 : 0.5;
    made.rows = rowsOf(input, isMany ? many : FEW_ITEMS, timeUnit, made.histories);
    return made;
}

HistoryIndex indexOfRows(const Case& of, TimeWidth timeWidth) {
    IndexBuilder builder(timeWidth);
    for (const Row& row : of.rows) {
        builder.beginRow(std::to_string(row.entity), row.time);
        for (const std::string& item : row.items)
            builder.addItem(item);
    }
    return builder.freeze(of.minCountOfIndex);
}

template <class Time>
HistoryIndex indexOfColumns(const Case& of) {
    Dictionary names;
    std::vector<std::uint32_t> entities;
    std::vector<Time> times;
    std::vector<std::uint32_t> items;
    const auto add = [&](const Row& row, Code item) {
        entities.push_back(row.entity);
        times.push_back(static_cast<Time>(row.time));
        items.push_back(static_cast<std::uint32_t>(item));
    };
    for (const Row& row : of.rows) {
        add(row, quarvis::mining::NO_ITEM);
        for (const std::string& item : row.items)
            add(row, names.add(item));
    }
    return indexColumns(entities, times, items, of.histories, names, of.minCountOfIndex);
}

std::vector<HistoryIndex> shardsOf(const HistoryIndex& index, std::size_t number) {
    std::vector<HistoryIndex> shards;
    const auto begin = [&](std::size_t shard) {
        return HistoryId{static_cast<std::uint32_t>(index.historyCount() * shard / number)};
    };
    for (std::size_t shard = 0; shard < number; ++shard)
        shards.push_back(index.slice(begin(shard), begin(shard + 1)));
    return shards;
}

/// A door is a way to run the engine. Starting threads costs more than most runs, so only a few
/// doors use them.
bool hasThreads(std::uint8_t door) {
    return door >= 240;
}

/// Runs the engine through a door.
class Doors {
  public:
    Doors(const Case& of, TimeWidth timeWidth)
        : m_case(of), m_timeWidth(timeWidth), m_index(indexOfRows(of, timeWidth)) {}

    Result through(std::uint8_t door) const {
        Observer observer;
        MiningOptions options = m_case.options;
        const std::size_t shards = 2 + door / 8 % 8;
        switch (door % 5) {
            case 0:
                return mine(m_index, options, observer);
            case 1: {
                options.threads = hasThreads(door) ? 3 : 1;
                Result result;
                result.itemSets = findItemSets(m_index, options, observer);
                result.rules = findRules(m_index, result.itemSets, options, observer);
                return result;
            }
            case 2:
                options.threads = hasThreads(door) ? 2 : 1;
                return mineShards(shardsOf(m_index, shards), options, observer);
            case 3: {
                std::vector<HistoryIndex> read;
                for (const HistoryIndex& shard : shardsOf(m_index, shards))
                    read.push_back(
                        quarvis::mining::indexFromBytes(quarvis::mining::indexToBytes(shard)));
                return mineShards(read, options, observer);
            }
            default:
                return mine(m_fromColumns(), options, observer);
        }
    }

  private:
    HistoryIndex m_fromColumns() const {
        HistoryIndex index = m_timeWidth == TimeWidth::BITS_32
                                 ? indexOfColumns<std::uint32_t>(m_case)
                                 : indexOfColumns<std::uint64_t>(m_case);
        if (indexToBytes(index) != indexToBytes(m_index))
            throw Failure("the index of the columns is another");
        return index;
    }

    const Case& m_case;
    TimeWidth m_timeWidth;
    HistoryIndex m_index;
};

}  // namespace

void fuzzEngine(Bytes bytes) {
    Input input(bytes);
    const std::uint8_t first = input.byte();
    const std::uint8_t second = input.byte();
    TimeWidth timeWidth = TimeWidth::BITS_32;
    const Case of = caseOf(input, timeWidth);
    if (first == second)
        return;
    const Doors doors(of, timeWidth);
    const std::string difference =
        support::differenceOf(doors.through(first), doors.through(second));
    if (!difference.empty())
        throw Failure("the doors " + std::to_string(first) + " and " + std::to_string(second) +
                      " differ in " + difference);
}

}  // namespace fuzz
