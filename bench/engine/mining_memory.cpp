#include "mining_memory.hpp"

#include <quarvis/mining/mine.hpp>

#include "engine_options.hpp"
#include "input.hpp"
#include "support/child.hpp"
#include "support/memory.hpp"

namespace bench {

namespace {

using quarvis::mining::HistoryIndex;
using quarvis::mining::ItemSets;
using quarvis::mining::MiningOptions;
using quarvis::mining::Observer;
using quarvis::mining::Rules;

MiningMemory measuredHere(const MiningOptions& options, const std::string& path) {
    MiningMemory memory{};
    Observer observer;

    const MemoryPeak reading;
    const HistoryIndex index = indexOf(path, options.minCount);
    memory.readingPeak = reading.rise();
    memory.index = index.memory();
    memory.occurrences = index.occurrenceCount();

    std::size_t heap = heapInUse();
    const MemoryPeak searching;
    const ItemSets sets = findItemSets(index, options, observer);
    memory.itemSetPeak = memory.index + searching.rise();
    memory.itemSets = heapInUse() - heap;

    heap = heapInUse();
    const MemoryPeak counting;
    const Rules rules = findRules(index, sets, options, observer);
    memory.rulePeak = memory.index + memory.itemSets + counting.rise();
    memory.rules = heapInUse() - heap;
    return memory;
}

}  // namespace

MiningMemory measuredMemory(const Configuration& config, const std::string& path) {
    return inChild([&] { return measuredHere(engineOptions(config), path); });
}

}  // namespace bench
