#pragma once

#include <clocale>
#include <string>

namespace tam::test {

// Makes a locale of the C run-time the current one for the length of a scope. Names are the platform's:
// "German_Germany.1252", "French_France", "Japanese_Japan.932".
class Locale {
public:
    explicit Locale(const char* name)
        : m_saved(std::setlocale(LC_ALL, nullptr)), m_is_set(std::setlocale(LC_ALL, name) != nullptr)
    {}
    ~Locale() { std::setlocale(LC_ALL, m_saved.c_str()); }
    Locale(const Locale&) = delete;
    Locale& operator=(const Locale&) = delete;

    explicit operator bool() const { return m_is_set; }

private:
    std::string m_saved;
    bool m_is_set;
};

} // namespace tam::test
