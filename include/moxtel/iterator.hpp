#pragma once

#include <concepts>
#include <cstddef>
#include <iterator>
#include <type_traits>

#include <moxtel/pointer.hpp>

#pragma GCC visibility push(default)

namespace moxtel::mem {

template <class T>
class InputIterator;

/// A walk over elements of any container, one word in size. It stands on a current element while
/// `hasNext()`:
///
///     for (auto i = container.iterator(); i.hasNext(); i.next())
///         use(i.current());
///
/// It is also an input range of the elements from the current one on.
///
/// Copies share one position: when one advances, all do. An iterator must not outlive its container
/// or the erasure of its current element. Other elements may be erased during the walk. Making an
/// iterator costs an allocation and a registration (see `Pointer`), copying one costs a lookup,
/// moving one costs nothing, and each step costs a virtual call or two. All copies belong to one
/// thread.
template <class T>
class Iterator {
  public:
    /// How a container is walked. Its operations do what those of the iterator say. `next` and
    /// `current` are called only while `hasNext()`.
    class Strategy {
      public:
        /// @{
        /// See `Iterator`.
        virtual bool hasNext() const = 0;
        virtual void next() = 0;
        virtual T& current() = 0;
        virtual const T& current() const = 0;
        /// @}

        virtual ~Strategy() = default;
    };

    /// No element. An iterator that was moved from has none either.
    Iterator() = default;

    /// Takes ownership of a strategy fresh from `new`; null stands for no element.
    explicit Iterator(Strategy* strategy) : m_strat(strategy) {}

    /// The same walk, with elements that cannot be changed. It shares the position of `other`.
    template <class U>
    requires(std::same_as<T, const U>) Iterator(const Iterator<U>& other)
        : m_strat(new ConstStrategy<U>(other)) {}

    /// @{
    /// Whether there is a current element (not whether another follows it).
    bool hasNext() const { return m_strat && m_strat->hasNext(); }
    explicit operator bool() const { return hasNext(); }
    /// @}

    /// @{
    /// Goes on to the next element, or past the last one.
    void next() { m_strat->next(); }
    Iterator& operator++() {
        next();
        return *this;
    }
    /// @}

    /// As the prefix form, but gives nothing: a copy made before would have advanced as well.
    void operator++(int) { next(); }

    /// @{
    /// The element that the walk stands on; to be asked for only while `hasNext()`.
    T& current() { return m_strat->current(); }
    const T& current() const { return m_strat->current(); }
    T& operator*() { return current(); }
    const T& operator*() const { return current(); }
    T* operator->() { return &current(); }
    const T* operator->() const { return &current(); }
    /// @}

    /// @{
    /// The range of the elements from the current one on. Walking it advances this iterator.
    InputIterator<T> begin() const { return InputIterator<T>(*this); }
    std::default_sentinel_t end() const noexcept { return {}; }
    /// @}

  private:
    template <class U>
    class ConstStrategy : public Strategy {
      public:
        explicit ConstStrategy(const Iterator<U>& walk) : m_walk(walk) {}
        bool hasNext() const override { return m_walk.hasNext(); }
        void next() override { m_walk.next(); }
        T& current() override { return m_walk.current(); }
        const T& current() const override { return m_walk.current(); }

      private:
        Iterator<U> m_walk;
    };

    Pointer<Strategy> m_strat;
};

/// A walk as an input iterator of the standard library, for range-for and the algorithms; the end
/// is `std::default_sentinel`. It shares the position of the `Iterator` that it was made of.
template <class T>
class InputIterator {
  public:
    using iterator_concept = std::input_iterator_tag;  ///< See `std::input_iterator`.
    using value_type = std::remove_cv_t<T>;            ///< What the elements are copied as.
    using difference_type = std::ptrdiff_t;            ///< Signed, as the standard asks for.

    /// At its end.
    InputIterator() = default;

    /// Stands where `walk` stands.
    explicit InputIterator(const Iterator<T>& walk) : m_walk(walk) {}

    /// @{
    /// The current element; only before the end.
    T& operator*() const { return m_walk.current(); }
    T* operator->() const { return &m_walk.current(); }
    /// @}

    /// @{
    /// Goes on to the next element, or to the end.
    InputIterator& operator++() {
        m_walk.next();
        return *this;
    }
    void operator++(int) { m_walk.next(); }
    /// @}

    /// Whether the walk has come to its end.
    bool operator==(std::default_sentinel_t) const { return !m_walk.hasNext(); }

  private:
    mutable Iterator<T> m_walk;  ///< A const iterator may change the element, as the standard asks.
};

}  // namespace moxtel::mem

#pragma GCC visibility pop
