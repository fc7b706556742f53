#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include <windows.h>

#include <gtest/gtest.h>
#include <sddl.h>

#include <tam/security/acl.h>
#include <tam/status/status.h>
#include <tests/security/security_access.h>

namespace tam::test {

/// "S-1-1-0"
inline std::wstring text_of(void* sid)
{
    wchar_t* text = nullptr;
    EXPECT_TRUE(::ConvertSidToStringSidW(sid, &text));
    const std::wstring result = text;
    ::LocalFree(text);
    return result;
}

/// The bytes of an identifier, given as text.
inline std::vector<unsigned char> sid_of(const std::wstring& text)
{
    void* sid = nullptr;
    EXPECT_TRUE(::ConvertStringSidToSidW(text.c_str(), &sid)) << text.c_str();
    const auto* const bytes = static_cast<const unsigned char*>(sid);
    std::vector<unsigned char> result(bytes, bytes + ::GetLengthSid(sid));
    ::LocalFree(sid);
    return result;
}

/// Each entry as "TYPE RIGHTS IDENTIFIER", the rights in hexadecimal, read by raw calls. Entries that say anything about
/// inheritance end in a star.
inline std::vector<std::wstring> entries_of(ACL* list)
{
    EXPECT_TRUE(::IsValidAcl(list));
    std::vector<std::wstring> rows;
    for (DWORD i = 0; i < list->AceCount; ++i) {
        void* memory = nullptr;
        EXPECT_TRUE(::GetAce(list, i, &memory));
        auto* const entry = static_cast<ACCESS_ALLOWED_ACE*>(memory);
        wchar_t head[32];
        std::swprintf(head, std::size(head), L"%u %08lX ", entry->Header.AceType, entry->Mask);
        rows.push_back(head + text_of(&entry->SidStart) + (entry->Header.AceFlags != 0 ? L"*" : L""));
    }
    return rows;
}

inline std::vector<std::wstring> entries_of(const Tam_acl& acl)
{
    return entries_of(detail::Security_access::list(acl));
}

/// All bytes of the list that its size tells.
inline std::vector<unsigned char> bytes_of(const ACL* list)
{
    const auto* const bytes = reinterpret_cast<const unsigned char*>(list);
    return {bytes, bytes + list->AclSize};
}

/// The bytes of each entry.
inline std::vector<std::vector<unsigned char>> bytes_of_entries(const ACL* list)
{
    const std::vector<unsigned char> bytes = bytes_of(list);
    std::vector<std::vector<unsigned char>> entries;
    for (std::size_t i = sizeof(ACL); i < bytes.size();) {
        const std::size_t size = bytes[i + 2] + 256U * bytes[i + 3];
        entries.emplace_back(bytes.begin() + static_cast<std::ptrdiff_t>(i),
                             bytes.begin() + static_cast<std::ptrdiff_t>(i + size));
        i += size;
    }
    return entries;
}

/// A list put together byte by byte, past the class, the platform and every check.
class Raw_list {
public:
    void add(unsigned char type, DWORD rights, const std::wstring& sid, unsigned char flags = 0,
             const std::vector<unsigned char>& behind = {})
    {
        std::vector<unsigned char> bytes = _rights(rights);
        _append(bytes, sid_of(sid));
        _append(bytes, behind);
        _add(type, flags, bytes);
    }

    /// An entry for single properties; flags tell which of the two GUIDs it has.
    void add_object(unsigned char type, DWORD rights, DWORD flags, const std::wstring& sid)
    {
        std::vector<unsigned char> bytes = _rights(rights);
        _append(bytes, _rights(flags));
        for (const DWORD bit : {1U, 2U}) {
            if ((flags & bit) != 0) {
                bytes.insert(bytes.end(), 16, static_cast<unsigned char>(0xA0 + bit));
            }
        }
        _append(bytes, sid_of(sid));
        _add(type, 0, bytes);
        m_revision = ACL_REVISION_DS;
    }

    void add_bytes(const std::vector<unsigned char>& entry)
    {
        _append(m_entries, entry);
        ++m_count;
    }

    /// More than the entries need.
    void set_size(unsigned int size) { m_size = size; }

    std::vector<unsigned char> bytes() const
    {
        std::vector<unsigned char> bytes(sizeof(ACL));
        const ACL head{m_revision, 0, 0, static_cast<WORD>(m_count), 0};
        std::memcpy(bytes.data(), &head, sizeof head);
        _append(bytes, m_entries);
        if (m_size != 0) {
            bytes.resize(m_size);
        }
        const auto size = static_cast<WORD>(bytes.size());
        std::memcpy(bytes.data() + offsetof(ACL, AclSize), &size, sizeof size);
        return bytes;
    }

    Tam_acl acl() const
    {
        std::vector<unsigned char> list = bytes();
        return detail::Security_access::acl(reinterpret_cast<ACL*>(list.data()));
    }

private:
    static std::vector<unsigned char> _rights(DWORD rights)
    {
        std::vector<unsigned char> bytes(sizeof rights);
        std::memcpy(bytes.data(), &rights, sizeof rights);
        return bytes;
    }

    static void _append(std::vector<unsigned char>& bytes, const std::vector<unsigned char>& more)
    {
        bytes.insert(bytes.end(), more.begin(), more.end());
    }

    void _add(unsigned char type, unsigned char flags, const std::vector<unsigned char>& body)
    {
        const std::size_t size = sizeof(ACE_HEADER) + body.size();
        std::vector<unsigned char> entry{type, flags, static_cast<unsigned char>(size),
                                         static_cast<unsigned char>(size >> 8)};
        _append(entry, body);
        add_bytes(entry);
    }

    std::vector<unsigned char> m_entries;
    unsigned int m_count = 0;
    unsigned int m_size = 0;
    unsigned char m_revision = ACL_REVISION;
};

} // namespace tam::test
