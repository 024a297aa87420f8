#include "interner.hpp"

#include <cstring>
#include <stdexcept>

namespace quarvis::rule {

namespace {

/// A power of two.
constexpr std::size_t FIRST_SLOTS = 1024;

constexpr std::size_t WORD = sizeof(std::uint64_t);

std::uint64_t wordAt(const char* bytes) {
    std::uint64_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

/// A multiplication by an odd number carries every bit up, the shift brings the high ones down.
std::uint64_t mixed(std::uint64_t hash, std::uint64_t word) {
    hash = (hash ^ word) * 0x9e3779b97f4a7c15U;
    return hash ^ hash >> 32;
}

std::uint32_t hashOf(std::string_view text) {
    const char* bytes = text.data();
    std::size_t left = text.size();
    std::uint64_t hash = text.size();
    if (left >= WORD) {
        // The last word may overlap the one before it.
        const std::uint64_t last = wordAt(bytes + left - WORD);
        for (; left > WORD; left -= WORD, bytes += WORD)
            hash = mixed(hash, wordAt(bytes));
        hash = mixed(hash, last);
    } else {
        std::uint64_t word = 0;
        while (left > 0)
            word = word << 8 | static_cast<unsigned char>(bytes[--left]);
        hash = mixed(hash, word);
    }
    return static_cast<std::uint32_t>(mixed(hash, 0));
}

}  // namespace

Interner::Interner() : m_slots(FIRST_SLOTS, {0, NONE}) {}

/// The slot of the text, or the free one that is to be its own.
Interner::Slot& Interner::m_find(std::string_view text, std::uint32_t hash) {
    const std::size_t mask = m_slots.size() - 1;
    std::size_t at = hash & mask;
    while (m_slots[at].number != NONE &&
           (m_slots[at].hash != hash || m_texts[m_slots[at].number] != text))
        at = (at + 1) & mask;
    return m_slots[at];
}

Interner::Number Interner::number(std::string_view text) {
    const std::uint32_t hash = hashOf(text);
    Slot& slot = m_find(text, hash);
    if (slot.number != NONE)
        return slot.number;
    if (m_texts.size() == NONE)
        throw std::length_error("too many names");
    const auto number = static_cast<Number>(m_texts.size());
    m_texts.push_back(text);
    slot = {hash, number};
    if (2 * m_texts.size() > m_slots.size())
        m_grow();
    return number;
}

void Interner::m_grow() {
    std::vector<Slot> slots(2 * m_slots.size(), {0, NONE});
    const std::size_t mask = slots.size() - 1;
    for (const Slot& slot : m_slots) {
        std::size_t at = slot.hash & mask;
        while (slots[at].number != NONE)
            at = (at + 1) & mask;
        if (slot.number != NONE)
            slots[at] = slot;
    }
    m_slots.swap(slots);
}

}  // namespace quarvis::rule
