#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstdint>
#include <set>
#include <stdexcept>
#include <string>

#include <moxtel/alphabet.hpp>
#include <moxtel/row_format.hpp>
#include <moxtel/string.hpp>

#include "input.hpp"
#include "require.hpp"
#include "targets.hpp"

namespace fuzz {

namespace {

namespace string = moxtel::string;
using string::Alphabet;

constexpr std::size_t MOST_BYTES = 24;

int signedCode(char c) {
    return static_cast<signed char>(c);
}

/// A text without a NUL, like a C string.
std::string cTextOf(Input& input) {
    return input.text(MOST_BYTES).c_str();
}

std::string withoutEnds(const std::string& text, const std::string& list, bool left, bool right) {
    std::string rest = text;
    while (left && !rest.empty() && list.find(rest.front()) != std::string::npos)
        rest.erase(0, 1);
    while (right && !rest.empty() && list.find(rest.back()) != std::string::npos)
        rest.pop_back();
    return rest;
}

void trimming(Input& input) {
    const std::string text = input.text(MOST_BYTES);
    const std::string list = cTextOf(input);
    const auto require = [&](auto argument, const std::string& characters) {
        requireEqual("ltrim", string::ltrim(text, argument),
                     withoutEnds(text, characters, true, false));
        requireEqual("rtrim", string::rtrim(text, argument),
                     withoutEnds(text, characters, false, true));
        // A single remaining character is trimmed too.
        const std::string both = withoutEnds(text, characters, true, true);
        requireEqual("trim", string::trim(text, argument), both.size() == 1 ? "" : both);
    };
    require(list.c_str(), list);
    require(Alphabet(list), list);
    require(static_cast<const char*>(nullptr), " \t\r\n");
}

void alphabets(Input& input) {
    const std::string list = input.text(MOST_BYTES);
    const std::string text = cTextOf(input);
    moxtel::mem::Array<char> array(list.size());
    std::copy(list.begin(), list.end(), array.begin());
    const Alphabet alphabet(array);
    std::set<int> codes;
    for (const char c : list)
        codes.insert(signedCode(c));
    requireEqual("whether it is empty", alphabet.empty(), codes.empty());
    for (int code = -128; code < 128; ++code)
        requireEqual("a match", alphabet.match(static_cast<char>(code)), codes.contains(code));
    std::size_t place = 0;
    for (const int code : codes)
        requireEqual("the order", signedCode(alphabet[place++]), code);

    const std::size_t from = input.byte() % (text.size() + 1);
    std::size_t first = from;
    while (first < text.size() && codes.contains(signedCode(text[first])))
        ++first;
    requireEqual("the first other one", alphabet.nextMismatch(text.c_str(), from),
                 first == text.size() ? std::string::npos : first);
    const bool all = std::all_of(text.begin(), text.end(),
                                 [&](char c) { return codes.contains(signedCode(c)); });
    requireEqual("whether there are others", alphabet.nextMismatch(text, from),
                 all ? std::string::npos : 0);
}

void searching(Input& input) {
    const std::string text = cTextOf(input);
    const std::string key = cTextOf(input);
    const char c = static_cast<char>(input.byte());
    const std::size_t from = input.byte() % (2 * MOST_BYTES);
    requireEqual("an index", string::indexOf(text.c_str(), c, from),
                 c == '\0' ? std::string::npos : text.find(c, from));
    requireEqual("a last index", string::lastIndexOf(text, key, from), text.rfind(key));

    const std::size_t to = input.byte() % (2 * MOST_BYTES);
    std::string range = "out of range";
    try {
        range = string::substrRange(text, from, to);
    } catch (const std::out_of_range&) {}
    requireEqual("a range", range,
                 from == to           ? ""
                 : from > text.size() ? "out of range"
                 : to < from          ? text.substr(from)
                                      : text.substr(from, to - from));
}

int upper(char c) {
    return static_cast<signed char>(std::toupper(static_cast<unsigned char>(c)));
}

void comparing(Input& input) {
    const std::string a = cTextOf(input);
    const std::string b = cTextOf(input);
    int expected = 0;
    std::size_t i = 0;
    while (i < a.size() && i < b.size() && upper(a[i]) == upper(b[i]))
        ++i;
    if (i < a.size() && i < b.size())
        expected = upper(a[i]) - upper(b[i]);
    else
        expected = signedCode(a.c_str()[i]) - signedCode(b.c_str()[i]);
    requireEqual("a comparison", string::strcmpi(a.c_str(), b.c_str()), expected);

    std::size_t unused = 7;
    requireEqual("a beginning", string::startsWith(a.c_str(), b.c_str(), unused, false),
                 a.starts_with(b));
    requireEqual("a first character", string::startsWith(a.c_str(), b.c_str(), unused, true),
                 upper(*a.c_str()) == upper(*b.c_str()));
    const char* const keys[] = {b.c_str(), "x", "yz"};
    const std::size_t count = input.byte() % 4;
    bool any = false;
    for (std::size_t key = 0; key < count; ++key)
        any = any || a.starts_with(keys[key]);
    requireEqual("any beginning", string::startsWithAny(a.c_str(), keys, count, unused, false),
                 any);
    requireEqual("what is not changed", unused, std::size_t{7});
}

/// Checks that quoted and escaped texts are restored.
void protecting(Input& input) {
    const char delim = static_cast<char>(input.byte());
    const std::string quotes = std::string(input.text(3)).c_str();
    const char escape = static_cast<char>(input.byte());
    const char comment = static_cast<char>(input.byte());
    const std::string text = input.text(MOST_BYTES);
    const moxtel::io::EscapedDelimitedRowFormat format(delim, quotes.c_str(), escape, comment);
    const std::string escaped = format.escape(text);
    requireEqual("a text that was escaped", format.unescape(escaped), text);
    if (escape != '\0')
        requireEqual("a line end that is left",
                     escaped.find_first_of("\r\n") != std::string::npos &&
                         std::string("\r\n").find(escape) == std::string::npos &&
                         std::string("\r\n").find(delim) == std::string::npos &&
                         quotes.find_first_of("\r\n") == std::string::npos &&
                         std::string("\r\n").find(comment) == std::string::npos,
                     false);

    const std::string quoted = format.quote(text);
    if (quotes.empty()) {
        requireEqual("a text without quotes to use", quoted, text);
        return;
    }
    std::string expected;
    const char quote = *std::min_element(
        quotes.begin(), quotes.end(), [](char a, char b) { return signedCode(a) < signedCode(b); });
    for (const char c : text)
        expected += std::string(c == quote ? 2 : 1, c);
    requireEqual("a quoted text", quoted, quote + expected + quote);
    requireEqual("what stands between the quotes", format.unquote(quote, quoted), expected);
}

}  // namespace

void fuzzStringHelpers(Bytes bytes) {
    constexpr void (*kinds[])(Input&) = {trimming, alphabets, searching, comparing, protecting};
    Input input(bytes);
    kinds[input.byte() % 5](input);
}

}  // namespace fuzz
