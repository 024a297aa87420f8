#pragma once

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <vector>

namespace quarvis::mining {

/// A state of an arena to go back to.
struct ArenaMark {
    std::size_t chunk = 0;
    std::size_t used = 0;
};

/// A stack of arrays. `release` gives back all arrays that were taken since a mark. Until then an
/// array does not move. Its elements start out unspecified.
template <class T>
class Arena {
  public:
    using Mark = ArenaMark;

    Mark mark() const { return {m_chunk, m_used}; }

    void release(Mark mark) {
        m_chunk = mark.chunk;
        m_used = mark.used;
    }

    T* take(std::size_t n) {
        while (m_chunk < m_chunks.size() && m_chunks[m_chunk].size() - m_used < n) {
            ++m_chunk;
            m_used = 0;
        }
        if (m_chunk == m_chunks.size())
            m_chunks.emplace_back(std::max(n, m_chunks.empty() ? FIRST_SIZE : CHUNK_SIZE));
        T* const taken = m_chunks[m_chunk].data() + m_used;
        m_used += n;
        return taken;
    }

    /// Gives back the last `n` elements of the array that was taken last.
    void giveBack(std::size_t n) {
        assert(n <= m_used);
        m_used -= n;
    }

  private:
    // Small runs are common, so the first chunk is small.
    static constexpr std::size_t FIRST_SIZE = 256;
    static constexpr std::size_t CHUNK_SIZE = 8192;

    std::vector<std::vector<T>> m_chunks;
    std::size_t m_chunk = 0;  // the current one
    std::size_t m_used = 0;   // elements taken of the current one
};

}  // namespace quarvis::mining
