#include <tam/config/registry_value.h>

#include <algorithm>
#include <cstring>
#include <cwchar>
#include <limits>
#include <string_view>

#include <windows.h>

#include <tam/detail/failure.h>
#include <tam/detail/handle.h>
#include <tam/detail/registry.h>
#include <tam/detail/win32.h>
#include <tam/status/codes.h>

namespace tam {

namespace {

using detail::Registry_data;
using detail::Registry_key;

constexpr DWORD NUMBER_TEXT_BYTES = 64;
constexpr int DECIMAL = 10;

// How values of one kind are read.
struct Kind {
    unsigned int (*query)(Registry_data& data, const Registry_key& key, const std::wstring& name);
    DWORD type;
    DWORD other_type; // accepted too
    unsigned int wrong_type;
};

unsigned int query_whole(Registry_data& data, const Registry_key& key, const std::wstring& name)
{
    return data.query_whole(key, name);
}

unsigned int query_once(Registry_data& data, const Registry_key& key, const std::wstring& name)
{
    return data.query(key, name);
}

// One call for type and data, so that they belong together whoever writes meanwhile.
unsigned int query_number(Registry_data& data, const Registry_key& key, const std::wstring& name)
{
    const unsigned int error = data.query(key, name, NUMBER_TEXT_BYTES);
    if (error == ERROR_SUCCESS && data.type() == REG_DWORD && data.size_bytes() > sizeof(DWORD)) {
        return ERROR_MORE_DATA;
    }
    if (error == ERROR_MORE_DATA && data.type() != REG_DWORD && data.type() != REG_SZ) {
        return ERROR_SUCCESS; // it is the type that fails
    }
    return error;
}

constexpr Kind STRING = {&query_whole, REG_SZ, REG_SZ, TAM_E_REG_NOT_STRING};
constexpr Kind MULTI_STRING = {&query_whole, REG_MULTI_SZ, REG_MULTI_SZ, TAM_E_REG_NOT_MULTI_STRING};
constexpr Kind PATH = {&query_once, REG_EXPAND_SZ, REG_EXPAND_SZ, TAM_E_REG_NOT_PATH};
constexpr Kind NUMBER = {&query_number, REG_DWORD, REG_SZ, TAM_E_REG_NOT_UINT};

// Reads a value and has use(data) take it.
template <class Use>
void get_value(const Kind& kind, void* root, const std::wstring& key, const std::wstring& subkey,
               const std::wstring& name, Tam_status& status, Use use)
{
    detail::run(status, [&] {
        const std::wstring path = detail::registry_path(key, subkey);
        Registry_key opened;
        unsigned int error = detail::open_registry_key(root, path, KEY_QUERY_VALUE, opened);
        if (error != ERROR_SUCCESS) {
            detail::push_system_error(status, error, TAM_E_REG_KEY_OPEN_READ, path);
            return;
        }
        Registry_data data;
        error = kind.query(data, opened, name);
        if (error != ERROR_SUCCESS) {
            detail::push_system_error(status, error, TAM_E_REG_VALUE_READ, path, name);
        } else if (data.type() != kind.type && data.type() != kind.other_type) {
            detail::assign_failure(status, kind.wrong_type, path, name);
        } else {
            use(data);
        }
    });
}

void set_value(DWORD type, const void* data, std::size_t size_bytes, void* root, const std::wstring& key,
               const std::wstring& subkey, const std::wstring& name, Tam_status& status)
{
    detail::run(status, [&] {
        const std::wstring path = detail::registry_path(key, subkey);
        Registry_key opened;
        unsigned int error = detail::create_registry_key(root, path, KEY_SET_VALUE, opened);
        if (error != ERROR_SUCCESS) {
            detail::push_system_error(status, error, TAM_E_REG_KEY_OPEN_WRITE, path);
            return;
        }
        error = size_bytes > std::numeric_limits<DWORD>::max()
                    ? ERROR_INVALID_PARAMETER
                    : static_cast<unsigned int>(detail::win32.reg_set_value_ex(opened.get(), name.c_str(), 0, type,
                                                                               static_cast<const BYTE*>(data),
                                                                               static_cast<DWORD>(size_bytes)));
        if (error != ERROR_SUCCESS) {
            detail::push_system_error(status, error, TAM_E_REG_VALUE_WRITE, path, name);
        }
    });
}

std::size_t size_with_terminator(const std::wstring& text)
{
    return (text.size() + 1) * sizeof(wchar_t);
}

unsigned int number_in_text(std::wstring_view text)
{
    wchar_t terminated[NUMBER_TEXT_BYTES / sizeof(wchar_t) + 1] = {};
    std::copy(text.begin(), text.end(), terminated);
    return std::wcstoul(terminated, nullptr, DECIMAL);
}

unsigned int number_in(const Registry_data& data)
{
    if (data.type() == REG_SZ) {
        return number_in_text(data.text());
    }
    DWORD number = 0;
    std::memcpy(&number, data.units().data(), data.size_bytes());
    return number;
}

void append_texts(std::wstring_view units, Tam_object_vector<std::wstring>& texts)
{
    while (!units.empty() && units.front() != L'\0') {
        const std::wstring_view text = units.substr(0, units.find(L'\0'));
        texts.push_back(std::wstring(text));
        units.remove_prefix(std::min(text.size() + 1, units.size()));
    }
}

} // namespace

void tam_get_reg_string_value(void* root, const std::wstring& key, const std::wstring& subkey, const std::wstring& name,
                              std::wstring& value, Tam_status& status)
{
    get_value(STRING, root, key, subkey, name, status, [&](const Registry_data& data) { value = data.text(); });
}

void tam_set_reg_string_value(void* root, const std::wstring& key, const std::wstring& subkey, const std::wstring& name,
                              const std::wstring& value, Tam_status& status)
{
    set_value(REG_SZ, value.c_str(), size_with_terminator(value), root, key, subkey, name, status);
}

void tam_get_reg_multi_string_value(void* root, const std::wstring& key, const std::wstring& subkey,
                                    const std::wstring& name, Tam_object_vector<std::wstring>& values,
                                    Tam_status& status)
{
    // Not cleared before: values may own key and name.
    get_value(MULTI_STRING, root, key, subkey, name, status, [&](const Registry_data& data) {
        values.clear();
        append_texts(data.units(), values);
    });
    if (!status.ok()) {
        values.clear();
    }
}

void tam_set_reg_multi_string_value(void* root, const std::wstring& key, const std::wstring& subkey,
                                    const std::wstring& name, const Tam_object_vector<std::wstring>& values,
                                    Tam_status& status)
{
    std::wstring joined; // its own terminator is the last one
    detail::run(status, [&] {
        for (const std::wstring& value : values) {
            joined += value;
            joined += L'\0';
        }
    });
    if (status.ok()) {
        set_value(REG_MULTI_SZ, joined.c_str(), size_with_terminator(joined), root, key, subkey, name, status);
    }
}

void tam_get_reg_path_value(void* root, const std::wstring& key, const std::wstring& subkey, const std::wstring& name,
                            std::wstring& value, Tam_status& status)
{
    get_value(PATH, root, key, subkey, name, status, [&](const Registry_data& data) { value = data.text(); });
}

void tam_set_reg_path_value(void* root, const std::wstring& key, const std::wstring& subkey, const std::wstring& name,
                            const std::wstring& value, Tam_status& status)
{
    set_value(REG_EXPAND_SZ, value.c_str(), size_with_terminator(value), root, key, subkey, name, status);
}

void tam_get_reg_uint_value(void* root, const std::wstring& key, const std::wstring& subkey, const std::wstring& name,
                            unsigned int& value, Tam_status& status)
{
    get_value(NUMBER, root, key, subkey, name, status, [&](const Registry_data& data) { value = number_in(data); });
}

void tam_set_reg_uint_value(void* root, const std::wstring& key, const std::wstring& subkey, const std::wstring& name,
                            unsigned int value, Tam_status& status)
{
    const DWORD number = value;
    set_value(REG_DWORD, &number, sizeof number, root, key, subkey, name, status);
}

void tam_remove_reg_value(void* root, const std::wstring& key, const std::wstring& subkey, const std::wstring& name,
                          Tam_status& status)
{
    detail::run(status, [&] {
        const std::wstring path = detail::registry_path(key, subkey);
        Registry_key opened;
        unsigned int error = detail::open_registry_key(root, path, KEY_SET_VALUE, opened);
        if (error != ERROR_SUCCESS) {
            detail::push_system_error(status, error, TAM_E_REG_KEY_OPEN_READ, path);
            return;
        }
        error = static_cast<unsigned int>(detail::win32.reg_delete_value(opened.get(), name.c_str()));
        if (error != ERROR_SUCCESS) {
            detail::push_system_error(status, error, TAM_E_REG_VALUE_DELETE, path, name);
        }
    });
}

} // namespace tam
