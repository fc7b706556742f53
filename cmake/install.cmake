# Headers, import library, DLLs, message module, run-time DLLs and the package files that find_package and pkg-config
# read.
include(CMakePackageConfigHelpers)

if(NOT TAM_STATIC)
    install(TARGETS tam EXPORT tam_targets FILE_SET HEADERS FILE_SET generated)
    install(TARGETS tam_messages LIBRARY DESTINATION ${CMAKE_INSTALL_BINDIR})
    install(FILES ${TAM_RUNTIME_DLLS} DESTINATION ${CMAKE_INSTALL_BINDIR})
    install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})

    install(EXPORT tam_targets NAMESPACE tam:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/tam)
    configure_package_config_file(cmake/tam-config.cmake.in ${PROJECT_BINARY_DIR}/tam-config.cmake
                                  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/tam
                                  PATH_VARS CMAKE_INSTALL_BINDIR)
    write_basic_package_version_file(${PROJECT_BINARY_DIR}/tam-config-version.cmake COMPATIBILITY SameMinorVersion)
    install(FILES ${PROJECT_BINARY_DIR}/tam-config.cmake ${PROJECT_BINARY_DIR}/tam-config-version.cmake
            DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/tam)
    configure_file(cmake/tam.pc.in ${PROJECT_BINARY_DIR}/tam.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/tam.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

    set(CPACK_GENERATOR ZIP)
    set(CPACK_PACKAGE_FILE_NAME tam-${PROJECT_VERSION}-windows-x86_64)
    set(CPACK_VERBATIM_VARIABLES ON)
    include(CPack)
endif()
