#include <quarvis/parse.hpp>

#include <moxtel/exception.hpp>
#include <moxtel/string.hpp>
#include <moxtel/table.hpp>

namespace moxtel::string {

using quarvis::rule::ItemSet;
using quarvis::rule::Rule;

template <>
ItemSet parse<ItemSet>(const std::string& str) {
    ItemSet items;
    std::string list = trim(str, nullptr);
    if (list.starts_with('{')) {
        if (!list.ends_with('}'))
            throw new IOException("Missing trailing brace ('{') in braced form.");
        list = trim(list.substr(1, list.size() - 2), nullptr);
    }
    if (list.empty())
        return items;
    io::DelimitedRowParser cells = io::DelimitedRowParser::createRFC4180(',', nullptr);
    cells.openFromString(list);
    while (cells.hasCell())
        items.add(trim(cells.nextCell(), nullptr));
    return items;
}

template <>
Rule parse<Rule>(const std::string& str) {
    const std::string arrow = "=>";
    const std::size_t pos = str.find(arrow);
    if (pos == std::string::npos)
        throw new IOException("Missing => operator for rule in \"" + str + "\".");
    return Rule(parse<ItemSet>(str.substr(0, pos)), parse<ItemSet>(str.substr(pos + arrow.size())));
}

}  // namespace moxtel::string
