#pragma once

#include <ostream>
#include <string>

#include <quarvis/item_set.hpp>

#pragma GCC visibility push(default)

namespace quarvis::rule {

/// An implication from one item set, the antecedent, to another, the subsequent. Nothing ties the
/// two sides: they may overlap, and either may be empty.
class Rule {
  public:
    /// Both sides empty.
    Rule() = default;

    /// @{
    /// Of copies of both sides.
    Rule(const ItemSet& antecedent, const Item& subsequent)
        : m_antecedent(antecedent), m_subsequent(subsequent) {}
    Rule(const ItemSet& antecedent, const ItemSet& subsequent)
        : m_antecedent(antecedent), m_subsequent(subsequent) {}
    /// @}

    /// @{
    /// A side, valid as long as the rule. The antecedent of a rule that is no key may be changed.
    ItemSet& antecedent() { return m_antecedent; }
    const ItemSet& antecedent() const { return m_antecedent; }
    const ItemSet& subsequent() const { return m_subsequent; }
    /// @}

    /// The union of both sides; copies their items.
    ItemSet items() const { return m_antecedent.merge(m_subsequent); }

    /// @{
    /// Compares the antecedents by `ItemSet::cmp` and, where that gives 0, the subsequents. It
    /// gives 0 also where this antecedent is a prefix of the other, so `operator<` can hold in
    /// both directions: it is not an order that containers can use. `RuleOrder` is.
    int cmp(const Rule& rhs) const;
    bool operator<(const Rule& rhs) const { return cmp(rhs) < 0; }
    /// @}

    /// Writes "antecedent => subsequent"; a side of one item bare, any other in braces.
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
/// in the order of `ItemSet`. It agrees with `Rule::operator<` wherever that holds in one direction
/// only, and puts the longer antecedent first where it holds in both.
struct RuleOrder {
    /// Whether `a` comes before `b`.
    bool operator()(const Rule& a, const Rule& b) const;
};

}  // namespace quarvis::rule

/// As `writeInto`. \relates quarvis::rule::Rule
std::ostream& operator<<(std::ostream& os, const quarvis::rule::Rule& rule);

#pragma GCC visibility pop
