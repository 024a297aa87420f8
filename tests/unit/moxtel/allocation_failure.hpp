#pragma once

#include <cstddef>
#include <new>
#include <string>

#include <gtest/gtest.h>

#include <moxtel/exception.hpp>

/// What the program's own code takes from the heap, by `new` and by `malloc`, and which of its
/// allocations fail.
struct Heap {
    static inline long live = 0;           ///< Blocks that were not given back yet.
    static inline long untilFailure = -1;  ///< Allocations that succeed before one fails; or -1.
    static inline bool goesOnFailing = false;  ///< Whether all after the failing one fail as well.
    static inline long failures = 0;
    static inline bool watched = false;  ///< Whether the registry of managed memory is asked:
    static inline long freedWhileRegistered = 0;  ///< Blocks given back that it still knew.

    /// Whether the allocation that is asked for now is to fail.
    static bool fails() {
        if (untilFailure < 0)
            return false;
        if (untilFailure > 0) {
            --untilFailure;
            return false;
        }
        if (!goesOnFailing)
            untilFailure = -1;
        ++failures;
        return true;
    }
};

/// A text, beginning with `name`, that no string object keeps inside itself: each copy allocates.
inline std::string longText(const std::string& name = "A text") {
    return name + " that is too long to be kept inside the string object itself";
}

/// Runs the part of a scenario in which an allocation fails.
class Attempt {
  public:
    /// `nth` counts from 0; -1 lets every allocation succeed.
    Attempt(long nth, bool goesOnFailing) : m_nth(nth), m_goesOnFailing(goesOnFailing) {}

    /// Whether `action` came to its end, without an exception for want of memory.
    template <class Action>
    bool operator()(Action action) const {
        Heap::goesOnFailing = m_goesOnFailing;
        Heap::untilFailure = m_nth;
        bool succeeded = false;
        try {
            action();
            succeeded = true;
        } catch (const std::bad_alloc&) {
        } catch (moxtel::AllocationException* e) {
            delete e;
        }
        Heap::untilFailure = -1;
        return succeeded;
    }

  private:
    long m_nth;
    bool m_goesOnFailing;
};

/// Calls `scenario(attempt)` again and again: with every allocation succeeding, then with the first
/// one failing that the action makes which the scenario hands to `attempt`, then with the second
/// one, until the action makes no further one; first with each failing alone, then with all after
/// it. A scenario makes what its action needs, calls `attempt` once and checks what holds then.
/// When it is over it must have given back all that it took, and nothing may have been given back
/// that the registry of managed memory still knew.
template <class Scenario>
void withEveryAllocationFailing(Scenario scenario) {
    for (const bool goesOnFailing : {false, true}) {
        long nth = -1;
        do {
            SCOPED_TRACE(testing::Message()
                         << "allocation " << nth << ", goes on " << goesOnFailing);
            const Attempt attempt(nth, goesOnFailing);
            // What is allocated once in the life of the program is so in the very first run.
            const bool isFirst = nth == -1;
            const long live = Heap::live;
            Heap::failures = 0;
            Heap::freedWhileRegistered = 0;
            Heap::watched = true;
            scenario(attempt);
            Heap::watched = false;
            if (!isFirst) {
                EXPECT_EQ(Heap::live, live) << "not given back";
            }
            EXPECT_EQ(Heap::freedWhileRegistered, 0);
            if (testing::Test::HasFailure())
                return;
            ++nth;
        } while (nth == 0 || Heap::failures > 0);
        EXPECT_GT(nth, 1) << "no allocation was made";
    }
}
