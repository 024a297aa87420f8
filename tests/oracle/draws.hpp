#pragma once

#include <cstdint>
#include <initializer_list>
#include <random>

namespace oracle {

/// Draws that the standard fixes for every platform, unlike its distributions.
class Draws {
  public:
    explicit Draws(std::uint64_t seed) : m_engine(seed) {}

    /// A number from 0 to `last`.
    std::uint64_t upTo(std::uint64_t last) { return m_engine() % (last + 1); }

    template <class Value>
    Value oneOf(std::initializer_list<Value> values) {
        return values.begin()[upTo(values.size() - 1)];
    }

  private:
    std::mt19937_64 m_engine;
};

}  // namespace oracle
