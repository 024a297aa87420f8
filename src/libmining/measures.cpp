#include <quarvis/mining/measures.hpp>

#include <limits>

namespace quarvis::mining {

namespace {

constexpr double INFINITE = std::numeric_limits<double>::infinity();

}  // namespace

double support(unsigned int n, unsigned int t) {
    return static_cast<double>(n) / static_cast<double>(t);
}

double confidence(double xuy, double x) {
    return x == 0.0 ? 0.0 : xuy / x;
}

double lift(double xuy, double x, double y) {
    return confidence(xuy, x * y);
}

double conviction(double sy, double cxy) {
    return cxy == 1.0 ? INFINITE : (1.0 - sy) / (1.0 - cxy);
}

double probability(double xuy, double y) {
    return confidence(xuy, y);
}

double certainty(double xuy, double y) {
    return xuy == y ? INFINITE : xuy / (y - xuy);
}

}  // namespace quarvis::mining
