# What users get: headers, import library, DLLs, message module, run-time DLLs, the sources of the examples, debugger
# views, documents, and the package files that find_package and pkg-config read. The debug symbols are a component of
# their own. cpack packs both as ZIPs; unpacked over each other they are the tree that cmake --install makes.
include(CMakePackageConfigHelpers)

if(TAM_STATIC)
    return()
endif()

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/tam)
set(data_dir ${CMAKE_INSTALL_DATADIR}/tam)

install(TARGETS tam EXPORT tam_targets FILE_SET HEADERS FILE_SET generated)
install(TARGETS tam_messages LIBRARY DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES ${TAM_RUNTIME_DLLS} DESTINATION ${CMAKE_INSTALL_BINDIR})
get_target_property(debug_symbols tam TAM_DEBUG_SYMBOLS)
if(debug_symbols)
    install(FILES ${debug_symbols} DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT debug)
endif()
install(FILES LICENSE README.md CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(FILES tam/tam.natvis DESTINATION ${data_dir})
install(DIRECTORY examples DESTINATION ${data_dir})

install(EXPORT tam_targets NAMESPACE tam:: DESTINATION ${package_dir})
configure_package_config_file(cmake/tam-config.cmake.in ${PROJECT_BINARY_DIR}/tam-config.cmake
                              INSTALL_DESTINATION ${package_dir} PATH_VARS CMAKE_INSTALL_BINDIR)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/tam-config-version.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/tam-config.cmake ${PROJECT_BINARY_DIR}/tam-config-version.cmake
              cmake/message_module.cmake
        DESTINATION ${package_dir})
configure_file(cmake/tam.pc.in ${PROJECT_BINARY_DIR}/tam.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/tam.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_FILE_NAME tam-${PROJECT_VERSION}-windows-x86_64)
set(CPACK_COMPONENTS_ALL Unspecified)
if(debug_symbols)
    list(APPEND CPACK_COMPONENTS_ALL debug)
endif()
set(CPACK_ARCHIVE_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_COMPONENT_INCLUDE_TOPLEVEL_DIRECTORY ON)
set(CPACK_ARCHIVE_UNSPECIFIED_FILE_NAME ${CPACK_PACKAGE_FILE_NAME})
set(CPACK_ARCHIVE_DEBUG_FILE_NAME ${CPACK_PACKAGE_FILE_NAME}-debug)
set(CPACK_VERBATIM_VARIABLES ON)
include(CPack)
