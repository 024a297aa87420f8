#pragma once

#include <cstdint>
#include <span>
#include <stdexcept>

/// The bodies of the fuzz targets. Each takes any bytes, decodes them into a case, and holds what
/// the product does with it against a plain reference. The fuzzer and the replay of the corpora
/// call the same functions.
namespace fuzz {

using Bytes = std::span<const std::uint8_t>;

/// What a body throws when product and reference disagree; the message tells both answers.
class Failure : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// `CmdLine::parse` against a model of it: result and messages.
void fuzzArguments(Bytes bytes);

/// `string::parse` of every type against plain parsers: values and characters used.
void fuzzValues(Bytes bytes);

/// `DelimitedRowParser` in blocks against the walk that asks device and format for every character:
/// cells and positions.
void fuzzDelimitedText(Bytes bytes);

/// `RuleSet` written, read and written again; and read from any bytes.
void fuzzRuleFiles(Bytes bytes);

/// `TransactionSet::readInto` of streams of all kinds and of files, against a reading character by
/// character: histories, error and state of the stream.
void fuzzTransactions(Bytes bytes);

/// Devices over files, memory, strings and streams against a string with a position.
void fuzzDevices(Bytes bytes);

/// `BinaryWriter` and `BinaryReader` against bytes that are put together and taken apart one by
/// one.
void fuzzBinaryStreams(Bytes bytes);

/// `TextWriter` on sinks of all kinds against a string: text, what each call gives, rows, columns.
void fuzzTextWriters(Bytes bytes);

/// `LinkedHashMap` against a vector of pairs.
void fuzzHashContainers(Bytes bytes);

/// `Pointer` and `Array` against the shared pointers of the standard library, and the registry of
/// memory against counts.
void fuzzMemory(Bytes bytes);

/// The helpers for strings, classes of characters, quotes and escapes against plain ones.
void fuzzStringHelpers(Bytes bytes);

/// `configure`, then the run that it asks for, against the plain miner of the tests: settings,
/// both files and all messages.
void fuzzToolRun(Bytes bytes);

/// `quarvis::rule::mine` against the plain miner of the tests: results and messages.
void fuzzWholeRun(Bytes bytes);

/// `quarvis::mining::indexFromBytes`: an error, or an index whose bytes these are and that can be
/// asked and mined.
void fuzzIndexBytes(Bytes bytes);

/// Two of the ways through the engine, `quarvis::mining::mine` and `mineShards`, against each
/// other: results to the last bit.
void fuzzEngine(Bytes bytes);

}  // namespace fuzz
