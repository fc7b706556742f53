#include <tam/text/convert.h>

#include <cstdlib>

namespace tam {

void tam_stow(const std::string& in, std::wstring& out)
{
    out.assign(in.size(), L'\0');
    std::mbstowcs(out.data(), in.c_str(), in.size());
}

std::wstring tam_stow(const std::string& in)
{
    std::wstring out;
    tam_stow(in, out);
    return out;
}

void tam_wtos(const std::wstring& in, std::string& out)
{
    out.assign(in.size(), '\0');
    std::wcstombs(out.data(), in.c_str(), in.size());
}

std::string tam_wtos(const std::wstring& in)
{
    std::string out;
    tam_wtos(in, out);
    return out;
}

} // namespace tam
