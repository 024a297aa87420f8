// Mines item sets and rules from rows of customer, day and product.
#include <iostream>
#include <span>

#include <quarvis/mining/index_builder.hpp>
#include <quarvis/mining/mine.hpp>

using quarvis::mining::HistoryIndex;
using quarvis::mining::IndexBuilder;
using quarvis::mining::ItemSetCursor;
using quarvis::mining::MiningOptions;
using quarvis::mining::Observer;
using quarvis::mining::Rank;
using quarvis::mining::Result;
using quarvis::mining::Rule;

namespace {

struct Row {
    const char* customer;
    unsigned day;
    const char* product;
};

constexpr Row ROWS[] = {
    {"ann", 1, "bread"},  {"ann", 3, "butter"}, {"bob", 2, "bread"},  {"bob", 4, "butter"},
    {"bob", 4, "jam"},    {"cid", 1, "butter"}, {"cid", 2, "bread"},  {"dee", 5, "bread"},
    {"dee", 5, "butter"}, {"eve", 1, "bread"},  {"eve", 9, "butter"}, {"fay", 4, "butter"},
    {"fay", 4, "jam"},    {"gus", 2, "bread"},  {"hal", 7, "tea"},
};

void print(const HistoryIndex& index, std::span<const Rank> items) {
    for (const Rank item : items)
        std::cout << index.name(item) << ' ';
}

}  // namespace

int main() {
    MiningOptions options;
    options.minCount = 2;
    options.window = 2;

    IndexBuilder builder;
    for (const Row& row : ROWS)
        builder.add(row.customer, row.day, row.product);
    const HistoryIndex index = builder.freeze(options.minCount);
    std::cout << index.historyCount() << " histories\n";

    Observer observer;
    const Result found = mine(index, options, observer);

    for (ItemSetCursor sets(found.itemSets); sets.next();) {
        print(index, sets.items());
        std::cout << sets.count() << '\n';
    }
    for (std::size_t i = 0; i < found.rules.size(); ++i) {
        const Rule rule = found.rules[i];
        print(index, rule.antecedent);
        std::cout << "=> ";
        print(index, rule.subsequent);
        std::cout << rule.count << ", lift " << rule.lift << '\n';
    }
}
