# zet_library(NAME
#     SOVERSION number            raised when a program that is linked to the library would no longer run with it
#     DESCRIPTION text            for NAME.pc
#     [REQUIRES library...]       libraries made by this function that it or its headers use
#     SOURCES file...)
#
# Makes a shared library for other programs, libNAME.so.SOVERSION. It exports only what "exports.map" beside its CMakeLists.txt lists
# and the public headers declare with ZET_API. It is installed with NAME.pc, and as zet::NAME in the CMake package "zet". Its other
# dependencies are given with target_link_libraries(NAME PRIVATE ...). tests/package lists the exported names and types (script/abi).
#
# With ZET_BUILT_IN_MODULE, it makes only the objects, which become a part of the program.
function(zet_library name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "SOVERSION;DESCRIPTION" "REQUIRES;SOURCES")
    set(exports ${CMAKE_CURRENT_SOURCE_DIR}/exports.map)

    set(kind SHARED)
    if(ZET_BUILT_IN_MODULE)
        set(kind OBJECT)
    endif()
    add_library(${name} ${kind} ${arg_SOURCES})
    target_link_libraries(${name} PUBLIC zet-include ${arg_REQUIRES})
    set_target_properties(${name} PROPERTIES CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
    if(ZET_BUILT_IN_MODULE)
        return()
    endif()
    set_target_properties(${name} PROPERTIES
        VERSION ${PROJECT_VERSION}
        SOVERSION ${arg_SOVERSION}
        LINK_DEPENDS ${exports})
    target_link_options(${name} PRIVATE -Wl,--version-script=${exports} -Wl,-O1 -Wl,--as-needed)
    if(NOT ZET_SANITIZE)
        # With sanitizers, their functions are undefined in a library: the program has them.
        target_link_options(${name} PRIVATE -Wl,-z,defs)
    endif()
    # The library looks beside itself for our other libraries, and nowhere for anything else.
    if(arg_REQUIRES)
        set_target_properties(${name} PROPERTIES INSTALL_RPATH "$ORIGIN")
    else()
        set_target_properties(${name} PROPERTIES INSTALL_RPATH "")
    endif()

    install(TARGETS ${name} EXPORT zet LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
    zet_pkg_config(${name} "${arg_DESCRIPTION}" "${arg_REQUIRES}")
endfunction()

# Installs NAME.pc, in which all paths are relative to its own.
function(zet_pkg_config name description requires)
    list(JOIN requires " " requires)
    set(made ${CMAKE_CURRENT_BINARY_DIR}/${name}.pc)
    configure_file(${PROJECT_SOURCE_DIR}/cmake/library.pc.in ${made} @ONLY)
    install(FILES ${made} DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endfunction()
