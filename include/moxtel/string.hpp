#pragma once

#include <cstddef>
#include <string>

#include <moxtel/alphabet.hpp>
#include <moxtel/parse.hpp>
#include <moxtel/printf.hpp>

#pragma GCC visibility push(default)

/// \file
/// Helpers for C strings, which are not null, and for `std::string`. Indices count from 0, and
/// `npos` is `std::string::npos`. Letter case is that of the C library's current locale. Any thread
/// may call the helpers.
namespace moxtel::string {

/// @{
/// `str` without the leading or the trailing characters that stand in the list `cc` (null stands
/// for whitespace) or belong to the class `cc`.
std::string ltrim(const std::string& str, const char* cc = nullptr);
std::string ltrim(const std::string& str, const Alphabet& cc);
std::string rtrim(const std::string& str, const char* cc = nullptr);
std::string rtrim(const std::string& str, const Alphabet& cc);
/// @}

/// @{
/// `str` without both the leading and the trailing ones; empty where one character would be left.
std::string trim(const std::string& str, const char* cc = nullptr);
std::string trim(const std::string& str, const Alphabet& cc);
/// @}

/// The characters from `lo` up to, not including, `hi`; up to the end where `hi` is less than `lo`.
/// Empty when the two are equal. Otherwise throws `std::out_of_range` when `lo` is beyond the end.
std::string substrRange(const std::string& str, std::size_t lo, std::size_t hi);

/// The first index from `start` on where `c` stands in `a`, or `npos`; always `npos` for a NUL.
/// `start` may lie beyond the terminator.
std::size_t indexOf(const char* a, char c, std::size_t start);

/// The last index in the whole of `a` where `s` stands, or `npos`; `start` is ignored.
std::size_t lastIndexOf(const std::string& a, const std::string& s, std::size_t start);

/// Compares two texts without regard to case. The result is less than, equal to or greater than 0:
/// the difference, as `signed char`, of the first characters that differ in upper case, or of the
/// unchanged characters where one of the texts ends.
int strcmpi(const char* a, const char* b);

/// Whether `subject` begins with `key`. With `caseInsensitive`, whether the first characters of the
/// two agree in upper case, whatever follows them. `i` is neither used nor changed.
bool startsWith(const char* subject, const char* key, std::size_t& i, bool caseInsensitive);

/// Whether `startsWith` holds for any of the `count` keys.
bool startsWithAny(const char* subject, const char* const* keys, std::size_t count, std::size_t& i,
                   bool caseInsensitive);

}  // namespace moxtel::string

#pragma GCC visibility pop
