#include <moxtel/cmdline.hpp>

#include <utility>

#include <moxtel/exception.hpp>

namespace moxtel::cmdline {

namespace {

void refuseMappedKey(const std::string& key) {
    throw AlreadyExistsException("Key \"" + key + "\" is already mapped.");
}

void refuseMappedSerial(const std::string& kind, const std::string& oldKey) {
    throw AlreadyExistsException("Serial already mapped to " + kind + " key \"" + oldKey + "\".");
}

}  // namespace

CmdLine::CmdLine() : m_options(251) {}

unsigned CmdLine::add(const Option& option) {
    const unsigned serial = m_serial;
    Option copy(option);
    Option& registered = m_options[serial];
    ++m_serial;
    copy.m_serial = serial;
    copy.m_owner = this;
    // A key may have been bound to the serial before the serial was given to an option.
    if (registered.m_shortKey != '\0')
        copy.m_shortKey = registered.m_shortKey;
    if (!registered.m_longKey.empty())
        copy.m_longKey = std::move(registered.m_longKey);
    registered = std::move(copy);
    return serial;
}

unsigned CmdLine::add(char shortKey, const std::string& longKey, const Option& option) {
    const unsigned serial = add(option);
    bindShort(shortKey, serial);
    bindLong(longKey, serial);
    return serial;
}

void CmdLine::bindShort(char key, unsigned serial) {
    if (hasSerial(serial) && hasShort(key))
        refuseMappedKey(std::string(1, key));
    Option& option = m_options[serial];
    option.m_owner = this;
    if (key == '\0' && option.m_shortKey == '\0')
        return;
    if (option.m_shortKey != '\0' && option.m_shortKey != key)
        refuseMappedSerial("short", std::string(1, option.m_shortKey));
    m_shortKeys[key] = serial;
    option.m_shortKey = key;
}

void CmdLine::bindLong(const std::string& key, unsigned serial) {
    if (hasSerial(serial) && hasLong(key))
        refuseMappedKey(key);
    Option& option = m_options[serial];
    option.m_owner = this;
    if (key.empty() && option.m_longKey.empty())
        return;
    if (!option.m_longKey.empty() && option.m_longKey != key)
        refuseMappedSerial("long", option.m_longKey);
    // The copy is made first, since nothing that can fail may follow the mapping.
    std::string copy(key);
    m_longKeys[key] = serial;
    option.m_longKey = std::move(copy);
}

}  // namespace moxtel::cmdline
