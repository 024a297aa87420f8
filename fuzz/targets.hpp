#pragma once

#include <cstdint>
#include <span>
#include <stdexcept>

/// The bodies of the fuzz targets. Each takes any bytes, decodes them into a case, and compares
/// what the product does with a plain reference. The fuzzer and the replay of the corpora call the
/// same functions.
namespace fuzz {

using Bytes = std::span<const std::uint8_t>;

/// Thrown by a body when product and reference disagree; the message has both results.
class Failure : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Compares `CmdLine::parse` with a model of it: result and messages.
void fuzzArguments(Bytes bytes);

/// Compares `string::parse` of every type with plain parsers: values and characters used.
void fuzzValues(Bytes bytes);

/// Compares `DelimitedRowParser` reading blocks with one that calls device and format for every
/// character: cells and positions.
void fuzzDelimitedText(Bytes bytes);

/// Writes a `RuleSet`, reads it and writes it again; also reads one from any bytes.
void fuzzRuleFiles(Bytes bytes);

/// Compares `TransactionSet::readInto`, for streams of all kinds and for files, with reading
/// character by character: histories, error and state of the stream.
void fuzzTransactions(Bytes bytes);

/// Compares devices over files, memory, strings and streams with a string and a position.
void fuzzDevices(Bytes bytes);

/// Compares `BinaryWriter` and `BinaryReader` with bytes assembled and taken apart one by one.
void fuzzBinaryStreams(Bytes bytes);

/// Compares `TextWriter` on sinks of all kinds with a string: text, result of each call, rows,
/// columns.
void fuzzTextWriters(Bytes bytes);

/// Compares `LinkedHashMap` with a vector of pairs.
void fuzzHashContainers(Bytes bytes);

/// Compares `Pointer` and `Array` with the shared pointers of the standard library, and the memory
/// registry with counts.
void fuzzMemory(Bytes bytes);

/// Compares the helpers for strings, character classes, quotes and escapes with plain ones.
void fuzzStringHelpers(Bytes bytes);

/// Compares `configure`, and the run that it configures, with the plain miner of the tests:
/// settings, both files and all messages.
void fuzzToolRun(Bytes bytes);

/// Compares `quarvis::rule::mine` with the plain miner of the tests: results and messages.
void fuzzWholeRun(Bytes bytes);

/// Checks that `quarvis::mining::indexFromBytes` throws, or returns an index that is written as the
/// same bytes, can be queried and can be mined.
void fuzzIndexBytes(Bytes bytes);

/// Compares two ways to run the engine, by `quarvis::mining::mine` and `mineShards`: results to the
/// last bit.
void fuzzEngine(Bytes bytes);

}  // namespace fuzz
