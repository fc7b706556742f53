# Runs PROGRAM and compares its output with the indented lines below "// Prints:" in the first comment of SOURCE.
file(READ ${SOURCE} text)
string(REGEX MATCH "// Prints:\n(//     [^\n]*\n)+" comment "${text}")
if(NOT comment)
    message(FATAL_ERROR "${SOURCE} does not say what it prints")
endif()
string(REGEX REPLACE "^// Prints:\n" "" expected "${comment}")
string(REGEX REPLACE "(^|\n)//     " "\\1" expected "${expected}")

execute_process(COMMAND ${PROGRAM} OUTPUT_VARIABLE printed RESULT_VARIABLE result TIMEOUT 50)
string(REPLACE "\r" "" printed "${printed}")
if(NOT result EQUAL 0 OR NOT printed STREQUAL expected)
    message(FATAL_ERROR "exit code ${result}\n--- expected\n${expected}--- printed\n${printed}")
endif()
