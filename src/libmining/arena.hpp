#pragma once

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <vector>

namespace quarvis::mining {

/// How much of an arena is taken.
struct ArenaMark {
    std::size_t chunk = 0;
    std::size_t used = 0;
};

/// Room for arrays that are given back in the reverse order of taking, all since a mark at once. An
/// array stays where it is until then; what it holds at first is not specified.
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

    /// Gives back the last `n` of what was taken last.
    void giveBack(std::size_t n) {
        assert(n <= m_used);
        m_used -= n;
    }

  private:
    // Small runs are many, so the first chunk is small.
    static constexpr std::size_t FIRST_SIZE = 256;
    static constexpr std::size_t CHUNK_SIZE = 8192;

    std::vector<std::vector<T>> m_chunks;
    std::size_t m_chunk = 0;  // the one that is being given away
    std::size_t m_used = 0;   // of that one
};

}  // namespace quarvis::mining
