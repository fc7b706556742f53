#include <tam/config/registry_places.h>

#include <windows.h>

#include <tam/config/registry_value.h>
#include <tam/detail/failure.h>
#include <tam/detail/registry.h>

namespace tam {

namespace {

constexpr wchar_t SOFTWARE_KEY[] = L"SOFTWARE";
constexpr wchar_t SERVICES_KEY[] = L"SYSTEM\\CurrentControlSet\\Services";
constexpr wchar_t PARAMETERS_KEY[] = L"Parameters";

// Calls one of the functions on values for a place. The value comes as the function takes it.
template <class... Rest, class... Given>
void in_software(void (*function)(void*, const std::wstring&, const std::wstring&, const std::wstring&, Rest...),
                 const std::wstring& a, const std::wstring& b, const std::wstring& name, Tam_status& status,
                 Given&... given)
{
    detail::report_lack_of_memory(status, [&] {
        function(HKEY_LOCAL_MACHINE, detail::registry_path(SOFTWARE_KEY, a), b, name, given..., status);
    });
}

template <class... Rest, class... Given>
void in_parameters(void (*function)(void*, const std::wstring&, const std::wstring&, const std::wstring&, Rest...),
                   const std::wstring& service, const std::wstring& name, Tam_status& status, Given&... given)
{
    detail::report_lack_of_memory(status, [&] {
        function(HKEY_LOCAL_MACHINE, SERVICES_KEY, detail::registry_path(service, PARAMETERS_KEY), name, given...,
                 status);
    });
}

} // namespace

void tam_get_reg_sw_string_value(const std::wstring& a, const std::wstring& b, const std::wstring& name,
                                 std::wstring& value, Tam_status& status)
{
    in_software(&tam_get_reg_string_value, a, b, name, status, value);
}

void tam_set_reg_sw_string_value(const std::wstring& a, const std::wstring& b, const std::wstring& name,
                                 const std::wstring& value, Tam_status& status)
{
    in_software(&tam_set_reg_string_value, a, b, name, status, value);
}

void tam_get_reg_sw_uint_value(const std::wstring& a, const std::wstring& b, const std::wstring& name,
                               unsigned int& value, Tam_status& status)
{
    in_software(&tam_get_reg_uint_value, a, b, name, status, value);
}

void tam_set_reg_sw_uint_value(const std::wstring& a, const std::wstring& b, const std::wstring& name,
                               unsigned int value, Tam_status& status)
{
    in_software(&tam_set_reg_uint_value, a, b, name, status, value);
}

void tam_remove_reg_sw_value(const std::wstring& a, const std::wstring& b, const std::wstring& name, Tam_status& status)
{
    in_software(&tam_remove_reg_value, a, b, name, status);
}

void tam_get_reg_string_parameter(const std::wstring& service, const std::wstring& name, std::wstring& value,
                                  Tam_status& status)
{
    in_parameters(&tam_get_reg_string_value, service, name, status, value);
}

void tam_set_reg_string_parameter(const std::wstring& service, const std::wstring& name, const std::wstring& value,
                                  Tam_status& status)
{
    in_parameters(&tam_set_reg_string_value, service, name, status, value);
}

void tam_get_reg_uint_parameter(const std::wstring& service, const std::wstring& name, unsigned int& value,
                                Tam_status& status)
{
    in_parameters(&tam_get_reg_uint_value, service, name, status, value);
}

void tam_set_reg_uint_parameter(const std::wstring& service, const std::wstring& name, unsigned int value,
                                Tam_status& status)
{
    in_parameters(&tam_set_reg_uint_value, service, name, status, value);
}

void tam_remove_reg_parameter(const std::wstring& service, const std::wstring& name, Tam_status& status)
{
    in_parameters(&tam_remove_reg_value, service, name, status);
}

} // namespace tam
