# A commit or a rollback that ends with the process.
if(TAM_STATIC)
    add_executable(config_crash_child config/crash_child.cpp)
    target_link_options(config_crash_child PRIVATE -municode)
    target_link_libraries(config_crash_child PRIVATE tam tam_warnings)
    target_include_directories(config_crash_child PRIVATE ${PROJECT_SOURCE_DIR})
    add_dependencies(config_test config_crash_child)
endif()

# Wine 8's server has crashed, rarely, while other processes came and went beside the large registry trees of these tests.
set_tests_properties(config_test PROPERTIES RUN_SERIAL ON)
