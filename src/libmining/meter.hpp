#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <exception>

#include <quarvis/mining/budget.hpp>

namespace quarvis::mining {

/// Thrown within a run that exceeds its budget. The search that knows what was found turns it into
/// a `BudgetExceeded`.
class OverBudget : public std::exception {
  public:
    explicit OverBudget(BudgetExceeded::Limit limit) : m_limit(limit) {}
    const char* what() const noexcept override { return "over the budget"; }
    BudgetExceeded::Limit limit() const { return m_limit; }

  private:
    BudgetExceeded::Limit m_limit;
};

/// What a run has used of its budget. All threads of the run share it. Accounting throws
/// `OverBudget` when a bound is exceeded.
class Meter {
  public:
    /// Starts the clock of the run.
    explicit Meter(const Budget& budget)
        : m_budget(budget), m_begin(std::chrono::steady_clock::now()) {}

    /// Accounts for frequent sets of one size.
    void found(std::size_t size, std::size_t sets) {
        if (sets == 0)
            return;
        if (m_budget.levels != 0 && size > m_budget.levels)
            throw OverBudget(BudgetExceeded::Limit::LEVELS);
        if (m_budget.sets != 0 && (m_sets += sets) > m_budget.sets)
            throw OverBudget(BudgetExceeded::Limit::SETS);
        took(sets * Budget::SET_BYTES);
    }

    /// Accounts for memory.
    void took(std::size_t bytes) {
        if (m_budget.bytes != 0 && (m_bytes += bytes) > m_budget.bytes)
            throw OverBudget(BudgetExceeded::Limit::BYTES);
    }

    /// Takes memory out of the account.
    void gaveBack(std::size_t bytes) {
        if (m_budget.bytes != 0)
            m_bytes -= bytes;
    }

    void checkTime() const {
        if (m_budget.time.count() != 0 &&
            std::chrono::steady_clock::now() - m_begin > m_budget.time)
            throw OverBudget(BudgetExceeded::Limit::TIME);
    }

    /// Sets and memory so far.
    struct Mark {
        std::size_t sets;
        std::size_t bytes;
    };
    Mark mark() const { return {m_sets, m_bytes}; }

    /// Takes what was added since the mark out of the account.
    void rewind(const Mark& mark) {
        m_sets = mark.sets;
        m_bytes = mark.bytes;
    }

  private:
    Budget m_budget;
    std::chrono::steady_clock::time_point m_begin;
    std::atomic<std::size_t> m_sets{0};
    std::atomic<std::size_t> m_bytes{0};
};

}  // namespace quarvis::mining
