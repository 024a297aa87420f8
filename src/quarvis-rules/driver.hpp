#pragma once

#include <quarvis/rule.hpp>

#include "config.hpp"
#include "mine.hpp"

/// The whole run after configuration: reads the transactions, mines, and writes the rules and, if
/// configured, the item sets. Messages go to standard error.
///
/// A file that cannot be opened reads as empty or is not written. A read or a write of a file that
/// fails later throws `moxtel::io::FileError`. A standard stream throws what it has been set to
/// throw (see `StandardStreams`).
void mine(Configuration& config);

/// Reads the tab-delimited transaction file; "-" is standard input. Prints the numbers of
/// transactions and histories to standard error.
quarvis::rule::TransactionSet readTxns(Configuration& config, const char* filename);

/// @{
/// Writes the rules, or the item sets, to the file; "-" is standard output.
void writeRules(const quarvis::rule::MiningResult& result, const char* filename);
void writeIS(const quarvis::rule::MiningResult& result, const char* filename);
/// @}
