#include "input.hpp"

#include <quarvis/transaction_reader.hpp>

namespace bench {

using quarvis::mining::HistoryIndex;
using quarvis::mining::IndexBuilder;
using quarvis::rule::TransactionFile;
using quarvis::rule::TransactionReader;
using quarvis::rule::TransactionSet;

IndexBuilder rowsOf(const std::string& path) {
    IndexBuilder builder;
    TransactionFile file(path);
    TransactionReader rows(file.stream(), '\t');
    while (rows.next()) {
        builder.beginRow(rows.entity(), rows.time());
        for (const std::string_view item : rows.items())
            builder.addItem(item);
    }
    return builder;
}

HistoryIndex indexOf(const std::string& path, std::uint32_t minCount) {
    return rowsOf(path).freeze(minCount);
}

TransactionSet transactionsOf(const std::string& path) {
    TransactionSet txns;
    txns.readInto(path, '\t');
    return txns;
}

}  // namespace bench
