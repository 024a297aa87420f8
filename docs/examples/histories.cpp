// Counts an item set over a transaction history and measures a rule.
#include <iostream>
#include <sstream>

#include <quarvis/rule.hpp>

using quarvis::rule::ItemSet;
using quarvis::rule::Rule;
using quarvis::rule::TransactionSet;

int main() {
    std::istringstream file(
        "customer\tday\titems\n"
        "ann\t1\tbread\tmilk\n"
        "ann\t4\tbutter\n"
        "bob\t2\tbread\n"
        "cem\t1\tmilk\n");
    TransactionSet transactions;
    transactions.readInto(file, '\t');
    std::cout << transactions.size() << " histories, " << transactions.transactionCount()
              << " transactions\n";

    for (const auto& [customer, history] : transactions)
        std::cout << customer << ' ' << history.allItems() << '\n';

    const Rule rule(ItemSet("bread"), ItemSet("butter"));
    const auto both = static_cast<double>(transactions.count(rule.items()));
    const auto before = static_cast<double>(transactions.count(rule.antecedent()));
    std::cout << rule << " has confidence " << both / before << '\n';
}
