#include "table.hpp"

#include <sstream>

namespace mining_tests {

using quarvis::rule::History;
using quarvis::rule::ItemSet;
using quarvis::rule::TransactionSet;

namespace {

std::set<std::string> namesOf(const std::string& text) {
    std::set<std::string> names;
    std::istringstream list(text);
    for (std::string name; std::getline(list, name, ',');)
        names.insert(name);
    return names;
}

TableHistory parseHistory(const std::string& text) {
    TableHistory history;
    std::istringstream transactions(text);
    for (std::string transaction; transactions >> transaction;) {
        const std::size_t colon = transaction.find(':');
        const auto time = static_cast<std::uint32_t>(std::stoul(transaction.substr(0, colon)));
        history[time] = namesOf(transaction.substr(colon + 1));
    }
    return history;
}

void fill(History& target, const TableHistory& history) {
    for (const auto& [time, items] : history)
        for (ItemSet& transaction = target[time]; const std::string& item : items)
            transaction.add(item);
}

}  // namespace

Table tableOf(std::initializer_list<const char*> histories) {
    Table table;
    for (const char* history : histories)
        table.histories.push_back(parseHistory(history));
    return table;
}

ItemSet itemsOf(const std::string& names) {
    ItemSet items;
    for (const std::string& name : namesOf(names))
        items.add(name);
    return items;
}

std::string shortForm(const TableHistory& history) {
    std::string text;
    for (const auto& [time, items] : history) {
        text += (text.empty() ? "" : " ") + std::to_string(time) + ':';
        const char* separator = "";
        for (const std::string& item : items) {
            text += separator + item;
            separator = ",";
        }
    }
    return text;
}

std::ostream& operator<<(std::ostream& os, const Table& table) {
    for (const TableHistory& history : table.histories)
        os << shortForm(history) << '\n';
    return os;
}

History historyOf(const TableHistory& history) {
    History made;
    fill(made, history);
    return made;
}

TransactionSet transactionsOf(const Table& table) {
    // A transaction file makes the entities; its keys all have the same length, so their order is
    // that of the table. The items do not pass through the file: they may be any bytes.
    std::string file = "\n";
    std::size_t key = 10'000;
    for (const TableHistory& history : table.histories)
        file += std::to_string(key++) + '\t' + std::to_string(history.begin()->first) + '\n';
    std::istringstream in(file);
    TransactionSet txns;
    txns.readInto(in, '\t');

    auto entity = txns.begin();
    for (const TableHistory& history : table.histories)
        fill((entity++)->second, history);
    return txns;
}

}  // namespace mining_tests
