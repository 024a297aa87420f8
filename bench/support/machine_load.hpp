#pragma once

namespace bench {

/// How many cores are at work now, on average of half a second in which this process sleeps:
/// nothing on a quiet machine, whatever ran on it before.
double busyCores();

}  // namespace bench
