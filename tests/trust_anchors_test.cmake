# Configures a project of nothing but trust anchors, once for each kind of VELNO_TRUST_ANCHORS file, and reads
# what the configure step says and writes. Run with -DSOURCE=<repository> -DWORK=<folder> -DGENERATOR=<name>.
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
macro(configure folder)
    execute_process(COMMAND ${CMAKE_COMMAND} -G "${GENERATOR}" -S ${WORK}/project -B ${WORK}/${folder} ${ARGN}
                    RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
    string(REGEX REPLACE "[ \n]+" " " output "${output}")
endmacro()

# The configure step stops, and its message names the file and the reason.
function(refuses name reason)
    configure(refused "-DVELNO_TRUST_ANCHORS=${WORK}/${name}")
    string(FIND "${output}" "${WORK}/${name}: ${reason}" found)
    expect("${name} stops the configure step" NOT result EQUAL 0)
    expect("${name}: the message names the file and says \"${reason}\"" found GREATER_EQUAL 0)
    set(failures ${failures} PARENT_SCOPE)
    set(checks ${checks} PARENT_SCOPE)
endfunction()

# The configure step passes and compiles in exactly `chain`.
function(accepts name chain)
    configure(accepted "-DVELNO_TRUST_ANCHORS=${WORK}/${name}")
    expect("${name} is accepted" result EQUAL 0)
    file(READ ${WORK}/accepted/generated/trust_anchors_data.h header)
    string(FIND "${header}" "velnoTrustAnchors[] = R\"pem(${chain})pem\";" found)
    expect("${name}: the chain is compiled in as it is" found GREATER_EQUAL 0)
    string(FIND "${header}" "velnoDevelopmentAuthority = false;" found)
    expect("${name}: this is no development authority" found GREATER_EQUAL 0)
    set(failures ${failures} PARENT_SCOPE)
    set(checks ${checks} PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE ${WORK})
file(WRITE ${WORK}/project/CMakeLists.txt
"cmake_minimum_required(VERSION 3.25)
project(Anchors LANGUAGES NONE)
set(VELNO_TRUST_ANCHORS \"\" CACHE FILEPATH \"\")
include(${SOURCE}/cmake/TrustAnchors.cmake)
velno_trust_anchors()
")

# Without a file: an authority of our own, that says so, holds together, stays, and is never installed.
configure(development)
expect("a build without trust anchors is configured" result EQUAL 0)
string(FIND "${output}" "trust the development authority in ${WORK}/development" found)
expect("the development authority is announced" found GREATER_EQUAL 0)
set(authority ${WORK}/development/development-authority)
file(READ ${authority}/trust-anchors.pem chain)
find_program(OPENSSL openssl REQUIRED)
execute_process(COMMAND ${OPENSSL} verify -CAfile ${authority}/trust-anchors.pem ${authority}/register/client.crt
                RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
expect("the development register chains to the anchors" result EQUAL 0)
configure(development)
file(READ ${authority}/trust-anchors.pem again)
expect("the development authority is kept" again STREQUAL chain)
execute_process(COMMAND ${CMAKE_COMMAND} --install ${WORK}/development --prefix ${WORK}/prefix
                RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
expect("a development build refuses to be installed" NOT result EQUAL 0)
expect("the refusal names the setting" output MATCHES VELNO_TRUST_ANCHORS)
configure(other)
file(READ ${WORK}/other/development-authority/trust-anchors.pem again)
expect("every build folder has fresh keys" NOT again STREQUAL chain)

# Good files.
file(WRITE ${WORK}/chain.pem "${chain}")
accepts(chain.pem "${chain}")
string(REPLACE "\n" "\r\n" windows "${chain}")
file(WRITE ${WORK}/windows.pem "${windows}")
accepts(windows.pem "${chain}")
file(WRITE ${WORK}/remarks.pem "subject; sub CA [1]\n${chain}\nthe end; of it\n")
accepts(remarks.pem "${chain}")
string(REGEX REPLACE "\n$" "" bare "${chain}")
file(WRITE ${WORK}/no-last-line-feed.pem "${bare}")
accepts(no-last-line-feed.pem "${chain}")

# Bad files.
file(MAKE_DIRECTORY ${WORK}/folder)
refuses(missing.pem "there is no such file")
refuses(folder "there is no such file")
file(WRITE ${WORK}/empty.pem "")
refuses(empty.pem "holds no PEM certificate")
file(WRITE ${WORK}/words.pem "These are no certificates.\n")
refuses(words.pem "holds no PEM certificate")
file(WRITE ${WORK}/nonsense.pem "${chain}-----BEGIN CERTIFICATE-----\nTm8gY2VydGlmaWNhdGU=\n-----END CERTIFICATE-----\n")
refuses(nonsense.pem "certificate 3 does not parse")
file(WRITE ${WORK}/semicolon.pem "-----BEGIN CERTIFICATE-----\nTm8;Y2VydGlmaWNhdGU=\n-----END CERTIFICATE-----\n")
refuses(semicolon.pem "certificate 1 does not parse")
file(WRITE ${WORK}/bracket.pem "-----BEGIN CERTIFICATE-----\nTm8[Y2VydGlmaWNhdGU=\n-----END CERTIFICATE-----\n${chain}")
refuses(bracket.pem "certificate 1 does not parse")
string(LENGTH "${chain}" length)
math(EXPR length "${length} - 100")
string(SUBSTRING "${chain}" 0 ${length} short)
file(WRITE ${WORK}/cut-short.pem "${short}")
refuses(cut-short.pem "certificate 2 is cut short")
string(REGEX REPLACE "\n[A-Za-z0-9+/=]+\n-----END" "\n-----END" gap "${chain}")
file(WRITE ${WORK}/line-missing.pem "${gap}")
refuses(line-missing.pem "certificate 1 does not parse")

file(REMOVE_RECURSE ${WORK})
if(failures GREATER 0)
    message(FATAL_ERROR "${failures} of ${checks} checks failed")
endif()
message(STATUS "${checks} checks passed")
