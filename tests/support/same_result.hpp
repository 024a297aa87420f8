#pragma once

#include <string>

#include <quarvis/mining/mine.hpp>

namespace support {

/// The first difference between two results of the engine; empty if there is none. Measures must be
/// equal to the last bit.
std::string differenceOf(const quarvis::mining::Result& a, const quarvis::mining::Result& b);

}  // namespace support
