/// The registry in every order of its addresses: random calls beside a map of the standard library.

#include <moxtel/memory.hpp>

#include <array>
#include <cstddef>
#include <map>
#include <random>

#include <gtest/gtest.h>

namespace moxtel::mem {
namespace {

constexpr std::size_t ADDRESSES = 12;

class RegistryOrder : public testing::TestWithParam<unsigned> {
  protected:
    void TearDown() override {
        for (const char& c : m_bytes)
            mem::free(const_cast<char*>(&c));
    }

    std::size_t below(std::size_t n) { return m_random() % n; }

    std::array<char, ADDRESSES> m_bytes{};
    std::mt19937 m_random{GetParam()};
};

INSTANTIATE_TEST_SUITE_P(Seeds, RegistryOrder, testing::Range(0U, 8U));

TEST_P(RegistryOrder, NeitherFindsNorForgetsAnotherAddress) {
    std::map<const char*, int> owners;
    for (int n = 0; n < 3000; ++n) {
        char* address = &m_bytes[below(ADDRESSES)];
        const bool there = owners.contains(address);
        switch (below(5)) {
            case 0:
                ASSERT_EQ(protect(address), !there);
                if (!there)
                    owners[address] = 1;
                break;
            case 1:
                if (there) {
                    ASSERT_FALSE(acquire(address));
                    ++owners[address];
                }
                break;
            case 2:
                if (there && owners[address] > 1) {
                    ASSERT_FALSE(release(address));
                    --owners[address];
                } else if (there) {
                    ASSERT_TRUE(release(address));
                    mem::free(address);
                    owners.erase(address);
                } else {
                    ASSERT_FALSE(release(address));
                }
                break;
            case 3:
                mem::free(address);
                owners.erase(address);
                break;
            default:
                for (const char& c : m_bytes) {
                    ASSERT_EQ(policyOf(&c) != nullptr, owners.contains(&c)) << n;
                    ASSERT_EQ(allocatorOf(&c), owners.contains(&c) ? STACK : nullptr) << n;
                }
        }
    }
}

}  // namespace
}  // namespace moxtel::mem
