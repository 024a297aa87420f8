#pragma once

#include <cstddef>
#include <string>
#include <vector>

/// A plain model of the argument parser, with its own set of options.
namespace fuzz {

struct OptionRow {
    char shortKey;        ///< NUL for none.
    const char* longKey;  ///< Empty for none.
    unsigned domain;
    std::size_t least;
    std::size_t most;
};

/// The tool's options, then one option of each kind that the tool does not use. Their serials count
/// from 1.
extern const std::vector<OptionRow> OPTIONS;

/// The observable result of a parse.
struct Outcome {
    bool success = false;
    std::vector<std::string> bindings;  ///< Each followed by its values.
    std::vector<std::string> excess;
    std::string out;
    std::string err;

    bool operator==(const Outcome&) const = default;
};

std::string describe(const Outcome& outcome);

/// The texts of `Outcome::bindings`. Real numbers are written exactly.
std::string describeBinding(std::size_t position, unsigned serial);
std::string describeValue(const std::string& raw, bool value);
std::string describeValue(const std::string& raw, int value);
std::string describeValue(const std::string& raw, unsigned value);
std::string describeValue(const std::string& raw, float value);

/// The expected outcome for these arguments, which do not include the program's name.
Outcome modelled(const std::vector<std::string>& arguments);

}  // namespace fuzz
