#pragma once

#include <cstddef>
#include <string>

#pragma GCC visibility push(default)

/// \file
/// Values from text. A parser neither throws nor reports an error. It gives a value and says how
/// many characters it used; a caller that needs the whole text to be a value compares that number
/// with the length. All parsers read a NUL-terminated text, which is not null, from its first
/// character on, in time linear in its length. Any thread may call them.
namespace moxtel::string {

/// The parser of `T`: a type `ValueType` and `static ValueType parse(const char* src, size_t& i)`,
/// which adds the number of characters used to `i` (a running count, never an index into `src`).
/// The parsers of the library follow. Specialise the template for other types.
template <class T>
struct ParseImpl;

/// The parser of `T`, an integer type from `short` to `unsigned long long`, `float` or `double`.
///
/// Integers have an optional sign, also for the unsigned types (where "-5" wraps around), and
/// decimal digits. Without digits the value is 0, and a sign is used. An overflow gives 0 and uses
/// nothing, but is noticed only where a digit makes the value smaller.
///
/// Reals have an optional sign. Then comes a word that begins with `i` or `I` (infinity; the whole
/// rest of the text is used), or the rest "nan" in any case, or digits, a point, digits, `E` or `e`
/// and an exponent, of which any may be absent; an exponent alone multiplies 1. Where the text ends
/// with that point or `E`, the value is 0 and nothing is used. Where none of them follows the sign,
/// the value is 0 and the sign is used. The digits and the powers of ten are accumulated in the
/// arithmetic of `T`: the last bits may differ from the nearest value, and 0 times an infinite
/// power is not a number.
template <class T>
struct ParseNumber {
    /// The type of the value.
    using ValueType = T;

    /// See `ParseImpl`.
    static T parse(const char* src, std::size_t& i);
};

template <>
struct ParseImpl<short> : ParseNumber<short> {};
template <>
struct ParseImpl<unsigned short> : ParseNumber<unsigned short> {};
template <>
struct ParseImpl<int> : ParseNumber<int> {};
template <>
struct ParseImpl<unsigned int> : ParseNumber<unsigned int> {};
template <>
struct ParseImpl<long> : ParseNumber<long> {};
template <>
struct ParseImpl<unsigned long> : ParseNumber<unsigned long> {};
template <>
struct ParseImpl<long long> : ParseNumber<long long> {};
template <>
struct ParseImpl<unsigned long long> : ParseNumber<unsigned long long> {};
template <>
struct ParseImpl<float> : ParseNumber<float> {};
template <>
struct ParseImpl<double> : ParseNumber<double> {};

/// Truth values: "true", "yes", "false" and "no" in any case, where such a word is the whole text;
/// otherwise the first letter of such a word, whatever follows it. Any other text, also the empty
/// one, is true and nothing of it is used.
template <>
struct ParseImpl<bool> {
    /// @{
    /// See the primary template.
    using ValueType = bool;
    static bool parse(const char* src, std::size_t& i);
    /// @}
};

/// The value at the beginning of `src`; the number of characters used is added to `i`.
template <class T>
T parse(const char* src, std::size_t& i) {
    return ParseImpl<T>::parse(src, i);
}

/// The value at the beginning of `s`; the rest is ignored. Types that are parsed from a whole text
/// specialise it; their parsers may throw.
template <class T>
T parse(const std::string& s) {
    std::size_t used = 0;
    return ParseImpl<T>::parse(s.c_str(), used);
}

}  // namespace moxtel::string

#pragma GCC visibility pop
