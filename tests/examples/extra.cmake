# The service and its client are driven as programs.
target_link_libraries(examples_test PRIVATE ntdll)
add_dependencies(examples_test spooler spooler_client spooler_messages tam_messages)
# Under Wine it takes milliseconds to make and to delete a file, and one of the tests does it 5000 times.
set_tests_properties(examples_test PROPERTIES TIMEOUT 300)
