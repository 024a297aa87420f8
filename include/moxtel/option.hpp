#pragma once

#include <cstddef>
#include <string>

#include <moxtel/key_operations.hpp>

#pragma GCC visibility push(default)

namespace moxtel::cmdline {

class CmdLine;

/// What the values of an option are. Any other number is no domain: values of it do not parse.
struct Domain {
    /// The domains and their numbers.
    enum Value : unsigned int {
        ALIAS = 0,   ///< None: the option stands for another one, or is a plain flag.
        STRING = 1,  ///< Kept as text only.
        BOOL = 2,    ///< Truth values.
        SINT = 3,    ///< Signed 32-bit integers.
        UINT = 4,    ///< Unsigned 32-bit integers.
        FLOAT = 5,   ///< Single-precision reals.
    };

    /// @{
    /// A domain is as good as its number.
    constexpr Domain(Value v = ALIAS) : value(v) {}
    constexpr operator Value() const { return value; }
    friend constexpr bool operator==(Domain a, Domain b) { return a.value == b.value; }
    friend constexpr bool operator==(Domain a, Value b) { return a.value == b; }
    /// @}

    Value value;  ///< One of the above, or what a cast made of another number.
};

/// One option of a command line. The registry that it is added to gives it a serial and binds its
/// keys; a copy keeps them.
class Option {
  public:
    /// Of domain `ALIAS`, without keys, description and values. 0 is no option's serial.
    explicit Option(unsigned serial = 0) : m_serial(serial) {}

    /// @{
    /// One occurrence takes `arity` values, or from `least` to `most`. Whether a `mandatory` option
    /// occurs is for the caller of the parser to check.
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

    /// What a registry tells it apart by; 0 before it is registered.
    unsigned serial() const { return m_serial; }

    /// The key after one dash; NUL for none.
    char shortKey() const { return m_shortKey; }

    /// The key after two dashes; empty for none.
    const std::string& longKey() const { return m_longKey; }

    /// The registry that gave the serial; null before.
    const CmdLine* owner() const { return m_owner; }

    /// Whether the domain is `ALIAS`, so for a plain flag too.
    bool isAlias() const { return domain == Domain::ALIAS; }

    /// @{
    /// The serial that an alias stands for, or 0. It is only kept: whoever reads the result of a
    /// parse looks it up.
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
    Domain domain;             ///< Of its values.
    std::string description;   ///< For the caller's usage text.
    std::size_t minArity = 0;  ///< The least number of values that one occurrence takes.
    std::size_t maxArity = 0;  ///< The greatest.
    bool mandatory = false;    ///< Not checked by the parser.
};

}  // namespace moxtel::cmdline

/// Options are told apart by their serials, and one that is made for a serial has nothing else.
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
