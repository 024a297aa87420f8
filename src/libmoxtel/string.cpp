#include <moxtel/string.hpp>

#include <cctype>

namespace moxtel::string {

namespace {

/// The index of the first character that is not of the set; the size when there is none.
template <class Set>
std::size_t firstOutside(const std::string& str, const Set& contains) {
    std::size_t first = 0;
    while (first < str.size() && contains(str[first]))
        ++first;
    return first;
}

/// The index behind the last character that is not of the set; 0 when there is none.
template <class Set>
std::size_t endOutside(const std::string& str, const Set& contains) {
    std::size_t end = str.size();
    while (end > 0 && contains(str[end - 1]))
        --end;
    return end;
}

template <class Set>
std::string trimBoth(const std::string& str, const Set& contains) {
    const std::size_t first = firstOutside(str, contains);
    const std::size_t end = endOutside(str, contains);
    // A single character left counts as nothing left.
    return end <= first + 1 ? std::string() : substrRange(str, first, end);
}

/// The set of the characters before the terminator of a list; a NUL is never in it.
auto inList(const char* cc) {
    return [cc](char c) {
        const char* p = cc;
        while (*p != '\0' && *p != c)
            ++p;
        return *p != '\0';
    };
}

auto inClass(const Alphabet& cc) {
    return [&cc](char c) { return cc.match(c); };
}

/// The code of the upper-case letter, as a `signed char` whatever `char` is on this machine.
int upperCode(char c) {
    return static_cast<signed char>(std::toupper(static_cast<unsigned char>(c)));
}

}  // namespace

std::string ltrim(const std::string& str, const char* cc) {
    return cc == nullptr ? ltrim(str, Alphabet::WHITESPACE)
                         : str.substr(firstOutside(str, inList(cc)));
}

std::string ltrim(const std::string& str, const Alphabet& cc) {
    return str.substr(firstOutside(str, inClass(cc)));
}

std::string rtrim(const std::string& str, const char* cc) {
    return cc == nullptr ? rtrim(str, Alphabet::WHITESPACE)
                         : str.substr(0, endOutside(str, inList(cc)));
}

std::string rtrim(const std::string& str, const Alphabet& cc) {
    return str.substr(0, endOutside(str, inClass(cc)));
}

std::string trim(const std::string& str, const char* cc) {
    return cc == nullptr ? trim(str, Alphabet::WHITESPACE) : trimBoth(str, inList(cc));
}

std::string trim(const std::string& str, const Alphabet& cc) {
    return trimBoth(str, inClass(cc));
}

std::string substrRange(const std::string& str, std::size_t lo, std::size_t hi) {
    return lo == hi ? std::string() : str.substr(lo, hi - lo);
}

std::size_t indexOf(const char* a, char c, std::size_t start) {
    for (std::size_t i = 0; a[i] != '\0'; ++i)
        if (i >= start && a[i] == c)
            return i;
    return std::string::npos;
}

std::size_t lastIndexOf(const std::string& a, const std::string& s, std::size_t) {
    return a.rfind(s);
}

int strcmpi(const char* a, const char* b) {
    for (; *a != '\0' && *b != '\0'; ++a, ++b) {
        const int difference = upperCode(*a) - upperCode(*b);
        if (difference != 0)
            return difference;
    }
    return static_cast<signed char>(*a) - static_cast<signed char>(*b);
}

bool startsWith(const char* subject, const char* key, std::size_t&, bool caseInsensitive) {
    if (caseInsensitive)
        return upperCode(*subject) == upperCode(*key);
    for (; *key != '\0'; ++subject, ++key)
        if (*subject != *key)
            return false;
    return true;
}

bool startsWithAny(const char* subject, const char* const* keys, std::size_t count, std::size_t& i,
                   bool caseInsensitive) {
    for (std::size_t k = 0; k < count; ++k)
        if (startsWith(subject, keys[k], i, caseInsensitive))
            return true;
    return false;
}

}  // namespace moxtel::string
