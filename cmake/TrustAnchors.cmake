# SPDX-License-Identifier: Apache-2.0
include_guard()
include(${CMAKE_CURRENT_LIST_DIR}/PemFile.cmake)

set(_velno_trust_anchors_dir ${CMAKE_CURRENT_LIST_DIR})

# Ends the configure step unless `block` holds a certificate that OpenSSL can read; prints whose.
function(_velno_check_certificate setting file number block)
    velno_openssl_on_block("${block}" x509 -noout -subject -enddate)
    if(NOT velno_openssl_result EQUAL 0)
        message(FATAL_ERROR "${setting}: ${file}: certificate ${number} does not parse: ${velno_openssl_reason}")
    endif()
    string(REPLACE "\n" ", " text "${velno_openssl_output}")
    message(STATUS "Trust anchor ${number}: ${text}")
endfunction()

# Makes trust_anchors_data.h, with the chain of VELNO_TRUST_ANCHORS or of a development authority made here.
function(velno_trust_anchors)
    if(VELNO_TRUST_ANCHORS)
        get_filename_component(file "${VELNO_TRUST_ANCHORS}" ABSOLUTE BASE_DIR "${CMAKE_SOURCE_DIR}")
        set(VELNO_DEVELOPMENT_AUTHORITY false)
    else()
        include(${_velno_trust_anchors_dir}/DevelopmentAuthority.cmake)
        velno_development_authority(${PROJECT_BINARY_DIR}/development-authority)
        set(file ${PROJECT_BINARY_DIR}/development-authority/trust-anchors.pem)
        set(VELNO_DEVELOPMENT_AUTHORITY true)
        message(STATUS "VELNO_TRUST_ANCHORS is empty: the programs trust the development authority in "
                       "${PROJECT_BINARY_DIR}/development-authority and cannot be installed")
        # Tests may stage a copy, which then lies in the same build folder; nobody else gets one.
        install(CODE "set(stage_root \"${PROJECT_BINARY_DIR}\")
cmake_path(SET stage NORMALIZE \"\$ENV{DESTDIR}\")
cmake_path(IS_PREFIX stage_root \"\${stage}\" NORMALIZE inside)
if(NOT VELNO_STAGE_FOR_TESTS OR NOT inside)
    message(FATAL_ERROR \"This build trusts a development authority. \
Configure it with -DVELNO_TRUST_ANCHORS=<chain.pem> before installing.\")
endif()")
    endif()
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${file}")
    # One line feed behind every end marker: that is where the chain is cut into certificates.
    velno_read_pem(VELNO_TRUST_ANCHORS "${file}" CERTIFICATE certificate _velno_check_certificate VELNO_ANCHORS_PEM)
    configure_file(${_velno_trust_anchors_dir}/trust_anchors_data.h.in
                   ${PROJECT_BINARY_DIR}/generated/trust_anchors_data.h @ONLY)
endfunction()
