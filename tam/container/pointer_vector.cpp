#include <tam/container/pointer_vector.h>

#include <algorithm>
#include <bit>
#include <new>
#include <stdexcept>
#include <utility>

namespace tam {

namespace {

constexpr unsigned int GROWTH = 4;

unsigned int round_up(unsigned int n)
{
    if (n > Tam_ptrvec_impl::MAXIMUM_SIZE) {
        throw std::bad_array_new_length();
    }
    return std::bit_ceil(n);
}

} // namespace

Tam_ptrvec_impl::Tam_ptrvec_impl() : Tam_ptrvec_impl(DEFAULT_CAPACITY) {}

Tam_ptrvec_impl::Tam_ptrvec_impl(unsigned int capacity)
    : m_data(std::make_unique<void*[]>(round_up(capacity))), m_capacity(round_up(capacity))
{}

Tam_ptrvec_impl::Tam_ptrvec_impl(Tam_ptrvec_impl&& other) noexcept
    : m_data(std::move(other.m_data)),
      m_capacity(std::exchange(other.m_capacity, 0)),
      m_size(std::exchange(other.m_size, 0))
{}

Tam_ptrvec_impl& Tam_ptrvec_impl::operator=(Tam_ptrvec_impl&& other) noexcept
{
    Tam_ptrvec_impl moved(std::move(other));
    swap(moved);
    return *this;
}

void Tam_ptrvec_impl::swap(Tam_ptrvec_impl& other) noexcept
{
    m_data.swap(other.m_data);
    std::swap(m_capacity, other.m_capacity);
    std::swap(m_size, other.m_size);
}

void Tam_ptrvec_impl::reserve(unsigned int n)
{
    _reserve(round_up(n));
}

void Tam_ptrvec_impl::resize(unsigned int n)
{
    if (n > m_capacity) {
        _reserve(round_up(n));
    }
    if (n < m_size) {
        std::fill(begin() + n, end(), nullptr);
    }
    m_size = n;
}

void*& Tam_ptrvec_impl::front()
{
    return const_cast<void*&>(std::as_const(*this).front());
}

void* const& Tam_ptrvec_impl::front() const
{
    if (empty()) {
        throw std::logic_error("Tam_ptrvec_impl::front - vector is empty");
    }
    return m_data[0];
}

void*& Tam_ptrvec_impl::back()
{
    return const_cast<void*&>(std::as_const(*this).back());
}

void* const& Tam_ptrvec_impl::back() const
{
    if (empty()) {
        throw std::logic_error("Tam_ptrvec_impl::back - vector is empty");
    }
    return m_data[m_size - 1];
}

void Tam_ptrvec_impl::push_back(void* p)
{
    _make_room_for_one();
    m_data[m_size] = p;
    ++m_size;
}

void Tam_ptrvec_impl::pop_back()
{
    if (empty()) {
        throw std::logic_error("Tam_ptrvec_impl::pop_back - vector is empty");
    }
    --m_size;
    m_data[m_size] = nullptr;
}

void Tam_ptrvec_impl::insert(unsigned int position, void* p)
{
    if (position > m_size) {
        throw std::out_of_range("Tam_ptrvec_impl::insert - position out of range");
    }
    _make_room_for_one();
    std::move_backward(begin() + position, end(), end() + 1);
    m_data[position] = p;
    ++m_size;
}

void Tam_ptrvec_impl::erase(unsigned int position)
{
    if (position >= m_size) {
        // Callers know this text, although it names the other operation.
        throw std::out_of_range("Tam_ptrvec_impl::insert - position out of range");
    }
    std::move(begin() + position + 1, end(), begin() + position);
    pop_back();
}

void Tam_ptrvec_impl::clear() noexcept
{
    std::fill(begin(), end(), nullptr);
    m_size = 0;
}

void*& Tam_ptrvec_impl::_at(unsigned int i) const
{
    if (i >= m_size) {
        throw std::out_of_range("Tam_ptrvec_impl::_at - position out of range");
    }
    return m_data[i];
}

// Grows to exactly n slots where there are fewer.
void Tam_ptrvec_impl::_reserve(unsigned int n)
{
    if (m_capacity >= n) {
        return;
    }
    auto grown = std::make_unique_for_overwrite<void*[]>(n);
    std::fill(std::copy(begin(), end(), grown.get()), grown.get() + n, nullptr);
    m_data = std::move(grown);
    m_capacity = n;
}

void Tam_ptrvec_impl::_make_room_for_one()
{
    if (m_size < m_capacity) {
        return;
    }
    if (m_size == MAXIMUM_SIZE) {
        throw std::bad_array_new_length();
    }
    if (m_capacity == 0) { // moved from
        _reserve(DEFAULT_CAPACITY);
    } else {
        _reserve(m_capacity > MAXIMUM_SIZE / GROWTH ? MAXIMUM_SIZE : m_capacity * GROWTH);
    }
}

} // namespace tam
