#pragma once

#include <cstddef>
#include <string>

#include <moxtel/array.hpp>

#pragma GCC visibility push(default)

namespace moxtel::string {

/// A class of characters: a set of byte values, ordered as `signed char`, that only assignment
/// changes. Copies share the characters, so all copies belong to one thread (see `memory.hpp`); any
/// thread may ask. A query costs a binary search. Making a class costs sorting its characters,
/// unless they are prepared. A class that was moved from is empty.
class Alphabet {
  public:
    /// Blank, tab, carriage return and line feed. It is made before `main` begins and must not be
    /// used by the initialisers of other static objects.
    static const Alphabet WHITESPACE;

    /// The characters of `str`, which is not null. Each character stands for itself: there are no
    /// ranges and no negation. A `prepared` text is copied as it is, and must be in order and
    /// without repeats.
    Alphabet(const char* str, bool prepared);

    /// The characters of `str` before its first NUL.
    explicit Alphabet(const std::string& str);

    /// The elements of `array`, NUL too; they may be in any order and repeat.
    explicit Alphabet(const mem::Array<char>& array);

    /// Whether `c` belongs to the class.
    bool match(char c) const;

    /// The first index from `i` on whose character is not of the class; `npos` when the terminator
    /// comes first. `str` is not null, and `i` does not lie beyond its terminator.
    std::size_t nextMismatch(const char* str, std::size_t i) const;

    /// 0 if any character of `str` is not of the class, and `npos` otherwise. The 0 is not the
    /// place of that character, and `i` is ignored.
    std::size_t nextMismatch(const std::string& str, std::size_t i) const;

    /// Whether no character belongs to the class.
    bool empty() const noexcept { return m_cc.size() == 0; }

    /// The number of characters.
    std::size_t size() const noexcept { return m_cc.size(); }

    /// The `i`-th character in ascending order; `i` is not checked.
    char operator[](std::size_t i) const noexcept { return m_cc[i]; }

    /// @{
    /// The characters in ascending order, as a range in contiguous memory.
    const char* begin() const noexcept { return m_cc.begin(); }
    const char* end() const noexcept { return m_cc.end(); }
    /// @}

  private:
    mem::Array<char> m_cc;
};

}  // namespace moxtel::string

#pragma GCC visibility pop
