# SPDX-License-Identifier: Apache-2.0
# Takes away every file of MANIFEST, the list that `cmake --install` writes, below DESTDIR as it was put there; then the
# folders of our own that are empty. Folders that others use too, such as bin, stay.
cmake_minimum_required(VERSION 3.25)

if(NOT EXISTS ${MANIFEST})
    message(FATAL_ERROR "Nothing was installed from this build folder: there is no ${MANIFEST}")
endif()
file(STRINGS ${MANIFEST} files)
set(folders)
foreach(file ${files})
    cmake_path(SET path "$ENV{DESTDIR}${file}")
    if(EXISTS "${path}" OR IS_SYMLINK "${path}")
        message(STATUS "Removing ${path}")
        file(REMOVE "${path}")
    else()
        message(STATUS "No longer there: ${path}")
    endif()
    cmake_path(GET path PARENT_PATH folder)
    while(folder MATCHES "/(velno-simulator|development-authority|share/velno|doc/velno|cmake/Velno|lib[^/]*(/[^/]+)?/velno)(/|$)")
        list(APPEND folders "${folder}")
        cmake_path(GET folder PARENT_PATH folder)
    endwhile()
endforeach()

# The deeper ones first; rmdir takes none that something lies in.
list(REMOVE_DUPLICATES folders)
list(SORT folders ORDER DESCENDING)
foreach(folder ${folders})
    execute_process(COMMAND rmdir "${folder}" ERROR_QUIET)
endforeach()
