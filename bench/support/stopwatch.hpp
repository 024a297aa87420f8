#pragma once

namespace bench {

/// A length of time, in seconds: on the clock on the wall, and on the processor, of the whole
/// process and of the kernel for it. The latter is what to compare on a machine that others load.
struct Seconds {
    double wall = 0;
    double cpu = 0;

    Seconds& operator+=(const Seconds& more);
};

class Stopwatch {
  public:
    Stopwatch();

    /// Since the construction or the last `lap`.
    Seconds elapsed() const;

    /// The same, and starts anew.
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
