#include <tam/status/messages.h>

#include <algorithm>
#include <cstddef>
#include <cwchar>
#include <iterator>
#include <memory>
#include <new>

#include <windows.h>

#include <tam/detail/failure.h>
#include <tam/detail/handle.h>
#include <tam/detail/win32.h>
#include <tam/text/compare.h>

namespace tam {

namespace {

constexpr DWORD LANGUAGE = MAKELANGID(LANG_NEUTRAL, SUBLANG_SYS_DEFAULT);
constexpr DWORD MINIMUM_UNITS = 1024;

// A text refers to inserts up to %99, and a width or precision of "*" in its format takes one entry each from behind
// the insert. The system has no count of the entries: these are as many as a text can reach.
constexpr std::size_t INSERTS = 99 + 2;

// FormatMessageW with the status's arguments as inserts. False, and out is empty, when the code is not known.
bool format(DWORD sources, HMODULE module, const Tam_status& status, std::wstring& out)
{
    out.clear();

    std::wstring texts[Tam_status::MAXIMUM_ARGUMENTS];
    DWORD_PTR inserts[INSERTS];
    std::fill(std::begin(inserts), std::end(inserts), reinterpret_cast<DWORD_PTR>(L""));
    std::size_t count = 0;
    for (const Tam_status_arg* argument : status) {
        argument->to_string(texts[count]);
        inserts[count] = reinterpret_cast<DWORD_PTR>(texts[count].c_str());
        ++count;
    }

    wchar_t* text = nullptr;
    const DWORD length = detail::win32.format_message(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_ARGUMENT_ARRAY | sources, module, status.value(), LANGUAGE,
        reinterpret_cast<wchar_t*>(&text), MINIMUM_UNITS, reinterpret_cast<va_list*>(inserts));
    const detail::Local_memory memory(text);
    if (length == 0) {
        return false;
    }
    out.assign(text, length);
    return true;
}

const wchar_t* severity_word(const Tam_status& status)
{
    return status.is_success()       ? L"Success "
           : status.is_information() ? L"Information "
           : status.is_warning()     ? L"Warning "
                                     : L"Error ";
}

} // namespace

Tam_messages::Tam_messages(const std::wstring& name, Tam_status& status) : m_name(name), m_module(nullptr)
{
    status.clear();
    m_module = detail::win32.load_library(m_name.c_str());
    if (m_module == nullptr) {
        detail::push_last_error(status, TAM_E_MESSAGES_LOAD, m_name);
    }
}

Tam_messages::~Tam_messages()
{
    const detail::Module_handle module(static_cast<HMODULE>(m_module));
}

bool Tam_messages::format_message(const Tam_status& status, std::wstring& out) const
{
    return format(FORMAT_MESSAGE_FROM_HMODULE | FORMAT_MESSAGE_FROM_SYSTEM, static_cast<HMODULE>(m_module), status,
                  out);
}

Tam_messages_list Tam_messages_list::m_global_messages;

Tam_messages_list::Tam_messages_list() = default;

Tam_messages_list::~Tam_messages_list()
{
    for (const Tam_messages* module : m_list) {
        delete module;
    }
}

void Tam_messages_list::add(const std::wstring& name, Tam_status& status)
{
    status.clear();
    if (_find(name) != m_list.end()) {
        detail::assign_failure(status, TAM_E_MESSAGES_ALREADY_LISTED, name);
        return;
    }
    try {
        auto module = std::make_unique<Tam_messages>(name, status);
        if (status.ok()) {
            m_list.push_back(module.get());
            module.release();
        }
    } catch (const std::bad_alloc&) {
        status = TAM_E_OUT_OF_MEMORY;
        detail::push_failure(status, TAM_E_MESSAGES_LOAD, name);
    }
}

void Tam_messages_list::remove(const std::wstring& name)
{
    const const_iterator found = _find(name);
    if (found != m_list.end()) {
        const std::unique_ptr<Tam_messages> module(*found); // name may be the module's own
        m_list.erase(found);
    }
}

void Tam_messages_list::format_message(const Tam_status& status, std::wstring& out) const
{
    const bool known = std::any_of(m_list.begin(), m_list.end(),
                                   [&](const Tam_messages* module) { return module->format_message(status, out); });
    if (known || format_system(status, out)) {
        return;
    }

    wchar_t value[sizeof "0xffffffff"];
    std::swprintf(value, std::size(value), L"%#lx", static_cast<unsigned long>(status.value()));
    out = severity_word(status);
    out += value;
    std::wstring text;
    for (const Tam_status_arg* argument : status) {
        argument->to_string(text);
        out += L", ";
        out += text;
    }
    out += L'\n';
}

bool Tam_messages_list::format_system(const Tam_status& status, std::wstring& out) const
{
    return format(FORMAT_MESSAGE_FROM_SYSTEM, nullptr, status, out);
}

Tam_messages_list::const_iterator Tam_messages_list::_find(const std::wstring& name) const
{
    return std::find_if(m_list.begin(), m_list.end(),
                        [&](const Tam_messages* module) { return tam_string_equal_nc(module->name(), name); });
}

} // namespace tam
