#pragma once

#include <cstddef>
#include <string>

#include <moxtel/array.hpp>
#include <moxtel/option.hpp>
#include <moxtel/set.hpp>

#pragma GCC visibility push(default)

namespace moxtel::cmdline {

/// The options of a program, and the parser of its arguments. Options are registered once, before
/// parsing: each gets a serial, counted from 1 and never used again, and may be bound to a short
/// and to a long key. The registry is not copied, for its options and parse results point into it.
class CmdLine {
  public:
    /// A value as given, and as converted by the option's domain: the member of the union for it is
    /// the one that is set (for `STRING` it is `ui`, to 0).
    struct Value {
        /// The member of the domain at hand.
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
        const Option* source = nullptr;  ///< The option named; the registry's.
    };

    /// What a parse gave: when it failed, nothing but that.
    struct Result {
        bool success = false;            ///< Whether all arguments could be read.
        mem::Array<Binding> bindings;    ///< In command-line order.
        mem::Array<std::string> excess;  ///< The positional arguments in order.

        /// @{
        /// Whether the parse succeeded, or did not.
        operator bool() const { return success; }
        bool operator!() const { return !success; }
        /// @}
    };

    CmdLine();
    CmdLine(const CmdLine&) = delete;
    CmdLine& operator=(const CmdLine&) = delete;

    /// @{
    /// Registers a copy of `option` and gives its serial. No key is bound: those that the option
    /// has from another registry are kept in the copy, and lead to it only once they are bound to
    /// it, while other keys are refused for it. The forms with keys then bind them, as `bindShort`
    /// and `bindLong` do; when that throws, the option stays registered, bound as far as it came.
    unsigned add(const Option& option);
    unsigned add(char shortKey, const std::string& longKey, const Option& option);
    unsigned add(char shortKey, const Option& option) { return add(shortKey, "", option); }
    unsigned add(const std::string& longKey, const Option& option) {
        return add('\0', longKey, option);
    }
    /// @}

    /// @{
    /// The same, making the option of its parts.
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
    /// Binds a key to the option of `serial`, which is registered as an empty option when there is
    /// none; a key that is bound already then moves to it. Does nothing for the key NUL or "" where
    /// the option has no such key. Throws `AlreadyExistsException`, leaving everything as it was,
    /// when the option exists and the key is bound already, be it to that option (`Key "x" is
    /// already mapped.`), or when the option has another key of the kind (`Serial already mapped to
    /// short key "x".`, or `long key`). Where memory is exhausted the option may be left registered
    /// without the key.
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
    /// with the message "Key not found\n" when absent.
    const Option& forSerial(unsigned serial) const { return m_options[serial]; }
    const Option& forShort(char key) const { return m_options[m_shortKeys[key]]; }
    const Option& forLong(const std::string& key) const { return m_options[m_longKeys[key]]; }
    /// @}

    /// Reads `argv` from index 1 on. An option is `-k` or `--name`, and short options are not
    /// clustered. Its first value may be attached: `-k5`, `-k=5`, `--name=5`; further ones are the
    /// next tokens that do not begin with a dash, as many as the option takes. Everything else is a
    /// positional argument, a lone `-` and `--` included; `--` ends nothing.
    ///
    /// Problems are reported here, a line each, on standard error (an unknown long option on
    /// standard output), and fail the parse. It goes on to report further ones, but a value that
    /// does not convert ends it.
    Result parse(int argc, const char* const* argv) const;

  private:
    unsigned m_serial = 1;
    util::LinkedHashSet<Option> m_options;
    util::LinkedHashMap<char, unsigned int> m_shortKeys;
    util::LinkedHashMap<std::string, unsigned int> m_longKeys;
};

}  // namespace moxtel::cmdline

#pragma GCC visibility pop
