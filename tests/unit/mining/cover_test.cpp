#include "cover.hpp"

#include <algorithm>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace quarvis::rule {
namespace {

using Positions = std::vector<Position>;

/// A cover and what it is a view of.
class Made {
  public:
    Made(const Positions& positions, std::size_t size, bool asBitmap) {
        m_storage.positions = positions;
        m_storage.words.assign((size + 63) / 64, 0);
        for (const Position at : positions)
            m_storage.words[at / 64] |= std::uint64_t{1} << (at % 64);
        m_cover.count = static_cast<std::uint32_t>(positions.size());
        if (asBitmap)
            m_cover.words = m_storage.words.data();
        else
            m_cover.positions = m_storage.positions.data();
    }
    Made(const Made&) = delete;
    Made& operator=(const Made&) = delete;

    const Cover& cover() const { return m_cover; }

  private:
    CoverStorage m_storage;
    Cover m_cover;
};

/// The positions below `size`, each with a probability of `share` in 256.
Positions randomPositions(std::size_t size, unsigned share, std::mt19937_64& random) {
    Positions positions;
    for (Position at = 0; at < size; ++at)
        if (random() % 256 < share)
            positions.push_back(at);
    return positions;
}

Positions common(const Positions& a, const Positions& b) {
    Positions both;
    std::set_intersection(a.begin(), a.end(), b.begin(), b.end(), std::back_inserter(both));
    return both;
}

Positions positionsOf(const Cover& cover, std::size_t size) {
    if (!cover.isBitmap())
        return {cover.positions, cover.positions + cover.count};
    Positions positions;
    for (Position at = 0; at < (size + 63) / 64 * 64; ++at)
        if (cover.contains(at))
            positions.push_back(at);
    return positions;
}

TEST(KeptAsBitmap, WhenThatIsNoLargerThanTheList) {
    struct Row {
        std::size_t count;
        std::size_t size;
        bool kept;
    };
    const Row rows[] = {
        {0, 1, false},     {1, 1, true},     {1, 32, true},         {1, 33, false},
        {31, 1024, false}, {32, 1024, true}, {134217728, 1, true},  {134217727, 4294967295, false},
        {2, 64, true},     {2, 65, false},   {100000, 100000, true}};
    for (const Row& row : rows)
        EXPECT_EQ(row.kept, keptAsBitmap(row.count, row.size)) << row.count << " of " << row.size;
}

/// Which of the two covers are bitmaps.
struct Forms {
    bool first;
    bool second;
};

class CoversOfForms : public testing::TestWithParam<Forms> {
  protected:
    /// Calls `test` with many pairs of covers, of sizes around the ends of words and of all
    /// densities, and with their common positions.
    template <class Test>
    static void forManyPairs(Test test) {
        std::mt19937_64 random(1);
        for (const std::size_t size : {1U, 2U, 63U, 64U, 65U, 127U, 128U, 129U, 200U, 1000U, 3001U})
            for (const unsigned share : {0U, 1U, 8U, 60U, 200U, 256U})
                for (const unsigned otherShare : {0U, 1U, 8U, 60U, 200U, 256U}) {
                    const Positions a = randomPositions(size, share, random);
                    const Positions b = randomPositions(size, otherShare, random);
                    test(Made(a, size, GetParam().first).cover(),
                         Made(b, size, GetParam().second).cover(), size, common(a, b));
                }
    }
};

TEST_P(CoversOfForms, IntersectToTheirCommonPositions) {
    CoverStorage storage;  // As the search uses it: over and over.
    forManyPairs([&](const Cover& a, const Cover& b, std::size_t size, const Positions& expected) {
        const Cover both = intersect(a, b, size, storage);
        EXPECT_EQ(expected.size(), both.count);
        EXPECT_EQ(expected, positionsOf(both, size));
        EXPECT_EQ(a.isBitmap() && b.isBitmap() && keptAsBitmap(expected.size(), size),
                  both.isBitmap());
    });
}

TEST_P(CoversOfForms, CountTheirCommonPositions) {
    forManyPairs([](const Cover& a, const Cover& b, std::size_t size, const Positions& expected) {
        EXPECT_EQ(expected.size(), countCommon(a, b, size, 0));
        EXPECT_EQ(expected.size(), countCommon(a, b, size, 1));
    });
}

TEST_P(CoversOfForms, CountExactlyFromTheLeastNumberOn) {
    forManyPairs([](const Cover& a, const Cover& b, std::size_t size, const Positions& expected) {
        const auto number = static_cast<std::uint32_t>(expected.size());
        for (const std::uint32_t least : {number / 2, number - std::min(number, 1U), number})
            EXPECT_EQ(number, countCommon(a, b, size, least)) << "at least " << least;
        for (const std::uint32_t least : {number + 1, number + 2, number * 2 + 1, 4294967295U})
            EXPECT_LT(countCommon(a, b, size, least), least);
    });
}

TEST_P(CoversOfForms, VisitTheirCommonPositionsAscending) {
    forManyPairs([](const Cover& a, const Cover& b, std::size_t size, const Positions& expected) {
        Positions visited;
        forEachCommon(a, b, size, [&visited](Position at) {
            visited.push_back(at);
            return true;
        });
        EXPECT_EQ(expected, visited);
    });
}

TEST_P(CoversOfForms, AreVisitedUntilTheVisitorHasEnough) {
    forManyPairs([](const Cover& a, const Cover& b, std::size_t size, const Positions& expected) {
        for (const std::size_t enough : {std::size_t{1}, std::size_t{2}, expected.size() / 2,
                                         expected.size() - 1, expected.size()}) {
            if (enough == 0 || enough > expected.size())
                continue;
            Positions visited;
            forEachCommon(a, b, size, [&](Position at) {
                visited.push_back(at);
                return visited.size() < enough;
            });
            EXPECT_EQ(
                Positions(expected.begin(), expected.begin() + static_cast<std::ptrdiff_t>(enough)),
                visited);
        }
    });
}

INSTANTIATE_TEST_SUITE_P(BitmapOrList, CoversOfForms,
                         testing::Values(Forms{true, true}, Forms{true, false}, Forms{false, true},
                                         Forms{false, false}),
                         [](const auto& forms) {
                             const auto name = [](bool bitmap) -> std::string {
                                 return bitmap ? "Bitmap" : "List";
                             };
                             return name(forms.param.first) + "And" + name(forms.param.second);
                         });

}  // namespace
}  // namespace quarvis::rule
