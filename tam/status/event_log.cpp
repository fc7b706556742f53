#include <tam/status/event_log.h>

#include <algorithm>
#include <iterator>
#include <stdexcept>
#include <utility>
#include <vector>

#include <windows.h>

#include <tam/config/registry_value.h>
#include <tam/container/object_vector.h>
#include <tam/detail/failure.h>
#include <tam/detail/win32.h>
#include <tam/status/codes.h>
#include <tam/text/compare.h>
#include <tam/text/tokeniser.h>

namespace tam {

namespace {

constexpr wchar_t SOURCES_KEY[] = L"SYSTEM\\CurrentControlSet\\Services\\EventLog\\Application";
constexpr wchar_t MESSAGE_FILE_VALUE[] = L"EventMessageFile";
constexpr wchar_t SEPARATOR[] = L";";

WORD event_type(const Tam_status& report)
{
    if (report.is_success() || report.is_information()) {
        return EVENTLOG_INFORMATION_TYPE;
    }
    return report.is_warning() ? EVENTLOG_WARNING_TYPE : EVENTLOG_ERROR_TYPE;
}

void write_record(void* handle, unsigned int category, const Tam_status& report, Tam_status& status)
{
    std::wstring texts[Tam_status::MAXIMUM_ARGUMENTS];
    const wchar_t* strings[Tam_status::MAXIMUM_ARGUMENTS] = {};
    WORD count = 0;
    for (const Tam_status_arg* const argument : report) {
        argument->to_string(texts[count]);
        strings[count] = texts[count].c_str();
        ++count;
    }
    if (!detail::win32.report_event(handle, event_type(report), static_cast<WORD>(category), report.value(), nullptr,
                                    count, 0, strings, nullptr)) {
        detail::push_last_error(status, TAM_E_EVENT_REPORT);
    }
}

void check_names(const std::wstring& source, const std::wstring& path)
{
    if (source.empty()) {
        throw std::invalid_argument("Event source name is empty.");
    }
    if (path.empty()) {
        throw std::invalid_argument("Event resource path is empty.");
    }
}

// The message files of an event source: as they are registered, and one by one.
class Message_files {
public:
    using Entry = Tam_object_vector<std::wstring>::iterator;

    Message_files(const std::wstring& source, Tam_status& status) : m_source(source)
    {
        tam_get_reg_path_value(HKEY_LOCAL_MACHINE, SOURCES_KEY, m_source, MESSAGE_FILE_VALUE, m_list, status);
        const Tam_tokeniser tokeniser(SEPARATOR, L"", L"", L"", false, false);
        tokeniser.tokenise(m_list, m_entries);
    }

    const std::wstring& list() const { return m_list; }
    Entry begin() const { return m_entries.begin(); }
    Entry end() const { return m_entries.end(); }
    Entry find(const std::wstring& path) const
    {
        return std::find_if(begin(), end(),
                            [&](const std::wstring& entry) { return tam_string_equal_nc(entry, path); });
    }

    void write(const std::wstring& list, Tam_status& status) const
    {
        tam_set_reg_path_value(HKEY_LOCAL_MACHINE, SOURCES_KEY, m_source, MESSAGE_FILE_VALUE, list, status);
    }

private:
    const std::wstring& m_source;
    std::wstring m_list;
    Tam_object_vector<std::wstring> m_entries;
};

} // namespace

void* tam_open_syslog(const std::wstring& source, Tam_status& status)
{
    status.clear();
    const HANDLE handle = detail::win32.register_event_source(nullptr, source.c_str());
    if (handle == nullptr) {
        detail::push_last_error(status, TAM_E_EVENT_SOURCE_OPEN, source);
    }
    return handle;
}

void tam_close_syslog(void* handle, Tam_status& status)
{
    if (handle != nullptr && !detail::win32.deregister_event_source(handle)) {
        detail::push_last_error(status, TAM_E_EVENT_SOURCE_CLOSE);
    }
}

void tam_report_to_syslog(void* handle, unsigned int category, const Tam_status& report, bool whole_chain,
                          Tam_status& status)
{
    Tam_status older_failure;
    if (whole_chain && report.has_child()) {
        std::vector<const Tam_status*> older; // newest first
        for (const Tam_status* link = report.child(); link != nullptr; link = link->child()) {
            older.push_back(link);
        }
        std::for_each(older.rbegin(), older.rend(),
                      [&](const Tam_status* link) { write_record(handle, category, *link, older_failure); });
    }
    write_record(handle, category, report, status);
    if (!older_failure.ok() && status.ok()) {
        status = std::move(older_failure);
    }
}

void tam_register_resources(const std::wstring& source, const std::wstring& path, Tam_status& status)
{
    status.clear();
    check_names(source, path);
    const Message_files files(source, status);
    if (!status.ok()) {
        files.write(path, status);
    } else if (files.find(path) == files.end()) {
        files.write(files.list() + SEPARATOR + path, status);
    }
}

void tam_deregister_resources(const std::wstring& source, const std::wstring& path, Tam_status& status)
{
    status.clear();
    check_names(source, path);
    const Message_files files(source, status);
    if (!status.ok()) {
        return;
    }
    const Message_files::Entry removed = files.find(path);
    if (removed == files.end()) {
        return;
    }
    std::wstring list;
    const auto append = [&](const std::wstring& entry) { list += (list.empty() ? L"" : SEPARATOR) + entry; };
    std::for_each(files.begin(), removed, append);
    std::for_each(removed + 1, files.end(), append);
    files.write(list, status);
}

} // namespace tam
