#pragma once

#include <cstddef>
#include <string>

#pragma GCC visibility push(default)

/// \file
/// Values from text. No parser throws or reports an error: it gives a value and says how many
/// characters it used, and a caller for whom the text has to be a value as a whole compares that
/// count with the length. All read a NUL-terminated text from its first character on, in time
/// linear in its length.
namespace moxtel::string {

/// The parser of `T`: a type `ValueType` and `static ValueType parse(const char* src, size_t& i)`,
/// which adds the number of characters used to `i` (a running count, never an index into `src`).
/// Those of the library follow; a type without a parser has no definition.
template <class T>
struct ParseImpl;

/// The parser of `T`, an integer type from `short` to `unsigned long long`, `float` or `double`.
///
/// Integers: an optional sign, also for the unsigned types (where "-5" wraps around), and decimal
/// digits. No digits are the value 0, with the sign used if there is one. An overflow gives 0 and
/// uses nothing, but is noticed only where a digit makes the value smaller.
///
/// Reals: an optional sign, then a word beginning with `i` or `I` (infinity; the whole rest of the
/// text is used), or the rest "nan" in any case, or digits, a point, digits, `E` or `e` and an
/// exponent, of which any may be absent; an exponent alone multiplies 1. Where the text ends with
/// that point or `E`, the value is 0 with nothing used; where none of them follows the sign, it is
/// 0 with the sign used. The digits and the powers of ten are accumulated in the arithmetic of `T`:
/// the last bits may differ from the nearest value, and 0 times an infinite power is not a number.
template <class T>
struct ParseNumber {
    /// What `parse` gives.
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

/// Truth values: "true", "yes", "false" and "no" in any case, where they are the whole text;
/// otherwise the first letter of such a word, whatever follows it. Any other text, the empty one
/// too, is true with nothing used.
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

/// The value at the beginning of `s`; what follows it is ignored. Specialised for types that are
/// parsed from a whole text, which may throw.
template <class T>
T parse(const std::string& s) {
    std::size_t used = 0;
    return ParseImpl<T>::parse(s.c_str(), used);
}

}  // namespace moxtel::string

#pragma GCC visibility pop
