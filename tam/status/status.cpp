#include <tam/status/status.h>

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <utility>

#include <windows.h>

namespace tam {

// The eight argument parameters of a constructor, assign or push.
struct Tam_status::Argument_list {
    const Tam_status_arg* arguments[MAXIMUM_ARGUMENTS];
};

Tam_status::Tam_status(unsigned int code, const Tam_status_arg& a1, const Tam_status_arg& a2, const Tam_status_arg& a3,
                       const Tam_status_arg& a4, const Tam_status_arg& a5, const Tam_status_arg& a6,
                       const Tam_status_arg& a7, const Tam_status_arg& a8)
    : Tam_status(code)
{
    // The object is complete here, so its destructor releases what was added before a failure.
    _add_args({{&a1, &a2, &a3, &a4, &a5, &a6, &a7, &a8}});
}

Tam_status::Tam_status(const Tam_status& other) : Tam_status()
{
    m_code = other.m_code;
    _copy_args(other);
    _copy_chain(other);
}

Tam_status::Tam_status(Tam_status&& other) noexcept
    : m_code(std::exchange(other.m_code, 0)), m_child(std::exchange(other.m_child, nullptr))
{
    other._move_args(*this);
}

Tam_status& Tam_status::operator=(const Tam_status& other)
{
    if (this != &other) {
        // Set aside, not released: other may belong to this chain, and a failure gives it back.
        Tam_status old(std::move(*this));
        try {
            m_code = other.m_code;
            _copy_args(other);
            _copy_chain(other);
        } catch (...) {
            *this = std::move(old);
            throw;
        }
    }
    return *this;
}

Tam_status& Tam_status::operator=(Tam_status&& other) noexcept
{
    if (this != &other) {
        Tam_status taken(std::move(other));
        _release();
        m_code = taken.m_code;
        taken._move_args(*this);
        m_child = std::exchange(taken.m_child, nullptr);
    }
    return *this;
}

Tam_status& Tam_status::operator=(unsigned int code) noexcept
{
    if (m_count != 0 || m_child != nullptr) {
        _release();
    }
    m_code = _normalised(code);
    return *this;
}

void Tam_status::assign(unsigned int code, const Tam_status_arg& a1, const Tam_status_arg& a2, const Tam_status_arg& a3,
                        const Tam_status_arg& a4, const Tam_status_arg& a5, const Tam_status_arg& a6,
                        const Tam_status_arg& a7, const Tam_status_arg& a8)
{
    // Set aside, not released: an argument may be one of this status's own, and a failure gives it back.
    Tam_status old(std::move(*this));
    try {
        m_code = _normalised(code);
        _add_args({{&a1, &a2, &a3, &a4, &a5, &a6, &a7, &a8}});
    } catch (...) {
        *this = std::move(old);
        throw;
    }
}

void Tam_status::add_arg(const Tam_status_arg& arg)
{
    _add_arg(arg);
}

void Tam_status::push(const Tam_status& newer)
{
    if (&newer == this && is_clear()) {
        return;
    }
    _push(newer.m_code, [this, &newer](const Tam_status& old) {
        const Tam_status& source = &newer == this ? old : newer;
        _copy_args(source);
        _copy_chain(source);
    });
}

void Tam_status::push(unsigned int code)
{
    _push(_normalised(code), [](const Tam_status&) {});
}

void Tam_status::push(unsigned int code, const Tam_status_arg& a1, const Tam_status_arg& a2, const Tam_status_arg& a3,
                      const Tam_status_arg& a4, const Tam_status_arg& a5, const Tam_status_arg& a6,
                      const Tam_status_arg& a7, const Tam_status_arg& a8)
{
    _push(_normalised(code), [&](const Tam_status&) { _add_args({{&a1, &a2, &a3, &a4, &a5, &a6, &a7, &a8}}); });
}

void Tam_status::pop() noexcept
{
    if (m_child == nullptr) {
        clear();
        return;
    }
    const std::unique_ptr<Tam_status> next(m_child);
    m_child = nullptr;
    _move_back(*next);
    m_code = next->m_code;
}

unsigned int Tam_status::get_last_error() noexcept
{
    const DWORD error = ::GetLastError();
    return error == 0 ? 0 : error | ERROR_SEVERITY;
}

void Tam_status::_add_arg(const Tam_status_arg& arg)
{
    if (&arg == &Tam_null_status_arg::NULL_ARGUMENT) {
        return;
    }
    if (m_count == MAXIMUM_ARGUMENTS) {
        throw std::overflow_error("Tam_status::_add_arg - too many arguments.");
    }
    Tam_status_arg* const copy = arg.clone(this);
    if (copy != nullptr) {
        m_arguments[m_count] = copy;
        ++m_count;
    }
}

void Tam_status::_add_args(const Argument_list& list)
{
    for (const Tam_status_arg* argument : list.arguments) {
        _add_arg(*argument);
    }
}

void Tam_status::_copy_args(const Tam_status& other)
{
    for (const Tam_status_arg* argument : other) {
        _add_arg(*argument);
    }
}

void Tam_status::_remove_args() noexcept
{
    for (Tam_status_arg* argument : *this) {
        argument->destroy();
    }
    m_count = 0;
}

// Pointers only; the receiver has no arguments.
void Tam_status::_move_args(Tam_status& receiver) noexcept
{
    std::copy(begin(), end(), receiver.m_arguments);
    receiver.m_count = std::exchange(m_count, 0);
}

// A loop, since a chain can be longer than the stack is deep.
void Tam_status::_copy_chain(const Tam_status& other)
{
    Tam_status* last = this;
    for (const Tam_status* from = other.m_child; from != nullptr; from = from->m_child) {
        last->m_child = new Tam_status(from->m_code);
        last = last->m_child;
        last->_copy_args(*from);
    }
}

void Tam_status::_delete_child() noexcept
{
    while (m_child != nullptr) {
        Tam_status* const next = std::exchange(m_child->m_child, nullptr);
        delete m_child;
        m_child = next;
    }
}

// Moves this status, unless it is clear, down the chain below a new head with this code. fill adds the head's arguments
// and chain; it is given the status as it was. Whatever fails, the code stays the new one: callers rely on it.
template <class Fill>
void Tam_status::_push(unsigned int code, const Fill& fill)
{
    const bool was_clear = is_clear();
    const unsigned int old_code = std::exchange(m_code, code);
    std::unique_ptr<Tam_status> older;
    if (!was_clear) {
        older = std::make_unique<Tam_status>(old_code);
        _move_args(*older);
        older->m_child = std::exchange(m_child, nullptr);
    }
    try {
        fill(was_clear ? *this : *older);
    } catch (...) {
        _release();
        if (older != nullptr) {
            _move_back(*older);
        }
        throw;
    }
    Tam_status* last = this;
    while (last->m_child != nullptr) {
        last = last->m_child;
    }
    last->m_child = older.release();
}

// Takes arguments and chain from older in the place of its own; the code stays.
void Tam_status::_move_back(Tam_status& older) noexcept
{
    _remove_args();
    older._move_args(*this);
    m_child = std::exchange(older.m_child, nullptr);
}

void Tam_status::_release() noexcept
{
    _remove_args();
    _delete_child();
}

} // namespace tam
