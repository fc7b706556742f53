# The machine's time zone is found once in a process, and Wine takes it from TZ when the process starts.
add_executable(local_zone_child ${CMAKE_CURRENT_LIST_DIR}/local_zone_child.cpp)
target_link_libraries(local_zone_child PRIVATE tam tam_warnings)

# tam_add_local_zone_test(name TZ standard daylight unknown): the numbers of the zone expected for what the system says.
function(tam_add_local_zone_test name zone)
    add_test(NAME local_zone_${name} COMMAND local_zone_child ${ARGN})
    set_tests_properties(local_zone_${name} PROPERTIES FIXTURES_REQUIRED wine TIMEOUT 60 ENVIRONMENT "TZ=${zone}")
endfunction()
tam_add_local_zone_test(eastern "EST5EDT" 6 56 6)
tam_add_local_zone_test(permanent_daylight "EST5EDT,0/0,J365/25" 6 56 6)
tam_add_local_zone_test(universal "UTC" 1 1 1)
tam_add_local_zone_test(japan "JST-9" 22 22 22)
tam_add_local_zone_test(half_hour "AAA-9:30BBB" 0 0 0)
