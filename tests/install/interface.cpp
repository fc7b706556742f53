// Shapes of the interface that callers rely on. Compiling is the test, for the most part: literals, null pointers,
// conversions and classes derived from the library's must stay usable as they are here.
#include <tam/tam.h>

#include <windows.h>

#include <algorithm>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

using namespace tam;

namespace {

class Own_argument : public Tam_status_arg {
public:
    void destroy() override { delete this; }
    void to_string(std::wstring& out) const override { out = L"own"; }
    GUID identity() const override { return Tam_null_status_arg::ID; }
    Tam_status_arg* clone(const void*) const override { return new Own_argument(*this); }
};

class Own_buffer : public Tam_buffer {
public:
    void seek(Tam_seek_mode mode, int offset, unsigned long long& position, Tam_status& status) const override
    {
        status.clear();
        position = tam_advance(mode == 0 ? 0 : mode == 2 ? m_bytes.size() : position, offset);
    }

protected:
    unsigned int read(bool, unsigned long long& position, unsigned int count, void* destination,
                      Tam_status& status) const override
    {
        status.clear();
        const auto left = m_bytes.size() - std::min<unsigned long long>(position, m_bytes.size());
        const auto done = static_cast<unsigned int>(std::min<unsigned long long>(left, count));
        std::copy_n(m_bytes.begin() + static_cast<std::ptrdiff_t>(position), done, static_cast<char*>(destination));
        position += done;
        if (done == 0) {
            status = 0xC2000019;
        }
        return done;
    }
    void write(unsigned long long&, unsigned int, const void*, Tam_status& status) override { status = 0xC200001A; }

private:
    std::string m_bytes = "one\r\ntwo\r\n";
};

class Own_stream : public Tam_istream {
public:
    void detach() override {}
    unsigned int read(unsigned int, void*, Tam_status&) override { return 0; }
    unsigned int read_at(unsigned long long, unsigned int, void*, Tam_status& status) const override
    {
        status = 0xC2000019;
        return 0;
    }
};

class Own_path : public Tam_path {
public:
    static void check(wchar_t letter) { validate_drive_letter(letter); }
};

bool statuses()
{
    Tam_status by_parentheses(5);
    Tam_status by_braces{5};
    Tam_status by_assignment = 5;
    by_assignment = 7;
    by_assignment.push(0xC2000001);
    by_assignment.push(0xC2000026, Tam_wstring_status_arg(L"a path"), Tam_int_status_arg(-1, false),
                       Tam_uint_status_arg(1U, true), Tam_bool_status_arg(true), Own_argument(),
                       Tam_null_status_arg::NULL_ARGUMENT, Tam_wstring_status_arg("narrow"), Tam_null_status_arg());
    std::wstring text;
    for (Tam_status_arg* const* argument = by_assignment.begin(); argument != by_assignment.end(); ++argument) {
        std::wstring one;
        (*argument)->to_string(one);
        text += one + L"|";
    }
    const GUID identity = (*by_assignment.begin())->identity();
    return by_parentheses == 5 && by_braces == by_parentheses && by_assignment != 7U &&
           identity == Tam_wstring_status_arg::ID && by_assignment.child()->child()->value() == 7 &&
           text == L"a path|-1|1|True|own|narrow||";
}

bool texts()
{
    std::wstring wide;
    std::string narrow;
    tam_itow(-255, wide, 16, false);
    tam_itow(18446744073709551615ULL, wide, 10, false);
    tam_quote(L"a", wide);
    tam_quote("a", narrow);
    tam_unquote(wide, wide);
    tam_trim(wide);
    tam_upper(narrow);
    tam_stow("abc", wide);
    tam_wtos(L"abc", narrow);
    Tam_object_vector<std::wstring> tokens;
    const Tam_tokeniser tokeniser(L",", L"", L"", L"=", false, true);
    tokeniser.tokenise(L"a,b=c", tokens);
    std::wstring joined;
    for (std::wstring& token : tokens) {
        joined += token + L";";
    }
    return joined == L"a;b;=;c;" && tam_stow(std::string("x")) == L"x" && tam_wtos(std::wstring(L"x")) == "x" &&
           tam_string_equal_nc(L"A", L"a") && tam_string_equal_nc("A", "a") && tam_wtoi32(L" +7") == 7 &&
           tam_wtoi64(L"-7") == -7 && tam_is_int32("1") && tam_is_number(L"1") && tam_is_blank("") && narrow == "abc" &&
           tokens.at(0) == L"a" && tokens.front() == L"a" && tokens.back() == L"c" && tokens.size() == 4;
}

bool synchronisation()
{
    Tam_security everyone;
    Tam_status status;
    Tam_event unnamed(false, nullptr);
    Tam_event plain(true);
    Tam_event named(L"tam interface event", false, nullptr);
    Tam_event secured(std::wstring(L"tam interface event"), false, &everyone);
    Tam_mutex mutex(false, nullptr);
    Tam_mutex named_mutex(L"tam interface mutex", false, &everyone);
    Tam_exclusive_lock lock(false, nullptr);
    Tam_exclusive_lock named_lock(L"tam interface lock", false, nullptr);
    Tam_semaphore semaphore(1, 2);
    Tam_critical critical(true);
    critical.leave();
    {
        const std::lock_guard guard(critical);
        const std::lock_guard another(mutex);
    }
    named.signal();
    unnamed.add_security(everyone, status);
    SECURITY_ATTRIBUTES* const attributes = everyone.security_attributes(false);
    return secured.signaled() && plain.wait(0) && lock.try_lock() && named_lock.try_lock() && semaphore.try_lock(1) &&
           named_mutex.try_lock(0) && attributes->nLength == sizeof(SECURITY_ATTRIBUTES) && status.ok() &&
           ::WaitForSingleObject(plain.handle(), 0) == WAIT_OBJECT_0;
}

bool security()
{
    Tam_status status;
    Tam_acl acl(L"Everyone", 0x1, status);
    acl.set_rights(static_cast<Tam_standard_trustees>(3), static_cast<Tam_access_modes>(1), 0x2, status);
    acl.set_rights(L"Everyone", TAM_ACCESS_GRANT, 0x2U, status);
    const Tam_acl system(TAM_TRUSTEE_LOCAL_SYSTEM, READ_CONTROL, status);
    const Tam_acl copy(acl, status);
    acl.merge(system, status);
    unsigned int rights = 0;
    unsigned int count = 0;
    copy.get_rights(L"Everyone", rights, status);
    acl.get_rights(TAM_TRUSTEE_USERS, rights, status);
    acl.get_entry_count(count, status);
    std::wstring name;
    Tam_access_modes mode{};
    acl.get_entry(0, name, mode, rights, status);
    Tam_acl::get_trustee_name(TAM_TRUSTEE_EVERYONE, name, status);
    const bool granted = acl.test_rights(std::wstring(L"Everyone"), 0x3, status) &&
                         acl.test_rights(TAM_TRUSTEE_LOCAL_SYSTEM, READ_CONTROL, status, &rights);

    const Tam_security closed(false, status);
    Tam_security security(acl, status);
    security.set_disc_acl(system, status, true);
    Tam_acl* const found = security.get_disc_acl(status);
    const bool good = status.ok() && found != nullptr;
    delete found;
    acl.erase(status);

    Tam_object_vector<std::wstring> groups;
    Tam_acl::get_groups(L"nobody", groups, status); // whatever the machine answers
    Tam_acl_group_cache cache;
    std::vector<void*> sids;
    SID everyone{SID_REVISION, 1, SECURITY_WORLD_SID_AUTHORITY, {SECURITY_WORLD_RID}};
    const bool cached = cache.get_groups(&everyone, sids);
    cache.set_groups(&everyone, sids);
    return granted && good && count == 3 && mode == TAM_ACCESS_DENY && name == L"Everyone" && !cached &&
           Tam_acl_group_cache::CACHE_TIMEOUT == Tam_time_period(900LL, 0);
}

bool paths()
{
    const Tam_path three(L"C:\\dir", L"base", L"ext");
    const Tam_path drive(L'C', L"dir", L"file.txt");
    const Tam_path drive_four(L'C', L"dir", L"base", L"ext");
    const Tam_path server(L"server", L"share", L"dir", L"file.txt");
    const Tam_path server_five(L"server", L"share", L"dir", L"base", L"ext");
    Tam_path path(L"C:\\a\\.\\b\\..\\c.txt");
    const std::wstring& text = path;
    const wchar_t* const characters = path;
    const std::wstring copied = path;
    const std::wstring name = path.filename();
    const wchar_t letter = path.drive();
    const wchar_t separator = path.path_separator();
    Own_path::check(L'c');
    try {
        path.server(L"none");
        return false;
    } catch (const Tam_path::No_unc&) {
        path.filename(L"d.txt").extension(L"bin");
    }
    return text == L"C:\\a\\d.bin" && path == L"C:\\a\\d.bin" && copied == L"C:\\a\\c.txt" && name == L"c.txt" &&
           letter == L'C' && separator == L'\\' && characters != nullptr && three == Tam_path(L"C:\\dir\\base.ext") &&
           drive != three && drive_four == L"C:\\dir\\base.ext" && server == L"\\\\server\\share\\dir\\file.txt" &&
           server_five < server && path[0] == L"a";
}

bool files()
{
    Tam_status status;
    Tam_file file;
    file.open(L"no such file", TAM_FILE_OPEN_EXISTING, TAM_FILE_READ, 0, TAM_FILE_SHARE_READ, status, nullptr);
    const Tam_file other(L"", static_cast<Tam_file_open>(0), static_cast<Tam_file_access>(2), 4U,
                         static_cast<Tam_file_sharing>(3), status);
    const std::wstring temporary = Tam_file::temp_name(L"buf");
    const std::wstring folder = Tam_directory::temp_directory();
    Tam_object_vector<std::wstring> names;
    Tam_directory::list(L"*", names, 0xFFFFFFFF);
    Tam_directory_iterator entry(L".", L"*");
    const Tam_file_info info = *entry;
    const Tam_file_system volume(L"C:\\");
    unsigned long long total = 0;
    unsigned long long unused = 0;
    unsigned long long available = 0;
    volume.stats(total, unused, available, status);
    return !file.is_open() && !other.is_open() && temporary.ends_with(L".buf") && !folder.empty() && !names.empty() &&
           !info.name.empty() && (info.is_directory || !info.is_directory) && volume.type() == 2 && total != 0 &&
           tam_type(L"no such file") == 0 && !tam_access(L"no such file", TAM_FILE_READ);
}

bool streams()
{
    Own_buffer buffer;
    Own_stream own;
    Tam_status status;
    own.init(buffer, false, status, TAM_EOL_ANY);
    Tam_buffered_istream buffered(buffer, false, status, TAM_EOL_CR_LF);
    Tam_unbuffered_istream unbuffered(buffer, true, status, static_cast<Tam_eol>(0));
    std::string line;
    buffered.readln(100, line, status);
    const bool first = line == "one";
    unbuffered.seek(TAM_SEEK_END, -5, status);
    unbuffered.readln(100, line, status);
    return first && line == "two" && tam_count_lines(buffered, status) == 2 && buffered.size(status) == 10;
}

bool times()
{
    const timeval seconds{5, 250000};
    const tm noon{0, 0, 12, 1, 0, 99, 0, 0, 0};
    Tam_time_period period(seconds);
    period = 7;
    period = period * 2 / 4 + Tam_time_period(0, 500000) - Tam_time_period(0, 0, 0, 1, 0);
    const Tam_time time(noon, 0);
    const Tam_time_period since_midnight = time;
    const timeval back = period;
    return period == Tam_time_period(3, 0) && time.is_pm() && since_midnight.hours() == 12 && back.tv_sec == 3 &&
           Tam_time(-3600).hours() == 23 && Tam_time(23, 59, 59, 999999) == Tam_time::max_time();
}

bool exceptions()
{
    auto* const earlier = reinterpret_cast<void (*)(unsigned, EXCEPTION_POINTERS*)>(tam_install_exception_translator());
    bool caught = false;
    try {
        ::RaiseException(1727, 0, 0, nullptr);
    } catch (const Tam_system_exception& exception) {
        caught = exception.code() == 1727;
    }
    tam_set_exception_translator(nullptr);
    return earlier == nullptr && caught && Tam_system_exception().code() == 0 &&
           std::string(Tam_sys_call_fail("::Call").what()) == "::Call";
}

bool profiles()
{
    Tam_status status;
    Tam_profile_reader reader;
    reader.open(L"no such file.ini", status);
    std::pair<std::wstring, std::wstring> entry;
    reader.get_current_entry(entry, status);
    Tam_object_vector<std::wstring> names;
    reader.get_section_list(names, status);
    reader.close(status);
    return status == TAM_E_PROFILE_NOT_OPEN && reader.end_of_entries();
}

bool registry()
{
    const std::wstring path = L"Software\\tam_interface_" + std::to_wstring(::GetCurrentProcessId());
    Tam_status status;
    Tam_object_vector<std::wstring> list;
    list.push_back(L"one");
    std::wstring text;
    unsigned int number = 0;
    void* const root = tam_connect_reg_root(L"", HKEY_LOCAL_MACHINE, status);
    tam_disconnect_reg_root(root, status);
    tam_create_reg_key(HKEY_CURRENT_USER, path, L"a", status);
    tam_set_reg_string_value(HKEY_CURRENT_USER, path, L"a", L"s", L"text", status);
    tam_get_reg_string_value(HKEY_CURRENT_USER, path, L"a", L"s", text, status);
    tam_set_reg_path_value(HKEY_CURRENT_USER, path, L"", L"p", L"%TMP%", status);
    tam_get_reg_path_value(HKEY_CURRENT_USER, path, L"", L"p", text, status);
    tam_set_reg_multi_string_value(HKEY_CURRENT_USER, path, L"", L"m", list, status);
    tam_get_reg_multi_string_value(HKEY_CURRENT_USER, path, L"", L"m", list, status);
    tam_set_reg_uint_value(HKEY_CURRENT_USER, path, L"", L"", 7, status);
    tam_copy_reg_key(HKEY_CURRENT_USER, path, HKEY_CURRENT_USER, path + L"\\b", true, status);
    void* const key = tam_open_reg_key(HKEY_CURRENT_USER, path, L"b", status);
    tam_get_reg_uint_value(key, L"", L"", L"", number, status);
    tam_remove_reg_value(key, L"", L"", L"", status);
    Tam_security everyone;
    tam_reg_add_security(key, everyone, status);
    tam_close_reg_key(key, status);
    tam_enum_reg_value_names(HKEY_CURRENT_USER, path, L"b", list, status);
    const bool values = list.size() == 2;
    tam_enum_reg_keys(HKEY_CURRENT_USER, path, L"", list, status);
    tam_remove_reg_key(HKEY_CURRENT_USER, L"Software", L"", path.substr(path.find(L'\\') + 1), status);
    const bool good = status.ok() && values && list.size() == 2 && text == L"%TMP%" && number == 7;
    tam_get_reg_sw_string_value(L"tam interface", L"b", L"none", text, status);
    tam_get_reg_uint_parameter(L"tam interface", L"none", number, status);
    return good && status == TAM_E_REG_KEY_OPEN_READ && !tam_reg_key_exists(HKEY_CURRENT_USER, path, L"");
}

bool event_log()
{
    Tam_status status;
    void* const log = tam_open_syslog(L"tam interface", status);
    tam_report_to_syslog(log, 0, Tam_status(5), true, status);
    tam_close_syslog(log, status);
    const bool written = status.ok();
    tam_deregister_resources(L"tam interface", L"none.dll", status);
    return written && status == TAM_E_REG_KEY_OPEN_READ;
}

} // namespace

bool interface_works()
{
    return statuses() && texts() && synchronisation() && security() && paths() && files() && streams() && times() &&
           exceptions() && profiles() && registry() && event_log();
}
