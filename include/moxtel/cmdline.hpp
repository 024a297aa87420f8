#pragma once

#include <cstddef>
#include <string>

#include <moxtel/array.hpp>
#include <moxtel/option.hpp>
#include <moxtel/set.hpp>

#pragma GCC visibility push(default)

namespace moxtel::cmdline {

/// The options of a program, and the parser of its arguments. Options are registered once, before
/// parsing. Each option gets a serial, counted from 1 and never used again, and may be bound to a
/// short and to a long key. The registry is neither copied nor moved, since its options and parse
/// results point to it. It belongs to one thread.
class CmdLine {
  public:
    /// A value as given, and as converted by the option's domain. The member of the union for that
    /// domain is set; for `STRING`, `ui` is set to 0.
    struct Value {
        /// A member for each domain.
        union Data {
            bool b;               ///< `BOOL`.
            int si;               ///< `SINT`.
            unsigned int ui = 0;  ///< `UINT`.
            float fl;             ///< `FLOAT`.
        };

        std::string raw;  ///< As given.
        Data data;        ///< As converted.
    };

    /// One occurrence of an option.
    struct Binding {
        std::size_t pos = 0;             ///< Index in `argv` of the token that named it.
        mem::Array<Value> values;        ///< In command-line order.
        const Option* source = nullptr;  ///< The option named; the registry owns it.
    };

    /// The result of a parse; a failed one has no bindings and no positional arguments.
    struct Result {
        bool success = false;            ///< Whether all arguments could be read.
        mem::Array<Binding> bindings;    ///< In command-line order.
        mem::Array<std::string> excess;  ///< The positional arguments in order.

        /// @{
        /// Whether the parse succeeded, and whether it failed.
        operator bool() const { return success; }
        bool operator!() const { return !success; }
        /// @}
    };

    CmdLine();
    CmdLine(const CmdLine&) = delete;
    CmdLine& operator=(const CmdLine&) = delete;

    /// @{
    /// Registers a copy of `option` and returns its serial. No key is bound. The copy keeps the
    /// keys that the option has from another registry; they lead to the copy only when they are
    /// bound, and other keys are refused. The forms with keys then bind them as `bindShort` and
    /// `bindLong` do. When that throws, the option stays registered, with the keys bound so far.
    unsigned add(const Option& option);
    unsigned add(char shortKey, const std::string& longKey, const Option& option);
    unsigned add(char shortKey, const Option& option) { return add(shortKey, "", option); }
    unsigned add(const std::string& longKey, const Option& option) {
        return add('\0', longKey, option);
    }
    /// @}

    /// @{
    /// The same for an option that is made from these parts.
    unsigned add(char shortKey, const std::string& longKey, Domain domain,
                 const std::string& description, std::size_t arity, bool mandatory) {
        return add(shortKey, longKey, Option(domain, description, arity, mandatory));
    }
    unsigned add(char shortKey, Domain domain, const std::string& description, std::size_t arity,
                 bool mandatory) {
        return add(shortKey, "", Option(domain, description, arity, mandatory));
    }
    unsigned add(const std::string& longKey, Domain domain, const std::string& description,
                 std::size_t arity, bool mandatory) {
        return add('\0', longKey, Option(domain, description, arity, mandatory));
    }
    unsigned add(Domain domain, const std::string& description, std::size_t arity, bool mandatory) {
        return add(Option(domain, description, arity, mandatory));
    }
    /// @}

    /// @{
    /// The same with a range of values that one occurrence takes.
    unsigned addRanged(char shortKey, const std::string& longKey, Domain domain,
                       const std::string& description, std::size_t minArity, std::size_t maxArity,
                       bool mandatory) {
        return add(shortKey, longKey, Option(domain, description, minArity, maxArity, mandatory));
    }
    unsigned addRanged(char shortKey, Domain domain, const std::string& description,
                       std::size_t minArity, std::size_t maxArity, bool mandatory) {
        return add(shortKey, "", Option(domain, description, minArity, maxArity, mandatory));
    }
    unsigned addRanged(const std::string& longKey, Domain domain, const std::string& description,
                       std::size_t minArity, std::size_t maxArity, bool mandatory) {
        return add('\0', longKey, Option(domain, description, minArity, maxArity, mandatory));
    }
    unsigned addRanged(Domain domain, const std::string& description, std::size_t minArity,
                       std::size_t maxArity, bool mandatory) {
        return add(Option(domain, description, minArity, maxArity, mandatory));
    }
    /// @}

    /// @{
    /// Binds a key to the option of `serial`. Where there is no such option, an empty one is
    /// registered, and a key that is bound already moves to it. The key NUL or "" does nothing
    /// where the option has no such key.
    ///
    /// Throws `AlreadyExistsException` and leaves everything as it was when the option exists and
    /// the key is bound already, to whichever option (`Key "x" is already mapped.`), or when the
    /// option has another key of the kind (`Serial already mapped to short key "x".`, or `long
    /// key`). Where memory is exhausted, the option may stay registered without the key.
    void bindShort(char key, unsigned serial);
    void bindLong(const std::string& key, unsigned serial);
    /// @}

    /// @{
    /// Whether an option has the serial, or is bound to the key. A lookup costs that of a
    /// `util::LinkedHashMap`.
    bool hasSerial(unsigned serial) const { return m_options.containsKey(serial); }
    bool hasShort(char key) const { return m_shortKeys.containsKey(key); }
    bool hasLong(const std::string& key) const { return m_longKeys.containsKey(key); }
    /// @}

    /// @{
    /// The option of a serial or key, valid as long as the registry. Throws `NotFoundException`
    /// with the message "Key not found\n" when there is none.
    const Option& forSerial(unsigned serial) const { return m_options[serial]; }
    const Option& forShort(char key) const { return m_options[m_shortKeys[key]]; }
    const Option& forLong(const std::string& key) const { return m_options[m_longKeys[key]]; }
    /// @}

    /// Reads `argv` from index 1 on; none of the `argc` tokens is null. An option is `-k` or
    /// `--name`; short options are not clustered. The first value of an option may be attached:
    /// `-k5`, `-k=5`, `--name=5`. Further values are the next tokens that do not begin with a dash,
    /// as many as the option takes. Everything else is a positional argument, also `-` and `--`;
    /// `--` does not end the options.
    ///
    /// The parse reports each problem by a line on standard error (an unknown long option on
    /// standard output), and fails. It goes on after most problems, but a value that does not
    /// convert ends it. The result is valid as long as the registry.
    Result parse(int argc, const char* const* argv) const;

  private:
    unsigned m_serial = 1;
    util::LinkedHashSet<Option> m_options;
    util::LinkedHashMap<char, unsigned int> m_shortKeys;
    util::LinkedHashMap<std::string, unsigned int> m_longKeys;
};

}  // namespace moxtel::cmdline

#pragma GCC visibility pop
