#include "oracle/transaction_file.hpp"

#include <stdexcept>
#include <utility>
#include <vector>

#include "oracle/draws.hpp"

namespace oracle {

namespace {

bool holds(const std::string& name, const char* characters) {
    return name.find_first_of(characters) != std::string::npos;
}

std::string cell(const std::string& name) {
    const bool isQuoted = holds(name, "\t");
    if (name.empty() || name.front() == '"' || holds(name, "\n\r\xff") ||
        (isQuoted && holds(name, "\"")))
        throw std::invalid_argument("no transaction file can hold the name \"" + name + '"');
    return isQuoted ? '"' + name + '"' : name;
}

/// The rows of one transaction, without line ends.
std::vector<std::string> rowsOf(const std::string& entity, Time time, const Items& items,
                                bool split, Draws& draws) {
    const std::string start = cell(entity) + '\t' + std::to_string(time);
    std::vector<std::string> rows = {start};
    for (const std::string& item : items) {
        if (split && draws.upTo(1) == 0)
            rows.push_back(start);
        rows.back() += '\t' + cell(item);
    }
    return rows;
}

void shuffle(std::vector<std::string>& rows, Draws& draws) {
    for (std::size_t left = rows.size(); left > 1; --left)
        std::swap(rows[left - 1], rows[draws.upTo(left - 1)]);
}

}  // namespace

std::string textOf(const Table& table, const FileForm& form) {
    Draws draws(form.seed);
    std::vector<std::string> rows;
    for (std::size_t history = 0; history < table.histories.size(); ++history)
        for (const auto& [time, items] : table.histories[history])
            for (std::string& row :
                 rowsOf(entityOf(table, history), time, items, form.split, draws))
                rows.push_back(std::move(row));
    if (form.shuffled)
        shuffle(rows, draws);

    std::string text = "entity\ttime\titems\n";
    for (const std::string& row : rows)
        text += row + '\n';
    return text;
}

}  // namespace oracle
