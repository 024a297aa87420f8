#include "moment_words.hpp"

#include <algorithm>
#include <bit>
#include <span>

#include "weighted_bits.hpp"

namespace quarvis::mining {

namespace {

/// The first and the last bit that is set; there must be one.
struct Extent {
    std::size_t first;
    std::size_t last;
};

/// The extent of the moments at which the item is new or recent.
Extent extentOf(const Standings::Masks& masks) {
    Extent extent{masks.words * 64, 0};
    for (std::size_t word = 0; word < masks.words; ++word) {
        const std::uint64_t bits = masks.fresh[word] | masks.recent()[word];
        if (bits == 0)
            continue;
        if (extent.first == masks.words * 64)
            extent.first = word * 64 + static_cast<std::size_t>(std::countr_zero(bits));
        extent.last = word * 64 + 63 - static_cast<std::size_t>(std::countl_zero(bits));
    }
    return extent;
}

}  // namespace

void MomentWords::make(const Standings& standings, std::span<const Standings::Place> places) {
    m_fields.clear();
    m_weights.clear();
    m_tops.clear();
    m_owners.clear();
    m_wide.clear();

    m_mostFields = 1;
    for (std::uint32_t place = 0; place < places.size(); ++place) {
        const Standings::Masks masks = standings.masks(places[place].history, places[place].entry);
        if (masks.words > 1) {
            m_mostFields = std::max(m_mostFields, masks.words);
            m_wide.push_back(place);
            continue;
        }
        const std::uint32_t weight = standings.weight(places[place].history);
        m_mostFields = std::max(m_mostFields, static_cast<std::size_t>(std::popcount(weight)));
        const Extent extent = extentOf(masks);
        const Field field{place, 0,
                          0,     static_cast<std::uint8_t>(extent.first),
                          0,     static_cast<std::uint8_t>(extent.last - extent.first + 1)};
        for (std::uint32_t rest = weight; rest != 0; rest &= rest - 1) {
            const auto digit = static_cast<std::size_t>(std::countr_zero(rest));
            if (m_digits.size() <= digit)
                m_digits.resize(digit + 1);
            m_digits[digit].add(field);
        }
    }
    m_addDigits();
    m_addWide(standings, places);
}

inline void MomentWords::Digit::add(Field field) {
    if (used + field.bits > 64) {
        tops.push_back(0);
        used = 0;
    }
    field.word = static_cast<std::uint32_t>(tops.size() - 1);
    field.to = static_cast<std::uint8_t>(used);
    used += field.bits;
    tops.back() |= std::uint64_t{1} << (used - 1);
    fields.push_back(field);
}

/// Appends the words of the digits, one digit after the other.
void MomentWords::m_addDigits() {
    for (std::size_t i = 0; i < m_digits.size(); ++i) {
        Digit& digit = m_digits[i];
        const auto before = static_cast<std::uint32_t>(words());
        for (Field& field : digit.fields)
            field.word += before;
        m_weights.resize(before + digit.tops.size(), std::uint32_t{1} << i);
        if (before == 0) {
            m_fields.swap(digit.fields);
            m_tops.swap(digit.tops);
        } else {
            m_fields.insert(m_fields.end(), digit.fields.begin(), digit.fields.end());
            m_tops.insert(m_tops.end(), digit.tops.begin(), digit.tops.end());
        }
        digit.fields.clear();
        digit.tops.clear();
        digit.used = 64;
    }
    m_shared = words();
}

/// Appends the words of the histories with more than 64 moments.
void MomentWords::m_addWide(const Standings& standings, std::span<const Standings::Place> places) {
    m_owners.assign(m_shared, 0);
    for (const std::uint32_t place : m_wide) {
        const Standings::Place& at = places[place];
        const Extent extent = extentOf(standings.masks(at.history, at.entry));
        for (std::size_t source = extent.first / 64; source <= extent.last / 64; ++source) {
            m_fields.push_back({place, static_cast<std::uint32_t>(words()),
                                static_cast<std::uint32_t>(source), 0, 0, 64});
            m_weights.push_back(standings.weight(at.history));
            m_tops.push_back(0);
            m_owners.push_back(at.history);
        }
    }
}

void MomentWords::describe(Selection& selection, std::uint32_t* weights,
                           std::uint64_t* tops) const {
    selection.shared = selection.size;
    for (std::size_t i = 0; i < selection.size; ++i) {
        weights[i] = m_weights[selection.word[i]];
        tops[i] = m_tops[selection.word[i]];
    }
    while (selection.shared > 0 && selection.word[selection.shared - 1] >= m_shared)
        --selection.shared;
    selection.weight = weights;
    selection.top = tops;
}

std::uint32_t MomentWords::intersect(const Selection& words, const std::uint64_t* bits,
                                     const std::uint64_t* mask, std::uint64_t* result,
                                     bool single) const {
    if (single)
        return intersectWeighted(bits, mask, nullptr, words.weight, words.size, result);
    std::uint32_t sum =
        intersectWeighted(bits, mask, words.top, words.weight, words.shared, result);
    std::uint64_t last = ~std::uint64_t{0};
    for (std::size_t i = words.shared; i < words.size; ++i) {
        result[i] = bits[i] & mask[i];
        const std::uint32_t owner = m_owners[words.word[i]];
        if (result[i] == 0 || owner == last)
            continue;
        last = owner;
        sum += words.weight[i];
    }
    return sum;
}

}  // namespace quarvis::mining
