#pragma once

#include <utility>

#include <windows.h>

namespace tam::detail {

// Owns one resource of the platform. Traits give its type, the value that means "none", which results of the platform
// count as none, and the release:
//
//     using Type = HANDLE;
//     static constexpr Type NONE = nullptr;
//     static bool is_none(Type) noexcept;
//     static void release(Type) noexcept;
template <class Traits>
class Unique_handle {
public:
    using Type = typename Traits::Type;

    Unique_handle() noexcept = default;
    explicit Unique_handle(Type handle) noexcept : m_handle(_none_as_one_value(handle)) {}
    Unique_handle(Unique_handle&& other) noexcept : m_handle(other.release()) {}
    Unique_handle& operator=(Unique_handle&& other) noexcept
    {
        if (this != &other) {
            reset(other.release());
        }
        return *this;
    }
    ~Unique_handle() { reset(); }

    Type get() const noexcept { return m_handle; }
    explicit operator bool() const noexcept { return m_handle != Traits::NONE; }
    Type release() noexcept { return std::exchange(m_handle, Traits::NONE); }

    // Leaves the thread's last error as it was: the failure that made the caller clean up is the one that gets
    // reported.
    void reset(Type handle = Traits::NONE) noexcept
    {
        const Type old = std::exchange(m_handle, _none_as_one_value(handle));
        if (old != Traits::NONE) {
            const DWORD error = ::GetLastError();
            Traits::release(old);
            ::SetLastError(error);
        }
    }

private:
    static Type _none_as_one_value(Type handle) noexcept { return Traits::is_none(handle) ? Traits::NONE : handle; }

    Type m_handle = Traits::NONE;
};

// Null and INVALID_HANDLE_VALUE both mean "none", so that the results of CreateEventW and CreateFileW are kept alike.
struct Kernel_handle_traits {
    using Type = HANDLE;
    static constexpr Type NONE = nullptr;
    static bool is_none(Type handle) noexcept { return handle == nullptr || handle == INVALID_HANDLE_VALUE; }
    static void release(Type handle) noexcept { ::CloseHandle(handle); }
};

struct Search_handle_traits : Kernel_handle_traits {
    static void release(Type handle) noexcept { ::FindClose(handle); }
};

struct Registry_key_traits {
    using Type = HKEY;
    static constexpr Type NONE = nullptr;
    static bool is_none(Type key) noexcept { return key == nullptr; }
    static void release(Type key) noexcept { ::RegCloseKey(key); }
};

struct Module_traits {
    using Type = HMODULE;
    static constexpr Type NONE = nullptr;
    static bool is_none(Type module) noexcept { return module == nullptr; }
    static void release(Type module) noexcept { ::FreeLibrary(module); }
};

// Memory of LocalAlloc.
struct Local_memory_traits {
    using Type = void*;
    static constexpr Type NONE = nullptr;
    static bool is_none(Type memory) noexcept { return memory == nullptr; }
    static void release(Type memory) noexcept { ::LocalFree(memory); }
};

using Kernel_handle = Unique_handle<Kernel_handle_traits>;
using Search_handle = Unique_handle<Search_handle_traits>;
using Registry_key = Unique_handle<Registry_key_traits>;
using Module_handle = Unique_handle<Module_traits>;
using Local_memory = Unique_handle<Local_memory_traits>;

} // namespace tam::detail
