#include <quarvis/implication.hpp>

#include <sstream>

namespace quarvis::rule {

namespace {

std::ostream& ruleWriteTerm(std::ostream& os, const ItemSet& term) {
    return term.size() == 1 ? os << *term.begin() : os << term;
}

}  // namespace

int Rule::cmp(const Rule& rhs) const {
    const int c = m_antecedent.cmp(rhs.m_antecedent);
    return c != 0 ? c : m_subsequent.cmp(rhs.m_subsequent);
}

std::ostream& Rule::writeInto(std::ostream& os) const {
    ruleWriteTerm(os, m_antecedent);
    os << " => ";
    return ruleWriteTerm(os, m_subsequent);
}

std::string Rule::toString() const {
    std::ostringstream text;
    writeInto(text);
    return text.str();
}

bool RuleOrder::operator()(const Rule& a, const Rule& b) const {
    if (a.antecedent() < b.antecedent())
        return true;
    if (b.antecedent() < a.antecedent())
        return false;
    return a.subsequent() < b.subsequent();
}

}  // namespace quarvis::rule

std::ostream& operator<<(std::ostream& os, const quarvis::rule::Rule& rule) {
    return rule.writeInto(os);
}
