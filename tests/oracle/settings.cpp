#include "oracle/settings.hpp"

namespace oracle {

std::ostream& operator<<(std::ostream& os, const Settings& settings) {
    return os << "minCount " << settings.minCount << ", minSupport " << settings.minSupport
              << ", minConfidence " << settings.minConfidence << ", minLift " << settings.minLift
              << ", maxConviction " << settings.maxConviction << ", maxOrder " << settings.maxOrder
              << ", windowSize " << settings.windowSize
              << (settings.allSplits ? ", all splits" : "");
}

}  // namespace oracle
