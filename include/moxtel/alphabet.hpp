#pragma once

#include <cstddef>
#include <string>

#include <moxtel/array.hpp>

#pragma GCC visibility push(default)

namespace moxtel::string {

/// A class of characters: a set of byte values that does not change, ordered as `signed char`.
/// Copies share the characters. A query costs a binary search, and making a class costs sorting its
/// characters, unless they are prepared.
class Alphabet {
  public:
    /// Blank, tab, carriage return and line feed. Made before `main` begins; not to be used by the
    /// initialisers of other static objects.
    static const Alphabet WHITESPACE;

    /// The characters of `str`; each stands for itself, there are no ranges and no negation. A
    /// `prepared` text is taken over as it is and has to be in order and without repeats.
    Alphabet(const char* str, bool prepared);

    /// The characters of `str` before its first NUL.
    explicit Alphabet(const std::string& str);

    /// The elements of `array`, NUL too, in any order and with repeats.
    explicit Alphabet(const mem::Array<char>& array);

    /// Whether `c` belongs to the class; never to an empty one.
    bool match(char c) const;

    /// The first index from `i` on whose character is not of the class; `npos` when the terminator
    /// comes first. `i` must not lie beyond the terminator.
    std::size_t nextMismatch(const char* str, std::size_t i) const;

    /// Whether the whole of `str` holds a character that is not of the class: 0 if it does, else
    /// `npos`. Neither is the place of that character, and `i` is ignored.
    std::size_t nextMismatch(const std::string& str, std::size_t i) const;

    /// Whether no character belongs to the class.
    bool empty() const noexcept { return m_cc.size() == 0; }

    /// The `i`-th character in ascending order; `i` is not checked.
    char operator[](std::size_t i) const noexcept { return m_cc[i]; }

  private:
    mem::Array<char> m_cc;
};

}  // namespace moxtel::string

#pragma GCC visibility pop
