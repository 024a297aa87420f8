#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include <moxtel/array.hpp>
#include <moxtel/pointer.hpp>

#include "input.hpp"
#include "require.hpp"
#include "targets.hpp"

namespace fuzz {

namespace {

using moxtel::mem::Allocator;
using moxtel::mem::Array;
using moxtel::mem::Pointer;

constexpr std::size_t HANDLES = 6;
constexpr std::size_t MOST_ELEMENTS = 12;

/// Counts its live objects. An object may hold another one.
struct Node {
    explicit Node(int of) : value(of) { ++living; }
    Node(const Node&) = delete;
    Node& operator=(const Node&) = delete;
    ~Node() { --living; }

    static inline int living = 0;
    int value;
    Pointer<Node> next;
};

/// The same with handles of the standard library.
struct PlainNode {
    explicit PlainNode(int of) : value(of) { ++living; }
    PlainNode(const PlainNode&) = delete;
    PlainNode& operator=(const PlainNode&) = delete;
    ~PlainNode() { --living; }

    static inline int living = 0;
    int value;
    std::shared_ptr<PlainNode> next;
};

void requireSame(const Pointer<Node>& got, const std::shared_ptr<PlainNode>& expected, int depth) {
    requireEqual("whether there is an object", static_cast<bool>(got), expected != nullptr);
    if (!expected)
        return;
    requireEqual("an object", got->value, expected->value);
    if (depth > 0)
        requireSame(got->next, expected->next, depth - 1);
}

void pointers(Input& input) {
    std::array<Pointer<Node>, HANDLES> handles;
    std::array<std::shared_ptr<PlainNode>, HANDLES> plain;
    while (!input.empty()) {
        const std::uint8_t code = input.byte();
        const std::size_t a = code / 8 % HANDLES;
        const std::size_t b = input.byte() % HANDLES;
        switch (code % 8) {
            case 0:
            case 1:
                handles[a] = Pointer<Node>(new Node(code));
                plain[a] = std::make_shared<PlainNode>(code);
                break;
            case 2:
                handles[a] = handles[b];
                plain[a] = plain[b];
                break;
            case 3:
                handles[a] = Pointer<Node>();
                plain[a].reset();
                break;
            case 4: {
                // A second handle made from the address shares ownership with the first one.
                const Pointer<Node> copy(plain[b] ? &*handles[b] : nullptr);
                handles[a] = copy;
                plain[a] = plain[b];
                break;
            }
            case 5:
                // Only to a later object, so that no cycle is left.
                if (plain[a] && plain[b] && plain[a]->value < plain[b]->value) {
                    handles[a]->next = handles[b];
                    plain[a]->next = plain[b];
                }
                break;
            case 6:
                if (plain[a]) {
                    handles[a] = handles[a]->next;
                    plain[a] = std::shared_ptr<PlainNode>(plain[a]->next);
                }
                break;
            default:
                if (plain[a]) {
                    handles[a]->next = Pointer<Node>();
                    plain[a]->next.reset();
                }
        }
        for (std::size_t i = 0; i < HANDLES; ++i)
            requireSame(handles[i], plain[i], 3);
        requireEqual("the living objects", Node::living, PlainNode::living);
    }
}

using Elements = std::vector<std::uint8_t>;

void requireSame(const Array<std::uint8_t>& got, const std::shared_ptr<Elements>& expected) {
    requireEqual("the size", got.size(), expected ? expected->size() : 0);
    if (expected && !std::equal(got.begin(), got.end(), expected->begin(), expected->end()))
        throw Failure("the elements are others");
}

/// The elements of a range, cut to the existing ones.
Elements part(const Elements& of, std::size_t start, std::size_t count) {
    if (start >= of.size())
        return {};
    const auto begin = of.begin() + static_cast<std::ptrdiff_t>(start);
    return {begin, begin + static_cast<std::ptrdiff_t>(std::min(count, of.size() - start))};
}

/// Copies a range of `source` to `target` from `at` on. Returns the number of elements copied.
std::size_t copy(const Elements& source, std::size_t start, std::size_t count, Elements& target,
                 std::size_t at) {
    const Elements copied = part(source, start, count);
    const std::size_t n = at < target.size() ? std::min(copied.size(), target.size() - at) : 0;
    std::copy_n(copied.begin(), n, target.begin() + static_cast<std::ptrdiff_t>(n > 0 ? at : 0));
    return n;
}

void arrays(Input& input) {
    const Allocator* const allocators[] = {nullptr, moxtel::mem::NEW, moxtel::mem::NEW_ARRAY,
                                           moxtel::mem::MALLOC};
    std::array<Array<std::uint8_t>, HANDLES> handles;
    std::array<std::shared_ptr<Elements>, HANDLES> plain;
    while (!input.empty()) {
        const std::uint8_t code = input.byte();
        const std::size_t a = code / 12 % HANDLES;
        const std::size_t b = input.byte() % HANDLES;
        const std::size_t x = input.byte() % (MOST_ELEMENTS + 1);
        const std::size_t y = input.byte() % (MOST_ELEMENTS + 1);
        const auto own = [&](Elements elements) {
            plain[a] = std::make_shared<Elements>(std::move(elements));
        };
        const Elements before = plain[a] ? *plain[a] : Elements();
        const Elements source = plain[b] ? *plain[b] : Elements();
        switch (code % 12) {
            case 0:
            case 1:
                handles[a] = Array<std::uint8_t>(x, allocators[y % 4]);
                own(Elements(x));
                break;
            case 2:
                handles[a] = handles[b];
                plain[a] = plain[b];
                break;
            case 3:
                handles[a].swap(handles[b]);
                plain[a].swap(plain[b]);
                break;
            case 4:
                if (x < before.size())
                    handles[a][x] = (*plain[a])[x] = static_cast<std::uint8_t>(y);
                break;
            case 5:
                handles[a].fill(static_cast<std::uint8_t>(x));
                if (plain[a])
                    std::fill(plain[a]->begin(), plain[a]->end(), x);
                break;
            case 6:
                handles[a].reverseThis();
                if (plain[a])
                    std::reverse(plain[a]->begin(), plain[a]->end());
                break;
            case 7:
                handles[a].resize(x);
                own(before);
                plain[a]->resize(x);
                break;
            case 8:
                handles[a].subarrayThis(x, y);
                own(part(before, x, y));
                break;
            case 9: {
                own(before);
                const auto removed = std::erase(*plain[a], static_cast<std::uint8_t>(x));
                requireEqual("how many are taken out",
                             handles[a].compact(static_cast<std::uint8_t>(x)), removed);
                break;
            }
            case 10: {
                Elements target = before;
                const std::size_t n = copy(source, x, y, target, code % 5U);
                requireEqual("how many are copied",
                             handles[a].copyFrom(handles[b], x, y, code % 5U), n);
                if (plain[a])
                    *plain[a] = target;
                break;
            }
            default:
                handles[a] = handles[b].clone();
                own(source);
        }
        for (std::size_t i = 0; i < HANDLES; ++i)
            requireSame(handles[i], plain[i]);
    }
}

/// Tests the registry itself, with addresses that nothing else manages.
void registry(Input& input) {
    std::array<int, HANDLES> places{};
    std::array<unsigned, HANDLES> owners{};
    while (!input.empty()) {
        const std::uint8_t code = input.byte();
        const std::size_t i = code / 4 % HANDLES;
        switch (code % 4) {
            case 0:
                requireEqual("whether it is registered anew", moxtel::mem::protect(&places[i]),
                             owners[i] == 0);
                owners[i] += owners[i] == 0 ? 1 : 0;
                break;
            case 1:
                if (owners[i] > 0) {
                    requireEqual("whether it is adopted", moxtel::mem::acquire(&places[i]), false);
                    ++owners[i];
                }
                break;
            case 2:
                requireEqual("whether it was the last owner", moxtel::mem::release(&places[i]),
                             owners[i] == 1);
                if (owners[i] == 1)
                    moxtel::mem::free(&places[i]);
                owners[i] -= owners[i] > 0 ? 1 : 0;
                break;
            default:
                moxtel::mem::free(&places[i]);
                owners[i] = 0;
        }
        requireEqual("whether there is a policy", moxtel::mem::policyOf(&places[i]) != nullptr,
                     owners[i] > 0);
        requireEqual("whether it is nobody's memory",
                     moxtel::mem::allocatorOf(&places[i]) == moxtel::mem::STACK, owners[i] > 0);
    }
    for (int& place : places)
        moxtel::mem::free(&place);
}

}  // namespace

void fuzzMemory(Bytes bytes) {
    constexpr void (*kinds[])(Input&) = {pointers, arrays, registry};
    Input input(bytes);
    kinds[input.byte() % 3](input);
    requireEqual("the objects that are left", Node::living, 0);
}

}  // namespace fuzz
