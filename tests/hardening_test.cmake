# SPDX-License-Identifier: Apache-2.0
# Reads from every program and library that ships whether it is hardened. Run with -DSOURCE=, -DWORK=, -DFILES=,
# -DGENERATOR=, -DCXX_COMPILER=, -DREADELF=, -DOBJDUMP=, -DCLASH= and -DFLOW= (whether the compiler has these),
# -DFORTIFY= (whether this build's type is optimised).
cmake_minimum_required(VERSION 3.25)

set(measures pie relro now stack protector runpath)
if(CLASH)
    list(APPEND measures clash)
endif()
if(FLOW)
    list(APPEND measures flow)
endif()

# Sets `output` to the lines of the first command's output that match.
macro(lines_of pattern)
    execute_process(COMMAND ${ARGN} COMMAND grep -E -- "${pattern}" OUTPUT_VARIABLE output
                    RESULTS_VARIABLE results ERROR_VARIABLE errors OUTPUT_STRIP_TRAILING_WHITESPACE)
    list(GET results 0 result)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "${ARGN}: ${result} ${errors}")
    endif()
endmacro()

# From here: has_MEASURE(FILE) sets `good`.

macro(judge)
    set(good OFF)
    if(${ARGN})
        set(good ON)
    endif()
endmacro()

macro(has_pie file)
    lines_of("Type: +DYN " ${READELF} -hW ${file})
    judge(output)
endmacro()

macro(has_relro file)
    lines_of("GNU_RELRO" ${READELF} -lW ${file})
    judge(output)
endmacro()

macro(has_now file)
    lines_of("FLAGS.*(BIND_NOW|NOW)" ${READELF} -dW ${file})
    judge(output)
endmacro()

macro(has_stack file)
    lines_of("GNU_STACK.* RW " ${READELF} -lW ${file})
    judge(output)
endmacro()

macro(has_protector file)
    lines_of("UND __stack_chk_fail" ${READELF} --dyn-syms -W ${file})
    judge(output)
endmacro()

macro(has_fortify file)
    lines_of("UND __[a-z]*[^k]_chk(@|$)" ${READELF} --dyn-syms -W ${file})
    judge(output)
endmacro()

# No run path, or one that begins where the file lies.
macro(has_runpath file)
    lines_of("R(UN)?PATH" ${READELF} -dW ${file})
    string(REGEX MATCH "[[][$]ORIGIN(/[^:]+)?[]]$" relative "${output}")
    judge(relative OR NOT output)
endmacro()

# The stack never grows by more than a page without a touch.
macro(has_clash file)
    lines_of("sub +[$]0x[0-9a-f]{4,7},%[er]sp" ${OBJDUMP} -d --no-show-raw-insn ${file})
    string(REGEX REPLACE "[^\n]*[$]0x1000,[^\n]*" "" output "${output}")
    string(STRIP "${output}" output)
    judge(NOT output)
endmacro()

# What is called from elsewhere begins with a landing pad: the functions of the interface, the entry of a module, main() of
# a program.
macro(has_flow file)
    execute_process(COMMAND ${OBJDUMP} -d --no-show-raw-insn ${file}
                    COMMAND grep -E -A1 -- "^[0-9a-f]+ <(main|velnoPictureModule|velno(ext|till)_[a-z_]+)>:$"
                    COMMAND grep -E -v -- "^--$" OUTPUT_VARIABLE output)
    string(REGEX MATCHALL ">:\n" functions "${output}")
    string(REGEX MATCHALL ">:\n[^\n]*endbr(32|64)" pads "${output}")
    list(LENGTH functions functions)
    list(LENGTH pads pads)
    judge(functions GREATER 0 AND pads EQUAL functions)
endmacro()

# What of these measures the file lacks.
function(read_lacking file)
    set(lacking)
    foreach(measure ${ARGN})
        cmake_language(CALL has_${measure} ${file})
        if(NOT good)
            list(APPEND lacking ${measure})
        endif()
    endforeach()
    set(lacking "${lacking}" PARENT_SCOPE)
endfunction()

# First the reading itself, and with it the types of build that are optimised.
foreach(type Release RelWithDebInfo)
    set(folder ${WORK}/${type})
    file(REMOVE_RECURSE ${folder})
    execute_process(COMMAND ${CMAKE_COMMAND} -G ${GENERATOR} -S ${SOURCE}/tests/hardened -B ${folder}
                            -DCMAKE_BUILD_TYPE=${type} -DCMAKE_CXX_COMPILER=${CXX_COMPILER} -DVELNO_SOURCE=${SOURCE}
                    OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
    execute_process(COMMAND ${CMAKE_COMMAND} --build ${folder} OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
    set(all ${measures} fortify)
    read_lacking(${folder}/hardened ${all})
    if(lacking)
        message(SEND_ERROR "${type}: a hardened program lacks ${lacking}")
    endif()
    foreach(measure ${all})
        read_lacking(${folder}/without_${measure} ${all})
        if(NOT lacking STREQUAL measure)
            message(SEND_ERROR "${type}: a program without ${measure} is said to lack '${lacking}'")
        endif()
    endforeach()
endforeach()

if(FORTIFY)
    list(APPEND measures fortify)
endif()
if(NOT FILES)
    message(SEND_ERROR "no file is named")
endif()
foreach(file ${FILES})
    read_lacking(${file} ${measures})
    if(lacking)
        message(SEND_ERROR "${file} lacks ${lacking}")
    else()
        message("${file}: ${measures}")
    endif()
endforeach()
