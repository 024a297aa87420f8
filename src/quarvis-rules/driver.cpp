#include "driver.hpp"

#include <iostream>
#include <string>

using quarvis::rule::MiningResult;
using quarvis::rule::TransactionSet;

namespace {

bool isStandardStream(const std::string& filename) {
    return filename == "-";
}

template <class Content>
void write(const Content& content, const std::string& filename) {
    if (isStandardStream(filename))
        content.write(std::cout);
    else
        content.write(filename);
}

}  // namespace

void mine(Configuration& config) {
    const TransactionSet txns = readTxns(config, config.inputFile.c_str());
    const MiningResult result = quarvis::rule::mine(config, txns);
    writeRules(result, config.outputFile.c_str());
    std::cerr << config.itemSetFile << std::endl;
    if (!config.itemSetFile.empty())
        writeIS(result, config.itemSetFile.c_str());
}

TransactionSet readTxns(Configuration&, const char* filename) {
    TransactionSet txns;
    if (isStandardStream(filename))
        txns.readInto(std::cin, '\t');
    else
        txns.readInto(std::string(filename), '\t');
    std::cerr << "Read " << filename << " with " << txns.transactionCount()
              << " transaction(s) over " << txns.size() << " history record(s)." << std::endl;
    return txns;
}

void writeRules(const MiningResult& result, const char* filename) {
    write(result.rules(), filename);
}

void writeIS(const MiningResult& result, const char* filename) {
    write(result.itemSets(), filename);
}
