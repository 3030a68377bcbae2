# Configures a project of nothing but known groups, once for each kind of VELNO_DH_GROUPS file, and reads what the
# configure step says and writes. Run with -DSOURCE=<repository> -DWORK=<folder> -DGENERATOR=<name>.
cmake_minimum_required(VERSION 3.25)

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

# Sets `result` and `output`, the latter with every run of white space as one space: CMake wraps its messages.
macro(configure file)
    execute_process(COMMAND ${CMAKE_COMMAND} -G "${GENERATOR}" -S ${WORK}/project -B ${WORK}/build
                            "-DVELNO_DH_GROUPS=${file}"
                    RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
    string(REGEX REPLACE "[ \n]+" " " output "${output}")
endmacro()

# The configure step stops, and its message names the file and the reason.
function(refuses name reason)
    configure(${WORK}/${name})
    string(FIND "${output}" "VELNO_DH_GROUPS: ${WORK}/${name}: ${reason}" found)
    expect("${name} stops the configure step" NOT result EQUAL 0)
    expect("${name}: the message names the file and says \"${reason}\"" found GREATER_EQUAL 0)
    set(failures ${failures} PARENT_SCOPE)
    set(checks ${checks} PARENT_SCOPE)
endfunction()

# The configure step passes, prints each of the lines, and compiles in exactly `groups`.
function(accepts file groups)
    configure("${file}")
    expect("'${file}' is accepted" result EQUAL 0)
    foreach(line ${ARGN})
        string(FIND "${output}" "-- ${line}" found)
        expect("'${file}': prints \"${line}\"" found GREATER_EQUAL 0)
    endforeach()
    file(READ ${WORK}/build/known_groups_data.h header)
    string(FIND "${header}" "velnoDhGroups[] = R\"pem(${groups})pem\";" found)
    expect("'${file}': the groups are compiled in as they are" found GREATER_EQUAL 0)
    set(failures ${failures} PARENT_SCOPE)
    set(checks ${checks} PARENT_SCOPE)
endfunction()

find_program(OPENSSL openssl REQUIRED)

# Sets `pem` to the group of a prime and a generator, both in hexadecimal digits.
function(make_group prime generator)
    file(WRITE ${WORK}/group.cnf "asn1 = SEQUENCE:group\n[group]\np = INTEGER:0x${prime}\ng = INTEGER:0x${generator}\n")
    execute_process(COMMAND ${OPENSSL} asn1parse -genconf ${WORK}/group.cnf -noout -out ${WORK}/group.der
                    COMMAND_ERROR_IS_FATAL ANY)
    execute_process(COMMAND ${OPENSSL} base64 -in ${WORK}/group.der OUTPUT_VARIABLE text COMMAND_ERROR_IS_FATAL ANY)
    set(pem "-----BEGIN DH PARAMETERS-----\n${text}-----END DH PARAMETERS-----\n" PARENT_SCOPE)
endfunction()

# Sets `pem` to a group that OpenSSL has by name.
function(named_group name)
    execute_process(COMMAND ${OPENSSL} genpkey -genparam -algorithm DH -pkeyopt group:${name} OUTPUT_VARIABLE text
                    ERROR_QUIET COMMAND_ERROR_IS_FATAL ANY)
    set(pem "${text}" PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE ${WORK})
file(WRITE ${WORK}/project/CMakeLists.txt
"cmake_minimum_required(VERSION 3.25)
project(Groups LANGUAGES NONE)
set(VELNO_DH_GROUPS \"\" CACHE FILEPATH \"\")
include(${SOURCE}/cmake/KnownGroups.cmake)
velno_known_groups(\"\${VELNO_DH_GROUPS}\" \${PROJECT_BINARY_DIR}/known_groups_data.h)
")

# Good files, and none.
file(READ ${SOURCE}/tests/support/group_of_its_own.pem own)
set(fingerprint ff3b5fed81431a2e05e6f7d7bc42269b681cbe8a9ad806e55f1606dd2391381f)
set(line "Diffie-Hellman group 1: 2048 bits, generator 0x02, SHA-256 of the prime ${fingerprint}")
accepts("" "")
string(FIND "${output}" "Diffie-Hellman group" found)
expect("without a file no group is printed" found LESS 0)
file(WRITE ${WORK}/own.pem "${own}")
accepts(${WORK}/own.pem "${own}" "${line}")
string(REPLACE "\n" "\r\n" windows "${own}")
file(WRITE ${WORK}/windows.pem "${windows}")
accepts(${WORK}/windows.pem "${own}" "${line}")
named_group(modp_3072)
file(WRITE ${WORK}/two.pem "remark; one [1]\n${own}remark\n${pem}\nend\n")
accepts(${WORK}/two.pem "${own}${pem}" "${line}" "Diffie-Hellman group 2: 3072 bits, generator 0x02, SHA-256")
execute_process(COMMAND ${OPENSSL} asn1parse -in ${WORK}/own.pem OUTPUT_VARIABLE text COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCH "INTEGER +:([0-9A-F]+)" text "${text}")
set(prime ${CMAKE_MATCH_1})
string(SHA256 digest "${prime}")
expect("the fingerprint is that of the prime's digits" digest STREQUAL fingerprint)
make_group(${prime} 05)
file(WRITE ${WORK}/other-generator.pem "${pem}")
accepts(${WORK}/other-generator.pem "${pem}" "Diffie-Hellman group 1: 2048 bits, generator 0x05, SHA-256 of the prime ${fingerprint}")

# Files that are none.
file(MAKE_DIRECTORY ${WORK}/folder)
refuses(missing.pem "there is no such file")
refuses(folder "there is no such file")
file(WRITE ${WORK}/empty.pem "")
refuses(empty.pem "holds no PEM Diffie-Hellman group")
file(WRITE ${WORK}/certificate.pem "-----BEGIN CERTIFICATE-----\nTm8=\n-----END CERTIFICATE-----\n")
refuses(certificate.pem "holds no PEM Diffie-Hellman group")
file(WRITE ${WORK}/nonsense.pem "${own}-----BEGIN DH PARAMETERS-----\nTm8gZ3JvdXA=\n-----END DH PARAMETERS-----\n")
refuses(nonsense.pem "Diffie-Hellman group 2 does not parse")
string(REPLACE "-----END DH PARAMETERS-----\n" "" short "${own}")
file(WRITE ${WORK}/cut-short.pem "${own}${short}")
refuses(cut-short.pem "Diffie-Hellman group 2 is cut short")

# Groups that are no good.
named_group(modp_1536)
file(WRITE ${WORK}/short-prime.pem "${own}${pem}")
refuses(short-prime.pem "Diffie-Hellman group 2 has 1536 bits; it must have 2048 to 8192")
string(REPEAT "F1" 1025 digits)
make_group(${digits} 02)
file(WRITE ${WORK}/long-prime.pem "${pem}")
refuses(long-prime.pem "Diffie-Hellman group 1 has 8200 bits; it must have 2048 to 8192")
foreach(name dh_2048_224 dh_2048_256)
    named_group(${name})
    file(WRITE ${WORK}/${name}.pem "${pem}")
    refuses(${name}.pem "Diffie-Hellman group 1 is not safe: the prime of ${name} is not a safe prime")
endforeach()
string(REGEX REPLACE "..$" "E1" digits "${prime}")
make_group(${digits} 02)
file(WRITE ${WORK}/composite.pem "${pem}")
refuses(composite.pem "Diffie-Hellman group 1 is not safe: ")
execute_process(COMMAND ${OPENSSL} prime -generate -bits 2048 -hex OUTPUT_VARIABLE digits OUTPUT_STRIP_TRAILING_WHITESPACE
                COMMAND_ERROR_IS_FATAL ANY)
make_group(${digits} 02)
file(WRITE ${WORK}/common-prime.pem "${pem}")
refuses(common-prime.pem "Diffie-Hellman group 1 is not safe: ")
string(REGEX REPLACE "F$" "E" last "${prime}") # one less
foreach(generator 00 01 ${last} ${prime})
    make_group(${prime} ${generator})
    string(LENGTH ${generator} length)
    string(SUBSTRING ${generator} 0 2 begin)
    file(WRITE ${WORK}/generator-${begin}-${length}.pem "${pem}")
    refuses(generator-${begin}-${length}.pem "Diffie-Hellman group 1 is not safe: ")
endforeach()

file(REMOVE_RECURSE ${WORK})
if(failures GREATER 0)
    message(FATAL_ERROR "${failures} of ${checks} checks failed")
endif()
message(STATUS "${checks} checks passed")
