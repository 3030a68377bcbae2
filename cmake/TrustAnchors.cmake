include_guard()

set(_velno_trust_anchors_dir ${CMAKE_CURRENT_LIST_DIR})

# Ends the configure step unless the file holds certificates and nothing but whole ones.
function(_velno_check_anchors file)
    if(NOT EXISTS "${file}" OR IS_DIRECTORY "${file}")
        message(FATAL_ERROR "VELNO_TRUST_ANCHORS: ${file}: there is no such file; it must name a PEM file")
    endif()
    file(READ "${file}" pem)
    string(REPLACE "\r\n" "\n" pem "${pem}")
    string(REGEX MATCHALL "-----BEGIN CERTIFICATE-----" begins "${pem}")
    string(REGEX MATCHALL "-----BEGIN CERTIFICATE-----[^-]*-----END CERTIFICATE-----" blocks "${pem}")
    list(LENGTH begins announced)
    list(LENGTH blocks count)
    if(announced EQUAL 0)
        message(FATAL_ERROR "VELNO_TRUST_ANCHORS: ${file}: holds no PEM certificate")
    endif()
    if(NOT announced EQUAL count)
        message(FATAL_ERROR "VELNO_TRUST_ANCHORS: ${file}: a certificate is cut short")
    endif()

    find_program(VELNO_OPENSSL openssl REQUIRED)
    set(number 0)
    set(chain "")
    foreach(block IN LISTS blocks)
        math(EXPR number "${number} + 1")
        file(WRITE ${PROJECT_BINARY_DIR}/trust-anchor-check.pem "${block}\n")
        execute_process(COMMAND ${VELNO_OPENSSL} x509 -noout -subject -enddate
                                -in ${PROJECT_BINARY_DIR}/trust-anchor-check.pem
                        RESULT_VARIABLE result OUTPUT_VARIABLE text ERROR_VARIABLE reason
                        OUTPUT_STRIP_TRAILING_WHITESPACE)
        file(REMOVE ${PROJECT_BINARY_DIR}/trust-anchor-check.pem)
        if(NOT result EQUAL 0)
            message(FATAL_ERROR "VELNO_TRUST_ANCHORS: ${file}: certificate ${number} does not parse: ${reason}")
        endif()
        string(REPLACE "\n" ", " text "${text}")
        message(STATUS "Trust anchor ${number}: ${text}")
        string(APPEND chain "${block}\n")
    endforeach()
    # One line feed behind every end marker: that is where the chain is cut into certificates.
    set(velno_anchors_pem "${chain}" PARENT_SCOPE)
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
        install(CODE "message(FATAL_ERROR \"This build trusts a development authority. \
Configure it with -DVELNO_TRUST_ANCHORS=<chain.pem> before installing.\")")
    endif()
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${file}")
    _velno_check_anchors("${file}")
    set(VELNO_ANCHORS_PEM "${velno_anchors_pem}")
    configure_file(${_velno_trust_anchors_dir}/trust_anchors_data.h.in
                   ${PROJECT_BINARY_DIR}/generated/trust_anchors_data.h @ONLY)
endfunction()
