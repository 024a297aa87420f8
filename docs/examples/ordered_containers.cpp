// Walks containers that keep the order of insertion, and hands them on.
#include <algorithm>
#include <iostream>
#include <string>
#include <utility>

#include <moxtel/set.hpp>

using moxtel::util::LinkedHashMap;
using moxtel::util::Map;

namespace {

// Takes a map of any class.
void print(const Map<std::string, int>& stock) {
    for (const auto& [name, count] : stock)
        std::cout << name << ' ' << count << '\n';
}

}  // namespace

int main() {
    LinkedHashMap<std::string, int> stock;
    stock["tea"] = 3;
    stock["bread"] = 12;
    stock["jam"] = 0;

    // The standard algorithms work on the containers themselves.
    const auto soldOut = std::ranges::find_if(stock, [](const auto& pair) { return !pair.second; });
    std::cout << "no " << soldOut->first << " is left\n";
    for (auto& [name, count] : stock)
        count += 5;

    // A move takes all pairs along. The map that is left is empty, and may be filled again.
    LinkedHashMap<std::string, int> moved = std::move(stock);
    stock["salt"] = 1;
    print(moved);
    print(stock);
}
