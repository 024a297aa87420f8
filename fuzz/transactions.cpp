#include <cstddef>
#include <ios>
#include <istream>
#include <sstream>
#include <stdexcept>
#include <string>

#include <quarvis/history.hpp>

#include "chunk_buffer.hpp"
#include "input.hpp"
#include "memory_file.hpp"
#include "plain_values.hpp"
#include "targets.hpp"
#include "unit/quarvis/plain_transactions.hpp"

namespace fuzz {

namespace {

using quarvis::rule::History;
using quarvis::rule::TransactionSet;
using quarvis::test::Histories;
using quarvis::test::historiesOf;
using quarvis::test::readPlainly;

/// Parsers treat a NUL as the end of the text.
History::Time timeOf(const std::string& text) {
    return plainParse<History::Time>(text.c_str()).value;
}

/// How the characters arrive.
struct Way {
    std::size_t chunkSize;     ///< Characters in the buffer at a time; 0 means all.
    bool fails;                ///< Whether the buffer throws at the end of the text.
    std::ios::iostate thrown;  ///< The states at which the stream throws.
    std::size_t skipped;       ///< The number of characters before the text.
};

struct Outcome {
    Histories histories;
    std::string error;
    std::ios::iostate state = std::ios::goodbit;

    bool operator==(const Outcome&) const = default;
};

/// Calls `read(in)` with a stream of this kind and records the outcome.
template <class Read>
void readBy(const Way& way, const std::string& text, Outcome& outcome, Read read) {
    std::istringstream whole(std::string(way.skipped, '\n') + text);
    ChunkBuffer chunks(text, way.chunkSize == 0 ? 1 : way.chunkSize, way.fails);
    std::istream inChunks(&chunks);
    std::istream& in = way.chunkSize == 0 ? static_cast<std::istream&>(whole) : inChunks;
    if (way.chunkSize == 0)
        in.seekg(static_cast<std::streamoff>(way.skipped));
    in.exceptions(way.thrown);
    try {
        read(in);
    } catch (const std::ios::failure&) {
        outcome.error = "failure";
    } catch (const std::runtime_error& error) {
        outcome.error = error.what();
    }
    outcome.state = in.rdstate();
}

Way wayOf(Input& input) {
    const unsigned kind = input.byte();
    constexpr std::ios::iostate states[] = {std::ios::goodbit, std::ios::eofbit, std::ios::failbit,
                                            std::ios::badbit};
    return {kind % 2 == 0 ? std::size_t{0} : std::size_t{1} + input.byte() % 40, kind / 2 % 2 != 0,
            states[kind / 4 % 4], kind / 16 % 4 * std::size_t{5}};
}

}  // namespace

void fuzzTransactions(Bytes bytes) {
    Input input(bytes);
    const Way way = wayOf(input);
    const char delim = "\t,;\xff\"\r\n\0"[input.byte() % 8];
    const std::size_t times = 1 + input.byte() % 2;
    const std::string text = input.rest();

    Outcome expected;
    Outcome outcome;
    TransactionSet transactions;
    for (std::size_t i = 0; i < times; ++i) {
        readBy(way, text, expected,
               [&](std::istream& in) { readPlainly(expected.histories, in, delim, timeOf); });
        readBy(way, text, outcome, [&](std::istream& in) { transactions.readInto(in, delim); });
    }
    outcome.histories = historiesOf(transactions);
    if (outcome != expected)
        throw Failure("a stream gives " + std::to_string(outcome.histories.size()) +
                      " histories and \"" + outcome.error + "\" instead of " +
                      std::to_string(expected.histories.size()) + " and \"" + expected.error + '"');

    Histories plain;
    std::istringstream in(text);
    readPlainly(plain, in, delim, timeOf);
    TransactionSet ofFile;
    ofFile.readInto(MemoryFile(text).path(), delim);
    if (historiesOf(ofFile) != plain)
        throw Failure("a file gives other histories");
    std::size_t count = 0;
    for (const auto& [key, history] : plain)
        count += history.size();
    if (ofFile.transactionCount() != count || ofFile.size() != plain.size())
        throw Failure("a file has another number of transactions");
}

}  // namespace fuzz
