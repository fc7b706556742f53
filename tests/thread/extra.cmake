# The other process of the tests of named objects, and of what ends a process.
foreach(child IN ITEMS exclusive_lock_child thread_child)
    add_executable(${child} ${CMAKE_CURRENT_LIST_DIR}/${child}.cpp)
    target_link_libraries(${child} PRIVATE tam tam_warnings)
    target_link_options(${child} PRIVATE -municode)
    add_dependencies(thread_test ${child})
endforeach()
