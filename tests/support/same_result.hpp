#pragma once

#include <string>

#include <quarvis/mining/mine.hpp>

namespace support {

/// The first difference of two results of the engine, whose measures agree to the last bit where
/// they agree; empty when there is none.
std::string differenceOf(const quarvis::mining::Result& a, const quarvis::mining::Result& b);

}  // namespace support
