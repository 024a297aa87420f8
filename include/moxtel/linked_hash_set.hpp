#pragma once

#include <cstddef>
#include <iterator>
#include <utility>

#include <moxtel/array.hpp>
#include <moxtel/exception.hpp>
#include <moxtel/hash.hpp>
#include <moxtel/set_base.hpp>

#pragma GCC visibility push(default)

namespace moxtel::util {

/// A hash set that is walked in the order in which its keys were put in; a key that is erased and
/// put in again goes to the end. The number of buckets is fixed when the set is made: a lookup
/// costs a hash and a walk over size/buckets values, so the set suits small tables. References to
/// values stay valid until the value is erased, also when the set is moved.
///
/// A set that was moved from is empty, with the default number of buckets.
template <class T, class KeyOps = KeyOperations<T>>
class LinkedHashSet : public Set<T, KeyOps> {
    struct Node;

  public:
    using typename Set<T, KeyOps>::Key;

    /// A forward iterator over the values in the order of insertion; `Element` is `T` or `const T`.
    /// Erasing its value or moving the set makes it invalid. Putting values in does not; the walk
    /// then comes to them, too.
    template <class Element>
    class ForwardIterator {
      public:
        using iterator_concept = std::forward_iterator_tag;   ///< See `std::forward_iterator`.
        using iterator_category = std::forward_iterator_tag;  ///< For the older algorithms.
        using value_type = T;                                 ///< What the elements are copied as.
        using difference_type = std::ptrdiff_t;               ///< As the standard asks for.
        using pointer = Element*;                             ///< For the older algorithms.
        using reference = Element&;                           ///< For the older algorithms.

        /// At the end of no set.
        ForwardIterator() = default;

        /// The same place, from where the values cannot be changed.
        operator ForwardIterator<const T>() const noexcept {
            return ForwardIterator<const T>(m_set, m_node);
        }

        /// @{
        /// The value; only before the end.
        Element& operator*() const noexcept { return m_node->data; }
        Element* operator->() const noexcept { return &m_node->data; }
        /// @}

        /// @{
        /// Goes on to the next value, or to the end; only before the end.
        ForwardIterator& operator++() noexcept {
            m_node = m_set->m_after(m_node);
            return *this;
        }
        ForwardIterator operator++(int) noexcept {
            const ForwardIterator before = *this;
            ++*this;
            return before;
        }
        /// @}

        /// Whether two iterators of one set are at the same place.
        bool operator==(const ForwardIterator& other) const noexcept {
            return m_node == other.m_node;
        }

      private:
        friend class LinkedHashSet;

        ForwardIterator(const LinkedHashSet* set, Node* node) : m_set(set), m_node(node) {}

        const LinkedHashSet* m_set = nullptr;
        Node* m_node = nullptr;  ///< Null at the end.
    };

    /// The number of buckets where none is asked for.
    enum : std::size_t { DEFAULT_BUCKETS = 251 };

    /// An empty set of `buckets` buckets; 0 stands for the default.
    explicit LinkedHashSet(std::size_t buckets = 0) : m_buckets(s_makeBuckets(buckets)) {}
    ~LinkedHashSet() override { LinkedHashSet::clear(); }

    /// Takes over the values of `other`, its buckets and its hook.
    LinkedHashSet(LinkedHashSet&& other) noexcept
        : Set<T, KeyOps>(std::move(other)),
          m_buckets(std::move(other.m_buckets)),
          m_tail(std::exchange(other.m_tail, nullptr)),
          m_size(std::exchange(other.m_size, 0)) {}

    /// The same, after this set has destroyed its own values. A set may be assigned to itself.
    LinkedHashSet& operator=(LinkedHashSet&& other) noexcept {
        if (this == &other)
            return *this;
        clear();
        Set<T, KeyOps>::operator=(std::move(other));
        m_buckets = std::move(other.m_buckets);
        m_tail = std::exchange(other.m_tail, nullptr);
        m_size = std::exchange(other.m_size, 0);
        return *this;
    }

    std::size_t size() const override { return m_size; }
    bool containsKey(const Key& key) const override { return m_find(key) != nullptr; }

    T& lookupByKey(const Key& key, bool create) override {
        return s_found(m_nodeForKey(key, create))->data;
    }
    const T& lookupByKey(const Key& key) const override { return s_found(m_find(key))->data; }

    /// @{
    /// The value at position `i` of the walk, in time linear in `i`. Throws `NotFoundException`
    /// with the message "Index not found\n" when `i` is not below the size.
    T& lookupByIndex(std::size_t i) { return m_nodeAt(i)->data; }
    const T& lookupByIndex(std::size_t i) const { return m_nodeAt(i)->data; }
    /// @}

    void eraseByKey(const Key& key) override {
        if (m_buckets.size() == 0)
            return;
        Node** link = m_linkTo(key);
        Node* node = *link;
        if (node == nullptr)
            return;
        *link = node->nextInChain;
        if (node->prev == node) {
            m_tail = nullptr;
        } else {
            node->prev->next = node->next;
            node->next->prev = node->prev;
            if (m_tail == node)
                m_tail = node->prev;
        }
        --m_size;
        delete node;
    }

    /// Destroys the values bucket by bucket. The buckets keep their stale heads: a set that was
    /// cleared may be asked for its size, walked, cleared again, assigned to and destroyed, but no
    /// operation with a key may follow.
    void clear() override {
        if (m_tail == nullptr)
            return;
        for (Node* node : m_buckets)
            while (node != nullptr)
                delete std::exchange(node, node->nextInChain);
        m_tail = nullptr;
        m_size = 0;
    }

    mem::Iterator<T> iterator() override {
        return mem::Iterator<T>(new IteratorStrategy<T>(*this));
    }
    mem::Iterator<const T> iterator() const override {
        return mem::Iterator<const T>(new IteratorStrategy<const T>(*this));
    }

    /// @{
    /// The set as a forward range of its values, in the order of insertion.
    ForwardIterator<T> begin() noexcept { return {this, m_head()}; }
    ForwardIterator<T> end() noexcept { return {this, nullptr}; }
    ForwardIterator<const T> begin() const noexcept { return {this, m_head()}; }
    ForwardIterator<const T> end() const noexcept { return {this, nullptr}; }
    /// @}

  private:
    struct Node {
        explicit Node(T&& value) : data(std::move(value)) {}
        Node(const Node&) = delete;
        Node& operator=(const Node&) = delete;

        T data;
        // The ring of all nodes in the order of insertion.
        Node* prev = this;
        Node* next = this;
        Node* nextInChain = nullptr;
    };

    template <class Element>
    class IteratorStrategy : public mem::Iterator<Element>::Strategy {
      public:
        explicit IteratorStrategy(const LinkedHashSet& set) : m_set(set), m_cur(set.m_head()) {}
        bool hasNext() const override { return m_cur != nullptr; }
        void next() override { m_cur = m_set.m_after(m_cur); }
        Element& current() override { return m_cur->data; }
        const Element& current() const override { return m_cur->data; }

      private:
        const LinkedHashSet& m_set;
        Node* m_cur;
    };

    static mem::Array<Node*> s_makeBuckets(std::size_t buckets) {
        return mem::Array<Node*>(buckets == 0 ? DEFAULT_BUCKETS : buckets, mem::MALLOC);
    }

    Node* m_head() const { return m_tail == nullptr ? nullptr : m_tail->next; }

    Node* m_after(const Node* node) const { return node == m_tail ? nullptr : node->next; }

    /// The place of the pointer to the node of `key`: its bucket, or the node before it in the
    /// chain. Where there is no such node, the place of a null pointer at the end of the chain. The
    /// set must have buckets, which one that was moved from lacks.
    Node* const* m_linkTo(const Key& key) const {
        const std::size_t hash = DefaultHash<Key>()(key);
        Node* const* link = &m_buckets[hash % m_buckets.size()];
        while (*link != nullptr && !KeyOps::equals(key, KeyOps::extract((*link)->data)))
            link = &(*link)->nextInChain;
        return link;
    }
    Node** m_linkTo(const Key& key) {
        return const_cast<Node**>(std::as_const(*this).m_linkTo(key));
    }
    Node* m_find(const Key& key) const { return m_buckets.size() == 0 ? nullptr : *m_linkTo(key); }

    Node* m_nodeForKey(const Key& key, bool create) {
        if (m_buckets.size() == 0) {
            if (!create)
                return nullptr;
            m_buckets = s_makeBuckets(DEFAULT_BUCKETS);
        }
        Node** link = m_linkTo(key);
        if (*link == nullptr && create)
            *link = m_create(key);
        return *link;
    }

    Node* m_create(const Key& key) {
        Node* node = new Node(this->createValueFromKey(key));
        if (m_tail != nullptr) {
            node->prev = m_tail;
            node->next = m_tail->next;
            m_tail->next->prev = node;
            m_tail->next = node;
        }
        ++m_size;
        return m_tail = node;
    }

    Node* m_nodeAt(std::size_t i) const {
        if (i >= m_size)
            throw NotFoundException("Index not found\n");
        Node* node = m_head();
        while (i-- > 0)
            node = node->next;
        return node;
    }

    static Node* s_found(Node* node) {
        if (node == nullptr)
            throw NotFoundException("Key not found\n");
        return node;
    }

    mem::Array<Node*> m_buckets;  ///< None after the set was moved from.
    Node* m_tail = nullptr;
    std::size_t m_size = 0;
};

}  // namespace moxtel::util

#pragma GCC visibility pop
