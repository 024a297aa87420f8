/// Handles of shared objects beside `std::shared_ptr`.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <moxtel/pointer.hpp>

#include "support/check.hpp"
#include "support/draws.hpp"
#include "support/duel_table.hpp"
#include "support/program.hpp"

namespace {

using bench::Arguments;
using bench::Draws;
using bench::DuelTable;

constexpr std::uint64_t SEED = 4711;

struct Object {
    explicit Object(std::size_t objectNumber) : number(objectNumber) {}

    std::size_t number;
};

using Here = moxtel::mem::Pointer<Object>;
using Standard = std::shared_ptr<Object>;

template <class Handle>
std::vector<Handle> made(std::size_t number) {
    std::vector<Handle> handles;
    for (std::size_t i = 0; i < number; ++i)
        handles.push_back(Handle(new Object(i)));
    return handles;
}

template <class Handle>
std::size_t sumOf(const std::vector<Handle>& handles) {
    std::size_t sum = 0;
    for (const Handle& handle : handles)
        sum += handle->number;
    return sum;
}

template <class Handle>
void checkSum(const std::vector<Handle>& handles) {
    bench::checkCount("sum of the objects", sumOf(handles),
                      handles.size() * (handles.size() - 1) / 2);
}

template <class Handle>
void shuffle(std::vector<Handle>& handles) {
    Draws draws(SEED);
    for (std::size_t i = handles.size(); i > 1; --i)
        std::swap(handles[i - 1], handles[draws.below(i)]);
}

/// One handle copied to and fro, all others being alive.
template <class Handle>
void copyOne(const std::vector<Handle>& handles) {
    for (std::size_t i = 0; i < handles.size(); ++i) {
        const Handle copy(handles.front());
        bench::check(copy->number == handles.front()->number, "the copy of a handle");
    }
}

void measure(DuelTable& table, std::size_t number) {
    const std::string of = " of " + std::to_string(number);
    table.measure(
        "append new objects, destroy" + of, number, [&] { checkSum(made<Here>(number)); },
        [&] { checkSum(made<Standard>(number)); });

    std::vector<Here> here = made<Here>(number);
    std::vector<Standard> standard = made<Standard>(number);
    const auto copyAll = [](const auto& handles) {
        return [&handles] { checkSum(std::vector(handles)); };
    };
    table.measure(
        "copy one, destroy" + of, number, [&] { copyOne(here); }, [&] { copyOne(standard); });
    table.measure("copy all, destroy" + of, number, copyAll(here), copyAll(standard));
    const auto growTo = [number](auto& handles) {
        return [&handles, number] {
            handles.shrink_to_fit();
            handles.reserve(2 * number);
            checkSum(handles);
        };
    };
    table.measure("grow the vector twice" + of, number, growTo(here), growTo(standard));
    shuffle(here);
    shuffle(standard);
    table.measure("copy all in another order" + of, number, copyAll(here), copyAll(standard));
}

void run(const Arguments& arguments) {
    DuelTable table("Handles beside std::shared_ptr", "handles", arguments.runs);
    for (const std::size_t number : {1'000U, 100'000U})
        measure(table, number);
}

}  // namespace

int main(int argc, char** argv) {
    return bench::runProgram(argc, argv, run);
}
