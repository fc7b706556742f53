# tam_add_message_module(target source.mc): a DLL with nothing but a message table; no code, no run-time library, no
# entry point. The .mc names its language English=0x409:MSG00409. The project needs the languages CXX and RC.
function(tam_add_message_module target mc)
    find_program(TAM_MESSAGE_COMPILER NAMES x86_64-w64-mingw32-windmc windmc REQUIRED)
    get_filename_component(mc ${mc} ABSOLUTE)
    get_filename_component(name ${mc} NAME_WE)
    set(out ${CMAKE_CURRENT_BINARY_DIR}/${target}.dir)
    file(MAKE_DIRECTORY ${out})
    add_custom_command(
        OUTPUT ${out}/${name}.rc ${out}/MSG00409.bin
        COMMAND ${TAM_MESSAGE_COMPILER} -r ${out} -h ${out} ${mc}
        DEPENDS ${mc}
        COMMENT "Building the message table of ${target}"
        VERBATIM)
    # The resource compiler does not see that the .rc includes the table.
    set_source_files_properties(${out}/${name}.rc PROPERTIES OBJECT_DEPENDS ${out}/MSG00409.bin)
    add_library(${target} MODULE ${out}/${name}.rc)
    set_target_properties(${target} PROPERTIES PREFIX "" LINKER_LANGUAGE CXX)
    target_link_options(${target} PRIVATE -nostdlib -Wl,--entry,0)
endfunction()
