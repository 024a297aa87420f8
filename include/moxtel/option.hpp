#pragma once

#include <cstddef>
#include <string>

#include <moxtel/key_operations.hpp>

#pragma GCC visibility push(default)

namespace moxtel::cmdline {

class CmdLine;

/// What the values of an option are. Another number than those below is no domain, and values of it
/// do not parse.
struct Domain {
    /// The domains and their numbers.
    enum Value : unsigned int {
        ALIAS = 0,   ///< No values: the option stands for another one, or is a plain flag.
        STRING = 1,  ///< Kept as text only.
        BOOL = 2,    ///< Truth values.
        SINT = 3,    ///< Signed 32-bit integers.
        UINT = 4,    ///< Unsigned 32-bit integers.
        FLOAT = 5,   ///< Single-precision reals.
    };

    /// @{
    /// A domain converts to its number and back.
    constexpr Domain(Value v = ALIAS) : value(v) {}
    constexpr operator Value() const { return value; }
    friend constexpr bool operator==(Domain a, Domain b) { return a.value == b.value; }
    friend constexpr bool operator==(Domain a, Value b) { return a.value == b; }
    /// @}

    Value value;  ///< One of the above, or another number by a cast.
};

/// One option of a command line. The registry to which it is added gives it a serial and binds its
/// keys; a copy keeps them.
class Option {
  public:
    /// An option of domain `ALIAS`, without keys, description and values. No registered option has
    /// the serial 0.
    explicit Option(unsigned serial = 0) : m_serial(serial) {}

    /// @{
    /// An option of which one occurrence takes `arity` values, or from `least` to `most`. The
    /// caller of the parser checks whether a `mandatory` option occurs.
    Option(Domain valueDomain, const std::string& helpText, std::size_t arity, bool isMandatory)
        : Option(valueDomain, helpText, arity, arity, isMandatory) {}
    Option(Domain valueDomain, const std::string& helpText, std::size_t least, std::size_t most,
           bool isMandatory)
        : domain(valueDomain),
          description(helpText),
          minArity(least),
          maxArity(most),
          mandatory(isMandatory) {}
    /// @}

    /// The number of the option in its registry; 0 before it is registered.
    unsigned serial() const { return m_serial; }

    /// The key after one dash; NUL where there is none.
    char shortKey() const { return m_shortKey; }

    /// The key after two dashes; empty where there is none.
    const std::string& longKey() const { return m_longKey; }

    /// The registry that gave the serial; null before. The option does not keep the registry alive.
    const CmdLine* owner() const { return m_owner; }

    /// Whether the domain is `ALIAS`; it is for a plain flag, too.
    bool isAlias() const { return domain == Domain::ALIAS; }

    /// @{
    /// The serial that an alias stands for, or 0. The parser does not use it; the reader of its
    /// result looks it up.
    unsigned target() const { return m_target; }
    void setTarget(unsigned serial) { m_target = serial; }
    /// @}

  private:
    friend class CmdLine;

    unsigned m_serial = 0;
    unsigned m_target = 0;
    CmdLine* m_owner = nullptr;
    char m_shortKey = '\0';
    std::string m_longKey;

  public:
    Domain domain;             ///< What its values are.
    std::string description;   ///< For the caller's usage text.
    std::size_t minArity = 0;  ///< The least number of values that one occurrence takes.
    std::size_t maxArity = 0;  ///< The greatest number.
    bool mandatory = false;    ///< Not checked by the parser.
};

}  // namespace moxtel::cmdline

/// The key of an option is its serial. An option that is made for a serial has nothing else.
template <>
struct moxtel::util::KeyOperations<moxtel::cmdline::Option> {
    /// @{
    /// See the primary template.
    static unsigned extract(const cmdline::Option& option) { return option.serial(); }
    static bool equals(unsigned a, unsigned b) { return a == b; }
    static void createValue(unsigned serial, cmdline::Option& option) {
        option = cmdline::Option(serial);
    }
    /// @}
};

#pragma GCC visibility pop
