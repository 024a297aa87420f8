#include <quarvis/mining/dictionary.hpp>

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "name_hash.hpp"

namespace quarvis::mining {
namespace {

using namespace std::string_literals;

TEST(Dictionary, IsEmptyAtFirst) {
    EXPECT_EQ(0U, Dictionary().size());
}

TEST(Dictionary, NumbersNamesInTheOrderInWhichTheyAreMet) {
    Dictionary names;
    EXPECT_EQ(Code{0}, names.add("pear"));
    EXPECT_EQ(Code{1}, names.add("apple"));
    EXPECT_EQ(Code{0}, names.add("pear"));
    EXPECT_EQ(Code{2}, names.add("fig"));
    EXPECT_EQ(Code{1}, names.add("apple"));
    EXPECT_EQ(3U, names.size());
    EXPECT_EQ("pear", names.name(Code{0}));
    EXPECT_EQ("apple", names.name(Code{1}));
    EXPECT_EQ("fig", names.name(Code{2}));
}

TEST(Dictionary, TellsNamesOfAnyBytesApart) {
    const std::vector<std::string> all = {"",
                                          "\0"s,
                                          "\0\0"s,
                                          "a",
                                          "a\0"s,
                                          "a\0b"s,
                                          " ",
                                          "\xff",
                                          "\x80",
                                          "\n",
                                          "aaaaaaa",
                                          "aaaaaaaa",
                                          "aaaaaaaaa",
                                          "aaaaaaaa\0"s,
                                          std::string(4096, 'a'),
                                          std::string(4097, 'a')};
    Dictionary names;
    for (std::size_t round = 0; round < 2; ++round)
        for (std::size_t i = 0; i < all.size(); ++i)
            EXPECT_EQ(Code(i), names.add(all[i])) << "name " << i;
    EXPECT_EQ(all.size(), names.size());
    for (std::size_t i = 0; i < all.size(); ++i)
        EXPECT_EQ(all[i], names.name(Code(i))) << "name " << i;
}

TEST(Dictionary, KeepsTheEmptyNameWhereverItComes) {
    Dictionary names;
    names.add("a");
    EXPECT_EQ(Code{1}, names.add(""));
    names.add("b");
    EXPECT_EQ("a", names.name(Code{0}));
    EXPECT_EQ("", names.name(Code{1}));
    EXPECT_EQ("b", names.name(Code{2}));
}

TEST(Dictionary, KeepsAllCodesAsItGrows) {
    constexpr std::size_t number = 40'000;
    Dictionary names;
    for (std::size_t i = 0; i < number; ++i) {
        ASSERT_EQ(Code(i), names.add("name" + std::to_string(i)));
        // A name of the first half, also right after the table doubles.
        ASSERT_EQ(Code(i / 2), names.add("name" + std::to_string(i / 2)));
    }
    EXPECT_EQ(number, names.size());
    for (std::size_t i = 0; i < number; ++i)
        ASSERT_EQ("name" + std::to_string(i), names.name(Code(i)));
}

/// Two names of one length with the same hash, whatever the hash function is: a million names have
/// about a hundred pairs with equal hashes of 32 bits.
std::pair<std::string, std::string> namesOfOneHash(const std::string& prefix) {
    std::unordered_map<std::uint32_t, std::string> names;
    for (int i = 1'000'000; i < 2'000'000; ++i) {
        const std::string name = prefix + std::to_string(i);
        const auto [place, isNew] = names.try_emplace(nameHash(name), name);
        if (!isNew)
            return {place->second, name};
    }
    return {};
}

/// Names of fewer than eight bytes, and longer ones, are compared in different ways.
TEST(Dictionary, TellsNamesOfOneHashApart) {
    for (const char* prefix : {"", "article-"}) {
        const auto [first, second] = namesOfOneHash(prefix);
        ASSERT_NE(first, second);
        Dictionary names;
        EXPECT_EQ(Code{0}, names.add(first));
        EXPECT_EQ(Code{1}, names.add(second));
        for (std::size_t i = 2; i < 5000; ++i)
            names.add(std::to_string(i));
        EXPECT_EQ(Code{0}, names.add(first));
        EXPECT_EQ(Code{1}, names.add(second));
    }
}

TEST(Dictionary, GoesOnAsACopy) {
    Dictionary names;
    names.add("a");
    Dictionary copy = names;
    EXPECT_EQ(Code{1}, copy.add("b"));
    EXPECT_EQ(Code{1}, names.add("c"));
    EXPECT_EQ("b", copy.name(Code{1}));
    EXPECT_EQ("c", names.name(Code{1}));
}

/// A name takes its bytes, eight bytes for where it ends, and two to four entries of eight bytes in
/// the hash table. Growing arrays have at most twice the room that they need.
TEST(Dictionary, TellsItsMemory) {
    constexpr std::size_t number = 100'000;
    constexpr std::size_t bytes = 20;
    Dictionary names;
    for (std::size_t i = 0; i < number; ++i) {
        const std::string digits = std::to_string(i);
        names.add(std::string(bytes - digits.size(), '0') + digits);
    }
    EXPECT_GE(names.memory(), number * (bytes + 8 + 16));
    EXPECT_LE(names.memory(), number * (2 * bytes + 16 + 32));
}

/// Names that have the same bytes in other places or other lengths mostly have different hashes;
/// otherwise the table would be slow. Which ones are the same depends on the machine's byte order.
TEST(NameHash, DiffersForMostNames) {
    std::vector<std::string> all;
    for (std::size_t length = 0; length < 40; ++length)
        for (std::size_t place = 0; place < length; ++place) {
            std::string name(length, 'a');
            name[place] = 'b';
            all.push_back(name);
        }
    std::size_t same = 0;
    for (std::size_t i = 0; i < all.size(); ++i)
        for (std::size_t j = 0; j < i; ++j)
            same += nameHash(all[i]) == nameHash(all[j]) ? 1 : 0;
    EXPECT_LT(same, all.size() / 100);
}

}  // namespace
}  // namespace quarvis::mining
