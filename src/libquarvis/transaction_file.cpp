#include <fstream>
#include <utility>

#include <moxtel/parse.hpp>
#include <moxtel/table.hpp>

#include <quarvis/history.hpp>

namespace quarvis::rule {

using moxtel::io::DelimitedRowParser;
using moxtel::string::parse;

void TransactionSet::readInto(std::istream& in, char delim) {
    std::string header;
    std::getline(in, header);
    DelimitedRowParser rows = DelimitedRowParser::createRFC4180(in, delim, nullptr);
    while (rows.hasRow()) {
        // A missing cell is no error: what follows the line end is read in its place.
        rows.hasCell();
        const std::string key = rows.nextCell();
        rows.hasCell();
        const History::Time time = parse<History::Time>(rows.nextCell());
        ItemSet& target = m_data[key][time];
        while (rows.hasCell()) {
            Item item = rows.nextCell();
            if (!item.empty())
                target.add(std::move(item));
        }
    }
}

void TransactionSet::readInto(const std::string& path, char delim) {
    std::ifstream in(path);
    readInto(in, delim);
}

}  // namespace quarvis::rule
