#pragma once

#include <string>

#include <moxtel/parse.hpp>

#include <quarvis/implication.hpp>
#include <quarvis/item_set.hpp>

#pragma GCC visibility push(default)

namespace moxtel::string {

/// Reads "{a,b}" or "a,b": items separated by commas, each trimmed. An item in double quotes may
/// hold commas. Only the first line is read. Trimming turns an item of one character into the
/// empty item, and a text of one character into the empty set (see `trim`).
///
/// Throws a pointer to an `IOException` when the closing brace is missing. The handler deletes it.
template <>
quarvis::rule::ItemSet parse<quarvis::rule::ItemSet>(const std::string& str);

/// Reads "antecedent => subsequent", split at the first "=>". Each side is read as an item set.
///
/// Throws a pointer to an `IOException` when there is no "=>" or a closing brace is missing. The
/// handler deletes it.
template <>
quarvis::rule::Rule parse<quarvis::rule::Rule>(const std::string& str);

}  // namespace moxtel::string

#pragma GCC visibility pop
