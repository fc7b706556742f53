#pragma once

#include <list>
#include <string>

#include <tam/detail/export.h>
#include <tam/status/status.h>

namespace tam {

/// One loaded message module: a DLL or program with a message table, whose identifiers are full status codes.
///
/// Not copyable. Rendering only reads the module: any number of threads may do it at once.
class TAM_API Tam_messages {
public:
    /// Loads the module, searched for as LoadLibraryW does. The object exists either way; one whose module could not be
    /// loaded knows the messages of the running program and of the system alone.
    ///
    /// @param status  cleared first; on failure the system's error, and on top
    ///   - TAM_E_MESSAGES_LOAD (0xC2000002)  name: the module could not be loaded
    Tam_messages(const std::wstring& name, Tam_status& status);

    /// Unloads the module.
    ~Tam_messages();

    Tam_messages(const Tam_messages&) = delete;
    Tam_messages& operator=(const Tam_messages&) = delete;

    /// The name as it was given.
    const std::wstring& name() const noexcept { return m_name; }

    /// Sets out to the text of the status's value() in the module or, failing that, in the system, with the status's
    /// arguments in the place of `%1` to `%8`, exactly as FormatMessageW gives it: a text usually ends with CR LF.
    ///
    /// An insert without an argument shows nothing; so do `%9` to `%99`. The chain of the status is not looked at. What an
    /// argument's to_string throws passes through.
    /// @return  false, and out is empty, when nobody knows the code or the system cannot render its text
    bool format_message(const Tam_status& status, std::wstring& out) const;

private:
    std::wstring m_name;
    void* m_module; // null when it could not be loaded
};

/// The message catalogue: an ordered list of message modules that turns a status into text.
///
///     Tam_messages_list::m_global_messages.add(L"tam_messages.dll", status);
///     ...
///     std::wstring text;
///     Tam_messages_list::m_global_messages.format_message(status, text);
///
/// The texts of the library's own codes are in tam_messages.dll. A module that is added before it can have other texts
/// for the same codes.
///
/// Not copyable. Any number of threads may render at once while none adds or removes.
class TAM_API Tam_messages_list {
public:
    /// Yields Tam_messages*.
    using const_iterator = std::list<Tam_messages*>::const_iterator;

    /// The program's catalogue. It starts empty, the library never adds to it, and its modules are unloaded with the
    /// library.
    static Tam_messages_list m_global_messages;

    /// An empty list.
    Tam_messages_list();

    /// Unloads every module.
    ~Tam_messages_list();

    Tam_messages_list(const Tam_messages_list&) = delete;
    Tam_messages_list& operator=(const Tam_messages_list&) = delete;

    /// Loads a module and appends it. After a failure the list is as it was.
    ///
    /// @param status  cleared first; on return
    ///   - TAM_E_MESSAGES_ALREADY_LISTED (0xC2000003)  name: the list has a module of that name; letter case does not
    ///     count
    ///   - the system's error or TAM_E_OUT_OF_MEMORY (0xC2000001), and on top TAM_E_MESSAGES_LOAD (0xC2000002)  name
    /// @throws std::bad_alloc  there is not even memory for the report
    void add(const std::wstring& name, Tam_status& status);

    /// Unloads the first module of that name and takes it from the list; letter case does not count. A name that is not
    /// in the list is ignored.
    void remove(const std::wstring& name);

    /// Sets out to the text for the status: that of the first module that knows the code (each, as
    /// Tam_messages::format_message says, asks the system too), else the system's.
    ///
    /// When nobody knows the code the text is a line such as `Error 0xc2000017, a, 5\n`: the severity, value() in
    /// hexadecimal and the arguments, ended by a line feed alone. The severity is "Success", "Information", "Warning",
    /// or "Error" for all others, unusual ones included. The value 0 is written "0".
    ///
    /// What an argument's to_string throws passes through.
    void format_message(const Tam_status& status, std::wstring& out) const;

    /// The modules, in the order in which they were added and are asked.
    const_iterator begin() const noexcept { return m_list.begin(); }
    const_iterator end() const noexcept { return m_list.end(); }

private:
    bool format_system(const Tam_status& status, std::wstring& out) const;

    const_iterator _find(const std::wstring& name) const;

    std::list<Tam_messages*> m_list; // owned
};

} // namespace tam
