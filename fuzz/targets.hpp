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

/// `quarvis::rule::mine` against the plain miner of the tests: results and messages.
void fuzzWholeRun(Bytes bytes);

/// `quarvis::mining::indexFromBytes`: an error, or an index whose bytes these are and that can be
/// asked and mined.
void fuzzIndexBytes(Bytes bytes);

/// Two of the ways through the engine, `quarvis::mining::mine` and `mineShards`, against each
/// other: results to the last bit.
void fuzzEngine(Bytes bytes);

}  // namespace fuzz
