# SPDX-License-Identifier: Apache-2.0
# For tests that are scripts: checks that are counted. A function that checks sets `failures` and `checks` in its
# caller's scope.
set(failures 0)
set(checks 0)

# expect(WHAT CONDITION...), the condition as if() takes it.
macro(expect what)
    math(EXPR checks "${checks} + 1")
    if(NOT (${ARGN}))
        math(EXPR failures "${failures} + 1")
        message("FAIL: ${what}\n${output}")
    endif()
endmacro()

# Configures ${WORK}/project in ${WORK}/FOLDER. Sets `result` and `output`, the latter with every run of white space as
# one space: CMake wraps its messages.
macro(configure folder)
    execute_process(COMMAND ${CMAKE_COMMAND} -G "${GENERATOR}" -S ${WORK}/project -B ${WORK}/${folder} ${ARGN}
                    RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
    string(REGEX REPLACE "[ \n]+" " " output "${output}")
endmacro()

# ${SETTING} names a file ${WORK}/NAME: the configure step stops, and its message names the file and the reason.
function(refuses name reason)
    configure(refused "-D${SETTING}=${WORK}/${name}")
    string(FIND "${output}" "${SETTING}: ${WORK}/${name}: ${reason}" found)
    expect("${name} stops the configure step" NOT result EQUAL 0)
    expect("${name}: the message names the file and says \"${reason}\"" found GREATER_EQUAL 0)
    set(failures ${failures} PARENT_SCOPE)
    set(checks ${checks} PARENT_SCOPE)
endfunction()

# The end of the test.
function(report_checks)
    if(failures GREATER 0)
        message(FATAL_ERROR "${failures} of ${checks} checks failed")
    endif()
    message(STATUS "${checks} checks passed")
endfunction()
