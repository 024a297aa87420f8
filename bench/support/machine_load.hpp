#pragma once

namespace bench {

/// The average number of cores at work during half a second in which this process sleeps: 0 on a
/// quiet machine, whatever ran on it before.
double busyCores();

}  // namespace bench
