#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "samples.hpp"

namespace bench {

/// A Markdown table on standard output. Rows are printed as they come. The first column is wide and
/// aligned left; the others are as wide as their titles or somewhat wider.
class Table {
  public:
    Table(const std::string& title, const std::vector<std::string>& columns);

    /// As many cells as there are columns.
    void row(const std::vector<std::string>& cells) const;

  private:
    std::vector<std::size_t> m_widths;
};

/// "1,234,567".
std::string grouped(std::size_t number);

/// The number with `digits` digits after the point.
std::string fixed(double number, int digits);

/// Bytes as MB of a million bytes; seconds as ms.
std::string megabytes(std::size_t bytes);
std::string milliseconds(double seconds);

/// "least..greatest" of samples of seconds, as ms.
std::string millisecondRange(const Samples& seconds);

}  // namespace bench
