#pragma once

#include <cstddef>
#include <functional>
#include <vector>

#include "stopwatch.hpp"

namespace bench {

/// What repeated runs of one thing measured.
class Samples {
  public:
    void add(double sample) { m_samples.push_back(sample); }

    /// These are for one sample or more. The median of an even number is the mean of the middle
    /// two.
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

/// Runs each of the contestants `runs` times, in turns; every other turn goes backwards, so that
/// none of them always has the caches as the same other one left them.
std::vector<Times> inTurns(std::size_t runs,
                           const std::vector<std::function<Seconds()>>& contestants);

}  // namespace bench
