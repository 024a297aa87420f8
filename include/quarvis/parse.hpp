#pragma once

#include <string>

#include <moxtel/parse.hpp>

#include <quarvis/implication.hpp>
#include <quarvis/item_set.hpp>

#pragma GCC visibility push(default)

namespace moxtel::string {

/// Reads "{a,b}" or "a,b": items separated by commas, each trimmed; one in double quotes may hold
/// commas. Only the first line is read. Trimming takes an item of one character to the empty item,
/// and a text of one character to the empty set (see `trim`).
///
/// Throws a pointer to an `IOException`, which the handler deletes, when the closing brace is
/// missing.
template <>
quarvis::rule::ItemSet parse<quarvis::rule::ItemSet>(const std::string& str);

/// Reads "antecedent => subsequent", split at the first arrow; each side an item set as above.
///
/// Throws a pointer to an `IOException`, which the handler deletes, when there is no arrow or a
/// closing brace is missing.
template <>
quarvis::rule::Rule parse<quarvis::rule::Rule>(const std::string& str);

}  // namespace moxtel::string

#pragma GCC visibility pop
