# The DLLs of the compiler that tam.dll and every program beside it share. Exceptions and standard strings cross the
# border of tam.dll, so there must be one copy of each in a process. They come with their debug symbols inside, nine tenths
# of their size, which are left out.
set(TAM_RUNTIME_DLLS "")
foreach(name libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${name}
                    OUTPUT_VARIABLE path OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    if(NOT EXISTS "${path}")
        message(FATAL_ERROR "The compiler's run-time library ${name} was not found.")
    endif()
    set(stripped "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${name}")
    if("${path}" IS_NEWER_THAN "${stripped}")
        file(MAKE_DIRECTORY "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}")
        execute_process(COMMAND ${CMAKE_STRIP} -o "${stripped}" "${path}" COMMAND_ERROR_IS_FATAL ANY)
    endif()
    list(APPEND TAM_RUNTIME_DLLS "${stripped}")
endforeach()
