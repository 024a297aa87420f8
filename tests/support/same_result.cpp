#include "support/same_result.hpp"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace support {

namespace {

using quarvis::mining::Level;
using quarvis::mining::Result;
using quarvis::mining::Rule;

bool areSame(const Level& a, const Level& b) {
    return a.prefix == b.prefix && a.last == b.last && a.count == b.count &&
           a.extensions == b.extensions;
}

bool areSame(double a, double b) {
    return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}

bool areSame(const Rule& a, const Rule& b) {
    return std::ranges::equal(a.antecedent, b.antecedent) &&
           std::ranges::equal(a.subsequent, b.subsequent) && a.count == b.count &&
           a.unionCount == b.unionCount && a.antecedentCount == b.antecedentCount &&
           a.subsequentCount == b.subsequentCount && areSame(a.support, b.support) &&
           areSame(a.confidence, b.confidence) && areSame(a.lift, b.lift) &&
           areSame(a.conviction, b.conviction) && areSame(a.probability, b.probability) &&
           areSame(a.certainty, b.certainty);
}

std::string sizesOf(const char* what, std::size_t a, std::size_t b) {
    return std::to_string(a) + " and " + std::to_string(b) + what;
}

}  // namespace

std::string differenceOf(const Result& a, const Result& b) {
    if (a.itemSets.levels() != b.itemSets.levels())
        return sizesOf(" levels", a.itemSets.levels(), b.itemSets.levels());
    for (std::size_t size = 1; size <= a.itemSets.levels(); ++size)
        if (!areSame(a.itemSets.level(size), b.itemSets.level(size)))
            return "the levels of size " + std::to_string(size);
    if (a.rules.size() != b.rules.size())
        return sizesOf(" rules", a.rules.size(), b.rules.size());
    for (std::size_t i = 0; i < a.rules.size(); ++i)
        if (!areSame(a.rules[i], b.rules[i]))
            return "rule " + std::to_string(i);
    return "";
}

}  // namespace support
