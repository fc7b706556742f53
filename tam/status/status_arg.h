#pragma once

#include <string>

#include <guiddef.h>

#include <tam/detail/export.h>

namespace tam {

/// A typed value that fills one placeholder of a status code's message text.
///
/// Callers may derive classes of their own. A Tam_status keeps clones of the arguments that it is given, made with
/// clone() and released with destroy(), so the argument object itself may be a temporary. The virtual operations stand
/// in a fixed order.
class TAM_API Tam_status_arg {
public:
    Tam_status_arg(const Tam_status_arg&) = default;
    Tam_status_arg& operator=(const Tam_status_arg&) = default;
    virtual ~Tam_status_arg();

    /// Deletes the object. The library never calls it through a null pointer.
    virtual void destroy() = 0;

    /// Sets out to the argument's text; what out held before is replaced.
    virtual void to_string(std::wstring& out) const = 0;

    /// The identifier of the argument's class, fixed across builds: tells a caller which class an argument has.
    virtual GUID identity() const = 0;

    /// A new copy on the heap, released with destroy().
    /// @param hint  the status that asks for the copy; the library's classes ignore it
    virtual Tam_status_arg* clone(const void* hint) const = 0;

protected:
    Tam_status_arg() = default;
};

/// An argument without a value; renders as the empty string.
class TAM_API Tam_null_status_arg : public Tam_status_arg {
public:
    /// What identity() returns.
    static const GUID ID;

    /// Stands for an argument that was left out. A status recognises it by its address and never stores it; any other
    /// Tam_null_status_arg is an ordinary argument.
    static const Tam_null_status_arg NULL_ARGUMENT;

    Tam_null_status_arg() = default;
    Tam_null_status_arg(const Tam_null_status_arg&) = default;
    Tam_null_status_arg& operator=(const Tam_null_status_arg&) = default;
    ~Tam_null_status_arg() override;

    void destroy() override;
    void to_string(std::wstring& out) const override;
    GUID identity() const override;
    Tam_status_arg* clone(const void* hint) const override;
};

/// A signed number; renders in decimal.
class TAM_API Tam_int_status_arg : public Tam_status_arg {
public:
    /// What identity() returns.
    static const GUID ID;

    /// Keeps a copy of value.
    /// @param format  group the digits as the C run-time's current locale does
    Tam_int_status_arg(int value, bool format) : m_value(value), m_format(format) {}
    Tam_int_status_arg(const Tam_int_status_arg&) = default;
    Tam_int_status_arg& operator=(const Tam_int_status_arg&) = default;
    ~Tam_int_status_arg() override;

    /// The value that it was made from.
    int value() const { return m_value; }
    /// Whether the digits are grouped.
    bool format() const { return m_format; }

    void destroy() override;
    void to_string(std::wstring& out) const override;
    GUID identity() const override;
    Tam_status_arg* clone(const void* hint) const override;

private:
    int m_value;
    bool m_format;
};

/// An unsigned number; renders in decimal.
class TAM_API Tam_uint_status_arg : public Tam_status_arg {
public:
    /// What identity() returns.
    static const GUID ID;

    /// Keeps a copy of value.
    /// @param format  group the digits as the C run-time's current locale does
    Tam_uint_status_arg(unsigned int value, bool format) : m_value(value), m_format(format) {}
    Tam_uint_status_arg(const Tam_uint_status_arg&) = default;
    Tam_uint_status_arg& operator=(const Tam_uint_status_arg&) = default;
    ~Tam_uint_status_arg() override;

    /// The value that it was made from.
    unsigned int value() const { return m_value; }
    /// Whether the digits are grouped.
    bool format() const { return m_format; }

    void destroy() override;
    void to_string(std::wstring& out) const override;
    GUID identity() const override;
    Tam_status_arg* clone(const void* hint) const override;

private:
    unsigned int m_value;
    bool m_format;
};

/// A flag; renders as "True" or "False" from the library's string table.
class TAM_API Tam_bool_status_arg : public Tam_status_arg {
public:
    /// What identity() returns.
    static const GUID ID;

    /// Keeps a copy of value.
    Tam_bool_status_arg(bool value) : m_value(value) {}
    Tam_bool_status_arg(const Tam_bool_status_arg&) = default;
    Tam_bool_status_arg& operator=(const Tam_bool_status_arg&) = default;
    ~Tam_bool_status_arg() override;

    /// The value that it was made from.
    bool value() const { return m_value; }

    void destroy() override;
    void to_string(std::wstring& out) const override;
    GUID identity() const override;
    Tam_status_arg* clone(const void* hint) const override;

private:
    bool m_value;
};

/// A text; renders as it is.
class TAM_API Tam_wstring_status_arg : public Tam_status_arg {
public:
    /// What identity() returns.
    static const GUID ID;

    /// Keeps a copy of value.
    Tam_wstring_status_arg(const std::wstring& value) : m_value(value) {}

    /// Converts with the C run-time's current locale. A text that cannot be converted becomes the empty string; that is
    /// not reported.
    Tam_wstring_status_arg(const std::string& value);
    Tam_wstring_status_arg(const Tam_wstring_status_arg&) = default;
    Tam_wstring_status_arg& operator=(const Tam_wstring_status_arg&) = default;
    ~Tam_wstring_status_arg() override;

    /// The value that it was made from.
    const std::wstring& value() const { return m_value; }

    void destroy() override;
    void to_string(std::wstring& out) const override;
    GUID identity() const override;
    Tam_status_arg* clone(const void* hint) const override;

private:
    std::wstring m_value;
};

} // namespace tam
