# zet_common_headers(TARGET...)
#
# The headers that most sources include are compiled once, for all of these targets. Only so with the tests: in a release each
# source has to do with what it includes itself, and for script/check, too.
function(zet_common_headers first)
    if(NOT ZET_BUILD_TESTS OR ZET_BUILT_IN_MODULE)
        return()
    endif()
    target_precompile_headers(${first} PRIVATE
        <fcntl.h> <sys/stat.h> <unistd.h>
        <algorithm> <charconv> <cstring> <functional> <map> <memory> <optional> <set> <string> <string_view> <utility> <vector>)
    foreach(target IN LISTS ARGN)
        target_precompile_headers(${target} REUSE_FROM ${first})
    endforeach()
endfunction()
