# zet_common_headers(TARGET...)
#
# Precompiles the headers that most sources include, once for all of these targets, but only in a build with tests. A release has no
# precompiled headers, and script/check turns them off, so that a source which lacks an include is found.
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
