# ctest reads this once for each program of zet_tests. It adds the program's suites.
if(NOT EXISTS ${program})
    # To run other tests, this program need not be built. Its own test fails then.
    add_test(${label}.NotBuilt ${program})
    return()
endif()
execute_process(COMMAND ${program} --gtest_list_tests OUTPUT_VARIABLE list RESULT_VARIABLE result)
string(REGEX MATCHALL "\n[A-Za-z0-9_/]+\\.[^\n]*" headings "\n${list}")
if(NOT result EQUAL 0 OR headings STREQUAL "")
    message(FATAL_ERROR "${program} lists no tests (build it again)")
endif()
foreach(heading IN LISTS headings)
    string(REGEX REPLACE "^\n([^ ]*)\\..*" "\\1" suite ${heading})
    add_test(${label}.${suite} ${program} --gtest_brief=1 --gtest_filter=${suite}.*)
    set_tests_properties(${label}.${suite} PROPERTIES
        LABELS ${label} TIMEOUT ${timeout} ENVIRONMENT "${environment}")
endforeach()
