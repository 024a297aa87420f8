#include "arguments_model.hpp"

#include <array>
#include <cmath>
#include <cstdio>
#include <optional>

#include "plain_values.hpp"

namespace fuzz {

namespace {

enum DomainNumber : unsigned { ALIAS, STRING, BOOL, SINT, UINT, FLOAT, UNKNOWN = 17 };

}  // namespace

const std::vector<OptionRow> OPTIONS = {
    {'?', "help", ALIAS, 0, 0},
    {'c', "count", UINT, 1, 1},
    {'C', "confidence", FLOAT, 1, 1},
    {'l', "lift", FLOAT, 1, 1},
    {'o', "order", UINT, 1, 1},
    {'s', "support", FLOAT, 1, 1},
    {'V', "conviction", FLOAT, 1, 1},
    {'v', "verbose", ALIAS, 0, 0},
    {'w', "window", UINT, 1, 1},
    {'n', "number", SINT, 1, 1},
    {'p', "pair", SINT, 2, 2},
    {'b', "bool", BOOL, 1, 3},
    {'r', "range", STRING, 0, 2},
    {'R', "reverse", STRING, 3, 1},
    {'A', "alias", ALIAS, 1, 1},
    {'U', "unknown", UNKNOWN, 1, 1},
    {'=', "", UINT, 0, 1},
    {'\xe9', "\xff", BOOL, 0, 1},
    {'\0', "long-only", FLOAT, 1, 3},
};

std::string describe(const Outcome& outcome) {
    std::string text = outcome.success ? "success\n" : "failure\n";
    for (const std::string& line : outcome.bindings)
        text += line + '\n';
    for (const std::string& line : outcome.excess)
        text += "positional " + line + '\n';
    return text + "output: " + outcome.out + "\nmessages: " + outcome.err + '\n';
}

std::string describeBinding(std::size_t position, unsigned serial) {
    return "at " + std::to_string(position) + " option " + std::to_string(serial);
}

std::string describeValue(const std::string& raw, bool value) {
    return raw + " is " + (value ? "true" : "false");
}

std::string describeValue(const std::string& raw, int value) {
    return raw + " is " + std::to_string(value);
}

std::string describeValue(const std::string& raw, unsigned value) {
    return raw + " is " + std::to_string(value);
}

std::string describeValue(const std::string& raw, float value) {
    if (std::isnan(value))
        return raw + " is not a number";
    std::array<char, 64> exact{};
    std::snprintf(exact.data(), exact.size(), "%a", static_cast<double>(value));
    return raw + " is " + exact.data();
}

namespace {

class Model {
  public:
    explicit Model(const std::vector<std::string>& arguments) : m_arguments(arguments) {}

    Outcome run() {
        m_outcome.success = true;
        while (!m_stopped && m_next < m_arguments.size())
            m_argument(m_arguments[m_next++]);
        if (!m_outcome.success) {
            m_outcome.bindings.clear();
            m_outcome.excess.clear();
        }
        return m_outcome;
    }

  private:
    void m_argument(const std::string& argument) {
        if (argument == "--")
            m_outcome.err += "Got --\n";
        if (argument == "--" || argument == "-" || argument.empty() || argument[0] != '-')
            m_outcome.excess.push_back(argument);
        else if (argument[1] == '-')
            m_longOption(argument.substr(2));
        else
            m_shortOption(argument.substr(1));
    }

    void m_shortOption(const std::string& text) {
        for (const OptionRow& option : OPTIONS)
            if (option.shortKey == text[0])
                return m_option(option, std::string("-") + option.shortKey, text.substr(1));
        m_fail("Unknown short option: " + text + '\n');
    }

    void m_longOption(const std::string& text) {
        const std::string name = text.substr(0, text.find('='));
        for (const OptionRow& option : OPTIONS)
            if (!name.empty() && option.longKey == name)
                return m_option(option, "--" + name, text.substr(name.size()));
        m_outcome.out += "Unknown long option: " + name + '\n';
        m_outcome.success = false;
    }

    void m_option(const OptionRow& option, const std::string& name, std::string attached) {
        const std::size_t position = m_next;
        if (!attached.empty() && attached[0] == '=')
            attached.erase(0, 1);
        if (!attached.empty() && option.most == 0)
            return m_fail("Option \"" + name + "\" doesn't take parameters.\n");

        std::vector<std::string> texts;
        if (!attached.empty())
            texts.push_back(attached);
        while (m_next < m_arguments.size() && texts.size() < option.most &&
               !m_arguments[m_next].starts_with('-'))
            texts.push_back(m_arguments[m_next++]);

        std::vector<std::string> lines = {
            describeBinding(position, static_cast<unsigned>(&option - OPTIONS.data()) + 1)};
        for (const std::string& text : texts) {
            const std::optional<std::string> value = m_value(option.domain, text);
            if (!value) {
                m_stopped = true;
                return;
            }
            lines.push_back(*value);
        }
        if (texts.size() < option.least)
            return m_fail("Not enough arguments for option \"" + name + "\": have " +
                          std::to_string(texts.size()) + ", need " + std::to_string(option.least) +
                          ".\n");
        m_outcome.bindings.insert(m_outcome.bindings.end(), lines.begin(), lines.end());
    }

    std::optional<std::string> m_value(unsigned domain, const std::string& text) {
        switch (domain) {
            case ALIAS:
                m_fail("Warning: ALIAS shouldn't have arguments.\n");
                return {};
            case STRING:
                return describeValue(text, 0U);
            case BOOL:
                return m_whole<bool>(text);
            case SINT:
                return m_whole<int>(text);
            case UINT:
                return m_whole<unsigned>(text);
            case FLOAT:
                return m_whole<float>(text);
            default:
                m_fail("Don't know about domain " + std::to_string(domain) + ".\n");
                return {};
        }
    }

    template <class T>
    std::optional<std::string> m_whole(const std::string& text) {
        const Parsed<T> value = plainParse<T>(text);
        if (value.used != 0 && value.used == text.size())
            return describeValue(text, value.value);
        m_fail("Couldn't parse \"" + text + "\".\n");
        return {};
    }

    void m_fail(const std::string& message) {
        m_outcome.err += message;
        m_outcome.success = false;
    }

    const std::vector<std::string>& m_arguments;
    std::size_t m_next = 0;  ///< Index in the arguments, which is one less than that in `argv`.
    bool m_stopped = false;
    Outcome m_outcome;
};

}  // namespace

Outcome modelled(const std::vector<std::string>& arguments) {
    return Model(arguments).run();
}

}  // namespace fuzz
