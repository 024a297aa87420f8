#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include <moxtel/exception.hpp>
#include <moxtel/linked_hash_map.hpp>

#include "input.hpp"
#include "require.hpp"
#include "targets.hpp"

namespace fuzz {

/// A key type with few hash codes, so that different keys collide.
struct Key {
    std::uint8_t number = 0;
    bool operator==(const Key&) const = default;
};

}  // namespace fuzz

template <>
struct moxtel::util::DefaultHash<fuzz::Key> {
    HashCode<32> operator()(const fuzz::Key& key) const { return {key.number % 5U}; }
};

namespace fuzz {

namespace {

using moxtel::NotFoundException;
using moxtel::util::LinkedHashMap;

/// The pairs in the order in which their keys were inserted.
using Model = std::vector<std::pair<std::uint8_t, std::string>>;
using Container = LinkedHashMap<Key, std::string>;

Model::iterator found(Model& model, std::uint8_t key) {
    return std::find_if(model.begin(), model.end(),
                        [key](const auto& pair) { return pair.first == key; });
}

/// The result of a lookup; a distinct text for an absent key.
template <class Look>
std::string looked(Look look) {
    try {
        return look();
    } catch (const NotFoundException&) {
        return "not found";
    }
}

/// Compares the iterations over pairs, keys and values, both mutable and const.
void requireSame(Container& container, const Model& model) {
    const Container& constant = container;
    requireEqual("the size", container.size(), model.size());
    auto pairs = container.iterator();
    auto constantPairs = constant.iterator();
    auto keys = constant.keyIterator();
    auto values = container.valueIterator();
    for (const auto& [key, value] : model) {
        requireEqual("whether there is more", pairs && constantPairs && keys && values, true);
        requireEqual("a key", unsigned{pairs->first.number}, unsigned{key});
        requireEqual("a value", pairs->second, value);
        requireEqual("a const value", constantPairs->second, value);
        requireEqual("a key alone", unsigned{keys->number}, unsigned{key});
        requireEqual("a value alone", *values, value);
        ++pairs;
        constantPairs++;
        keys.next();
        ++values;
    }
    requireEqual("whether there is more", pairs || constantPairs || keys || values, false);
}

/// Erases the pairs that the mask selects during an iteration, after the iterator has passed them.
void eraseOnTheWay(Container& container, Model& model, std::uint8_t mask) {
    std::size_t at = 0;
    for (auto walk = container.iterator(); walk.hasNext();) {
        const Key key = walk->first;
        walk.next();
        if ((mask >> at++ % 8 & 1) == 0)
            continue;
        container.erase(key);
        model.erase(found(model, key.number));
    }
}

void operate(Input& input, Container& container, Model& model) {
    while (!input.empty()) {
        const std::uint8_t code = input.byte();
        const std::uint8_t key = input.byte() % 24;
        const auto place = found(model, key);
        const bool isThere = place != model.end();
        switch (code % 7) {
            case 0: {
                const std::string value = input.text(3);
                container[Key{key}] = value;
                if (isThere)
                    place->second = value;
                else
                    model.emplace_back(key, value);
                break;
            }
            case 1:
                container.erase(Key{key});
                if (isThere)
                    model.erase(place);
                break;
            case 2:
                requireEqual("whether a key is there", container.containsKey(Key{key}), isThere);
                break;
            case 3: {
                const Container& constant = container;
                requireEqual("a lookup", looked([&] { return constant.lookup(Key{key}); }),
                             isThere ? place->second : "not found");
                break;
            }
            case 4:
                requireEqual("a lookup that creates nothing",
                             looked([&] { return container.lookup(Key{key}, false); }),
                             isThere ? place->second : "not found");
                break;
            case 5:
                requireEqual("a lookup that creates", container.lookup(Key{key}, true),
                             isThere ? place->second : "");
                if (!isThere)
                    model.emplace_back(key, "");
                break;
            default:
                eraseOnTheWay(container, model, code);
        }
        requireSame(container, model);
    }
}

}  // namespace

void fuzzHashContainers(Bytes bytes) {
    Input input(bytes);
    Container container(input.byte() % 8);
    const bool isCleared = input.byte() % 2 != 0;
    Model model;
    operate(input, container, model);
    if (!isCleared)
        return;
    container.clear();
    requireSame(container, {});
    container.clear();
}

}  // namespace fuzz
