#include <cstddef>
#include <cstdint>

#include "targets.hpp"

/// The build names the body in FUZZ_BODY. An exception ends the program; the fuzzer treats that as
/// a crash and keeps the input.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::FUZZ_BODY({data, size});
    return 0;
}
