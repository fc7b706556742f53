// Keeps objects in the vector that the library's operations return lists in.
//
// Prints:
//     alpha beta gamma
//     the second still lies where it lay
//     Tam_ptrvec_impl::_at - position out of range

#include <iostream>
#include <stdexcept>
#include <string>

#include <tam/container.h>

using namespace tam;

int main()
{
    Tam_object_vector<std::wstring> names;
    names.push_back(L"beta");
    names.push_back(L"gamma");

    // Objects lie on the heap: inserting and removing moves pointers, never the objects.
    const std::wstring& beta = names.front();
    names.insert(0, L"alpha");
    for (const std::wstring& name : names) {
        std::wcout << name << (&name == &names.back() ? L'\n' : L' ');
    }
    if (&beta == &names.at(1)) {
        std::wcout << L"the second still lies where it lay\n";
    }

    try {
        names.at(3);
    } catch (const std::out_of_range& mistake) {
        std::wcout << mistake.what() << L'\n';
    }
}
