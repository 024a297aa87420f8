#include <moxtel/alphabet.hpp>

#include <algorithm>
#include <cstring>
#include <set>

namespace moxtel::string {

namespace {

/// `char` is unsigned on some platforms; the order is the same on all.
int codeOf(char c) {
    return static_cast<signed char>(c);
}

struct CodeLess {
    bool operator()(char a, char b) const { return codeOf(a) < codeOf(b); }
};

template <class Iterator>
mem::Array<char> copyOf(Iterator first, std::size_t count) {
    mem::Array<char> characters(count, mem::MALLOC);
    std::copy_n(first, count, characters.begin());
    return characters;
}

mem::Array<char> makeCharClass(const char* first, const char* last) {
    const std::set<char, CodeLess> characters(first, last);
    return copyOf(characters.begin(), characters.size());
}

mem::Array<char> makeCharClass(const char* str, bool prepared) {
    const std::size_t length = std::strlen(str);
    return prepared ? copyOf(str, length) : makeCharClass(str, str + length);
}

}  // namespace

// The registry of managed memory is made first, so it outlives this object.
const Alphabet Alphabet::WHITESPACE(" \t\r\n", false);

Alphabet::Alphabet(const char* str, bool prepared) : m_cc(makeCharClass(str, prepared)) {}

Alphabet::Alphabet(const std::string& str) : Alphabet(str.c_str(), false) {}

Alphabet::Alphabet(const mem::Array<char>& array)
    : m_cc(makeCharClass(array.begin(), array.end())) {}

bool Alphabet::match(char c) const {
    if (empty())
        return false;
    std::size_t lo = 0;
    std::size_t hi = m_cc.size() - 1;
    while (lo <= hi) {
        const std::size_t mid = (lo + hi) / 2;
        if (codeOf(m_cc[mid]) > codeOf(c)) {
            if (mid == 0)
                return false;
            hi = mid - 1;
        } else if (codeOf(m_cc[mid]) < codeOf(c)) {
            lo = mid + 1;
        } else {
            return true;
        }
    }
    return false;
}

std::size_t Alphabet::nextMismatch(const char* str, std::size_t i) const {
    for (; str[i] != '\0'; ++i)
        if (!match(str[i]))
            return i;
    return std::string::npos;
}

std::size_t Alphabet::nextMismatch(const std::string& str, std::size_t) const {
    const bool all = std::all_of(str.begin(), str.end(), [this](char c) { return match(c); });
    return all ? std::string::npos : 0;
}

}  // namespace moxtel::string
