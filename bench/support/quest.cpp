#include "quest.hpp"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <utility>

namespace bench {

namespace {

constexpr double CORRELATION = 0.5;  // mean part of the items that a pattern has from another
constexpr double CORRUPTION = 0.5;   // mean probability that an item is left out
const double CORRUPTION_DEVIATION = std::sqrt(0.1);

std::string named(const char* format, std::size_t number) {
    char name[32];
    std::snprintf(name, sizeof name, format, number);
    return name;
}

/// Adds an item. Returns whether it was not there yet.
bool addNew(std::vector<std::uint32_t>& items, std::uint32_t item) {
    if (std::find(items.begin(), items.end(), item) != items.end())
        return false;
    items.push_back(item);
    return true;
}

}  // namespace

QuestTable::QuestTable(const QuestShape& shape, std::size_t histories, std::uint64_t seed)
    : m_draws(seed) {
    m_makePatterns(shape);
    m_text = "entity\tday\titems\n";
    m_ends.push_back(m_text.size());
    for (std::size_t history = 0; history < histories; ++history) {
        const std::string key = named("e%07zu", history);
        std::size_t day = m_draws.below(365);
        for (std::size_t left = 1 + m_draws.below(3); left > 0; --left) {
            m_text += key + '\t' + std::to_string(day);
            const std::size_t size = m_draws.poisson(shape.transactionSize);
            for (const std::uint32_t item : m_transaction(std::max<std::size_t>(size, 1)))
                m_text += named("\titem%05zu", item);
            m_text += '\n';
            day += 1 + m_draws.below(60);
        }
        m_ends.push_back(m_text.size());
    }
}

void QuestTable::m_makePatterns(const QuestShape& shape) {
    double weight = 0;
    for (std::size_t i = 0; i < shape.patterns; ++i) {
        Pattern pattern;
        const std::size_t size =
            std::clamp<std::size_t>(m_draws.poisson(shape.patternSize), 1, shape.items);
        if (!m_patterns.empty()) {
            const std::vector<std::uint32_t>& previous = m_patterns.back().items;
            const double part = std::min(1.0, m_draws.exponential(CORRELATION));
            const auto shared = std::min(
                previous.size(), static_cast<std::size_t>(part * static_cast<double>(size)));
            while (pattern.items.size() < shared)
                addNew(pattern.items, previous[m_draws.below(previous.size())]);
        }
        while (pattern.items.size() < size)
            addNew(pattern.items, static_cast<std::uint32_t>(m_draws.below(shape.items)));
        weight += m_draws.exponential(1);
        pattern.weightBelow = weight;
        pattern.corruption = m_draws.normal(CORRUPTION, CORRUPTION_DEVIATION);
        m_patterns.push_back(std::move(pattern));
    }
}

/// What is left of a drawn pattern; it may be empty.
std::vector<std::uint32_t> QuestTable::m_drawPattern() {
    const double at = m_draws.uniform() * m_patterns.back().weightBelow;
    const auto pattern =
        std::upper_bound(m_patterns.begin(), m_patterns.end() - 1, at,
                         [](double a, const Pattern& b) { return a < b.weightBelow; });
    std::vector<std::uint32_t> items = pattern->items;
    while (!items.empty() && m_draws.uniform() < pattern->corruption) {
        std::swap(items[m_draws.below(items.size())], items.back());
        items.pop_back();
    }
    return items;
}

/// A transaction of about `size` items. A pattern that does not fit is put in anyway half of the
/// time, and otherwise kept for the next transaction.
std::vector<std::uint32_t> QuestTable::m_transaction(std::size_t size) {
    std::vector<std::uint32_t> items;
    while (items.size() < size) {
        const std::vector<std::uint32_t> pattern =
            m_carried.empty() ? m_drawPattern() : std::exchange(m_carried, {});
        if (items.size() + pattern.size() > size && !items.empty() && m_draws.below(2) == 0) {
            m_carried = pattern;
            break;
        }
        for (const std::uint32_t item : pattern)
            addNew(items, item);
    }
    return items;
}

}  // namespace bench
