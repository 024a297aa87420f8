#include "driver.hpp"

#include <iostream>
#include <string>

#include <moxtel/file_stream.hpp>

#include <quarvis/mining/index_builder.hpp>
#include <quarvis/mining/mine.hpp>
#include <quarvis/transaction_reader.hpp>

#include "engine_options.hpp"
#include "progress_messages.hpp"
#include "result_files.hpp"

using quarvis::mining::HistoryIndex;
using quarvis::mining::IndexBuilder;
using quarvis::rule::MiningResult;
using quarvis::rule::TransactionFile;
using quarvis::rule::TransactionReader;
using quarvis::rule::TransactionSet;

namespace {

bool isStandardStream(const std::string& filename) {
    return filename == "-";
}

void tellRead(const char* filename, std::size_t transactions, std::size_t histories) {
    std::cerr << "Read " << filename << " with " << transactions << " transaction(s) over "
              << histories << " history record(s)." << std::endl;
}

void readRows(std::istream& in, IndexBuilder& builder) {
    TransactionReader rows(in, '\t');
    while (rows.next()) {
        builder.beginRow(rows.entity(), rows.time());
        for (const std::string_view item : rows.items())
            builder.addItem(item);
    }
}

HistoryIndex readIndex(const Configuration& config) {
    IndexBuilder builder;
    if (isStandardStream(config.inputFile)) {
        readRows(std::cin, builder);
    } else {
        TransactionFile file(config.inputFile);
        readRows(file.stream(), builder);
    }
    HistoryIndex index = builder.freeze(config.minCount);
    tellRead(config.inputFile.c_str(), index.transactionCount(), index.historyCount());
    return index;
}

/// Calls `write` with standard output if the name is "-", otherwise with the file opened.
template <class Write>
void writeTo(const std::string& filename, Write write) {
    if (isStandardStream(filename)) {
        write(std::cout);
        return;
    }
    moxtel::io::OutputFile out(filename);
    write(out);
    out.close();
}

}  // namespace

void mine(Configuration& config) {
    const HistoryIndex index = readIndex(config);
    ProgressMessages messages(config.maxOrder);
    const quarvis::mining::Result result =
        quarvis::mining::mine(index, engineOptions(config), messages);
    messages.rulesPassed(result.rules.size());
    writeTo(config.outputFile,
            [&](std::ostream& out) { result_files::writeRules(out, index, result.rules); });
    std::cerr << result.rules.size() << std::endl << config.itemSetFile << std::endl;
    if (!config.itemSetFile.empty())
        writeTo(config.itemSetFile, [&](std::ostream& out) {
            result_files::writeItemSets(out, index, result.itemSets);
        });
}

TransactionSet readTxns(Configuration&, const char* filename) {
    TransactionSet txns;
    if (isStandardStream(filename))
        txns.readInto(std::cin, '\t');
    else
        txns.readInto(std::string(filename), '\t');
    tellRead(filename, txns.transactionCount(), txns.size());
    return txns;
}

void writeRules(const MiningResult& result, const char* filename) {
    writeTo(filename, [&result](std::ostream& out) { result.rules().write(out); });
}

void writeIS(const MiningResult& result, const char* filename) {
    writeTo(filename, [&result](std::ostream& out) { result.itemSets().write(out); });
}
