#pragma once

#include <istream>
#include <string>

#include "support/plain_input.hpp"
#include "transactions.hpp"

namespace quarvis::test {

/// Reads a transaction file character by character into standard containers. `parseTime` returns
/// the time of a cell's text.
template <class ParseTime>
void readPlainly(Histories& histories, std::istream& in, char delim, ParseTime parseTime) {
    std::string header;
    std::getline(in, header);
    moxtel::io::plain::StreamSource source(in);
    moxtel::io::plain::RowParser rows(source, delim, "\"");
    while (rows.hasRow()) {
        rows.hasCell();
        const std::string key = rows.nextCell();
        rows.hasCell();
        const auto time = parseTime(rows.nextCell());
        auto& items = histories[key][time];
        while (rows.hasCell())
            if (const std::string item = rows.nextCell(); !item.empty())
                items.insert(item);
    }
}

}  // namespace quarvis::test
