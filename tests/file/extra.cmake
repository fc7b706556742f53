# Tells its temporary directory, which a process determines once.
add_executable(temp_directory_child ${CMAKE_CURRENT_SOURCE_DIR}/file/temp_directory_child.cpp)
target_link_libraries(temp_directory_child PRIVATE tam tam_warnings)
target_link_options(temp_directory_child PRIVATE -municode)
add_dependencies(file_test temp_directory_child)
