#pragma once

#include <cstddef>
#include <map>
#include <set>

#include <quarvis/rule.hpp>

#include "plain_search.hpp"

namespace quarvis::rule::plain {

/// The rules to count at a level, as each antecedent's subsequents.
using RuleProposals = std::map<ItemSet, std::set<ItemSet>>;

/// Adds the rules of one item set: every contiguous run of its sorted items, other than the whole
/// set, as the antecedent of all the other items. A set of k items has k(k+1)/2 - 1 of them.
void proposeRules(const ItemSet& items, RuleProposals& ret);

/// The rules of all sets of a level.
RuleProposals proposeRules(const ItemSetSupports& src);

/// The number of rules proposed.
std::size_t count(const RuleProposals& p);

}  // namespace quarvis::rule::plain
