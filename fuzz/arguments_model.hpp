#pragma once

#include <cstddef>
#include <string>
#include <vector>

/// What the parser of arguments must do, in the plainest form, with options of its own.
namespace fuzz {

struct OptionRow {
    char shortKey;        ///< NUL for none.
    const char* longKey;  ///< Empty for none.
    unsigned domain;
    std::size_t least;
    std::size_t most;
};

/// The tool's options, then one of each kind that it has not. Their serials count from 1.
extern const std::vector<OptionRow> OPTIONS;

/// All that a parse shows.
struct Outcome {
    bool success = false;
    std::vector<std::string> bindings;  ///< Each followed by its values.
    std::vector<std::string> excess;
    std::string out;
    std::string err;

    bool operator==(const Outcome&) const = default;
};

std::string describe(const Outcome& outcome);

/// The texts of `Outcome::bindings`; of reals the exact value.
std::string describeBinding(std::size_t position, unsigned serial);
std::string describeValue(const std::string& raw, bool value);
std::string describeValue(const std::string& raw, int value);
std::string describeValue(const std::string& raw, unsigned value);
std::string describeValue(const std::string& raw, float value);

/// The outcome that the arguments after the program's name must have.
Outcome modelled(const std::vector<std::string>& arguments);

}  // namespace fuzz
