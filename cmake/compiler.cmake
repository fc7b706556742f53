# What every target of the project is compiled with. Third-party code (GoogleTest) is added without the warnings.

option(TAM_SANITIZE "End the program on undefined behaviour" OFF)

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)

add_compile_definitions(UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN _WIN32_WINNT=0x0601 WINVER=0x0601)

# -fnon-call-exceptions: a translated fault unwinds through the frame that faulted.
# -gdwarf-4: the only debug format that Wine's debugger reads.
add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-fnon-call-exceptions> $<$<COMPILE_LANGUAGE:C,CXX>:-gdwarf-4>)
string(APPEND CMAKE_CXX_FLAGS_DEBUG " -D_GLIBCXX_ASSERTIONS")
if(TAM_SANITIZE)
    # No run-time library for the sanitizer exists on this target, so it traps.
    add_compile_options(-fsanitize=undefined -fsanitize-undefined-trap-on-error)
endif()
if(TAM_STATIC)
    add_link_options(-static)
endif()

# Warnings for our own targets: target_link_libraries(x PRIVATE tam_warnings).
add_library(tam_warnings INTERFACE)
target_compile_options(tam_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor -Wold-style-cast -Wimplicit-fallthrough
    -Werror)
