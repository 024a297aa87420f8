#pragma once

#include <algorithm>
#include <cstddef>
#include <ios>
#include <limits>
#include <streambuf>

namespace moxtel::io {

/// What a stream buffer holds ready to be read. The characters are looked at and consumed without a
/// virtual call and without the bookkeeping of the stream; only its `gcount` tells the difference.
class GetArea : public std::streambuf {
  public:
    GetArea() = delete;

    /// The buffer of a stream, if the stream is good and the buffer holds characters; or null.
    static std::streambuf* of(const std::ios& stream) {
        std::streambuf* const buffer = stream.rdbuf();
        return stream.good() && begin(*buffer) < end(*buffer) ? buffer : nullptr;
    }

    /// Where the characters begin that were read before and that the buffer still has. They end
    /// where the ready characters begin.
    static const char* past(const std::streambuf& buffer) { return (buffer.*&GetArea::eback)(); }

    /// @{
    /// Where the ready characters begin and end.
    static const char* begin(const std::streambuf& buffer) { return (buffer.*&GetArea::gptr)(); }
    static const char* end(const std::streambuf& buffer) { return (buffer.*&GetArea::egptr)(); }
    /// @}

    /// Consumes the ready characters before `next`.
    static void skipTo(std::streambuf& buffer, const char* next) {
        constexpr std::ptrdiff_t most = std::numeric_limits<int>::max();
        while (begin(buffer) != next)
            (buffer.*&GetArea::gbump)(static_cast<int>(std::min(next - begin(buffer), most)));
    }
};

}  // namespace moxtel::io
