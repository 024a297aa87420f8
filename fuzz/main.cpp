#include <cstddef>
#include <cstdint>

#include "targets.hpp"

/// The build names the body in FUZZ_BODY. What it throws ends the program, which the fuzzer takes
/// for a crash and keeps the input of.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::FUZZ_BODY({data, size});
    return 0;
}
