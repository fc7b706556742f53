# What the tests start and talk to. It stands alone, so that a copy of it runs in any folder.
add_executable(process_child process/child.cpp)
target_link_options(process_child PRIVATE -municode -static)
target_link_libraries(process_child PRIVATE tam_warnings)
target_include_directories(process_child PRIVATE ${PROJECT_SOURCE_DIR})
add_dependencies(process_test process_child)
