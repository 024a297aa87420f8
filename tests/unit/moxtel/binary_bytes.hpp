#pragma once

#include <cstddef>
#include <cstring>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include <moxtel/binary.hpp>

namespace moxtel::io {

/// The bytes that `write` writes; it has to give their number.
template <class Write>
std::string written(Endianness endian, Write write) {
    std::ostringstream out;
    BinaryWriter writer(out, endian);
    const std::size_t count = write(writer);
    EXPECT_EQ(count, out.str().size());
    return out.str();
}

/// A reader over a copy of the bytes.
inline BinaryReader readerOver(const std::string& bytes, Endianness endian) {
    return BinaryReader(Device::wrapString(bytes, 0, bytes.size()), endian);
}

/// Fails every transfer after the first `good` ones, which transfer all that is asked for.
class FailingDevice : public Device {
  public:
    explicit FailingDevice(int good) : m_good(good) {}
    bool canRead() const override { return true; }
    bool canWrite() const override { return true; }
    int seekCapability() const override { return 0; }
    using Device::read;
    using Device::write;
    std::size_t read(char* buf, std::size_t n) override {
        if (m_good-- <= 0)
            return FAILED;
        std::memset(buf, 1, n);
        return n;
    }
    std::size_t write(const char*, std::size_t n) override { return m_good-- <= 0 ? FAILED : n; }

  private:
    int m_good;
};

}  // namespace moxtel::io
