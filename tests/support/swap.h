#pragma once

#include <utility>

namespace tam::test {

// Puts another value into a slot, such as an entry of detail::win32, for the length of a scope.
//
//     const Swap guard(detail::win32.read_file, +[](HANDLE, void*, DWORD, DWORD*, OVERLAPPED*) WINAPI -> BOOL { ... });
template <class T>
class Swap {
public:
    Swap(T& slot, T value) : m_slot(slot), m_saved(std::exchange(slot, value)) {}
    ~Swap() { m_slot = m_saved; }
    Swap(const Swap&) = delete;
    Swap& operator=(const Swap&) = delete;

private:
    T& m_slot;
    T m_saved;
};

template <class T, class U>
Swap(T&, U) -> Swap<T>;

} // namespace tam::test
