if(NOT TARGET spooler)
    set_target_properties(examples_test PROPERTIES EXCLUDE_FROM_ALL ON)
    set_tests_properties(examples_test PROPERTIES DISABLED ON)
    return()
endif()

# The service and its client are driven as programs.
target_link_libraries(examples_test PRIVATE ntdll)
add_dependencies(examples_test spooler spooler_client spooler_messages tam_messages)
# Under Wine it takes milliseconds to make and to delete a file, and one of the tests does it 5000 times.
set_tests_properties(examples_test PROPERTIES TIMEOUT 300)

# Wine only traces what is written to the event log: here the whole chain of a start without settings, oldest first.
add_test(NAME spooler_event_log COMMAND spooler console tam_test_spooler missing.ini)
string(CONCAT event_log_traces
    "RegisterEventSourceW [(][(]null[)],L.tam_test_spooler.[)].*"
    "ReportEventW [(]0*CAFE4242,0x0001,0x0000,0xc200001e,0+,0x0001,0x00000000,.*"
    "ReportEventW [(]0*CAFE4242,0x0001,0x0000,0xc2000026,0+,0x0001,0x00000000,.*"
    "ReportEventW [(]0*CAFE4242,0x0001,0x0000,0xc2000059,0+,0x0001,0x00000000,.*"
    "ReportEventW [(]0*CAFE4242,0x0001,0x0000,0xc3010040,0+,0x0001,0x00000000,.*"
    "ReportEventW [(]0*CAFE4242,0x0001,0x0000,0xc3010048,0+,0x0001,0x00000000,.*"
    "err:eventlog:ReportEventW L.tam_test_spooler.*"
    "DeregisterEventSource [(]0*CAFE4242[)]")
set_tests_properties(spooler_event_log PROPERTIES FIXTURES_REQUIRED wine TIMEOUT 60
                     PASS_REGULAR_EXPRESSION "${event_log_traces}"
                     ENVIRONMENT WINEDEBUG=-all,fixme+advapi,err+eventlog,warn+eventlog,trace+eventlog)
