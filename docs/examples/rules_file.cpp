// Reads a rules file, keeps the interesting rules and writes them again.
#include <iostream>
#include <limits>
#include <memory>
#include <sstream>

#include <moxtel/exception.hpp>

#include <quarvis/rule.hpp>

using quarvis::rule::RuleSet;

int main() {
    std::istringstream file(
        "Rule\tCount\tA union S\tSupport\tConfidence\tLift\tConviction\tProbability\tCertainty\n"
        "bread => milk\t6\t6\t0.6\t0.75\t1.25\t1.6\t1\tinf\n"
        "{bread,milk} => butter\t3\t3\t0.3\t0.5\t1\t1\t0.6\t1.5\n"
        "butter => bread\t2\t3\t0.2\t0.6\t0.75\t0.5\t0.375\t0.6\n");
    RuleSet rules;
    try {
        rules.readInto(file, '\t');
    } catch (moxtel::IOException* thrown) {
        const std::unique_ptr<moxtel::IOException> problem(thrown);
        std::cerr << problem->what() << '\n';
        return 1;
    }

    // At least 3 histories and a lift of 1. Prints each rule that stays to std::cerr.
    const double any = std::numeric_limits<double>::infinity();
    rules.filter(3, 0, 0, 1, any);

    for (const auto& [rule, stats] : rules)
        std::cout << rule << " (" << stats.confidence << ")\n";
    // Also prints the number of rules to std::cerr.
    rules.write(std::cout);
}
