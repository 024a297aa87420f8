#pragma once

namespace bench {

/// A length of time in seconds: on the wall clock, on the processor, and in the kernel's part of
/// that. Compare processor times on a machine that others load.
struct Seconds {
    double wall = 0;
    double cpu = 0;

    Seconds& operator+=(const Seconds& more);
};

class Stopwatch {
  public:
    Stopwatch();

    /// The time since the construction or the last `lap`.
    Seconds elapsed() const;

    /// Returns the same and starts again.
    Seconds lap();

  private:
    Seconds m_start;
};

/// How long `body()` takes.
template <class Body>
Seconds timed(Body body) {
    const Stopwatch watch;
    body();
    return watch.elapsed();
}

}  // namespace bench
