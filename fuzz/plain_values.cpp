#include "plain_values.hpp"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <type_traits>

namespace fuzz {

namespace {

/// The character at `at`; NUL beyond the end.
char charAt(const std::string& text, std::size_t at) {
    return at < text.size() ? text[at] : '\0';
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

bool isSign(char c) {
    return c == '+' || c == '-';
}

std::string lowered(std::string text) {
    for (char& c : text)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    return text;
}

template <class T>
Parsed<T> plainInteger(const std::string& text) {
    std::size_t at = isSign(charAt(text, 0)) ? 1 : 0;
    T value = 0;
    for (; isDigit(charAt(text, at)); ++at) {
        // Computed modulo 2^64, then modulo the width of T.
        const auto digit = static_cast<unsigned long long>(text[at] - '0');
        const T next = static_cast<T>(static_cast<unsigned long long>(value) * 10 + digit);
        if (next < value)
            return {0, 0};
        value = next;
    }
    if (charAt(text, 0) == '-')
        value = static_cast<T>(0 - static_cast<unsigned long long>(value));
    return {value, at};
}

/// A power of ten, one multiplication at a time. After a thousand steps it stays infinite or 0.
template <class T>
T plainPower(int exponent) {
    T power = 1;
    for (int i = std::min(std::abs(exponent), 1000); i > 0; --i)
        power = exponent > 0 ? power * 10 : static_cast<T>(power * 0.1);
    return power;
}

// Each operation is a separate statement, since its result must be rounded.
template <class T>
Parsed<T> plainReal(const std::string& text) {
    const bool negative = charAt(text, 0) == '-';
    std::size_t at = isSign(charAt(text, 0)) ? 1 : 0;
    if (charAt(text, at) == 'i' || charAt(text, at) == 'I') {
        const T infinity = std::numeric_limits<T>::infinity();
        return {negative ? -infinity : infinity, text.size()};
    }
    if (lowered(text.substr(at)) == "nan")
        return {std::numeric_limits<T>::quiet_NaN(), text.size()};

    T value = 0;
    bool hasMantissa = false;
    for (; isDigit(charAt(text, at)); ++at) {
        value *= 10;
        value += static_cast<T>(text[at] - '0');
        hasMantissa = true;
    }
    if (charAt(text, at) == '.') {
        if (at + 1 == text.size())
            return {0, 0};
        T fraction = 0;
        T weight = static_cast<T>(0.1);
        for (++at; isDigit(charAt(text, at)); ++at) {
            const T part = static_cast<T>(text[at] - '0') * weight;
            fraction += part;
            weight = static_cast<T>(weight * 0.1);
        }
        value += fraction;
        hasMantissa = true;
    }
    if (charAt(text, at) == 'e' || charAt(text, at) == 'E') {
        if (at + 1 == text.size())
            return {0, 0};
        const Parsed<int> exponent = plainInteger<int>(text.substr(at + 1));
        if (!hasMantissa)
            value = 1;
        hasMantissa = true;
        value *= plainPower<T>(exponent.value);
        at += 1 + exponent.used;
    }
    return {negative && hasMantissa ? -value : value, at};
}

Parsed<bool> plainTruth(const std::string& text) {
    const std::string word = lowered(text);
    if (word == "true" || word == "yes" || word == "false" || word == "no")
        return {word == "true" || word == "yes", word.size()};
    switch (charAt(word, 0)) {
        case 't':
        case 'y':
            return {true, 1};
        case 'f':
        case 'n':
            return {false, 1};
        default:
            return {true, 0};
    }
}

}  // namespace

template <class T>
Parsed<T> plainParse(const std::string& text) {
    if constexpr (std::is_same_v<T, bool>)
        return plainTruth(text);
    else if constexpr (std::is_integral_v<T>)
        return plainInteger<T>(text);
    else
        return plainReal<T>(text);
}

template Parsed<short> plainParse(const std::string& text);
template Parsed<unsigned short> plainParse(const std::string& text);
template Parsed<int> plainParse(const std::string& text);
template Parsed<unsigned int> plainParse(const std::string& text);
template Parsed<long> plainParse(const std::string& text);
template Parsed<unsigned long> plainParse(const std::string& text);
template Parsed<long long> plainParse(const std::string& text);
template Parsed<unsigned long long> plainParse(const std::string& text);
template Parsed<float> plainParse(const std::string& text);
template Parsed<double> plainParse(const std::string& text);
template Parsed<bool> plainParse(const std::string& text);

}  // namespace fuzz
