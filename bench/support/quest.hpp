#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "draws.hpp"

namespace bench {

/// The shape of generated histories; the defaults are the customary T10.I4.
struct QuestShape {
    std::size_t items = 1000;
    std::size_t patterns = 2000;
    double patternSize = 4;       ///< Mean number of items of a pattern.
    double transactionSize = 10;  ///< Mean number of items of a transaction.
};

/// Histories in which patterns of items recur, after R. Agrawal and R. Srikant, Fast Algorithms for
/// Mining Association Rules (1994), chapter 4.1. A transaction is filled with patterns that are
/// drawn by their weights, and loses some of their items. A pattern shares a part of its items with
/// the one before it. Each entity has one to three transactions, some days apart.
class QuestTable {
  public:
    /// The same seed gives the same table. The first histories are the same for any number of
    /// histories.
    QuestTable(const QuestShape& shape, std::size_t histories, std::uint64_t seed);

    /// A transaction file of the first `histories` entities.
    std::string_view file(std::size_t histories) const {
        return std::string_view(m_text).substr(0, m_ends[histories]);
    }

  private:
    struct Pattern {
        std::vector<std::uint32_t> items;
        double weightBelow;  // the weights of this pattern and all before it
        double corruption;
    };

    void m_makePatterns(const QuestShape& shape);
    std::vector<std::uint32_t> m_drawPattern();
    std::vector<std::uint32_t> m_transaction(std::size_t size);

    Draws m_draws;
    std::vector<Pattern> m_patterns;
    std::vector<std::uint32_t> m_carried;  // the pattern that did not fit into the last transaction
    std::string m_text;
    std::vector<std::size_t> m_ends;  // by number of histories: where their rows end
};

}  // namespace bench
