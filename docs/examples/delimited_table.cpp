// Reads a table, sums a column of it, and writes one row of another table.
#include <iostream>
#include <string>
#include <vector>

#include <moxtel/string.hpp>
#include <moxtel/table.hpp>

using moxtel::io::DelimitedRowParser;
using moxtel::io::RFC4180DelimitedRowFormat;
using moxtel::io::TextWriter;

namespace {

/// The cells of the current row.
std::vector<std::string> readRow(DelimitedRowParser& table) {
    std::vector<std::string> cells;
    while (table.hasCell())
        cells.push_back(table.nextCell());
    return cells;
}

}  // namespace

int main() {
    DelimitedRowParser table = DelimitedRowParser::createRFC4180(';', nullptr);
    table.openFromString(
        "item;pieces;price\n"
        "\"bread; rye\";2;3.5\n"
        "milk;4;1.25\n");

    const std::vector<std::string> titles = readRow(table);
    double total = 0;
    while (table.hasRow()) {
        const std::vector<std::string> row = readRow(table);
        if (row.size() != titles.size())
            continue;
        std::cout << row[0] << ": " << row[2] << " each\n";
        total += moxtel::string::parse<unsigned>(row[1]) * moxtel::string::parse<double>(row[2]);
    }

    RFC4180DelimitedRowFormat format(',', nullptr);
    TextWriter out(std::cout);
    format.writeCell(out, "total, in all", false);
    format.writeDelim(out);
    format.writeCell(out, std::to_string(total), true);
    out.writeLine();
}
