#pragma once

#include <quarvis/rule.hpp>

#include "config.hpp"
#include "mine.hpp"

/// The whole run after configuration: reads the transactions, mines, writes the rules and, when
/// asked for, the item sets. Messages go to standard error.
///
/// A file that cannot be opened reads as empty or is not written. A read or a write that fails
/// later throws `moxtel::io::FileError`; on a standard stream, what that stream has been told to
/// throw (see `StandardStreams`).
void mine(Configuration& config);

/// The transactions of the file, tab-delimited; "-" is standard input. Reports their number.
quarvis::rule::TransactionSet readTxns(Configuration& config, const char* filename);

/// Write a part of the result to the file; "-" is standard output.
void writeRules(const quarvis::rule::MiningResult& result, const char* filename);
void writeIS(const quarvis::rule::MiningResult& result, const char* filename);
