#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include <nanobind/nanobind.h>
#include <nanobind/ndarray.h>

/// \file
/// Converts columns between Python and the engine. Columns from Python are not copied. A vector
/// that goes to Python becomes the owner of its array.
namespace binding {

namespace nb = nanobind;

/// A contiguous numpy column from Python.
template <class T>
using Column = nb::ndarray<const T, nb::ndim<1>, nb::c_contig, nb::device::cpu>;

/// A numpy column for Python.
template <class T>
using Array = nb::ndarray<nb::numpy, T, nb::ndim<1>>;

/// The values of a column. Valid as long as the column.
template <class T>
std::span<const T> valuesOf(const Column<T>& column) {
    return {column.data(), column.size()};
}

/// The values as an array that owns them. The caller must hold the interpreter's lock.
template <class T>
Array<T> arrayOf(std::vector<T> values) {
    auto* kept = new std::vector<T>(std::move(values));
    nb::capsule owner(kept, [](void* p) noexcept { delete static_cast<std::vector<T>*>(p); });
    return Array<T>(kept->data(), {kept->size()}, owner);
}

/// Columns by name, and a pair of columns.
using Columns = nb::typed<nb::dict, nb::str, nb::any>;
using Pair = nb::typed<nb::tuple, nb::any, nb::any>;

/// Concatenated strings, in the layout of Arrow: string i is the bytes from `offsets[i]` up to
/// `offsets[i + 1]`.
struct Strings {
    std::vector<std::int64_t> offsets = {0};
    std::vector<std::uint8_t> bytes;

    void add(std::string_view text) {
        bytes.insert(bytes.end(), text.begin(), text.end());
        offsets.push_back(static_cast<std::int64_t>(bytes.size()));
    }
};

/// The strings as a pair of arrays, offsets and bytes.
inline Pair toPython(Strings strings) {
    return nb::make_tuple(arrayOf(std::move(strings.offsets)), arrayOf(std::move(strings.bytes)));
}

/// Concatenated lists of numbers: list i is the values from `offsets[i]` up to `offsets[i + 1]`.
struct Lists {
    std::vector<std::int64_t> offsets = {0};
    std::vector<std::uint32_t> values;

    template <class Ids>
    void add(const Ids& ids) {
        for (const auto id : ids)
            values.push_back(static_cast<std::uint32_t>(id));
        offsets.push_back(static_cast<std::int64_t>(values.size()));
    }
};

/// The lists as a pair of arrays, offsets and values.
inline Pair toPython(Lists lists) {
    return nb::make_tuple(arrayOf(std::move(lists.offsets)), arrayOf(std::move(lists.values)));
}

}  // namespace binding
