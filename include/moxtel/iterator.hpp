#pragma once

#include <moxtel/pointer.hpp>

#pragma GCC visibility push(default)

namespace moxtel::mem {

/// A walk over elements of any container, one word in size. It stands on a current element while
/// `hasNext()`:
///
///     for (auto i = container.iterator(); i.hasNext(); i.next())
///         use(i.current());
///
/// Copies share one position: advancing one advances them all. An iterator must not outlive its
/// container, nor the erasure of its current element; other elements may be erased on the way, so
/// an element may be erased once the iterator has gone on. To make one costs an allocation and a
/// registration (see `Pointer`), to copy one a lookup, and each step a virtual call or two.
template <class T>
class Iterator {
  public:
    /// How a container is walked: what the operations of the iterator of the same names do. `next`
    /// and `current` are called only while `hasNext()`.
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

    /// Takes ownership of a strategy fresh from `new`.
    explicit Iterator(Strategy* strategy) : m_strat(strategy) {}

    /// @{
    /// Whether there is a current element (not whether another follows it).
    bool hasNext() const { return m_strat->hasNext(); }
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

    /// The same, but gives nothing: a copy made before would have advanced as well.
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

  private:
    Pointer<Strategy> m_strat;
};

}  // namespace moxtel::mem

#pragma GCC visibility pop
