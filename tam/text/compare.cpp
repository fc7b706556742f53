#include <tam/text/compare.h>

#include <cstring>
#include <cwchar>

namespace tam {

namespace {

int compare(const std::string& a, const std::string& b)
{
    return ::_stricmp(a.c_str(), b.c_str());
}

int compare(const std::wstring& a, const std::wstring& b)
{
    return ::_wcsicmp(a.c_str(), b.c_str());
}

} // namespace

bool tam_string_equal_nc(const std::string& a, const std::string& b)
{
    return compare(a, b) == 0;
}

bool tam_string_equal_nc(const std::wstring& a, const std::wstring& b)
{
    return compare(a, b) == 0;
}

bool tam_string_unequal_nc(const std::string& a, const std::string& b)
{
    return compare(a, b) != 0;
}

bool tam_string_unequal_nc(const std::wstring& a, const std::wstring& b)
{
    return compare(a, b) != 0;
}

bool tam_string_less_nc(const std::string& a, const std::string& b)
{
    return compare(a, b) < 0;
}

bool tam_string_less_nc(const std::wstring& a, const std::wstring& b)
{
    return compare(a, b) < 0;
}

bool tam_string_greater_nc(const std::string& a, const std::string& b)
{
    return compare(a, b) > 0;
}

bool tam_string_greater_nc(const std::wstring& a, const std::wstring& b)
{
    return compare(a, b) > 0;
}

bool tam_string_less_equal_nc(const std::string& a, const std::string& b)
{
    return compare(a, b) <= 0;
}

bool tam_string_less_equal_nc(const std::wstring& a, const std::wstring& b)
{
    return compare(a, b) <= 0;
}

bool tam_string_greater_equal_nc(const std::string& a, const std::string& b)
{
    return compare(a, b) >= 0;
}

bool tam_string_greater_equal_nc(const std::wstring& a, const std::wstring& b)
{
    return compare(a, b) >= 0;
}

} // namespace tam
