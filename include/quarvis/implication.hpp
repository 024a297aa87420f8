#pragma once

#include <ostream>
#include <string>

#include <quarvis/item_set.hpp>

#pragma GCC visibility push(default)

namespace quarvis::rule {

/// An implication from one item set, the antecedent, to another, the subsequent. The two sides may
/// overlap, and either may be empty.
class Rule {
  public:
    /// A rule with two empty sides.
    Rule() = default;

    /// @{
    /// Copies both sides.
    Rule(const ItemSet& antecedent, const Item& subsequent)
        : m_antecedent(antecedent), m_subsequent(subsequent) {}
    Rule(const ItemSet& antecedent, const ItemSet& subsequent)
        : m_antecedent(antecedent), m_subsequent(subsequent) {}
    /// @}

    /// @{
    /// One side; the reference is valid as long as the rule. Do not change the antecedent of a rule
    /// that is a key in a container.
    ItemSet& antecedent() { return m_antecedent; }
    const ItemSet& antecedent() const { return m_antecedent; }
    const ItemSet& subsequent() const { return m_subsequent; }
    /// @}

    /// A copy of the union of both sides.
    ItemSet items() const { return m_antecedent.merge(m_subsequent); }

    /// @{
    /// Compares the antecedents by `ItemSet::cmp` and, if that gives 0, the subsequents.
    /// `ItemSet::cmp` also gives 0 when this antecedent is a prefix of the other, so `operator<`
    /// can hold in both directions. Containers need a strict order: use `RuleOrder`.
    int cmp(const Rule& rhs) const;
    bool operator<(const Rule& rhs) const { return cmp(rhs) < 0; }
    /// @}

    /// Writes "antecedent => subsequent". A side of one item is written bare, any other in braces.
    std::ostream& writeInto(std::ostream& os) const;

    /// @{
    /// What `writeInto` writes.
    std::string toString() const;
    operator std::string() const { return toString(); }
    /// @}

  private:
    ItemSet m_antecedent;
    ItemSet m_subsequent;
};

/// The strict total order of rules in containers and files: by antecedent, then by subsequent, each
/// in the order of `ItemSet`. For two rules where `Rule::operator<` holds in one direction only,
/// the two orders agree; where it holds in both, the longer antecedent comes first.
struct RuleOrder {
    /// Whether `a` comes before `b`.
    bool operator()(const Rule& a, const Rule& b) const;
};

}  // namespace quarvis::rule

/// The same as `writeInto`. \relates quarvis::rule::Rule
std::ostream& operator<<(std::ostream& os, const quarvis::rule::Rule& rule);

#pragma GCC visibility pop
