#include <tam/config/registry_key.h>

#include <algorithm>
#include <vector>

#include <windows.h>

#include <tam/detail/failure.h>
#include <tam/detail/handle.h>
#include <tam/detail/registry.h>
#include <tam/detail/win32.h>
#include <tam/security/security.h>
#include <tam/status/codes.h>

namespace tam {

namespace {

using Names = Tam_object_vector<std::wstring>;

constexpr DWORD LISTED_NAME_UNITS = 512; // with the terminator
constexpr DWORD COPIED_NAME_UNITS = 256;
constexpr DWORD COPIED_DATA_BYTES = 256; // at first

DWORD next_key(HKEY key, DWORD index, wchar_t* name, DWORD& length)
{
    return static_cast<DWORD>(
        detail::win32.reg_enum_key_ex(key, index, name, &length, nullptr, nullptr, nullptr, nullptr));
}

DWORD next_value_name(HKEY key, DWORD index, wchar_t* name, DWORD& length)
{
    return static_cast<DWORD>(
        detail::win32.reg_enum_value(key, index, name, &length, nullptr, nullptr, nullptr, nullptr));
}

using Next_name = DWORD (*)(HKEY key, DWORD index, wchar_t* name, DWORD& length);

void open_for_reading(void* root, const std::wstring& path, REGSAM access, detail::Registry_key& key,
                      Tam_status& status)
{
    const unsigned int error = detail::open_registry_key(root, path, access, key);
    if (error != ERROR_SUCCESS) {
        detail::push_system_error(status, error, TAM_E_REG_KEY_OPEN_READ, path);
    }
}

// Opens the key of the path and appends its names.
void list_names(void* root, const std::wstring& path, REGSAM access, Next_name next, detail::Registry_key& key,
                Names& names, Tam_status& status)
{
    open_for_reading(root, path, access, key, status);
    if (!status.ok()) {
        return;
    }
    wchar_t name[LISTED_NAME_UNITS];
    for (DWORD index = 0;; ++index) {
        DWORD length = LISTED_NAME_UNITS;
        const DWORD error = next(key.get(), index, name, length);
        if (error == ERROR_NO_MORE_ITEMS) {
            return;
        }
        if (error != ERROR_SUCCESS) {
            detail::push_system_error(status, error, TAM_E_REG_ENUMERATE, path);
            return;
        }
        names.push_back(std::wstring(name, length));
    }
}

void list_keys(void* root, const std::wstring& path, detail::Registry_key& key, Names& names, Tam_status& status)
{
    list_names(root, path, KEY_ENUMERATE_SUB_KEYS, &next_key, key, names, status);
}

// What a caller asks for. The caller's names may own its key.
void enumerate(void* root, const std::wstring& key, const std::wstring& subkey, REGSAM access, Next_name next,
               Names& names, Tam_status& status)
{
    std::wstring path;
    detail::run(status, [&] { path = detail::registry_path(key, subkey); });
    names.clear();
    if (status.ok()) {
        detail::Registry_key opened;
        detail::report_lack_of_memory(status, [&] { list_names(root, path, access, next, opened, names, status); });
    }
}

// A key on the way down to the one that is removed next.
struct Removed_key {
    std::wstring path;
    detail::Registry_key key;
    Names children;
    unsigned int next_child = 0;
};

void delete_key(const detail::Registry_key& parent, const std::wstring& parent_path, const std::wstring& name,
                Tam_status& status)
{
    const LSTATUS result = detail::win32.reg_delete_key(parent.get(), name.c_str());
    if (result != ERROR_SUCCESS) {
        detail::push_system_error(status, static_cast<unsigned int>(result), TAM_E_REG_KEY_DELETE, parent_path);
    }
}

// Keeps the way down itself: keys lie deeper than a stack is long.
void remove_tree(void* root, const std::wstring& parent_path, const std::wstring& name, Tam_status& status)
{
    std::vector<Removed_key> way;
    const auto descend = [&](std::wstring path) {
        way.push_back({std::move(path), {}, {}, 0});
        list_keys(root, way.back().path, way.back().key, way.back().children, status);
    };
    descend(detail::registry_path(parent_path, name));
    while (status.ok()) {
        Removed_key& lowest = way.back();
        if (lowest.next_child != lowest.children.size()) {
            descend(detail::registry_path(lowest.path, lowest.children.at(lowest.next_child++)));
            continue;
        }
        way.pop_back(); // closes the key
        if (way.empty()) {
            break;
        }
        const Removed_key& parent = way.back();
        delete_key(parent.key, parent.path, parent.children.at(parent.next_child - 1), status);
    }
    if (status.ok()) {
        detail::Registry_key parent;
        open_for_reading(root, parent_path, KEY_ENUMERATE_SUB_KEYS, parent, status);
        if (status.ok()) {
            delete_key(parent, parent_path, name, status);
        }
    }
}

struct Copied_key {
    std::wstring source;
    std::wstring destination;
};

// Reads the values of one key after the other, and writes them into another.
class Value_copier {
public:
    void copy(const detail::Registry_key& source, const detail::Registry_key& destination, const Copied_key& paths,
              Tam_status& status)
    {
        for (DWORD index = 0;; ++index) {
            const DWORD error = _read(source, index);
            if (error == ERROR_NO_MORE_ITEMS) {
                return;
            }
            if (error != ERROR_SUCCESS) {
                detail::push_system_error(status, error, TAM_E_REG_ENUMERATE, paths.source);
                return;
            }
            _protect_end();
            const LSTATUS result =
                detail::win32.reg_set_value_ex(destination.get(), m_name, 0, m_type, m_data.data(), m_size_bytes);
            if (result != ERROR_SUCCESS) {
                detail::push_system_error(status, static_cast<unsigned int>(result), TAM_E_REG_VALUE_WRITE,
                                          paths.destination, std::wstring(m_name));
                return;
            }
        }
    }

private:
    // Behind the data; see _protect_end().
    static constexpr BYTE NO_TERMINATOR[sizeof(wchar_t)] = {0xFF, 0xFF};

    DWORD _read(const detail::Registry_key& source, DWORD index)
    {
        for (;;) {
            const auto room = static_cast<DWORD>(m_data.size() - sizeof NO_TERMINATOR);
            DWORD name_units = COPIED_NAME_UNITS;
            m_size_bytes = room;
            const LSTATUS result = detail::win32.reg_enum_value(source.get(), index, m_name, &name_units, nullptr,
                                                                &m_type, m_data.data(), &m_size_bytes);
            // Otherwise it is the name that is too long.
            const bool more_data = result == ERROR_MORE_DATA && m_size_bytes > room;
            if (!more_data) {
                return static_cast<DWORD>(result);
            }
            m_data.resize(std::size_t{m_size_bytes} + sizeof NO_TERMINATOR);
        }
    }

    // The platform looks at what lies behind a text without a terminator, and would take a terminator there along.
    void _protect_end() { std::copy_n(NO_TERMINATOR, sizeof NO_TERMINATOR, m_data.data() + m_size_bytes); }

    wchar_t m_name[COPIED_NAME_UNITS];
    std::vector<BYTE> m_data = std::vector<BYTE>(COPIED_DATA_BYTES + sizeof NO_TERMINATOR);
    DWORD m_size_bytes = 0;
    DWORD m_type = REG_NONE;
};

// Copies one key. With children, adds the names of the keys below the source as they were before the copy.
void copy_key(void* src_root, void* dst_root, const Copied_key& paths, Value_copier& copier, Names* children,
              Tam_status& status)
{
    detail::Registry_key source;
    open_for_reading(src_root, paths.source, KEY_QUERY_VALUE, source, status);
    if (!status.ok()) {
        return;
    }
    Tam_status listing; // a failure here comes after those of the values
    if (children != nullptr) {
        detail::Registry_key listed;
        list_keys(src_root, paths.source, listed, *children, listing);
    }
    detail::Registry_key destination;
    const unsigned int error = detail::create_registry_key(dst_root, paths.destination, KEY_SET_VALUE, destination);
    if (error != ERROR_SUCCESS) {
        detail::push_system_error(status, error, TAM_E_REG_KEY_OPEN_WRITE, paths.destination);
        return;
    }
    copier.copy(source, destination, paths, status);
    if (status.ok() && !listing.ok()) {
        status = std::move(listing);
    }
}

std::wstring child_path(const std::wstring& path, const std::wstring& name)
{
    return path.empty() ? name : detail::registry_path(path, name);
}

// Keeps the keys to come itself: keys lie deeper than a stack is long.
void copy_tree(void* src_root, void* dst_root, Copied_key first, bool recursive, Tam_status& status)
{
    Value_copier copier;
    std::vector<Copied_key> coming; // the next one last
    coming.push_back(std::move(first));
    while (!coming.empty() && status.ok()) {
        const Copied_key paths = std::move(coming.back());
        coming.pop_back();
        Names children;
        copy_key(src_root, dst_root, paths, copier, recursive ? &children : nullptr, status);
        for (unsigned int i = children.size(); i != 0; --i) {
            const std::wstring& name = children.at(i - 1);
            coming.push_back({child_path(paths.source, name), child_path(paths.destination, name)});
        }
    }
}

} // namespace

void* tam_connect_reg_root(const std::wstring& machine, void* root, Tam_status& status)
{
    status.clear();
    HKEY connected = nullptr;
    unsigned int reason = TAM_E_REG_ROOT_NOT_REMOTE;
    if (root == HKEY_LOCAL_MACHINE || root == HKEY_USERS) {
        const wchar_t* const name = machine.empty() ? nullptr : machine.c_str();
        reason =
            static_cast<unsigned int>(detail::win32.reg_connect_registry(name, static_cast<HKEY>(root), &connected));
    }
    if (reason == ERROR_SUCCESS) {
        return connected;
    }
    detail::report_lack_of_memory(status,
                                  [&] { detail::push_system_error(status, reason, TAM_E_REG_CONNECT, machine); });
    return nullptr;
}

void tam_disconnect_reg_root(void* key, Tam_status& status)
{
    status.clear();
    tam_close_reg_key(key, status);
}

void tam_create_reg_key(void* root, const std::wstring& key, const std::wstring& subkey, Tam_status& status)
{
    detail::run(status, [&] {
        const std::wstring path = detail::registry_path(key, subkey);
        detail::Registry_key created;
        const unsigned int error = detail::create_registry_key(root, path, KEY_ALL_ACCESS, created);
        if (error != ERROR_SUCCESS) {
            detail::push_system_error(status, error, TAM_E_REG_KEY_CREATE, path);
        }
    });
}

void* tam_open_reg_key(void* root, const std::wstring& key, const std::wstring& subkey, Tam_status& status)
{
    detail::Registry_key opened;
    detail::report_lack_of_memory(status, [&] {
        const std::wstring path = detail::registry_path(key, subkey);
        if (detail::open_registry_key(root, path, KEY_ALL_ACCESS, opened) != ERROR_SUCCESS) {
            detail::assign_failure(status, TAM_E_REG_KEY_OPEN, key);
        }
    });
    return opened.release();
}

void tam_close_reg_key(void* key, Tam_status& status)
{
    if (detail::win32.reg_close_key(static_cast<HKEY>(key)) != ERROR_SUCCESS) {
        detail::assign_failure(status, TAM_E_REG_KEY_CLOSE);
    }
}

bool tam_reg_key_exists(void* root, const std::wstring& key, const std::wstring& subkey)
{
    Tam_status status;
    detail::Registry_key opened;
    detail::report_lack_of_memory(
        status, [&] { detail::open_registry_key(root, detail::registry_path(key, subkey), KEY_READ, opened); });
    return static_cast<bool>(opened);
}

void tam_reg_add_security(void* key, Tam_security& security, Tam_status& status)
{
    status.clear();
    security.associate_with_object(TAM_SEC_OBJ_REGISTRY_KEY, key, status);
}

void tam_enum_reg_keys(void* root, const std::wstring& key, const std::wstring& subkey,
                       Tam_object_vector<std::wstring>& names, Tam_status& status)
{
    enumerate(root, key, subkey, KEY_ENUMERATE_SUB_KEYS, &next_key, names, status);
}

void tam_enum_reg_value_names(void* root, const std::wstring& key, const std::wstring& subkey,
                              Tam_object_vector<std::wstring>& names, Tam_status& status)
{
    enumerate(root, key, subkey, KEY_QUERY_VALUE | KEY_ENUMERATE_SUB_KEYS, &next_value_name, names, status);
}

void tam_remove_reg_key(void* root, const std::wstring& key, const std::wstring& subkey, const std::wstring& name,
                        Tam_status& status)
{
    detail::run(status, [&] { remove_tree(root, detail::registry_path(key, subkey), name, status); });
}

void tam_copy_reg_key(void* src_root, const std::wstring& src_path, void* dst_root, const std::wstring& dst_path,
                      bool recursive, Tam_status& status)
{
    detail::run(status, [&] { copy_tree(src_root, dst_root, {src_path, dst_path}, recursive, status); });
}

} // namespace tam
