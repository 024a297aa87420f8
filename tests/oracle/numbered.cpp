#include "oracle/numbered.hpp"

#include <algorithm>
#include <set>

namespace oracle {

NumberedTable numbered(const Table& table) {
    std::set<std::string> items;
    for (const History& history : table.histories)
        for (const auto& [time, transaction] : history)
            items.insert(transaction.begin(), transaction.end());

    NumberedTable result;
    std::map<std::string, ItemNumber> numbers;
    for (const std::string& item : items) {
        numbers[item] = static_cast<ItemNumber>(result.names.size());
        result.names.push_back(item);
    }
    for (const History& history : table.histories) {
        auto& times = result.histories.emplace_back();
        for (const auto& [time, transaction] : history)
            for (const std::string& item : transaction)
                times[numbers.at(item)].push_back(time);
    }
    return result;
}

bool precedes(const NumberedItems& a, const NumberedItems& b) {
    const auto [inA, inB] = std::mismatch(a.begin(), a.end(), b.begin(), b.end());
    if (inA != a.end() && inB != b.end())
        return *inA < *inB;
    return a.size() > b.size();
}

std::string braced(const NumberedItems& items, const std::vector<std::string>& names) {
    std::string text = "{";
    for (std::size_t i = 0; i < items.size(); ++i)
        text += (i == 0 ? "" : ",") + names[items[i]];
    return text + '}';
}

std::string ruleText(const NumberedItems& antecedent, const NumberedItems& subsequent,
                     const std::vector<std::string>& names) {
    const auto side = [&names](const NumberedItems& items) {
        return items.size() == 1 ? names[items.front()] : braced(items, names);
    };
    return side(antecedent) + " => " + side(subsequent);
}

}  // namespace oracle
