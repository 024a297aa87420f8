#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <stdexcept>
#include <string>
#include <utility>

/// \file
/// Numbers and arrays of numbers as little-endian bytes, with a checksum at the end. Each array is
/// padded with zeros to a multiple of 8 bytes.
namespace quarvis::mining {

/// Mixes in eight bytes at a time; the last group is padded with zeros. `index_bytes.hpp` has the
/// formula.
inline std::uint64_t checksum(std::span<const char> bytes) {
    std::uint64_t sum = bytes.size();
    for (std::size_t i = 0; i < bytes.size(); i += sizeof sum) {
        std::uint64_t word = 0;
        for (std::size_t j = 0; j < std::min(sizeof sum, bytes.size() - i); ++j)
            word |= std::uint64_t{static_cast<unsigned char>(bytes[i + j])} << (8 * j);
        sum = (sum ^ word) * 0x9e3779b97f4a7c15U;
        sum ^= sum >> 29;
    }
    return sum;
}

/// Writes numbers and arrays one after the other.
class ByteWriter {
  public:
    template <class Number>
    void number(Number value) {
        for (std::size_t i = 0; i < sizeof value; ++i)
            m_bytes += static_cast<char>(static_cast<std::uint64_t>(value) >> (8 * i));
    }

    template <class Number>
    void array(std::span<const Number> values) {
        if constexpr (std::endian::native == std::endian::little) {
            m_bytes.append(reinterpret_cast<const char*>(values.data()), values.size_bytes());
        } else {
            for (const Number value : values)
                number(value);
        }
        m_bytes.append((ALIGNMENT - m_bytes.size() % ALIGNMENT) % ALIGNMENT, '\0');
    }

    /// Returns all bytes, followed by their checksum.
    std::string finished() && {
        number(checksum(m_bytes));
        return std::move(m_bytes);
    }

    static constexpr std::size_t ALIGNMENT = 8;

  private:
    std::string m_bytes;
};

/// Reads numbers and arrays from bytes, which must outlive the reader. Throws `Error`, which is
/// made from a text, where bytes are missing or the padding is not zero.
template <class Error>
class ByteReader {
  public:
    explicit ByteReader(std::span<const char> bytes) : m_bytes(bytes) {}

    static void require(bool holds, const char* what) {
        if (!holds)
            throw Error(what);
    }

    template <class Number>
    Number number() {
        return static_cast<Number>(m_take(sizeof(Number)));
    }

    /// Allocates only what the bytes can fill.
    template <class Array>
    Array array(std::uint64_t size) {
        using Number = typename Array::value_type;
        require(size <= m_bytes.size() / sizeof(Number), "it is cut off");
        const std::size_t bytes = static_cast<std::size_t>(size) * sizeof(Number);
        Array values(static_cast<std::size_t>(size), Number());
        if constexpr (std::endian::native == std::endian::little) {
            if (bytes != 0)
                std::memcpy(values.data(), m_bytes.data(), bytes);
            m_bytes = m_bytes.subspan(bytes);
        } else {
            for (Number& value : values)
                value = number<Number>();
        }
        constexpr std::size_t alignment = ByteWriter::ALIGNMENT;
        const std::size_t fill = (alignment - bytes % alignment) % alignment;
        require(m_bytes.size() >= fill, "it is cut off");
        require(std::all_of(m_bytes.begin(), m_bytes.begin() + static_cast<std::ptrdiff_t>(fill),
                            [](char c) { return c == '\0'; }),
                "there is something between its arrays");
        m_bytes = m_bytes.subspan(fill);
        return values;
    }

    bool atEnd() const { return m_bytes.empty(); }

  private:
    std::uint64_t m_take(std::size_t bytes) {
        require(m_bytes.size() >= bytes, "it is cut off");
        std::uint64_t value = 0;
        for (std::size_t i = 0; i < bytes; ++i)
            value |= std::uint64_t{static_cast<unsigned char>(m_bytes[i])} << (8 * i);
        m_bytes = m_bytes.subspan(bytes);
        return value;
    }

    std::span<const char> m_bytes;
};

}  // namespace quarvis::mining
