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
    if(VELNO_TRUST_ANCHORS AND velno_openssl_output MATCHES "Velno Development")
        message(FATAL_ERROR "${setting}: ${file}: certificate ${number} is a development authority's, whose keys "
                            "are no secret; VELNO_DEVELOPMENT_AUTHORITY takes the folder it lies in")
    endif()
    string(REPLACE "\n" ", " text "${velno_openssl_output}")
    message(STATUS "Trust anchor ${number}: ${text}")
endfunction()

# What trusts a development authority is installed in one place alone: a folder of its own by the name of
# velno-simulator, where no loader looks for libraries. Tests may stage it inside the build folder.
function(_velno_guard_development_install)
    install(CODE "set(build \"${PROJECT_BINARY_DIR}\")" ALL_COMPONENTS)
    install(CODE [=[
cmake_path(SET destination NORMALIZE "$ENV{DESTDIR}${CMAKE_INSTALL_PREFIX}/.")
cmake_path(IS_PREFIX build "${destination}" NORMALIZE inside)
if(NOT destination MATCHES "/velno-simulator/$" AND NOT (VELNO_STAGE_FOR_TESTS AND inside))
    message(FATAL_ERROR "This build trusts a development authority. \
Configure it with -DVELNO_TRUST_ANCHORS=<chain.pem> before installing, \
or install it as a simulator, in a folder named velno-simulator.")
endif()]=] ALL_COMPONENTS)
    install(DIRECTORY ${PROJECT_BINARY_DIR}/development-authority/ DESTINATION development-authority
        FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ) # whoever has the programs has its keys
endfunction()

# Makes trust_anchors_data.h, with the chain of VELNO_TRUST_ANCHORS or of a development authority: the one in the
# folder VELNO_DEVELOPMENT_AUTHORITY, or one made here.
function(velno_trust_anchors)
    if(VELNO_TRUST_ANCHORS AND VELNO_DEVELOPMENT_AUTHORITY)
        message(FATAL_ERROR "VELNO_TRUST_ANCHORS and VELNO_DEVELOPMENT_AUTHORITY: a build trusts one of both")
    elseif(VELNO_TRUST_ANCHORS)
        get_filename_component(file "${VELNO_TRUST_ANCHORS}" ABSOLUTE BASE_DIR "${CMAKE_SOURCE_DIR}")
        set(velno_trusts_development false)
    else()
        include(${_velno_trust_anchors_dir}/DevelopmentAuthority.cmake)
        velno_development_authority("${VELNO_DEVELOPMENT_AUTHORITY}" ${PROJECT_BINARY_DIR}/development-authority)
        set(file ${PROJECT_BINARY_DIR}/development-authority/trust-anchors.pem)
        set(velno_trusts_development true)
        message(STATUS "VELNO_TRUST_ANCHORS is empty: the programs trust the development authority in "
                       "${PROJECT_BINARY_DIR}/development-authority and are installed as a simulator only")
        _velno_guard_development_install()
    endif()
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${file}")
    # One line feed behind every end marker: that is where the chain is cut into certificates.
    velno_read_pem(VELNO_TRUST_ANCHORS "${file}" CERTIFICATE certificate _velno_check_certificate VELNO_ANCHORS_PEM)
    configure_file(${_velno_trust_anchors_dir}/trust_anchors_data.h.in
                   ${PROJECT_BINARY_DIR}/generated/trust_anchors_data.h @ONLY)
endfunction()
