# tam_split_debug_symbols(target): moves the symbols of a Release DLL into a file of its own, <dll>.debug, beside it. The
# DLL names that file and its checksum, so debuggers find it; with the build id, a crash dump can be told to belong to it.
# Other configurations keep their symbols inside: they are for debugging only.
function(tam_split_debug_symbols target)
    if(NOT CMAKE_BUILD_TYPE STREQUAL "Release")
        return()
    endif()
    # Names of sources as they are below the project, whoever built it. The last map that fits counts.
    target_compile_options(${target} PRIVATE "$<$<COMPILE_LANGUAGE:C,CXX>:-g;\
-ffile-prefix-map=${PROJECT_SOURCE_DIR}/=;-ffile-prefix-map=${PROJECT_BINARY_DIR}=.>")
    target_link_options(${target} PRIVATE -Wl,--build-id)
    set(symbols $<TARGET_FILE_NAME:${target}>.debug)
    add_custom_command(TARGET ${target} POST_BUILD
        COMMAND ${CMAKE_OBJCOPY} --only-keep-debug $<TARGET_FILE_NAME:${target}> ${symbols}
        COMMAND ${CMAKE_STRIP} $<TARGET_FILE_NAME:${target}>
        COMMAND ${CMAKE_OBJCOPY} --add-gnu-debuglink=${symbols} $<TARGET_FILE_NAME:${target}>
        WORKING_DIRECTORY $<TARGET_FILE_DIR:${target}>
        COMMENT "Splitting the debug symbols off ${target}"
        VERBATIM)
    set_target_properties(${target} PROPERTIES TAM_DEBUG_SYMBOLS $<TARGET_FILE:${target}>.debug)
endfunction()
