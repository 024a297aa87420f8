#include "oracle/table.hpp"

#include <sstream>

namespace oracle {

namespace {

History historyOf(const std::string& text) {
    History history;
    std::istringstream transactions(text);
    for (std::string transaction; transactions >> transaction;) {
        const std::size_t colon = transaction.find(':');
        history[std::stoull(transaction.substr(0, colon))] = itemsOf(transaction.substr(colon + 1));
    }
    return history;
}

}  // namespace

std::string entityOf(const Table& table, std::size_t history) {
    if (!table.entities.empty())
        return table.entities.at(history);
    const std::size_t digits = std::to_string(table.histories.size() - 1).size();
    const std::string number = std::to_string(history);
    return 'e' + std::string(digits - number.size(), '0') + number;
}

Table tableOf(std::initializer_list<const char*> histories) {
    Table table;
    for (const char* history : histories)
        table.histories.push_back(historyOf(history));
    return table;
}

Items itemsOf(const std::string& names) {
    Items items;
    std::istringstream list(names);
    for (std::string name; std::getline(list, name, ',');)
        items.insert(name);
    return items;
}

std::string shortForm(const History& history) {
    std::string text;
    for (const auto& [time, items] : history) {
        if (!text.empty())
            text += ' ';
        text += std::to_string(time) + ':';
        const char* separator = "";
        for (const std::string& item : items) {
            text += separator + item;
            separator = ",";
        }
    }
    return text;
}

std::ostream& operator<<(std::ostream& os, const Table& table) {
    for (const History& history : table.histories)
        os << shortForm(history) << '\n';
    return os;
}

}  // namespace oracle
