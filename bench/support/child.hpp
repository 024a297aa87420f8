#pragma once

#include <cstddef>
#include <functional>
#include <type_traits>

namespace bench {

/// Runs `body`, which writes `size` bytes to `result`, in a forked process, and has these bytes
/// written to `result` here. Throws `std::runtime_error` when the process fails.
void runInChild(const std::function<void()>& body, void* result, std::size_t size);

/// The result of `body()` in a process of its own: each run finds the heap as it is here, and what
/// it measures of its memory is its own.
template <class Body>
auto inChild(Body body) {
    using Result = decltype(body());
    static_assert(std::is_trivially_copyable_v<Result>, "it goes through a pipe");
    Result result{};
    runInChild([&] { result = body(); }, &result, sizeof result);
    return result;
}

}  // namespace bench
