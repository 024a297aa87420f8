#pragma once

#include <cstddef>
#include <functional>
#include <vector>

#include "stopwatch.hpp"

namespace bench {

/// The measurements of repeated runs of one thing.
class Samples {
  public:
    void add(double sample) { m_samples.push_back(sample); }

    /// These need at least one sample. The median of an even number of samples is the mean of the
    /// middle two.
    double median() const;
    double least() const;
    double greatest() const;

  private:
    std::vector<double> m_samples;
};

/// The samples of wall clock and processor time, in seconds.
struct Times {
    Samples wall;
    Samples cpu;

    void add(const Seconds& seconds);
};

/// Runs each of the contestants `runs` times, in turns. Every other turn goes backwards, so that
/// the same contestant does not always leave the caches to the same other one.
std::vector<Times> inTurns(std::size_t runs,
                           const std::vector<std::function<Seconds()>>& contestants);

}  // namespace bench
