#include "thread_times.hpp"

#include <cstdint>
#include <thread>
#include <vector>

#include <quarvis/mining/mine.hpp>

#include "engine_options.hpp"
#include "input.hpp"
#include "result_digest.hpp"
#include "support/check.hpp"

namespace bench {

namespace {

using quarvis::mining::HistoryIndex;
using quarvis::mining::ItemSets;
using quarvis::mining::MiningOptions;
using quarvis::mining::Observer;
using quarvis::mining::Rules;

struct Search {
    Seconds itemSets;
    Seconds rules;
    std::size_t setCount;
    std::size_t ruleCount;
    double bare;
    std::uint64_t digest;  // where it was asked for
};

enum class Digested { NO, YES };

/// Arithmetic in registers that takes about 20 ms.
std::uint64_t mixed(std::uint64_t seed, std::size_t rounds) {
    for (std::size_t round = 0; round < rounds; ++round) {
        seed ^= seed << 13;
        seed ^= seed >> 7;
        seed ^= seed << 17;
    }
    return seed;
}

/// The seconds of the same arithmetic in this many threads.
double bareIn(unsigned threads) {
    constexpr std::size_t ROUNDS = 10'000'000;
    std::vector<std::uint64_t> results(threads);
    const Stopwatch watch;
    std::vector<std::thread> others;
    for (unsigned thread = 1; thread < threads; ++thread)
        others.emplace_back(
            [&results, thread, threads] { results[thread] = mixed(thread + 1, ROUNDS / threads); });
    results[0] = mixed(1, ROUNDS / threads);
    for (std::thread& other : others)
        other.join();
    const double seconds = watch.elapsed().wall;
    for (const std::uint64_t result : results)
        check(result != 0, "arithmetic that never gives 0 gave 0");
    return seconds;
}

Search searched(const HistoryIndex& index, MiningOptions options, unsigned threads,
                Digested digested) {
    options.threads = threads;
    Search search{};
    Observer observer;
    Stopwatch watch;
    const ItemSets sets = findItemSets(index, options, observer);
    search.itemSets = watch.lap();
    const Rules rules = findRules(index, sets, options, observer);
    search.rules = watch.lap();
    search.bare = bareIn(threads);
    search.setCount = sets.size();
    search.ruleCount = rules.size();
    if (digested == Digested::YES)
        search.digest = digestOf(index, sets, rules);
    return search;
}

void add(ThreadTimes::Of& times, const Search& search) {
    times.itemSets.add(search.itemSets.wall);
    times.rules.add(search.rules.wall);
    times.both.add(search.itemSets.wall + search.rules.wall);
    times.bare.add(search.bare);
}

}  // namespace

ThreadTimes comparedThreads(std::size_t runs, const Configuration& config,
                            const std::string& path) {
    const HistoryIndex index = indexOf(path, config.minCount);
    const MiningOptions options = engineOptions(config);
    const Search one = searched(index, options, 1, Digested::YES);
    const Search two = searched(index, options, 2, Digested::YES);
    check(one.digest == two.digest, "two threads do not give what one gives");

    ThreadTimes times{{}, {}, one.setCount, one.ruleCount};
    for (std::size_t run = 0; run < runs; ++run)
        for (const bool first : {true, false}) {
            const bool alone = first == (run % 2 == 0);
            add(alone ? times.one : times.two,
                searched(index, options, alone ? 1 : 2, Digested::NO));
        }
    return times;
}

}  // namespace bench
