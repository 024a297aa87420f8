#include <quarvis/item_set.hpp>

#include <algorithm>
#include <sstream>

namespace quarvis::rule {

void ItemSet::add(const ItemSet& items) noexcept {
    m_data.insert(items.begin(), items.end());
}

bool ItemSet::contains(const ItemSet& items) const noexcept {
    return std::all_of(items.begin(), items.end(),
                       [this](const Item& item) { return contains(item); });
}

int ItemSet::cmp(const ItemSet& rhs) const noexcept {
    ConstIterator right = rhs.begin();
    for (const Item& item : m_data) {
        if (right == rhs.end())
            return -1;
        const int c = item.compare(*right++);
        if (c != 0)
            return c;
    }
    return 0;
}

ItemSet ItemSet::merge(const ItemSet& rhs) const {
    ItemSet merged(*this);
    merged.add(rhs);
    return merged;
}

std::ostream& ItemSet::writeInto(std::ostream& os) const {
    const char* separator = "";
    os << '{';
    for (const Item& item : m_data) {
        os << separator << item;
        separator = ",";
    }
    return os << '}';
}

std::string ItemSet::toString() const {
    std::ostringstream text;
    writeInto(text);
    return text.str();
}

}  // namespace quarvis::rule

std::ostream& operator<<(std::ostream& os, const quarvis::rule::ItemSet& items) {
    return items.writeInto(os);
}
