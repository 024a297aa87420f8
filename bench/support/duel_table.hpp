#pragma once

#include <cstddef>
#include <functional>
#include <string>

#include "table.hpp"

namespace bench {

/// A table of pairs: one thing done by this library and by the standard one, in turns.
class DuelTable {
  public:
    /// `unit` is what is counted, in the plural; everything is done `runs` times.
    DuelTable(const std::string& title, const std::string& unit, std::size_t runs);

    /// Measures both ways to do `number` units, and prints their row.
    void measure(const std::string& name, std::size_t number, const std::function<void()>& here,
                 const std::function<void()>& standard);

  private:
    Table m_table;
    std::size_t m_runs;
};

}  // namespace bench
