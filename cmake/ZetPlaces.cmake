# The relative paths between programs, libraries and the module. They are the same in the build tree and in every installation, so that
# a program finds its libraries and its module relative to itself, wherever it is.
#   ZET_LIBRARY_WAY  from the directory of the programs to that of the libraries
#   ZET_MODULE_WAY   from the directory of the libraries to that of the module
#   ZET_PREFIX_WAY   from the directory of the libraries to the prefix
#   ZET_LOCALE_WAY   from the directory of the programs to that of the translations

# zet_place(NAME): sets ZET_PLACE_NAME to the directory CMAKE_INSTALL_NAME relative to the prefix. A directory outside the prefix is an
# error: it would not move with the others when the product is installed, or unpacked, under another prefix.
function(zet_place name)
    set(place ${CMAKE_INSTALL_${name}})
    cmake_path(ABSOLUTE_PATH place BASE_DIRECTORY "${CMAKE_INSTALL_PREFIX}" NORMALIZE)
    cmake_path(RELATIVE_PATH place BASE_DIRECTORY "${CMAKE_INSTALL_PREFIX}")
    if(place MATCHES "^\\.\\.")
        message(FATAL_ERROR "CMAKE_INSTALL_${name} is \"${CMAKE_INSTALL_${name}}\", which is not below the prefix "
            "\"${CMAKE_INSTALL_PREFIX}\" (name a directory below it)")
    endif()
    set(ZET_PLACE_${name} ${place} PARENT_SCOPE)
endfunction()

zet_place(BINDIR)
zet_place(LIBDIR)
zet_place(INCLUDEDIR)
zet_place(LOCALEDIR)
file(RELATIVE_PATH ZET_LIBRARY_WAY /${ZET_PLACE_BINDIR} /${ZET_PLACE_LIBDIR})
string(REGEX REPLACE "[^/]+" ".." ZET_PREFIX_WAY ${ZET_PLACE_LIBDIR})
set(ZET_MODULE_WAY zet)
file(RELATIVE_PATH ZET_LOCALE_WAY /${ZET_PLACE_BINDIR} /${ZET_PLACE_LOCALEDIR})

set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/${ZET_PLACE_BINDIR})
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/${ZET_PLACE_LIBDIR})
# Libraries are searched for only beside the program and in the system's directories.
set(CMAKE_BUILD_WITH_INSTALL_RPATH ON)
set(CMAKE_INSTALL_RPATH "$ORIGIN/${ZET_LIBRARY_WAY}")
