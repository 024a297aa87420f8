#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace quarvis::rule {

/// A counter for each pair of the numbers below `size`, in a triangle: 2 size^2 bytes.
class PairCounters {
  public:
    /// Whether the counters take at most 16 MB.
    static bool fit(std::size_t size) {
        return size * (size - 1) / 2 * sizeof(std::uint32_t) <= MAX_BYTES;
    }

    /// All 0 again, for another size.
    void reset(std::size_t size) {
        m_counts.assign(size * (size - 1) / 2, 0);
        m_rows.resize(size);
        std::size_t begin = 0;
        for (std::size_t a = 0; a < size; ++a) {
            m_rows[a] = begin - a - 1;
            begin += size - a - 1;
        }
    }

    /// Counts each pair of the ascending numbers once more.
    void add(std::span<const std::uint32_t> numbers) {
        for (auto a = numbers.begin(); a != numbers.end(); ++a) {
            const std::size_t row = m_rows[*a];
            for (auto b = a + 1; b != numbers.end(); ++b)
                ++m_counts[row + *b];
        }
    }

    /// The counts of `a` with a + 1, a + 2 and so on.
    std::span<const std::uint32_t> row(std::size_t a) const {
        return {m_counts.data() + (m_rows[a] + a + 1), m_rows.size() - a - 1};
    }

  private:
    static constexpr std::size_t MAX_BYTES = std::size_t{16} << 20;

    std::vector<std::uint32_t> m_counts;

    /// The counter of a < b is m_counts[m_rows[a] + b]; the first row begins at -1, modulo 2^64.
    std::vector<std::size_t> m_rows;
};

}  // namespace quarvis::rule
