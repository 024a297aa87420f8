/// Measures the writing of a rules file beside its parts: formatting the lines, and flushing after
/// each.

#include <cstdint>
#include <fstream>
#include <limits>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include <quarvis/rule.hpp>

#include "support/check.hpp"
#include "support/draws.hpp"
#include "support/program.hpp"
#include "support/quiet.hpp"
#include "support/samples.hpp"
#include "support/table.hpp"
#include "support/temp_file.hpp"

namespace {

using bench::Arguments;
using bench::Draws;
using bench::Table;
using bench::TempFile;
using bench::Times;
using quarvis::rule::ItemSet;
using quarvis::rule::Rule;
using quarvis::rule::RuleSet;

constexpr std::uint64_t SEED = 5005;

/// `number` rules of one item on each side and up to two more on the left.
RuleSet madeRules(std::size_t number) {
    Draws draws(SEED);
    const auto item = [&draws] {
        return "AN ITEM OF THE SHOP " + std::to_string(draws.below(5000));
    };
    RuleSet rules;
    while (rules.size() < number) {
        ItemSet antecedent;
        for (std::uint64_t left = 1 + draws.below(3); left > 0; --left)
            antecedent.add(item());
        RuleSet::Stats& stats = rules[Rule(antecedent, item())];
        stats.count = draws.below(10'000);
        stats.icount = draws.below(10'000);
        stats.support = draws.uniform();
        stats.confidence = draws.uniform();
        stats.lift = draws.exponential(2);
        stats.conviction =
            draws.below(10) == 0 ? std::numeric_limits<double>::infinity() : draws.exponential(2);
        stats.probability = draws.uniform();
        stats.certainty = draws.uniform();
    }
    return rules;
}

/// The lines of the rules file, without a flush.
std::string format(const RuleSet& rules) {
    std::ostringstream os;
    os << "Rule\tCount\tA union S\tSupport\tConfidence\tLift\tConviction\tProbability\tCertainty\n";
    for (const auto& [rule, stats] : rules)
        os << rule << '\t' << stats.count << '\t' << stats.icount << '\t' << stats.support << '\t'
           << stats.confidence << '\t' << stats.lift << '\t' << stats.conviction << '\t'
           << stats.probability << '\t' << stats.certainty << '\n';
    return os.str();
}

/// The finished lines, with a flush after each.
void flushLines(const std::string& text, const std::string& path) {
    std::ofstream out(path);
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = text.find('\n', begin) + 1;
        out.write(text.data() + begin, static_cast<std::streamsize>(end - begin));
        out.flush();
        begin = end;
    }
}

void run(const Arguments& arguments) {
    const RuleSet rules = madeRules(arguments.rows);
    const std::string text = format(rules);
    const TempFile file;
    const bench::Quiet quiet;
    rules.write(file.path());
    bench::check(bench::contentOf(file.path()) == text, "the rules file");
    flushLines(text, file.path());
    bench::check(bench::contentOf(file.path()) == text, "the flushed lines");

    const auto lines = static_cast<double>(rules.size() + 1);
    const Table table("Writing " + bench::grouped(rules.size()) +
                          " rules: nanoseconds of processor time a line, medians of " +
                          std::to_string(arguments.runs) + " runs",
                      {"to", "written", "least..greatest", "formatted", "flushed",
                       "written/(formatted + flushed)"});
    for (const std::string& path : {file.path(), std::string("/dev/null")}) {
        std::string formatted;
        const std::vector<Times> times = bench::inTurns(
            arguments.runs, {[&] { return bench::timed([&] { rules.write(path); }); },
                             [&] { return bench::timed([&] { formatted = format(rules); }); },
                             [&] { return bench::timed([&] { flushLines(text, path); }); }});
        const auto cost = [lines](double seconds) {
            return bench::fixed(seconds / lines * 1e9, 0);
        };
        const bench::Samples& written = times[0].cpu;
        const double parts = times[1].cpu.median() + times[2].cpu.median();
        table.row({path == file.path() ? "a file" : path, cost(written.median()),
                   cost(written.least()) + ".." + cost(written.greatest()),
                   cost(times[1].cpu.median()), cost(times[2].cpu.median()),
                   bench::fixed(written.median() / parts, 2)});
    }
}

}  // namespace

int main(int argc, char** argv) {
    return bench::runProgram(argc, argv, run);
}
