/// Arrays beside vectors: random operations on a few handles, with sizes, elements and who shares
/// them compared after each.

#include <moxtel/array.hpp>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <random>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "counted.hpp"
#include "recording_allocator.hpp"

namespace moxtel::mem {
namespace {

class Draws {
  public:
    explicit Draws(unsigned seed) : m_random(seed) {}
    std::size_t below(std::size_t n) { return m_random() % n; }

    /// A position or a number of elements, sometimes far out of bounds.
    std::size_t extent() { return below(12) == 0 ? NPOS - below(3) : below(9); }

  private:
    std::mt19937 m_random;
};

/// A number that is written down in elements of each kind.
template <class T>
T element(std::size_t number) {
    if constexpr (std::is_same_v<T, std::string>)
        return std::string(number * 7, static_cast<char>('a' + number));
    else
        return T(static_cast<int>(number));
}

/// What an array promises, over vectors that handles share.
template <class T>
class Mirror {
  public:
    using Elements = std::vector<T>;

    std::size_t size() const { return m_elements ? m_elements->size() : 0; }
    bool shares(const Mirror& other) const { return m_elements && m_elements == other.m_elements; }
    bool hasBuffer() const { return m_elements != nullptr; }
    Elements elements() const { return m_elements ? *m_elements : Elements(); }
    T& operator[](std::size_t i) { return (*m_elements)[i]; }
    void replace(Elements elements) {
        m_elements = std::make_shared<Elements>(std::move(elements));
    }
    /// Gives new content to the elements of every handle that shares them.
    void overwrite(const Elements& elements) {
        if (m_elements)
            *m_elements = elements;
    }

    Elements part(std::size_t start, std::size_t count) const {
        Elements part;
        for (std::size_t i = start; i < size() && part.size() < count; ++i)
            part.push_back((*m_elements)[i]);
        return part;
    }
    /// Writes a part over the elements from `at` on, as far as they go.
    std::size_t take(const Elements& part, std::size_t at) {
        std::size_t taken = 0;
        for (std::size_t i = at; i < size() && taken < part.size(); ++i)
            (*m_elements)[i] = part[taken++];
        return taken;
    }

  private:
    std::shared_ptr<Elements> m_elements;
};

/// Three handles and their mirrors. Each operation changes one of them, perhaps with another, or
/// the same one, as the other side.
template <class T>
class Handles {
  public:
    explicit Handles(unsigned seed) : m_draws(seed) {}

    void step() {
        m_one = m_draws.below(COUNT);
        m_other = m_draws.below(COUNT);
        m_at = m_draws.extent();
        m_start = m_draws.extent();
        m_count = m_draws.extent();
        m_operate(m_draws.below(16));
    }

    void expectSame() const {
        for (std::size_t i = 0; i < COUNT; ++i) {
            const Array<T>& array = m_arrays[i];
            ASSERT_EQ(array.size(), m_mirrors[i].size());
            ASSERT_EQ(Elements(array.begin(), array.end()), m_mirrors[i].elements());
            ASSERT_EQ(array.pointer() != nullptr, m_mirrors[i].hasBuffer());
            for (std::size_t j = 0; j < COUNT; ++j)
                ASSERT_EQ(array.pointer() != nullptr && array.pointer() == m_arrays[j].pointer(),
                          m_mirrors[i].shares(m_mirrors[j]));
            for (const std::size_t at : {std::size_t{0}, m_at, array.size()})
                ASSERT_EQ(array.elementsLeft(at), m_mirrors[i].part(at, NPOS).size());
        }
    }

  private:
    using Elements = std::vector<T>;
    static constexpr std::size_t COUNT = 3;

    void m_operate(std::size_t operation) {
        Array<T>& array = m_arrays[m_one];
        Array<T>& otherArray = m_arrays[m_other];
        Mirror<T>& mirror = m_mirrors[m_one];
        Mirror<T>& otherMirror = m_mirrors[m_other];
        const T value = element<T>(m_draws.below(4));
        Elements elements = mirror.elements();
        SCOPED_TRACE("operation " + std::to_string(operation));
        switch (operation) {
            case 0: {
                const std::size_t size = m_draws.below(9);
                array = Array<T>(size, &RecordingAllocator::INSTANCE);
                return mirror.replace(Elements(size));
            }
            case 1:
                array = otherArray;
                mirror = otherMirror;
                return;
            case 2:
                array = Array<T>();
                mirror = Mirror<T>();
                return;
            case 3:
                array.swap(otherArray);
                return std::swap(mirror, otherMirror);
            case 4:
                if (array.size() == 0)
                    return;
                array.swap(m_at % array.size(), m_start % array.size());
                return std::swap(mirror[m_at % array.size()], mirror[m_start % array.size()]);
            case 5:
                array.fill(value);
                return mirror.overwrite(Elements(array.size(), value));
            case 6:
                array.reverseThis();
                std::reverse(elements.begin(), elements.end());
                return mirror.overwrite(elements);
            case 7:
                otherArray = array.clone();
                return otherMirror.replace(elements);
            case 8:
                otherArray = array.subarray(m_start, m_count);
                return otherMirror.replace(mirror.part(m_start, m_count));
            case 9:
                array.subarrayThis(m_start, m_count);
                return mirror.replace(mirror.part(m_start, m_count));
            case 10: {
                const std::size_t size = m_draws.below(12);
                array.resize(size);
                elements.resize(size);
                return mirror.replace(elements);
            }
            case 11: {
                EXPECT_EQ(array.compact(value), std::erase(elements, value));
                return mirror.replace(elements);
            }
            case 12:
                EXPECT_EQ(array.copyFrom(otherArray, m_start, m_count, m_at),
                          mirror.take(otherMirror.part(m_start, m_count), m_at));
                return;
            case 13:
                EXPECT_EQ(array.copyTo(otherArray, m_start, m_count, m_at),
                          otherMirror.take(mirror.part(m_start, m_count), m_at));
                return;
            case 14: {
                const Elements source = {value, element<T>(8), value, element<T>(9)};
                EXPECT_EQ(array.copyFrom(source.data(), source.size(), m_at),
                          mirror.take(source, m_at));
                EXPECT_EQ(array.copyFrom(otherArray), mirror.take(otherMirror.elements(), 0));
                return;
            }
            default: {
                const Elements part = mirror.part(m_start, m_count);
                Elements target(array.size());
                EXPECT_EQ(array.copyTo(target.data(), m_start, m_count), part.size());
                target.resize(part.size());
                EXPECT_EQ(target, part);
                if (array.size() > 0)
                    array[m_at % array.size()] = mirror[m_at % array.size()] = value;
            }
        }
    }

    Draws m_draws;
    Array<T> m_arrays[COUNT];
    Mirror<T> m_mirrors[COUNT];
    std::size_t m_one = 0;
    std::size_t m_other = 0;
    std::size_t m_at = 0;
    std::size_t m_start = 0;
    std::size_t m_count = 0;
};

template <class T>
class ArrayBesideVector : public ::testing::Test {
  protected:
    void SetUp() override {
        Counted::reset();
        RecordingAllocator::reset();
    }
    void TearDown() override {
        EXPECT_EQ(Counted::alive, 0);
        EXPECT_EQ(RecordingAllocator::outstanding, 0);
    }
};

using ElementKinds = ::testing::Types<int, std::string, Counted>;
TYPED_TEST_SUITE(ArrayBesideVector, ElementKinds);

TYPED_TEST(ArrayBesideVector, DoesTheSame) {
    for (unsigned seed = 0; seed < 100; ++seed) {
        Handles<TypeParam> handles(seed);
        for (int i = 0; i < 100; ++i) {
            SCOPED_TRACE("seed " + std::to_string(seed) + ", step " + std::to_string(i));
            handles.step();
            handles.expectSame();
            if (this->HasFailure())
                return;
        }
    }
}

}  // namespace
}  // namespace moxtel::mem
