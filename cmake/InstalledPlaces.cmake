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

# For a room that ships: what it names in its assertions are files of the project, not folders of whoever built it.
# Optimised builds have no assertions.
macro(velno_names_no_build_folder)
    add_compile_options("$<$<CONFIG:Debug>:-fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=>")
endmacro()

# A program that uses the library is built for its place in an installation. The build folder looks alike: programs in
# folders of their own beside the library's. So nothing is rewritten while installing, for which CMake would leave an
# empty entry in the run path, and that would be the current folder.
function(velno_finds_library target)
    set_target_properties(${target} PROPERTIES
        INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}"
        BUILD_WITH_INSTALL_RPATH ON)
endfunction()

# What a person reads: the pages with their pictures, the examples, the licences.
function(velno_install_documents)
    set(place ${CMAKE_INSTALL_DATAROOTDIR}/doc/velno)
    install(FILES CHANGELOG.md LICENSE NOTICE README.md DESTINATION ${place})
    install(DIRECTORY docs examples DESTINATION ${place} PATTERN docs/site EXCLUDE)
endfunction()

# Takes away what was installed last.
function(velno_uninstall_target)
    if(PROJECT_IS_TOP_LEVEL)
        add_custom_target(uninstall VERBATIM COMMAND ${CMAKE_COMMAND} -DMANIFEST=${PROJECT_BINARY_DIR}/install_manifest.txt
            -P ${PROJECT_SOURCE_DIR}/cmake/uninstall.cmake)
    endif()
endfunction()
