#pragma once

#include <cstddef>
#include <cstdint>

#include <quarvis/mining/observer.hpp>

/// Tells on standard error what a run finds, a line a step. Each line is flushed.
class ProgressMessages : public quarvis::mining::Observer {
  public:
    /// `maxOrder` is the greatest order of a rule; 0: none.
    explicit ProgressMessages(std::uint32_t maxOrder) : m_maxOrder(maxOrder) {}

    void levelFound(std::size_t size, std::size_t sets) override;
    void rulesCounted(std::size_t rules) override;

    /// The number of rules that passed.
    void rulesPassed(std::size_t rules);

  private:
    void m_tellLevel(std::size_t size, std::size_t sets);

    std::uint32_t m_maxOrder;
    std::size_t m_lastSets = 0;  // of the level before
};
