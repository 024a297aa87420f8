#pragma once

#include <cstddef>
#include <functional>
#include <type_traits>

namespace bench {

/// Runs `body` in a forked process, where it writes `size` bytes to `result`, and copies these
/// bytes to `result` here. Throws `std::runtime_error` when the process fails.
void runInChild(const std::function<void()>& body, void* result, std::size_t size);

/// The result of `body()` in a process of its own. Each run starts with the heap as it is here, and
/// measures only its own memory.
template <class Body>
auto inChild(Body body) {
    using Result = decltype(body());
    static_assert(std::is_trivially_copyable_v<Result>, "it goes through a pipe");
    Result result{};
    runInChild([&] { result = body(); }, &result, sizeof result);
    return result;
}

}  // namespace bench
