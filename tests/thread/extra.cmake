# The other process of the tests of named objects.
add_executable(exclusive_lock_child ${CMAKE_CURRENT_LIST_DIR}/exclusive_lock_child.cpp)
target_link_libraries(exclusive_lock_child PRIVATE tam tam_warnings)
target_link_options(exclusive_lock_child PRIVATE -municode)
add_dependencies(thread_test exclusive_lock_child)
