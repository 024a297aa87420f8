#pragma once

#include <algorithm>
#include <bit>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

/// \file
/// The search for the end of a run of plain characters.
namespace moxtel::io {

/// The character that `TextReader::peek` gives for a byte.
inline int characterOf(char c) {
    return static_cast<signed char>(c);
}

/// Whether `c` ends a run of plain characters. Both are characters as `TextReader::peek` gives
/// them.
inline bool endsRun(int c, int stop) {
    return c == -1 || c == '\n' || c == '\r' || c == stop;
}

/// The first character from `begin` on that ends a run with this `stop`, or `end`. The characters
/// are compared 16 at a time where the processor can.
inline const char* findStop(const char* begin, const char* end, int stop) {
#if defined(__SSE2__)
    const __m128i stops[] = {_mm_set1_epi8(static_cast<char>(stop)), _mm_set1_epi8('\n'),
                             _mm_set1_epi8('\r'), _mm_set1_epi8(-1)};
    for (; end - begin >= 16; begin += 16) {
        const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(begin));
        __m128i found = _mm_setzero_si128();
        for (const __m128i& character : stops)
            found = _mm_or_si128(found, _mm_cmpeq_epi8(block, character));
        if (const auto places = static_cast<unsigned>(_mm_movemask_epi8(found)))
            return begin + std::countr_zero(places);
    }
#endif
    return std::find_if(begin, end, [stop](char c) { return endsRun(characterOf(c), stop); });
}

}  // namespace moxtel::io
