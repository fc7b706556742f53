#pragma once

#include <compare>
#include <cstddef>
#include <iterator>
#include <memory>
#include <utility>

#include <tam/container/pointer_vector.h>

namespace tam {

/// A vector that owns heap copies of the objects stored in it: what operations of the library return lists in.
///
/// T needs to be copyable only. An object keeps its address until it is removed, whatever happens to its neighbours.
/// Capacities, growth and the texts of exceptions are those of Tam_ptrvec_impl.
///
/// A const vector has fixed slots, but gives access to its objects as pointers would: all access yields T&.
///
/// Copying is deep. Moving takes the objects over and leaves the other vector empty and ready for use.
///
/// A slot that resize() added is empty, that is, it holds no object until put() stores one. get() tells; at(), front(),
/// back() and iterators must not be used to reach an empty slot.
///
/// One thread at a time may use a vector.
template <class T>
class Tam_object_vector {
public:
    class iterator;

    /// Names that containers of the standard library have.
    using value_type = T;
    using reference = T&;
    using const_reference = const T&;
    using size_type = unsigned int;
    using difference_type = std::ptrdiff_t;
    using const_iterator = iterator;

    /// An empty vector of capacity Tam_ptrvec_impl::DEFAULT_CAPACITY.
    Tam_object_vector() = default;

    /// An empty vector with room for at least that many objects.
    explicit Tam_object_vector(unsigned int capacity) : m_slots(capacity) {}

    /// Copies the objects; empty slots stay empty.
    /// @throws std::bad_alloc  no memory. What copying an object throws passes through.
    Tam_object_vector(const Tam_object_vector& other) : Tam_object_vector(other.size())
    {
        m_slots.resize(other.size());
        for (unsigned int i = 0; i < size(); ++i) {
            if (const T* const object = other.get(i)) {
                m_slots.at(i) = new T(*object);
            }
        }
    }

    /// Takes the objects over; other is empty then.
    Tam_object_vector(Tam_object_vector&& other) noexcept = default;

    /// As the copy constructor. When that throws, this vector is as it was.
    Tam_object_vector& operator=(const Tam_object_vector& other)
    {
        if (this != &other) {
            Tam_object_vector copy(other);
            swap(copy);
        }
        return *this;
    }

    /// Deletes its own objects and takes those of other, which is empty then.
    Tam_object_vector& operator=(Tam_object_vector&& other) noexcept
    {
        Tam_object_vector moved(std::move(other));
        swap(moved);
        return *this;
    }

    ~Tam_object_vector() { clear(); }

    /// Exchanges contents; no object moves.
    void swap(Tam_object_vector& other) noexcept { m_slots.swap(other.m_slots); }
    friend void swap(Tam_object_vector& a, Tam_object_vector& b) noexcept { a.swap(b); }

    /// As Tam_ptrvec_impl::reserve().
    void reserve(unsigned int n) { m_slots.reserve(n); }

    /// Makes the size n: deletes the objects from position n on, or adds empty slots.
    void resize(unsigned int n)
    {
        while (size() > n) {
            pop_back();
        }
        m_slots.resize(n);
    }

    /// Number of slots.
    unsigned int size() const noexcept { return m_slots.size(); }
    /// Number of slots that there is memory for.
    unsigned int capacity() const noexcept { return m_slots.capacity(); }
    /// Tam_ptrvec_impl::MAXIMUM_SIZE.
    unsigned int max_size() const noexcept { return m_slots.max_size(); }
    /// Whether size() is 0.
    bool empty() const noexcept { return m_slots.empty(); }

    /// Random-access iterators over the objects. Removing, inserting and growing invalidate them.
    iterator begin() const noexcept { return iterator(m_slots.begin()); }
    iterator end() const noexcept { return iterator(m_slots.end()); }

    /// The object at position i.
    /// @throws std::out_of_range  "Tam_ptrvec_impl::_at - position out of range": i >= size()
    T& at(unsigned int i) const { return _object(m_slots.at(i)); }

    /// The first object.
    /// @throws std::logic_error  "Tam_ptrvec_impl::front - vector is empty"
    T& front() const { return _object(m_slots.front()); }

    /// The last object.
    /// @throws std::logic_error  "Tam_ptrvec_impl::back - vector is empty"
    T& back() const { return _object(m_slots.back()); }

    /// The object at position i, still owned by the vector, or null for an empty slot. Throws as at() does.
    T* get(unsigned int i) const { return static_cast<T*>(m_slots.at(i)); }

    /// Replaces what slot i holds by a copy of value. Throws as at() does; then the slot is as it was.
    void put(unsigned int i, const T& value)
    {
        void*& slot = m_slots.at(i);
        auto copy = std::make_unique<T>(value);
        const std::unique_ptr<T> replaced(static_cast<T*>(std::exchange(slot, copy.release())));
    }

    /// Stores a copy of value behind the last object.
    /// @throws std::bad_alloc  no memory; the vector is as it was. So it is when copying value throws.
    void push_back(const T& value) { _push_back(std::make_unique<T>(value)); }
    void push_back(T&& value) { _push_back(std::make_unique<T>(std::move(value))); }

    /// Deletes the last object.
    /// @throws std::logic_error  "Tam_ptrvec_impl::pop_back - vector is empty"
    void pop_back()
    {
        T* const removed = empty() ? nullptr : get(size() - 1);
        m_slots.pop_back();
        delete removed;
    }

    /// Stores a copy of value at position, which may be size().
    /// @throws std::out_of_range  "Tam_ptrvec_impl::insert - position out of range": position > size()
    /// @throws std::bad_alloc     no memory; the vector is as it was. So it is when copying value throws.
    void insert(unsigned int position, const T& value) { _insert(position, std::make_unique<T>(value)); }
    void insert(unsigned int position, T&& value) { _insert(position, std::make_unique<T>(std::move(value))); }

    /// Deletes the object at position.
    /// @throws std::out_of_range  "Tam_ptrvec_impl::insert - position out of range": position >= size()
    void erase(unsigned int position)
    {
        T* const removed = position < size() ? get(position) : nullptr;
        m_slots.erase(position);
        delete removed;
    }

    /// Deletes all objects. The capacity stays.
    void clear() noexcept
    {
        for (void* const slot : m_slots) {
            delete static_cast<T*>(slot);
        }
        m_slots.clear();
    }

private:
    static T& _object(void* slot) noexcept { return *static_cast<T*>(slot); }

    void _push_back(std::unique_ptr<T> object)
    {
        m_slots.push_back(object.get());
        object.release();
    }

    void _insert(unsigned int position, std::unique_ptr<T> object)
    {
        m_slots.insert(position, object.get());
        object.release();
    }

    Tam_ptrvec_impl m_slots;
};

/// A random-access iterator that yields T&.
template <class T>
class Tam_object_vector<T>::iterator {
public:
    /// Names that iterators of the standard library have.
    using iterator_category = std::random_access_iterator_tag;
    using value_type = T;
    using difference_type = std::ptrdiff_t;
    using pointer = T*;
    using reference = T&;

    /// Points nowhere.
    iterator() noexcept = default;

    /// Access to an object; the slot must not be empty.
    reference operator*() const noexcept { return _object(*m_slot); }
    pointer operator->() const noexcept { return static_cast<T*>(*m_slot); }
    reference operator[](difference_type n) const noexcept { return _object(m_slot[n]); }

    /// Steps and distances count slots.
    iterator& operator++() noexcept { return *this += 1; }
    iterator& operator--() noexcept { return *this -= 1; }
    iterator operator++(int) noexcept { return iterator(m_slot++); }
    iterator operator--(int) noexcept { return iterator(m_slot--); }

    /// Steps and distances count slots.
    iterator& operator+=(difference_type n) noexcept
    {
        m_slot += n;
        return *this;
    }
    iterator& operator-=(difference_type n) noexcept { return *this += -n; }

    /// Steps and distances count slots.
    friend iterator operator+(iterator i, difference_type n) noexcept { return i += n; }
    friend iterator operator+(difference_type n, iterator i) noexcept { return i += n; }
    friend iterator operator-(iterator i, difference_type n) noexcept { return i -= n; }
    friend difference_type operator-(iterator a, iterator b) noexcept { return a.m_slot - b.m_slot; }

    /// Comparisons of positions in one vector.
    friend bool operator==(iterator a, iterator b) noexcept { return a.m_slot == b.m_slot; }
    friend auto operator<=>(iterator a, iterator b) noexcept { return a.m_slot <=> b.m_slot; }

private:
    friend class Tam_object_vector;
    explicit iterator(void* const* slot) noexcept : m_slot(slot) {}

    void* const* m_slot = nullptr;
};

} // namespace tam
