#include <moxtel/parse.hpp>

#include <cfloat>
#include <cstring>
#include <limits>
#include <type_traits>

#include <moxtel/string.hpp>

namespace moxtel::string {

namespace {

static_assert(FLT_EVAL_METHOD == 0, "every step of a sum has to be rounded to its own type");

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

/// `value * 10 + digit` in `T`; integers wrap around.
template <class T>
T appendDigit(T value, char digit) {
    if constexpr (std::is_integral_v<T>) {
        using Unsigned = std::make_unsigned_t<T>;
        return static_cast<T>(static_cast<Unsigned>(value) * 10U +
                              static_cast<Unsigned>(digit - '0'));
    } else {
        return value * 10 + static_cast<T>(digit - '0');
    }
}

/// Parses digits behind an optional sign. An overflow, which only integers have, gives 0 and leaves
/// `i` alone.
template <class T>
T parseDecimal(const char* src, std::size_t& i) {
    const bool negative = *src == '-';
    const char* p = src;
    if (negative || *p == '+')
        ++p;
    T value = 0;
    for (; isDigit(*p); ++p) {
        const T previous = value;
        value = appendDigit(previous, *p);
        if (value < previous)
            return 0;
    }
    i += static_cast<std::size_t>(p - src);
    return negative ? static_cast<T>(-value) : value;
}

/// A tenth of `value`. The product is always formed in `double`.
template <class T>
T tenthOf(T value) {
    return static_cast<T>(value * 0.1);
}

/// Parses the digits behind the point.
template <class T>
T processMantissa(const char* src, std::size_t& i) {
    T value = 0;
    T weight = static_cast<T>(0.1);
    for (; isDigit(*src); ++src, ++i) {
        const T part = static_cast<T>(*src - '0') * weight;
        value += part;
        weight = tenthOf(weight);
    }
    return value;
}

/// The power of ten, by repeated multiplication. A factor that a step does not change is infinite
/// or zero and stays so, which bounds the number of steps for every exponent.
template <class T>
T processExponent(int exponent) {
    T factor = 1;
    while (exponent != 0) {
        const T next = exponent > 0 ? factor * 10 : tenthOf(factor);
        if (next == factor)
            break;
        factor = next;
        exponent += exponent > 0 ? -1 : 1;
    }
    return factor;
}

bool isExponentMark(char c) {
    return c == 'e' || c == 'E';
}

template <class T>
T parseReal(const char* src, std::size_t& i) {
    const bool negative = *src == '-';
    const char* p = src;
    if (negative || *p == '+')
        ++p;

    // Every word with this first letter is infinity.
    if (*p == 'i' || *p == 'I') {
        i += std::strlen(src);
        const T infinity = std::numeric_limits<T>::infinity();
        return negative ? -infinity : infinity;
    }
    if (strcmpi(p, "nan") == 0) {
        i += std::strlen(src);
        return std::numeric_limits<T>::quiet_NaN();
    }
    if (!isDigit(*p) && *p != '.' && !isExponentMark(*p)) {
        i += static_cast<std::size_t>(p - src);
        return 0;
    }

    T value = isExponentMark(*p) ? T(1) : T(0);
    if (isDigit(*p)) {
        std::size_t used = 0;
        value = parseDecimal<T>(p, used);
        p += used;
    }
    if (*p == '.') {
        ++p;
        std::size_t used = 0;
        value += processMantissa<T>(p, used);
        if (used == 0 && *p == '\0')
            return 0;
        p += used;
    }
    if (isExponentMark(*p)) {
        ++p;
        std::size_t used = 0;
        const int exponent = parseDecimal<int>(p, used);
        if (used == 0 && *p == '\0')
            return 0;
        p += used;
        value *= processExponent<T>(exponent);
    }
    i += static_cast<std::size_t>(p - src);
    return negative ? -value : value;
}

/// The number of characters that a truth value uses: all of `src` where it is one of the two words,
/// otherwise one letter.
std::size_t truthLength(const char* src, const char* word, const char* otherWord) {
    return strcmpi(src, word) == 0 || strcmpi(src, otherWord) == 0 ? std::strlen(src) : 1;
}

}  // namespace

template <class T>
T ParseNumber<T>::parse(const char* src, std::size_t& i) {
    if constexpr (std::is_integral_v<T>)
        return parseDecimal<T>(src, i);
    else
        return parseReal<T>(src, i);
}

template struct ParseNumber<short>;
template struct ParseNumber<unsigned short>;
template struct ParseNumber<int>;
template struct ParseNumber<unsigned int>;
template struct ParseNumber<long>;
template struct ParseNumber<unsigned long>;
template struct ParseNumber<long long>;
template struct ParseNumber<unsigned long long>;
template struct ParseNumber<float>;
template struct ParseNumber<double>;

bool ParseImpl<bool>::parse(const char* src, std::size_t& i) {
    switch (*src) {
        case 'F':
        case 'N':
        case 'f':
        case 'n':
            i += truthLength(src, "false", "no");
            return false;
        case 'T':
        case 'Y':
        case 't':
        case 'y':
            i += truthLength(src, "true", "yes");
            return true;
        default:
            return true;
    }
}

}  // namespace moxtel::string
