# zet_tests(TARGET
#     LABEL room
#     TIMEOUT seconds             of a suite
#     [ENVIRONMENT name=value...])
#
# Makes each suite of a GoogleTest program a test of ctest, named ROOM.SUITE, which is one process. ctest asks the program for its suites
# when it starts. The target zet-unit-programs builds all such programs.
set(ZET_TESTS_DIR ${CMAKE_CURRENT_LIST_DIR})
add_custom_target(zet-unit-programs)

function(zet_tests target)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "LABEL;TIMEOUT" "ENVIRONMENT")
    add_dependencies(zet-unit-programs ${target})
    set(file ${CMAKE_CURRENT_BINARY_DIR}/${target}-suites.cmake)
    file(GENERATE OUTPUT ${file} CONTENT
"set(program [==[$<TARGET_FILE:${target}>]==])
set(label [==[${arg_LABEL}]==])
set(timeout ${arg_TIMEOUT})
set(environment [==[${arg_ENVIRONMENT}]==])
include([==[${ZET_TESTS_DIR}/ZetSuites.cmake]==])
")
    set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES ${file})
endfunction()
