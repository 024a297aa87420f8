#include <iostream>

#include <moxtel/exception.hpp>
#include <moxtel/file_stream.hpp>
#include <moxtel/table.hpp>

#include <quarvis/parse.hpp>
#include <quarvis/rule_set.hpp>

namespace quarvis::rule {

using moxtel::IOException;
using moxtel::io::DelimitedRowParser;
using moxtel::string::parse;

namespace {

/// The next cell of the current row. `title` and `number` name its column in the error message.
std::string statsCell(DelimitedRowParser& rows, const char* title, int number) {
    if (!rows.hasCell())
        throw new IOException(
            moxtel::exceptf<IOException>("\"%s\" at column %d is missing.", title, number));
    return rows.nextCell();
}

RuleSet::Stats readStats(DelimitedRowParser& rows) {
    RuleSet::Stats stats;
    stats.count = parse<unsigned long>(statsCell(rows, "Count", 2));
    stats.icount = parse<unsigned long>(statsCell(rows, "A union S", 3));
    stats.support = parse<double>(statsCell(rows, "Support", 4));
    stats.confidence = parse<double>(statsCell(rows, "Confidence", 5));
    stats.lift = parse<double>(statsCell(rows, "Lift", 6));
    stats.conviction = parse<double>(statsCell(rows, "Conviction", 7));
    stats.probability = parse<double>(statsCell(rows, "Probability", 8));
    stats.certainty = parse<double>(statsCell(rows, "Certainty", 9));
    if (rows.hasCell())
        throw new IOException("Excess cells in row.");
    return stats;
}

}  // namespace

void RuleSet::readInto(std::istream& in, char delim) {
    std::string header;
    std::getline(in, header);
    DelimitedRowParser rows = DelimitedRowParser::createRFC4180(in, delim, nullptr);
    m_data.clear();
    while (rows.hasRow()) {
        if (!rows.hasCell())
            continue;
        const std::string text = rows.nextCell();
        // After an empty first cell, the remaining cells are read as a row of their own.
        if (text.empty())
            continue;
        const Rule rule = parse<Rule>(text);
        const Stats stats = readStats(rows);
        m_data[rule] = stats;
    }
}

void RuleSet::readInto(const std::string& path, char delim) {
    moxtel::io::InputFile in(path);
    readInto(in, delim);
}

void RuleSet::write(std::ostream& os) const {
    os << "Rule\tCount\tA union S\tSupport\tConfidence\tLift\tConviction\tProbability\tCertainty"
       << std::endl;
    for (const auto& [rule, stats] : m_data)
        os << rule << '\t' << stats.count << '\t' << stats.icount << '\t' << stats.support << '\t'
           << stats.confidence << '\t' << stats.lift << '\t' << stats.conviction << '\t'
           << stats.probability << '\t' << stats.certainty << std::endl;
    std::cerr << m_data.size() << std::endl;
}

void RuleSet::write(const std::string& path) const {
    moxtel::io::OutputFile out(path);
    write(out);
    out.close();
}

}  // namespace quarvis::rule
