// recommend [-l LIFT] PRICES RULES
//
// Prints what the rules of a rules file recommend to a buyer, and the cost by a table of prices.
#include <iostream>
#include <limits>
#include <map>
#include <memory>
#include <string>

#include <moxtel/cmdline.hpp>
#include <moxtel/exception.hpp>
#include <moxtel/string.hpp>
#include <moxtel/table.hpp>

#include <quarvis/rule.hpp>

using moxtel::cmdline::CmdLine;
using moxtel::cmdline::Domain;
using moxtel::io::DelimitedRowParser;
using quarvis::rule::Item;
using quarvis::rule::RuleSet;

namespace {

/// Rows of an item and its price, separated by a comma.
std::map<Item, double> readPrices(const std::string& path) {
    std::map<Item, double> prices;
    DelimitedRowParser table = DelimitedRowParser::createRFC4180(',', nullptr);
    table.open(path, moxtel::io::OPEN_READ);
    while (table.hasRow()) {
        std::string cells[2];
        for (std::size_t i = 0; table.hasCell(); ++i) {
            const std::string cell = table.nextCell();
            if (i < 2)
                cells[i] = cell;
        }
        prices[cells[0]] = moxtel::string::parse<double>(cells[1]);
    }
    return prices;
}

}  // namespace

int main(int argc, char** argv) {
    CmdLine options;
    options.add('l', "lift", Domain::FLOAT, "the least lift of a rule", 1, false);
    const CmdLine::Result arguments = options.parse(argc, argv);
    if (!arguments || arguments.excess.size() != 2) {
        std::cerr << "usage: recommend [-l LIFT] PRICES RULES\n";
        return 1;
    }
    double lift = 1;
    for (const CmdLine::Binding& binding : arguments.bindings)
        lift = double{binding.values[0].data.fl};

    const std::map<Item, double> prices = readPrices(arguments.excess[0]);
    RuleSet rules;
    try {
        rules.readInto(arguments.excess[1], '\t');
    } catch (moxtel::IOException* thrown) {
        const std::unique_ptr<moxtel::IOException> problem(thrown);
        std::cerr << arguments.excess[1] << ": " << problem->what() << '\n';
        return 1;
    }
    rules.filter(1, 0, 0, lift, std::numeric_limits<double>::infinity());

    for (const auto& [rule, stats] : rules) {
        double price = 0;
        for (const Item& item : rule.subsequent())
            if (const auto found = prices.find(item); found != prices.end())
                price += found->second;
        std::cout << rule << ": " << price << '\n';
    }
}
