#pragma once

#include <cstdint>
#include <type_traits>
#include <utility>

#include <windows.h>

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

// Makes a call of the platform fail for the length of a scope: it sets that last error and gives RESULT.
//
//     const auto guard = failing<ERROR_ACCESS_DENIED, -1>(detail::win32.create_file);
template <DWORD ERROR_CODE, std::intptr_t RESULT = 0, class Result, class... Arguments>
Swap<Result (*)(Arguments...)> failing(Result (*&call)(Arguments...))
{
    return {call, [](Arguments...) -> Result {
                ::SetLastError(ERROR_CODE);
                if constexpr (std::is_pointer_v<Result>) {
                    return reinterpret_cast<Result>(RESULT);
                } else {
                    return static_cast<Result>(RESULT);
                }
            }};
}

} // namespace tam::test
