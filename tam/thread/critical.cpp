#include <tam/thread/critical.h>

#include <new>

#include <windows.h>

namespace tam {

namespace {

CRITICAL_SECTION* section_in(unsigned char* storage)
{
    return std::launder(reinterpret_cast<CRITICAL_SECTION*>(storage));
}

} // namespace

Tam_critical::Tam_critical(bool entered)
{
    static_assert(sizeof(m_section) == sizeof(CRITICAL_SECTION) && alignof(void*) == alignof(CRITICAL_SECTION));
    ::InitializeCriticalSection(::new (static_cast<void*>(m_section)) CRITICAL_SECTION);
    if (entered) {
        enter();
    }
}

Tam_critical::~Tam_critical()
{
    ::DeleteCriticalSection(section_in(m_section));
}

void Tam_critical::enter()
{
    ::EnterCriticalSection(section_in(m_section));
}

void Tam_critical::leave()
{
    ::LeaveCriticalSection(section_in(m_section));
}

} // namespace tam
