#pragma once

#include <memory>

#include <tam/detail/export.h>

namespace tam {

/// A growable array of untyped pointers with checked access: the storage of every Tam_object_vector.
///
/// The objects that the slots point at are the caller's; none is ever touched. Slots from size() up to capacity() are
/// null at all times. Positions and counts are 32-bit. A growth that fails leaves the vector as it was.
///
/// Can be moved, not copied. A vector that was moved from is empty, has capacity 0 until something is stored in it, and
/// can be used again.
///
/// One thread at a time may use a vector.
class TAM_API Tam_ptrvec_impl {
public:
    /// Capacity of a vector that is made without one.
    static constexpr unsigned int DEFAULT_CAPACITY = 8;

    /// The most slots that a vector can have.
    static constexpr unsigned int MAXIMUM_SIZE = 0x80000000;

    /// An empty vector of capacity DEFAULT_CAPACITY.
    Tam_ptrvec_impl();

    /// An empty vector whose capacity is the smallest power of two that is at least the one asked for; 1 for 0.
    /// @throws std::bad_alloc  no memory, or capacity > MAXIMUM_SIZE
    explicit Tam_ptrvec_impl(unsigned int capacity);

    /// Frees the slots, not what they point at.
    ~Tam_ptrvec_impl() = default;

    Tam_ptrvec_impl(const Tam_ptrvec_impl&) = delete;
    Tam_ptrvec_impl& operator=(const Tam_ptrvec_impl&) = delete;
    /// Takes over the slots; see the class for what other is then.
    Tam_ptrvec_impl(Tam_ptrvec_impl&& other) noexcept;
    Tam_ptrvec_impl& operator=(Tam_ptrvec_impl&& other) noexcept;

    /// Exchanges the slots.
    void swap(Tam_ptrvec_impl& other) noexcept;

    /// Makes room for at least n slots: capacity() becomes at least n rounded up to a power of two (1 for 0).
    /// @throws std::bad_alloc  no memory, or n > MAXIMUM_SIZE
    void reserve(unsigned int n);

    /// Makes the size n. New slots are null. A capacity below n grows to n rounded up to a power of two.
    /// @throws std::bad_alloc  no memory, or n > MAXIMUM_SIZE
    void resize(unsigned int n);

    /// Number of slots in use.
    unsigned int size() const noexcept { return m_size; }
    /// Number of slots that there is memory for.
    unsigned int capacity() const noexcept { return m_capacity; }
    /// Whether size() is 0.
    bool empty() const noexcept { return m_size == 0; }

    /// MAXIMUM_SIZE, whatever the state.
    unsigned int max_size() const noexcept { return MAXIMUM_SIZE; }

    /// The first slot, and the place behind the last slot in use. Growth moves the slots.
    void** begin() noexcept { return m_data.get(); }
    void** end() noexcept { return m_data.get() + m_size; }
    void* const* begin() const noexcept { return m_data.get(); }
    void* const* end() const noexcept { return m_data.get() + m_size; }

    /// Slot i.
    /// @throws std::out_of_range  "Tam_ptrvec_impl::_at - position out of range": i >= size()
    void*& at(unsigned int i) { return _at(i); }
    void* const& at(unsigned int i) const { return _at(i); }

    /// The first slot.
    /// @throws std::logic_error  "Tam_ptrvec_impl::front - vector is empty"
    void*& front();
    void* const& front() const;

    /// The last slot.
    /// @throws std::logic_error  "Tam_ptrvec_impl::back - vector is empty"
    void*& back();
    void* const& back() const;

    /// Stores p behind the last slot. A full vector first multiplies its capacity by 4.
    /// @throws std::bad_alloc  no memory, or size() == MAXIMUM_SIZE
    void push_back(void* p);

    /// Drops the last slot.
    /// @throws std::logic_error  "Tam_ptrvec_impl::pop_back - vector is empty"
    void pop_back();

    /// Stores p at position, which may be size(), and moves the slots from there on one place up. A full vector first
    /// multiplies its capacity by 4.
    /// @throws std::out_of_range  "Tam_ptrvec_impl::insert - position out of range": position > size()
    /// @throws std::bad_alloc     no memory, or size() == MAXIMUM_SIZE
    void insert(unsigned int position, void* p);

    /// Drops the slot at position and moves those behind it one place down.
    /// @throws std::out_of_range  "Tam_ptrvec_impl::insert - position out of range", with insert's text on purpose:
    ///                            position >= size()
    void erase(unsigned int position);

    /// Makes the vector empty. The capacity stays.
    void clear() noexcept;

private:
    void*& _at(unsigned int i) const;
    void _reserve(unsigned int n);
    void _make_room_for_one();

    std::unique_ptr<void*[]> m_data;
    unsigned int m_capacity;
    unsigned int m_size = 0;
};

/// Exchanges the slots of both.
inline void swap(Tam_ptrvec_impl& a, Tam_ptrvec_impl& b) noexcept
{
    a.swap(b);
}

} // namespace tam
