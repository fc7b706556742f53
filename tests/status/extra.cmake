# A fault in inner_fault.dll, called by outer_fault.dll, reaches the test program through both.
add_library(inner_fault SHARED status/inner_fault.cpp)
add_library(outer_fault SHARED status/outer_fault.cpp)
set_target_properties(inner_fault outer_fault PROPERTIES PREFIX "")
target_link_libraries(inner_fault PRIVATE tam_warnings)
target_link_libraries(outer_fault PRIVATE inner_fault tam_warnings)
target_link_libraries(status_test PRIVATE outer_fault)

# What ends a process is tried in a child.
add_executable(status_fault_child status/fault_child.cpp)
target_link_libraries(status_fault_child PRIVATE tam tam_warnings)
target_include_directories(status_fault_child PRIVATE ${PROJECT_SOURCE_DIR})
add_dependencies(status_test status_fault_child)

# Loads and unloads tam.dll by hand.
if(NOT TAM_STATIC)
    add_executable(status_unload_child status/unload_child.cpp)
    target_link_libraries(status_unload_child PRIVATE tam_warnings)
    add_dependencies(status_test status_unload_child tam)
endif()

# A second message module. It has a text of its own for one of the library's codes, and texts that refer to inserts in
# every way.
tam_add_message_module(status_test_messages ${CMAKE_CURRENT_SOURCE_DIR}/status/status_test_messages.mc)
add_dependencies(status_test tam_messages status_test_messages)

# Wine only traces what is written to the event log, so its traces are what is looked at: a record's type, category,
# identifier and number of strings, and the strings.
add_executable(status_event_log_child status/event_log_child.cpp)
target_link_libraries(status_event_log_child PRIVATE tam tam_warnings)
tam_add_test(NAME status_event_log_child
             ENVIRONMENT WINEDEBUG=-all,fixme+advapi,err+eventlog,warn+eventlog,trace+eventlog)
string(CONCAT event_log_traces
    "RegisterEventSourceW [(][(]null[)],L.tam test source.[)].*"
    "ReportEventW [(]0*CAFE4242,0x0001,0x2345,0x00000002,0+,0x0000,0x00000000,.*"
    "ReportEventW [(]0*CAFE4242,0x0002,0x2345,0x8200aaaa,0+,0x0001,0x00000000,.*"
    "warn:eventlog:ReportEventW L.middle.*"
    "ReportEventW [(]0*CAFE4242,0x0001,0x2345,0xc2000026,0+,0x0002,0x00000000,.*"
    "err:eventlog:ReportEventW L.C:..newest.*"
    "err:eventlog:ReportEventW L.-7.*"
    "DeregisterEventSource [(]0*CAFE4242[)].*"
    "all written")
set_tests_properties(status_event_log_child PROPERTIES PASS_REGULAR_EXPRESSION "${event_log_traces}")
