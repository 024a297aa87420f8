#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace quarvis::rule {

/// Room for arrays that are all given up at once. An array stays where it is until `clear`, which
/// keeps the room for the next ones; what an array holds at first is not specified.
template <class T>
class Arena {
  public:
    T* take(std::size_t n) {
        while (m_chunk < m_chunks.size() && m_chunks[m_chunk].size() - m_used < n) {
            ++m_chunk;
            m_used = 0;
        }
        if (m_chunk == m_chunks.size())
            m_chunks.emplace_back(std::max(n, CHUNK_SIZE));
        T* const taken = m_chunks[m_chunk].data() + m_used;
        m_used += n;
        return taken;
    }

    void clear() {
        m_chunk = 0;
        m_used = 0;
    }

  private:
    static constexpr std::size_t CHUNK_SIZE = 8192;

    std::vector<std::vector<T>> m_chunks;
    std::size_t m_chunk = 0;  // the one that is being given away
    std::size_t m_used = 0;   // of that one
};

}  // namespace quarvis::rule
