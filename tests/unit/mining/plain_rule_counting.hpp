#pragma once

#include <cstdint>
#include <map>
#include <set>

#include <quarvis/rule.hpp>

#include "config.hpp"
#include "plain_proposals.hpp"

/// Counting of rules. A rule A => S holds in a history that has a transaction with all of S, while
/// nothing of S occurred within the window before it, A is not wholly in it, and every item of A
/// occurred within the window before. A rule's count is the number of histories that it holds in.
namespace quarvis::rule::plain {

using RuleHistogram = std::map<Rule, std::uint64_t, RuleOrder>;

/// When each item was last seen in the history at hand, before the transaction at hand.
using LastTime = std::map<Item, History::Time>;

/// The rules that the history at hand has been counted for.
using RuleMapped = std::set<Rule, RuleOrder>;

/// Adds to `counts` the proposed rules that hold in the histories, or in one of them.
void mineRules(const Configuration& config, const TransactionSet& txns,
               const RuleProposals& proposals, RuleHistogram& counts);
void mineRules(const Configuration& config, const History& seq, const RuleProposals& proposals,
               RuleHistogram& counts);

/// Tests every proposed rule, or one rule, at one transaction.
void mineRules(const Configuration& config, LastTime& firstEvent, const ItemSet& txn,
               const RuleProposals& proposals, RuleHistogram& counts, RuleMapped& mapped);
void mineRules(const Configuration& config, LastTime& firstEvent, const ItemSet& txn,
               const ItemSet& antecedent, const ItemSet& subsequent, RuleHistogram& counts,
               RuleMapped& mapped);

/// Forgets the items last seen longer before `time` than the window; an age of exactly the window
/// is within it. Without a window nothing is forgotten.
void clearLastTimes(const Configuration& config, LastTime& firstEvent, const ItemSet& items,
                    History::Time time);

/// Records that `items` are seen at `time`.
void updateLastTimes(const Configuration& config, LastTime& firstEvent, const ItemSet& items,
                     History::Time time);

}  // namespace quarvis::rule::plain
