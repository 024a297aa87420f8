#pragma once

#include <cmath>
#include <cstdint>
#include <numbers>
#include <random>

namespace bench {

/// Random numbers that depend on the seed alone, on every platform: the standard fixes the engine,
/// but not its distributions.
class Draws {
  public:
    explicit Draws(std::uint64_t seed) : m_engine(seed) {}

    /// A number below `end`, which is not 0.
    std::uint64_t below(std::uint64_t end) { return m_engine() % end; }

    /// In [0, 1).
    double uniform() { return static_cast<double>(m_engine() >> 11) * 0x1p-53; }

    double exponential(double mean) { return -mean * std::log(1 - uniform()); }

    double normal(double mean, double deviation) {
        const double radius = std::sqrt(-2 * std::log(1 - uniform()));
        return mean + deviation * radius * std::cos(2 * std::numbers::pi * uniform());
    }

    /// Takes time proportional to `mean`.
    std::uint64_t poisson(double mean) {
        std::uint64_t events = 0;
        for (double rest = std::exp(-mean), product = uniform(); product > rest;
             product *= uniform())
            ++events;
        return events;
    }

  private:
    std::mt19937_64 m_engine;
};

}  // namespace bench
