# SPDX-License-Identifier: Apache-2.0
include_guard()

# Installed programs find the library, and pkg-config what it describes, from where they lie themselves: what is
# installed may be moved as a whole, and `cmake --install --prefix` may name another place than the configured one.
foreach(folder CMAKE_INSTALL_BINDIR CMAKE_INSTALL_LIBDIR CMAKE_INSTALL_INCLUDEDIR)
    cmake_path(NORMAL_PATH ${folder})
    if(IS_ABSOLUTE "${${folder}}" OR "${${folder}}" MATCHES "^\\.\\./")
        message(FATAL_ERROR "${folder}: '${${folder}}' must lie inside the prefix, such as lib")
    endif()
endforeach()
if(CMAKE_INSTALL_BINDIR MATCHES "/")
    message(FATAL_ERROR "CMAKE_INSTALL_BINDIR: '${CMAKE_INSTALL_BINDIR}' must be a folder right inside the prefix")
endif()

# A program that uses the library is built for its place in an installation. The build folder looks alike: programs in
# folders of their own beside the library's. So nothing is rewritten while installing, for which CMake would leave an
# empty entry in the run path, and that would be the current folder.
function(velno_finds_library target)
    set_target_properties(${target} PROPERTIES
        INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}"
        BUILD_WITH_INSTALL_RPATH ON)
endfunction()
