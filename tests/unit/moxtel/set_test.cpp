#include <moxtel/set.hpp>

#include <algorithm>
#include <cstddef>
#include <map>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

// The containers against the standard library's, operation by operation on random sequences, with
// all keys in one bucket, in few and in many.

namespace moxtel::util {
namespace {

class Mirrored : public testing::TestWithParam<std::size_t> {
  protected:
    std::size_t random(std::size_t below) {
        return std::uniform_int_distribution<std::size_t>(0, below - 1)(m_engine);
    }

    std::mt19937 m_engine{20};
};

INSTANTIATE_TEST_SUITE_P(Buckets, Mirrored, testing::Values(1, 2, 7, 251),
                         testing::PrintToStringParamName());

constexpr int OPERATIONS = 4000;
constexpr std::size_t KEYS = 40;

TEST_P(Mirrored, SetAnswersAsAVectorOfDistinctKeys) {
    LinkedHashSet<std::string> set(GetParam());
    std::vector<std::string> mirror;
    for (int n = 0; n < OPERATIONS; ++n) {
        const std::string key = "key " + std::to_string(random(KEYS));
        const auto at = std::find(mirror.begin(), mirror.end(), key);
        const bool there = at != mirror.end();
        ASSERT_EQ(set.containsKey(key), there);
        if (there)
            ASSERT_EQ(set.lookupByKey(key, false), key);
        else
            ASSERT_THROW(set.lookupByKey(key, false), NotFoundException);
        switch (random(4)) {
            case 0:
                ASSERT_EQ(set.add(key), !there);
                if (!there)
                    mirror.push_back(key);
                break;
            case 1:
                ASSERT_EQ(set[key], key);
                if (!there)
                    mirror.push_back(key);
                break;
            default:
                set.eraseByKey(key);
                if (there)
                    mirror.erase(at);
        }
        ASSERT_EQ(set.size(), mirror.size());
        // Now and then an element that the walk is not at goes on the way.
        std::size_t left = random(2 * mirror.size() + 1);
        std::vector<std::string> walked;
        std::vector<std::string> expected = mirror;
        for (auto i = set.iterator(); i; ++i, --left) {
            walked.push_back(*i);
            ASSERT_LE(walked.size(), expected.size());
            const std::size_t other = random(mirror.size());
            if (left != 0 || mirror[other] == *i)
                continue;
            set.eraseByKey(mirror[other]);
            if (other >= walked.size())
                std::erase(expected, mirror[other]);
            mirror.erase(mirror.begin() + static_cast<std::ptrdiff_t>(other));
        }
        ASSERT_EQ(walked, expected);
        for (std::size_t i = 0; i < mirror.size(); ++i)
            ASSERT_EQ(set.lookupByIndex(i), mirror[i]);
    }
}

TEST_P(Mirrored, MapAnswersAsAStandardMapThatRemembersItsOrder) {
    LinkedHashMap<unsigned int, int> map(GetParam());
    std::map<unsigned int, int> mirror;
    std::vector<unsigned int> order;
    for (int n = 1; n <= OPERATIONS; ++n) {
        const auto key = static_cast<unsigned int>(random(KEYS)) * 0x01010101U;
        const bool there = mirror.contains(key);
        ASSERT_EQ(map.containsKey(key), there);
        switch (random(5)) {
            case 0:
                map[key] = n;
                mirror[key] = n;
                break;
            case 1:
                ASSERT_EQ(map.lookup(key, true) += n, mirror[key] += n);
                break;
            case 2:
                if (there)
                    ASSERT_EQ(std::as_const(map)[key], mirror.at(key));
                else
                    ASSERT_THROW(std::as_const(map)[key], NotFoundException);
                break;
            default:
                map.erase(key);
                mirror.erase(key);
        }
        if (there && !mirror.contains(key))
            std::erase(order, key);
        else if (!there && mirror.contains(key))
            order.push_back(key);
        ASSERT_EQ(map.size(), mirror.size());
        std::vector<unsigned int> walked;
        auto value = map.valueIterator();
        for (auto i = map.keyIterator(); i; ++i, ++value) {
            walked.push_back(*i);
            ASSERT_EQ(*value, mirror.at(*i));
        }
        ASSERT_FALSE(value);
        ASSERT_EQ(walked, order);
    }
}

}  // namespace
}  // namespace moxtel::util
