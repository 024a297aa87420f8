#include <cmath>
#include <cstddef>
#include <limits>
#include <sstream>
#include <string>
#include <type_traits>

#include <moxtel/parse.hpp>

#include "plain_values.hpp"
#include "targets.hpp"

namespace fuzz {

namespace {

/// The count that the caller passes in; parsers add to it.
constexpr std::size_t BEFORE = 7;

/// Whether both values are the same. Zeros of different sign differ; all NaNs are the same.
template <class T>
bool isSame(T a, T b) {
    if constexpr (std::is_floating_point_v<T>)
        return std::isnan(a) || std::isnan(b) ? std::isnan(a) && std::isnan(b)
                                              : a == b && std::signbit(a) == std::signbit(b);
    else
        return a == b;
}

template <class T>
void check(const std::string& text, const char* type) {
    const Parsed<T> expected = plainParse<T>(text);
    std::size_t count = BEFORE;
    const T value = moxtel::string::parse<T>(text.c_str(), count);
    const T valueOfString = moxtel::string::parse<T>(text);
    if (isSame(value, expected.value) && isSame(valueOfString, expected.value) &&
        count == BEFORE + expected.used)
        return;
    std::ostringstream message;
    message.precision(std::numeric_limits<double>::max_digits10);
    message << type << " of \"" << text << "\" gives " << value << " and of a string "
            << valueOfString << ", using " << count - BEFORE << ", instead of " << expected.value
            << ", using " << expected.used;
    throw Failure(message.str());
}

}  // namespace

void fuzzValues(Bytes bytes) {
    const std::string whole(bytes.begin(), bytes.end());
    const std::string text = whole.c_str();  // Ends at a NUL, as for the parsers.
    check<short>(text, "short");
    check<unsigned short>(text, "unsigned short");
    check<int>(text, "int");
    check<unsigned int>(text, "unsigned int");
    check<long>(text, "long");
    check<unsigned long>(text, "unsigned long");
    check<long long>(text, "long long");
    check<unsigned long long>(text, "unsigned long long");
    check<float>(text, "float");
    check<double>(text, "double");
    check<bool>(text, "bool");
}

}  // namespace fuzz
