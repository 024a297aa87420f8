#include "generated_tables.hpp"

#include <fstream>
#include <stdexcept>

#include "event_log.hpp"
#include "many_rows.hpp"
#include "quest.hpp"
#include "sparse_baskets.hpp"
#include "word_sequences.hpp"

namespace bench {

namespace {

constexpr std::uint64_t QUEST_SEED = 19940912;

/// With this exponent words make two to three times the sets and rules.
constexpr double STEEP = 1.2;

void writeEventLog(std::ostream& os, std::size_t size) {
    EventLog log;
    log.cases = size;
    log.write(os);
}

void writeWords(std::ostream& os, std::size_t size) {
    WordSequences words;
    words.sequences = size;
    words.write(os);
}

void writeSteepWords(std::ostream& os, std::size_t size) {
    WordSequences words;
    words.sequences = size;
    words.exponent = STEEP;
    words.write(os);
}

void writeSparse(std::ostream& os, std::size_t size) {
    SparseBaskets baskets;
    baskets.baskets = size;
    baskets.write(os);
}

void writeQuest(std::ostream& os, std::size_t size) {
    os << QuestTable(QuestShape(), size, QUEST_SEED).file(size);
}

void writeManyRows(std::ostream& os, std::size_t size) {
    ManyRows table;
    table.rows = size;
    table.write(os);
}

const std::vector<GeneratedTable> TABLES{
    {"event_log", "cases", EventLog().cases, writeEventLog},
    {"words", "sequences", WordSequences().sequences, writeWords},
    {"steep_words", "sequences", WordSequences().sequences, writeSteepWords},
    {"sparse", "baskets", SparseBaskets().baskets, writeSparse},
    {"quest", "histories", 16'000, writeQuest},
    {"many_rows", "rows", ManyRows().rows, writeManyRows},
};

}  // namespace

const std::vector<GeneratedTable>& generatedTables() {
    return TABLES;
}

const GeneratedTable& generatedTable(const std::string& kind) {
    std::string kinds;
    for (const GeneratedTable& table : TABLES) {
        if (table.kind == kind)
            return table;
        kinds += ' ' + table.kind;
    }
    throw std::runtime_error("no kind " + kind + ", but:" + kinds);
}

void generate(const std::string& kind, std::size_t size, const std::string& path) {
    const GeneratedTable& table = generatedTable(kind);
    std::ofstream out(path, std::ios::binary);
    table.write(out, size == 0 ? table.usualSize : size);
    if (!out.flush())
        throw std::runtime_error("cannot write " + path);
}

}  // namespace bench
