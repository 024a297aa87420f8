#include "check.hpp"

#include <stdexcept>

namespace bench {

void check(bool holds, const std::string& what) {
    if (!holds)
        throw std::runtime_error("wrong result: " + what);
}

void checkCount(const std::string& what, std::size_t found, std::size_t expected) {
    check(found == expected,
          std::to_string(found) + ' ' + what + " where there are " + std::to_string(expected));
}

}  // namespace bench
