# SPDX-License-Identifier: Apache-2.0
include_guard()
include(${CMAKE_CURRENT_LIST_DIR}/PemFile.cmake)

set(_velno_known_groups_dir ${CMAKE_CURRENT_LIST_DIR})

set(_velno_least_group_bits 2048)
set(_velno_most_group_bits 8192)

# Ends the configure step unless `block` holds a group that is fit to agree on keys in; prints it.
function(_velno_check_group setting file number block)
    set(where "${setting}: ${file}: Diffie-Hellman group ${number}")
    velno_openssl_on_block("${block}" dhparam -noout -text)
    if(NOT velno_openssl_result EQUAL 0 OR NOT velno_openssl_output MATCHES "DH Parameters: \\(([0-9]+) bit\\)")
        message(FATAL_ERROR "${where} does not parse: ${velno_openssl_reason}")
    endif()
    set(bits ${CMAKE_MATCH_1})
    if(bits LESS _velno_least_group_bits OR bits GREATER _velno_most_group_bits)
        message(FATAL_ERROR "${where} has ${bits} bits; it must have ${_velno_least_group_bits} to "
                            "${_velno_most_group_bits}")
    endif()
    # OpenSSL passes groups that it knows, also those whose prime is not a safe one.
    if(velno_openssl_output MATCHES "GROUP: (dh_[0-9_]+)")
        message(FATAL_ERROR "${where} is not safe: the prime of ${CMAKE_MATCH_1} is not a safe prime")
    endif()
    velno_openssl_on_block("${block}" dhparam -noout -check)
    if(NOT velno_openssl_result EQUAL 0)
        message(FATAL_ERROR "${where} is not safe: ${velno_openssl_reason}")
    endif()
    velno_openssl_on_block("${block}" asn1parse)
    string(REGEX MATCH "INTEGER +:([0-9A-F]+)\n[^\n]*INTEGER +:([0-9A-F]+)" numbers "${velno_openssl_output}")
    set(prime ${CMAKE_MATCH_1})
    set(generator ${CMAKE_MATCH_2})
    string(SHA256 fingerprint "${prime}")
    string(LENGTH "${generator}" digits)
    if(digits GREATER 16)
        set(generator "a long number")
    else()
        set(generator "0x${generator}")
    endif()
    message(STATUS "Diffie-Hellman group ${number}: ${bits} bits, generator ${generator}, "
                   "SHA-256 of the prime ${fingerprint}")
endfunction()

# Makes the header with the groups of a PEM file that registers may bring beside the named ones; none for "".
function(velno_known_groups file header)
    set(VELNO_DH_GROUPS_PEM "")
    if(file)
        get_filename_component(file "${file}" ABSOLUTE BASE_DIR "${CMAKE_SOURCE_DIR}")
        set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${file}")
        velno_read_pem(VELNO_DH_GROUPS "${file}" "DH PARAMETERS" "Diffie-Hellman group" _velno_check_group
                       VELNO_DH_GROUPS_PEM)
    endif()
    configure_file(${_velno_known_groups_dir}/known_groups_data.h.in ${header} @ONLY)
endfunction()
