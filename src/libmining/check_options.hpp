#pragma once

#include <stdexcept>

#include <quarvis/mining/history_index.hpp>
#include <quarvis/mining/options.hpp>

namespace quarvis::mining {

/// Throws `std::invalid_argument` for options that a run over the index cannot have.
inline void checkOptions(const HistoryIndex& index, const MiningOptions& options) {
    if (options.minCount < index.minCount())
        throw std::invalid_argument("the index lacks items that are frequent enough");
    if (options.threads == 0)
        throw std::invalid_argument("a run needs one thread at least");
}

}  // namespace quarvis::mining
