#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// The bytes of an index, made from the description of the format alone.
namespace mining_tests {

/// Appends numbers in little-endian order.
template <class Number>
void append(std::string& bytes, const std::vector<Number>& numbers) {
    for (const Number number : numbers)
        for (std::size_t i = 0; i < sizeof number; ++i)
            bytes += static_cast<char>(static_cast<std::uint64_t>(number) >> (8 * i) & 0xff);
}

/// The bytes, followed by their checksum. The last group of 8 is padded with zeros.
inline std::string sealed(std::string bytes) {
    std::uint64_t sum = bytes.size();
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        sum ^= std::uint64_t{static_cast<unsigned char>(bytes[i])} << (8 * (i % 8));
        if (i % 8 == 7 || i + 1 == bytes.size()) {
            sum *= 0x9e3779b97f4a7c15U;
            sum ^= sum >> 29;
        }
    }
    append(bytes, std::vector{sum});
    return bytes;
}

/// An index with its numbers at hand. As it comes, it is that of the rows
///
///     history 0: a at 5; b and cd at 7
///     history 1: b at 5; nothing at 9
struct IndexFile {
    /// The numbers of the header after its letters, in the order of the file.
    struct Head {
        std::uint64_t version = 1;
        std::uint64_t timeBytes = 4;
        std::uint64_t minCount = 1;
        std::uint64_t transactionsRead = 4;
        std::uint64_t items = 3;
        std::uint64_t nameBytes = 4;
        std::uint64_t histories = 2;
        std::uint64_t transactions = 3;
        std::uint64_t occurrences = 4;
    };

    std::string letters = std::string("QVINDEX\0", 8);
    Head head;
    std::vector<std::uint64_t> nameBegin = {0, 1, 2, 4};
    std::string names = "abcd";
    std::vector<std::uint32_t> counts = {1, 2, 1};
    std::vector<std::uint32_t> historyBegin = {0, 2, 3};
    std::vector<std::uint64_t> times = {5, 7, 5};
    std::vector<std::uint32_t> itemBegin = {0, 1, 3, 4};
    std::vector<std::uint32_t> occurrences = {0, 1, 2, 1};
    char fill = '\0';  ///< The padding of arrays.

    std::string bytes() const {
        std::string bytes = letters;
        append(bytes, std::vector{head.version, head.timeBytes, head.minCount,
                                  head.transactionsRead, head.items, head.nameBytes, head.histories,
                                  head.transactions, head.occurrences});
        append(bytes, nameBegin);
        m_fillUp(bytes += names);
        m_append(bytes, counts);
        m_append(bytes, historyBegin);
        if (head.timeBytes == 4)
            m_append(bytes, std::vector<std::uint32_t>(times.begin(), times.end()));
        else
            append(bytes, times);
        m_append(bytes, itemBegin);
        m_append(bytes, occurrences);
        return sealed(bytes);
    }

  private:
    void m_append(std::string& bytes, const std::vector<std::uint32_t>& numbers) const {
        append(bytes, numbers);
        m_fillUp(bytes);
    }

    void m_fillUp(std::string& bytes) const { bytes.append((8 - bytes.size() % 8) % 8, fill); }
};

}  // namespace mining_tests
