#include <quarvis/history.hpp>

#include <algorithm>
#include <stdexcept>

namespace quarvis::rule {

ItemSet& History::at(Time t) {
    const auto found = m_data.find(t);
    if (found == m_data.end())
        m_missing(t);
    return found->second;
}

const ItemSet& History::at(Time t) const {
    const auto found = m_data.find(t);
    if (found == m_data.end())
        m_missing(t);
    return found->second;
}

bool History::contains(const ItemSet& items) const {
    const std::size_t expectedSize = items.size();
    ItemSet avail;
    for (const auto& [time, transaction] : m_data) {
        avail.add(transaction);
        if (avail.size() >= expectedSize && avail.contains(items))
            return true;
    }
    return false;
}

ItemSet History::allItems() const {
    ItemSet items;
    for (const auto& [time, transaction] : m_data)
        items.add(transaction);
    return items;
}

void History::m_missing(Time) {
    throw std::domain_error("Missing history entry.");
}

std::size_t TransactionSet::transactionCount() const noexcept {
    std::size_t total = 0;
    for (const auto& [key, history] : m_data)
        total += history.size();
    return total;
}

std::size_t TransactionSet::count(const ItemSet& items) const {
    return static_cast<std::size_t>(
        std::count_if(m_data.begin(), m_data.end(),
                      [&items](const auto& entry) { return entry.second.contains(items); }));
}

}  // namespace quarvis::rule
