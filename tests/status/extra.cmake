# A second message module. It has a text of its own for one of the library's codes, and texts that refer to inserts in
# every way.
tam_add_message_module(status_test_messages ${CMAKE_CURRENT_SOURCE_DIR}/status/status_test_messages.mc)
add_dependencies(status_test tam_messages status_test_messages)
