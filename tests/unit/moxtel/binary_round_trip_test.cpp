/// Values that are written, read and written again: the same values and the same bytes, except for
/// the strings told at the end.

#include <moxtel/binary.hpp>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <ostream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <moxtel/exception.hpp>

#include "draws.hpp"

namespace moxtel::io {
namespace {

using namespace std::string_literals;

/// A value of one of the types that are written.
struct Value {
    std::string type;
    std::string content;  ///< A string itself, a number as its bytes.
    std::function<std::size_t(BinaryWriter&)> write;
    std::function<Value(BinaryReader&)> reread;  ///< The next value of the type.

    bool operator==(const Value& other) const {
        return type == other.type && content == other.content;
    }
};

void PrintTo(const Value& value, std::ostream* out) {
    *out << value.type << ' ' << ::testing::PrintToString(value.content);
}

class ValueDraws : public moxtel_tests::Draws {
  public:
    using Draws::Draws;

    std::string bytes(std::size_t count) {
        std::string text(count, '\0');
        for (char& c : text)
            c = static_cast<char>(below(256));
        return text;
    }
};

/// A type: some of its values, and any of them.
struct Type {
    std::vector<Value> edges;
    std::function<Value(ValueDraws&)> draw;
};

template <class T>
struct Number {
    const char* type;
    std::size_t (BinaryWriter::*write)(T);
    T (BinaryReader::*read)();

    Value of(T value) const {
        std::string bytes(sizeof value, '\0');
        std::memcpy(bytes.data(), &value, sizeof value);
        return {type, bytes,
                [value, number = *this](BinaryWriter& out) { return (out.*number.write)(value); },
                [number = *this](BinaryReader& in) { return number.of((in.*number.read)()); }};
    }
};

template <class T>
Type numbers(const Number<T>& number) {
    using Limits = std::numeric_limits<T>;
    Type type;
    for (const T value :
         {T(0), T(1), T(-1), T(100), Limits::min(), Limits::lowest(), Limits::max(),
          Limits::denorm_min(), Limits::epsilon(), Limits::infinity(), Limits::quiet_NaN()})
        type.edges.push_back(number.of(value));
    if constexpr (!Limits::is_integer)
        type.edges.push_back(number.of(-T(0)));
    type.draw = [number](ValueDraws& draws) {
        T value;
        std::memcpy(&value, draws.bytes(sizeof value).data(), sizeof value);
        return number.of(value);
    };
    return type;
}

struct Text {
    const char* type;
    std::size_t (BinaryWriter::*write)(const std::string&, std::size_t, std::size_t);
    std::string (BinaryReader::*read)();

    Value of(const std::string& value) const {
        return {type, value,
                [value, text = *this](BinaryWriter& out) {
                    return (out.*text.write)(value, 0, value.size());
                },
                [text = *this](BinaryReader& in) { return text.of((in.*text.read)()); }};
    }
};

/// Strings of up to `longest` bytes, but for the bytes `without`.
Type texts(const Text& text, std::size_t longest, const std::string& without = "") {
    const auto cleared = [without](std::string value) {
        for (char& c : value)
            c = without.find(c) != std::string::npos ? 'x' : c;
        return value;
    };
    Type type;
    for (const std::string& value : {""s, "a"s, "\0"s, "\xff"s, "a\0\xff"s + "b\r\n"s,
                                     std::string(longest, 'y'), std::string(longest - 1, '\xff')})
        type.edges.push_back(text.of(cleared(value)));
    type.draw = [=](ValueDraws& draws) {
        const std::size_t most = draws.below(50) == 0 ? longest : 20;
        return text.of(cleared(draws.bytes(draws.below(most + 1))));
    };
    return type;
}

constexpr Text PSTR_8 = {"PStr8", &BinaryWriter::writePStr8, &BinaryReader::readPStr8};
constexpr Text PSTR_16 = {"PStr16", &BinaryWriter::writePStr16, &BinaryReader::readPStr16};
constexpr Text PSTR_32 = {"PStr32", &BinaryWriter::writePStr32, &BinaryReader::readPStr32};
constexpr Text PSTR_64 = {"PStr64", &BinaryWriter::writePStr64, &BinaryReader::readPStr64};
constexpr Text NTS = {"NTS", &BinaryWriter::writeNTS, &BinaryReader::readNTS};

std::vector<Type> everyType() {
    using W = BinaryWriter;
    using R = BinaryReader;
    return {numbers<signed char>({"SI8", &W::writeSI8, &R::readSI8}),
            numbers<unsigned char>({"UI8", &W::writeUI8, &R::readUI8}),
            numbers<short>({"SI16", &W::writeSI16, &R::readSI16}),
            numbers<unsigned short>({"UI16", &W::writeUI16, &R::readUI16}),
            numbers<int>({"SI32", &W::writeSI32, &R::readSI32}),
            numbers<unsigned int>({"UI32", &W::writeUI32, &R::readUI32}),
            numbers<std::int64_t>({"SI64", &W::writeSI64, &R::readSI64}),
            numbers<std::uint64_t>({"UI64", &W::writeUI64, &R::readUI64}),
            numbers<float>({"Float", &W::writeFloat, &R::readFloat}),
            numbers<double>({"Double", &W::writeDouble, &R::readDouble}),
            texts(PSTR_8, 255),
            texts(PSTR_16, 65535),
            texts(PSTR_32, 70000),
            texts(PSTR_64, 65535),
            texts(NTS, 1000, "\0\xff"s)};
}

std::string writtenValues(const std::vector<Value>& values, Endianness order) {
    std::ostringstream bytes;
    BinaryWriter out(bytes, order);
    std::size_t count = 0;
    for (const Value& value : values)
        count += value.write(out);
    EXPECT_EQ(count, bytes.str().size());
    return bytes.str();
}

/// Reads values of the types of `values`, which has to use up the bytes.
std::vector<Value> reread(const std::string& bytes, const std::vector<Value>& values,
                          Endianness order) {
    BinaryReader in(Device::wrapString(bytes, 0, bytes.size()), order);
    std::vector<Value> again;
    again.reserve(values.size());
    for (const Value& value : values)
        again.push_back(value.reread(in));
    EXPECT_EQ(in.handle()->tellg(), std::streamoff(bytes.size()));
    return again;
}

void expectRoundTrip(const std::vector<Value>& values) {
    for (const Endianness order : {ENDIAN_LITTLE, ENDIAN_BIG}) {
        const std::string bytes = writtenValues(values, order);
        const std::vector<Value> again = reread(bytes, values, order);
        EXPECT_EQ(again, values);
        EXPECT_EQ(writtenValues(again, order), bytes);
    }
}

TEST(BinaryRoundTrip, EdgesOfEveryTypeComeBack) {
    std::vector<Value> all;
    for (const Type& type : everyType()) {
        expectRoundTrip(type.edges);
        all.insert(all.end(), type.edges.begin(), type.edges.end());
    }
    expectRoundTrip(all);
}

TEST(BinaryRoundTrip, RandomValuesComeBack) {
    const std::vector<Type> types = everyType();
    for (unsigned seed = 0; seed < 200; ++seed) {
        SCOPED_TRACE(seed);
        ValueDraws draws(seed);
        std::vector<Value> values(draws.below(40));
        for (Value& value : values)
            value = types[draws.below(types.size())].draw(draws);
        expectRoundTrip(values);
    }
}

// What does not come back.

TEST(BinaryRoundTrip, AnNTSThatHoldsANulComesBackInTwo) {
    const std::string bytes = writtenValues({NTS.of("ab\0cd"s)}, ENDIAN_BIG);
    EXPECT_EQ(bytes, "ab\0cd\0"s);
    const std::vector<Value> halves = {NTS.of("ab"), NTS.of("cd")};
    EXPECT_EQ(reread(bytes, halves, ENDIAN_BIG), halves);
}

TEST(BinaryRoundTrip, AnNTSEndsAtAByteFF) {
    const std::string bytes = writtenValues({NTS.of("ab\xffyz")}, ENDIAN_BIG);
    EXPECT_EQ(bytes, "ab\xffyz\0"s);
    const std::vector<Value> halves = {NTS.of("ab"), NTS.of("yz")};
    EXPECT_EQ(reread(bytes, halves, ENDIAN_BIG), halves);
}

TEST(BinaryRoundTrip, AStringTooLongForItsPrefixIsNotWritten) {
    for (const auto& [text, longest] : {std::pair{PSTR_8, 255}, std::pair{PSTR_16, 65535}}) {
        const Value value = text.of(std::string(static_cast<std::size_t>(longest) + 1, 'x'));
        std::ostringstream bytes;
        BinaryWriter out(bytes, ENDIAN_BIG);
        EXPECT_THROW(value.write(out), IOException) << text.type;
        EXPECT_EQ(bytes.str(), "") << text.type;
    }
}

TEST(BinaryRoundTrip, APStr64BeyondSixteenBitsOfLengthComesBackCutShort) {
    for (const auto& [length, prefix] : {std::pair{65536U, 0U}, std::pair{70000U, 4464U}}) {
        const std::string bytes = writtenValues({PSTR_64.of(std::string(length, 'x'))}, ENDIAN_BIG);
        EXPECT_EQ(bytes.size(), 8 + length);
        BinaryReader in(Device::wrapString(bytes, 0, bytes.size()), ENDIAN_BIG);
        EXPECT_EQ(in.readPStr64(), std::string(prefix, 'x'));
        EXPECT_EQ(in.readUI8(), 'x');
    }
}

TEST(BinaryRoundTrip, WhatIsReadInTheOtherOrderComesBackReversed) {
    const Number<unsigned int> number = {"UI32", &BinaryWriter::writeUI32, &BinaryReader::readUI32};
    const std::string bytes = writtenValues({number.of(0x01020304)}, ENDIAN_BIG);
    const std::vector<Value> reversed = {number.of(0x04030201)};
    EXPECT_EQ(reread(bytes, reversed, ENDIAN_LITTLE), reversed);
    EXPECT_EQ(writtenValues(reversed, ENDIAN_BIG), "\4\3\2\1");
}

}  // namespace
}  // namespace moxtel::io
