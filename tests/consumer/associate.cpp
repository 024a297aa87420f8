// associate COUNT WINDOW ROWS
//
// Prints the item sets that at least COUNT histories hold, and the rules that count in at least
// COUNT histories within WINDOW. Each line of the file ROWS has an entity, a time and an item.
#include <cstdint>
#include <fstream>
#include <iostream>
#include <limits>
#include <span>
#include <sstream>
#include <string>

#include <quarvis/mining/index_builder.hpp>
#include <quarvis/mining/mine.hpp>

using quarvis::mining::HistoryIndex;
using quarvis::mining::IndexBuilder;
using quarvis::mining::ItemSetCursor;
using quarvis::mining::MiningOptions;
using quarvis::mining::Observer;
using quarvis::mining::Rank;
using quarvis::mining::Rule;

namespace {

/// Prints the number of sets of each size, and ends the run beyond the greatest size.
class Levels : public Observer {
  public:
    explicit Levels(std::size_t greatest) : m_greatest(greatest) {}

    void levelFound(std::size_t size, std::size_t sets) override {
        std::cout << sets << " of size " << size << '\n';
        if (size > m_greatest)
            throw quarvis::mining::Cancelled();
    }

  private:
    std::size_t m_greatest;
};

HistoryIndex readRows(std::istream& in, std::uint32_t minCount) {
    IndexBuilder builder;
    std::string entity;
    std::uint64_t time = 0;
    std::string item;
    while (in >> entity >> time >> item)
        builder.add(entity, time, item);
    return builder.freeze(minCount);
}

std::string names(const HistoryIndex& index, std::span<const Rank> items) {
    std::string text;
    for (const Rank item : items)
        text.append(text.empty() ? "" : "+").append(index.name(item));
    return text;
}

}  // namespace

int main(int argc, char** argv) {
    MiningOptions options;
    std::ifstream rows;
    if (argc == 4) {
        std::istringstream(argv[1]) >> options.minCount;
        std::istringstream(argv[2]) >> options.window;
        rows.open(argv[3]);
    }
    if (!rows.is_open()) {
        std::cerr << "usage: associate COUNT WINDOW ROWS\n";
        return 1;
    }
    options.threads = 2;
    const HistoryIndex index = readRows(rows, options.minCount);

    Levels levels(std::numeric_limits<std::size_t>::max());
    const quarvis::mining::Result found = quarvis::mining::mine(index, options, levels);
    for (ItemSetCursor cursor(found.itemSets); cursor.next();)
        std::cout << names(index, cursor.items()) << ": " << cursor.count() << '\n';
    for (std::size_t i = 0; i < found.rules.size(); ++i) {
        const Rule rule = found.rules[i];
        std::cout << names(index, rule.antecedent) << " => " << names(index, rule.subsequent)
                  << ": " << rule.count << ' ' << rule.confidence << ' ' << rule.lift << '\n';
    }

    // Exceptions of an observer propagate through the library.
    try {
        Levels singles(0);
        quarvis::mining::mine(index, options, singles);
    } catch (const quarvis::mining::Cancelled& cancelled) {
        std::cout << cancelled.what() << '\n';
    }
}
