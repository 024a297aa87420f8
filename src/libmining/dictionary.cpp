#include <quarvis/mining/dictionary.hpp>

#include <cassert>
#include <stdexcept>

#include "name_hash.hpp"

namespace quarvis::mining {

namespace {

/// Must be a power of two.
constexpr std::size_t FIRST_SLOTS = 1024;

constexpr std::uint32_t NONE = static_cast<std::uint32_t>(-1);

/// The builder marks codes by their highest bit.
constexpr std::size_t MOST_NAMES = (std::size_t{1} << 31) - 1;

}  // namespace

Dictionary::Dictionary() : m_slots(FIRST_SLOTS, {0, NONE}) {}

std::string_view Dictionary::name(Code code) const {
    assert(at(code) < size());
    const std::uint64_t begin = m_begins[at(code)];
    return {m_text.data() + begin, static_cast<std::size_t>(m_begins[at(code) + 1] - begin)};
}

Code Dictionary::add(std::string_view name) {
    const std::uint32_t hash = nameHash(name);
    const std::size_t mask = m_slots.size() - 1;
    std::size_t slot = hash & mask;
    for (; m_slots[slot].code != NONE; slot = (slot + 1) & mask)
        if (m_slots[slot].hash == hash && sameName(this->name(Code{m_slots[slot].code}), name))
            return Code{m_slots[slot].code};
    if (size() == MOST_NAMES)
        throw std::length_error("too many names");
    const auto code = static_cast<std::uint32_t>(size());
    m_text.append(name);
    m_begins.push_back(m_text.size());
    m_slots[slot] = {hash, code};
    if (2 * size() > m_slots.size())
        m_grow();
    return Code{code};
}

void Dictionary::m_grow() {
    std::vector<Slot> slots(2 * m_slots.size(), {0, NONE});
    const std::size_t mask = slots.size() - 1;
    for (const Slot& slot : m_slots) {
        if (slot.code == NONE)
            continue;
        std::size_t place = slot.hash & mask;
        while (slots[place].code != NONE)
            place = (place + 1) & mask;
        slots[place] = slot;
    }
    m_slots.swap(slots);
}

std::size_t Dictionary::memory() const {
    return m_text.capacity() + m_begins.capacity() * sizeof(m_begins[0]) +
           m_slots.capacity() * sizeof(Slot);
}

}  // namespace quarvis::mining
