#include <tests/support/test.h>

#include <tam/detail/win32.h>

using namespace tam;

TEST(Exception_translator_failures, are_reported_and_install_nothing)
{
    tam_install_exception_translator();
    void* const library = tam_set_exception_translator(nullptr);
    std::thread([&] {
        {
            const auto guard = tam::test::failing<0>(detail::win32.fls_set_value);
            const unsigned int blocks = test::heap_blocks();
            for (int i = 0; i < 20; ++i) {
                try {
                    tam_install_exception_translator();
                    ADD_FAILURE();
                } catch (const Tam_sys_call_fail& failure) {
                    EXPECT_STREQ(failure.what(), "::FlsSetValue");
                }
            }
            EXPECT_LT(test::heap_blocks(), blocks + 10);
            EXPECT_EQ(tam_set_exception_translator(nullptr), nullptr);
        }
        EXPECT_EQ(tam_install_exception_translator(), nullptr);
        EXPECT_EQ(tam_set_exception_translator(nullptr), library);
    }).join();
}
