#The service and its client are driven as programs.One of the tests installs a service, which all of Wine shares.
target_link_libraries(examples_test PRIVATE ntdll)
    add_dependencies(examples_test spooler spooler_client spooler_messages tam_messages)
        set_tests_properties(examples_test PROPERTIES RUN_SERIAL ON)
