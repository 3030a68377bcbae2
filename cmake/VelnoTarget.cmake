# SPDX-License-Identifier: Apache-2.0
include_guard()

include(${CMAKE_CURRENT_LIST_DIR}/Hardening.cmake)

# What every target of ours is compiled with: the language, the warnings, the hardening, and the repository root for
# includes.
function(velno_target target)
    target_compile_features(${target} PUBLIC cxx_std_20)
    set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF POSITION_INDEPENDENT_CODE ON)
    target_include_directories(${target} PUBLIC ${PROJECT_SOURCE_DIR})
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
    target_compile_definitions(${target} PRIVATE
        OPENSSL_NO_DEPRECATED OPENSSL_API_COMPAT=30000 QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII)
    target_link_libraries(${target} PRIVATE $<BUILD_INTERFACE:velno_hardening>)
endfunction()
