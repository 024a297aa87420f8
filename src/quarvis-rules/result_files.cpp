#include "result_files.hpp"

#include <charconv>
#include <cstdint>
#include <ostream>
#include <span>
#include <string>

namespace result_files {

namespace {

using quarvis::mining::HistoryIndex;
using quarvis::mining::ItemSets;
using quarvis::mining::Rank;
using quarvis::mining::Rule;
using quarvis::mining::Rules;

/// Assembles a line of a file, then writes and flushes it.
class Line {
  public:
    Line(std::ostream& out, const HistoryIndex& index) : m_out(out), m_index(index) {}

    Line& text(std::string_view text) {
        m_text += text;
        return *this;
    }

    Line& number(std::uint32_t value) {
        char digits[16];
        return text({digits, std::to_chars(digits, digits + sizeof digits, value).ptr});
    }

    /// Formats with six significant digits, as a stream does by default.
    Line& number(double value) {
        constexpr int precision = 6;
        char digits[32];
        return text({digits, std::to_chars(digits, digits + sizeof digits, value,
                                           std::chars_format::general, precision)
                                 .ptr});
    }

    Line& braced(std::span<const Rank> items) {
        const char* before = "{";
        for (const Rank item : items) {
            text(before).text(m_index.name(item));
            before = ",";
        }
        return text("}");
    }

    /// One side of a rule. A single item is written without braces.
    Line& side(std::span<const Rank> items) {
        return items.size() == 1 ? text(m_index.name(items[0])) : braced(items);
    }

    void end() {
        m_text += '\n';
        m_out.write(m_text.data(), static_cast<std::streamsize>(m_text.size()));
        m_out.flush();
        m_text.clear();
    }

  private:
    std::ostream& m_out;
    const HistoryIndex& m_index;
    std::string m_text;
};

template <class RuleAt>
void writeEach(std::ostream& out, const HistoryIndex& index, std::size_t count, RuleAt ruleAt) {
    Line line(out, index);
    line.text(
            "Rule\tCount\tA union S\tSupport\tConfidence\tLift\tConviction\tProbability\t"
            "Certainty")
        .end();
    for (std::size_t i = 0; i < count; ++i) {
        const Rule rule = ruleAt(i);
        line.side(rule.antecedent).text(" => ").side(rule.subsequent);
        line.text("\t").number(rule.count).text("\t").number(rule.unionCount);
        for (const double measure : {rule.support, rule.confidence, rule.lift, rule.conviction,
                                     rule.probability, rule.certainty})
            line.text("\t").number(measure);
        line.end();
    }
}

}  // namespace

void writeRules(std::ostream& out, const HistoryIndex& index, const Rules& rules) {
    writeEach(out, index, rules.size(), [&rules](std::size_t place) { return rules[place]; });
}

void writeRules(std::ostream& out, const HistoryIndex& index, std::size_t count,
                const std::function<Rule(std::size_t)>& rule) {
    writeEach(out, index, count, rule);
}

void writeItemSets(std::ostream& out, const HistoryIndex& index, const ItemSets& sets) {
    Line line(out, index);
    line.text("Count\tItem Set").end();
    for (quarvis::mining::ItemSetCursor cursor(sets); cursor.next();)
        line.number(cursor.count()).text("\t").braced(cursor.items()).end();
}

}  // namespace result_files
