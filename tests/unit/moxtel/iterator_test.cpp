#include <moxtel/iterator.hpp>

#include <cstddef>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace moxtel::mem {
namespace {

/// Walks over a vector; counts the strategies alive.
class VectorStrategy : public Iterator<std::string>::Strategy {
  public:
    static inline int alive = 0;

    explicit VectorStrategy(std::vector<std::string>& texts) : m_texts(texts) { ++alive; }
    ~VectorStrategy() override { --alive; }
    bool hasNext() const override { return m_at < m_texts.size(); }
    void next() override { ++m_at; }
    std::string& current() override { return m_texts[m_at]; }
    const std::string& current() const override { return m_texts[m_at]; }

  private:
    std::vector<std::string>& m_texts;
    std::size_t m_at = 0;
};

class IteratorTest : public testing::Test {
  protected:
    Iterator<std::string> walk() { return Iterator<std::string>(new VectorStrategy(m_texts)); }

    std::vector<std::string> m_texts = {"one", "three", "fifteen"};
};

TEST_F(IteratorTest, HasNextMeansThatThereIsACurrentElement) {
    m_texts = {"only"};
    auto i = walk();
    EXPECT_TRUE(i.hasNext());
    EXPECT_TRUE(static_cast<bool>(i));
    i.next();
    EXPECT_FALSE(i.hasNext());
    EXPECT_FALSE(static_cast<bool>(i));
}

TEST_F(IteratorTest, WalkingIdiomSeesEachElementOnce) {
    std::vector<std::string> seen;
    for (auto i = walk(); i.hasNext(); i.next())
        seen.push_back(i.current());
    EXPECT_EQ(seen, m_texts);
}

TEST_F(IteratorTest, OperatorsAreNextAndCurrent) {
    auto i = walk();
    EXPECT_EQ(*i, "one");
    EXPECT_EQ(i->size(), 3U);
    EXPECT_EQ(*++i, "three");
    i++;
    EXPECT_EQ(*i, "fifteen");
}

TEST_F(IteratorTest, CurrentElementCanBeChanged) {
    auto i = walk();
    *i = "two";
    i->push_back('!');
    EXPECT_EQ(m_texts[0], "two!");
}

TEST_F(IteratorTest, ConstIteratorShowsTheElementUnchangeable) {
    const auto i = walk();
    static_assert(std::is_same_v<decltype(i.current()), const std::string&>);
    static_assert(std::is_same_v<decltype(*i), const std::string&>);
    EXPECT_TRUE(i.hasNext());
    EXPECT_EQ(i.current(), "one");
    EXPECT_EQ(*i, "one");
    EXPECT_EQ(i->size(), 3U);
}

TEST_F(IteratorTest, CopiesShareOneStrategy) {
    auto i = walk();
    auto copy = i;
    EXPECT_EQ(VectorStrategy::alive, 1);
    ++copy;
    EXPECT_EQ(*i, "three");
}

TEST_F(IteratorTest, LastCopyDestroysTheStrategy) {
    {
        auto i = walk();
        auto copy = i;
        i = walk();
        EXPECT_EQ(VectorStrategy::alive, 2);
    }
    EXPECT_EQ(VectorStrategy::alive, 0);
}

}  // namespace
}  // namespace moxtel::mem
