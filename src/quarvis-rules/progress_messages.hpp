#pragma once

#include <cstddef>
#include <cstdint>

#include <quarvis/mining/observer.hpp>

/// Prints a line to standard error for each step of a run. Each line is flushed.
class ProgressMessages : public quarvis::mining::Observer {
  public:
    /// `maxOrder` is the greatest order of a rule; 0 means no bound.
    explicit ProgressMessages(std::uint32_t maxOrder) : m_maxOrder(maxOrder) {}

    void levelFound(std::size_t size, std::size_t sets) override;
    void rulesCounted(std::size_t rules) override;

    /// Prints the number of rules that passed the thresholds.
    void rulesPassed(std::size_t rules);

  private:
    void m_tellLevel(std::size_t size, std::size_t sets);

    std::uint32_t m_maxOrder;
    std::size_t m_lastSets = 0;  // the number of sets of the level before
};
