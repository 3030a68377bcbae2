# SPDX-License-Identifier: Apache-2.0
# The library alone needs neither Widgets nor Concurrent, neither SQL nor libedit: configures it with all of them
# hidden, and sees that each product misses what it needs then. Run with -DSOURCE=<repository> -DWORK=<folder>
# -DGENERATOR=<name>.
cmake_minimum_required(VERSION 3.25)

set(products WINDOW SIMULATOR CTL TILL)
set(hidden Qt6Concurrent Qt6Sql Qt6Widgets)
list(TRANSFORM hidden REPLACE "(.+)" "-DCMAKE_DISABLE_FIND_PACKAGE_\\1=ON")
# A library that does not exist is an error of the configure step, not of the linker.
list(APPEND hidden -DCMAKE_LINK_LIBRARIES_ONLY_TARGETS=ON)

set(failures 0)

# expect(WHAT CONDITION...), the condition as if() takes it.
macro(expect what)
    if(NOT (${ARGN}))
        math(EXPR failures "${failures} + 1")
        message("FAIL: ${what}\n${output}")
    endif()
endmacro()

# Configures with these products; sets `result` and `output`, every run of white space as one space.
function(configure)
    set(choice)
    foreach(product ${products})
        set(chosen OFF)
        if("${product}" IN_LIST ARGN)
            set(chosen ON)
        endif()
        list(APPEND choice -DVELNO_BUILD_${product}=${chosen})
    endforeach()
    file(REMOVE_RECURSE ${WORK})
    execute_process(COMMAND ${CMAKE_COMMAND} -E env PKG_CONFIG_LIBDIR=${WORK} # where no libedit is
                    ${CMAKE_COMMAND} -G "${GENERATOR}" -S ${SOURCE} -B ${WORK} -DVELNO_BUILD_TESTS=OFF ${hidden}
                    ${choice}
                    RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
    string(REGEX REPLACE "[ \n]+" " " output "${output}")
    set(result "${result}" PARENT_SCOPE)
    set(output "${output}" PARENT_SCOPE)
endfunction()

set(missed_by_WINDOW "Failed to find required Qt component \"Concurrent\"")
set(missed_by_SIMULATOR "Failed to find required Qt component \"Sql\"")
set(missed_by_CTL "Package 'libedit'[^-]* not found")
set(missed_by_TILL "Failed to find required Qt component \"Sql\"")
foreach(product ${products})
    configure(${product})
    expect("${product} misses what is hidden" NOT result EQUAL 0 AND output MATCHES "${missed_by_${product}}")
endforeach()

configure()
expect("the library is configured alone" result EQUAL 0)
execute_process(COMMAND ${CMAKE_COMMAND} --build ${WORK} --target help OUTPUT_VARIABLE output)
expect("the library can be built" output MATCHES "velnoext")
expect("no product can be built" NOT output MATCHES "velnoctl:|velnotill:|velno-(pairing|register|relay):")
file(REMOVE_RECURSE ${WORK})
if(failures GREATER 0)
    message(FATAL_ERROR "${failures} checks failed")
endif()
