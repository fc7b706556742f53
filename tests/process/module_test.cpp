#include <tests/support/test.h>

using namespace tam;
using test::chain;

TEST(Module, loads_looks_up_and_unloads)
{
    Tam_status status(5);
    void* const module = tam_load_library(L"kernel32.dll", status);
    ASSERT_NE(module, nullptr);
    EXPECT_EQ(chain(status), L"");

    status = 5;
    void* const function = tam_lookup_function(module, "GetCurrentProcessId", status);
    ASSERT_NE(function, nullptr);
    EXPECT_EQ(chain(status), L"");
    EXPECT_EQ(reinterpret_cast<decltype(&::GetCurrentProcessId)>(function)(), ::GetCurrentProcessId());

    EXPECT_EQ(tam_lookup_function(module, "getcurrentprocessid", status), nullptr);
    EXPECT_EQ(chain(status), L"C2000006(getcurrentprocessid) 127");

    tam_unload_library(module, status);
    EXPECT_EQ(chain(status), L"");
}

TEST(Module, each_load_needs_its_unload)
{
    Tam_status status;
    ASSERT_EQ(::GetModuleHandleW(L"cabinet.dll"), nullptr);
    void* const module = tam_load_library(L"cabinet.dll", status);
    EXPECT_EQ(tam_load_library(L"cabinet.dll", status), module);
    tam_unload_library(module, status);
    EXPECT_EQ(::GetModuleHandleW(L"cabinet.dll"), module);
    tam_unload_library(module, status);
    EXPECT_EQ(::GetModuleHandleW(L"cabinet.dll"), nullptr);
}

TEST(Module, one_that_is_missing_is_named)
{
    Tam_status status;
    EXPECT_EQ(tam_load_library(L"no such module.dll", status), nullptr);
    EXPECT_EQ(chain(status), L"C2000004(no such module.dll) 126");
}

TEST(Module, unloading_null_clears_the_status)
{
    Tam_status status(5);
    tam_unload_library(nullptr, status);
    EXPECT_TRUE(status.is_clear());
}
