#include "found.hpp"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <functional>
#include <ostream>
#include <span>
#include <streambuf>
#include <system_error>
#include <utility>
#include <vector>

#include "result_files.hpp"

namespace binding {

using quarvis::mining::at;
using quarvis::mining::ItemSetCursor;
using quarvis::mining::ItemSets;
using quarvis::mining::MiningOptions;
using quarvis::mining::Rank;
using quarvis::mining::Rule;

namespace {

/// The options of a run with the watch's budget. Begins the steps of the search.
MiningOptions begin(const MiningOptions& options, Watch& watch) {
    MiningOptions watched = options;
    watched.budget = watch.budget();
    watch.beginSearch(options.maxSize);
    return watched;
}

std::shared_ptr<const ItemSets> share(ItemSets sets) {
    return std::make_shared<const ItemSets>(std::move(sets));
}

/// Visits each listed set in the order of the item-set file.
template <class Visit>
void forEachListed(const Found& found, Visit visit) {
    std::size_t place = 0;
    for (ItemSetCursor cursor(*found.itemSets); cursor.next(); ++place)
        if (found.listed.empty() || found.listed[place] != 0)
            visit(cursor);
}

}  // namespace

Found mine(const IndexPointer& index, const MiningOptions& options, Watch& watch) {
    return watch.run([&] {
        quarvis::mining::Result result =
            quarvis::mining::mine(*index, begin(options, watch), watch);
        return Found{
            index, share(std::move(result.itemSets)), RuleList(std::move(result.rules)), {}, {},
            {}};
    });
}

Found mineItemSets(const IndexPointer& index, const MiningOptions& options, Watch& watch) {
    return watch.run([&] {
        return Found{index, share(findItemSets(*index, begin(options, watch), watch)), {}, {}, {},
                     {}};
    });
}

bool Found::allows(const Rule& rule) const {
    const auto isMarked = [](std::span<const Rank> side, const std::vector<std::uint8_t>& marks) {
        return marks.empty() || std::all_of(side.begin(), side.end(),
                                            [&marks](Rank item) { return marks[at(item)] != 0; });
    };
    return isMarked(rule.antecedent, left) && isMarked(rule.subsequent, right);
}

std::size_t Found::setCount() const {
    return listed.empty() ? itemSets->size()
                          : static_cast<std::size_t>(
                                std::count(listed.begin(), listed.end(), std::uint8_t{1}));
}

std::vector<std::size_t> Found::setCounts() const {
    std::vector<std::size_t> counts(itemSets->levels());
    if (listed.empty()) {
        for (std::size_t size = 1; size <= counts.size(); ++size)
            counts[size - 1] = itemSets->count(size);
    } else {
        forEachListed(
            *this, [&counts](const ItemSetCursor& cursor) { ++counts[cursor.items().size() - 1]; });
    }
    return counts;
}

Columns ruleColumns(const Found& found, Watch& watch) {
    const RuleList& rules = found.rules;
    Lists antecedents;
    Lists consequents;
    std::vector<std::uint32_t> counts[4];
    std::vector<double> measures[6];
    watch.run([&] {
        for (auto& column : counts)
            column.reserve(rules.size());
        for (auto& column : measures)
            column.reserve(rules.size());
        for (std::size_t place = 0; place < rules.size(); ++place) {
            watch.endIfAsked();
            const Rule rule = rules[place];
            antecedents.add(rule.antecedent);
            consequents.add(rule.subsequent);
            counts[0].push_back(rule.count);
            counts[1].push_back(rule.unionCount);
            counts[2].push_back(rule.antecedentCount);
            counts[3].push_back(rule.subsequentCount);
            measures[0].push_back(rule.support);
            measures[1].push_back(rule.confidence);
            measures[2].push_back(rule.lift);
            measures[3].push_back(rule.conviction);
            measures[4].push_back(rule.probability);
            measures[5].push_back(rule.certainty);
        }
    });
    Columns columns;
    columns["antecedents"] = toPython(std::move(antecedents));
    columns["consequents"] = toPython(std::move(consequents));
    const char* const countNames[] = {"count", "union_count", "antecedent_count",
                                      "consequent_count"};
    for (std::size_t i = 0; i < 4; ++i)
        columns[countNames[i]] = arrayOf(std::move(counts[i]));
    const char* const measureNames[] = {"support",    "confidence",  "lift",
                                        "conviction", "probability", "certainty"};
    for (std::size_t i = 0; i < 6; ++i)
        columns[measureNames[i]] = arrayOf(std::move(measures[i]));
    return columns;
}

Columns itemSetColumns(const Found& found, const std::optional<Column<std::uint8_t>>& keep,
                       Watch& watch) {
    if (keep && keep->size() != found.setCount())
        throw std::invalid_argument("a mask of another length");
    const std::uint8_t* const marks = keep ? keep->data() : nullptr;
    Lists items;
    std::vector<std::uint32_t> counts;
    watch.run([&] {
        std::size_t place = 0;  // among the listed sets
        forEachListed(found, [&](const ItemSetCursor& cursor) {
            watch.endIfAsked();
            if (marks != nullptr && marks[place++] == 0)
                return;
            items.add(cursor.items());
            counts.push_back(cursor.count());
        });
    });
    Columns columns;
    columns["items"] = toPython(std::move(items));
    columns["count"] = arrayOf(std::move(counts));
    return columns;
}

namespace {

[[noreturn]] void throwSystemError() {
    throw std::system_error(errno, std::generic_category());
}

/// Writes only the kept lines of a result file. Names may contain line ends, so lines are told
/// apart by the flush that the writers do after each line. The file itself is flushed at the end.
class KeptLines : public std::streambuf {
  public:
    /// `isKept(i)` tells whether to write line i after the header, from 0.
    KeptLines(std::ofstream& out, std::function<bool(std::size_t)> isKept)
        : m_out(out), m_isKept(std::move(isKept)) {}

  protected:
    std::streamsize xsputn(const char* text, std::streamsize size) override {
        m_line.append(text, static_cast<std::size_t>(size));
        return size;
    }
    int_type overflow(int_type c) override {
        m_line += traits_type::to_char_type(c);
        return c;
    }
    int sync() override {
        if (m_lines == 0 || m_isKept(m_lines - 1))
            m_out.write(m_line.data(), static_cast<std::streamsize>(m_line.size()));
        ++m_lines;
        m_line.clear();
        return m_out ? 0 : -1;
    }

  private:
    std::ofstream& m_out;
    std::function<bool(std::size_t)> m_isKept;
    std::string m_line;
    std::size_t m_lines = 0;
};

template <class Write>
void writeLines(const std::string& path, std::function<bool(std::size_t)> isKept, Write write) {
    errno = 0;
    std::ofstream file(path, std::ios::binary);
    if (!file)
        throwSystemError();
    KeptLines kept(file, std::move(isKept));
    std::ostream out(&kept);
    write(out);
    file.close();
    if (!file || !out)
        throwSystemError();
}

}  // namespace

void writeFile(const Found& found, const std::string& path, bool rules,
               const std::optional<Column<std::uint8_t>>& keep) {
    if (keep && keep->size() != (rules ? found.rules.size() : found.setCount()))
        throw std::invalid_argument("a mask of another length");
    const std::uint8_t* const marks = keep ? keep->data() : nullptr;
    const nb::gil_scoped_release released;
    if (rules) {
        writeLines(
            path, [marks](std::size_t rule) { return marks == nullptr || marks[rule] != 0; },
            [&found](std::ostream& out) {
                result_files::writeRules(out, *found.index, found.rules.size(),
                                         [&found](std::size_t rule) { return found.rules[rule]; });
            });
        return;
    }
    std::size_t next = 0;  // among the listed sets
    writeLines(
        path,
        [&](std::size_t set) {
            if (!found.listed.empty() && found.listed[set] == 0)
                return false;
            return marks == nullptr || marks[next++] != 0;
        },
        [&found](std::ostream& out) {
            result_files::writeItemSets(out, *found.index, *found.itemSets);
        });
}

}  // namespace binding
