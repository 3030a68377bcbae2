# SPDX-License-Identifier: Apache-2.0
# Installs inside the build folder, to DESTDIR, to a prefix and to a simulator's folder; builds a stranger's programs on
# it, with find_package and with pkg-config, also where it was moved; and uninstalls. Run with -DSOURCE=, -DBUILD=,
# -DWORK= (inside BUILD), -DGENERATOR=, -DC_COMPILER=, -DCXX_COMPILER=, -DPREFIX= and -DLIBDIR= (as the build is
# configured), -DPKG_CONFIG=, -DREADELF=, -DLINK_FLAGS= (a sanitizer), -DDEVELOPMENT= (whether the build trusts a
# development authority), -DSHIPS= (whether it is as it ships: without sanitizers and counters).
cmake_minimum_required(VERSION 3.25)
include(${CMAKE_CURRENT_LIST_DIR}/support/checks.cmake)

# Sets `result` and `output`.
macro(run)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output
                    OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_STRIP_TRAILING_WHITESPACE)
endmacro()

macro(expect_refused what)
    string(FIND "${output}" "trusts a development authority" found)
    expect("${what} is refused" NOT result EQUAL 0 AND found GREATER_EQUAL 0)
endmacro()

file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK})
set(stage ${WORK}/stage)

# A stranger's project with find_package and a C compiler alone. Sets `result` and `output`.
macro(configure folder prefix)
    run(${CMAKE_COMMAND} -G "${GENERATOR}" -S ${SOURCE}/tests/consumer -B ${WORK}/${folder}
        -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_C_COMPILER=${C_COMPILER}
        -DCMAKE_EXE_LINKER_FLAGS=${LINK_FLAGS} ${ARGN})
endmacro()

# Installs to a prefix, below DESTDIR (may be ""). Sets `result` and `output`.
macro(install_to destdir prefix)
    run(${CMAKE_COMMAND} -E env "DESTDIR=${destdir}" ${CMAKE_COMMAND} -DVELNO_STAGE_FOR_TESTS=ON
        -DCMAKE_INSTALL_PREFIX=${prefix} -P ${BUILD}/cmake_install.cmake)
endmacro()

# Uninstalls what was installed last, below DESTDIR.
macro(uninstall destdir)
    run(${CMAKE_COMMAND} -E env "DESTDIR=${destdir}" ${CMAKE_COMMAND} --build ${BUILD} --target uninstall)
endmacro()

# No file is left in the folder, and no folder of ours.
function(expect_nothing_left folder)
    file(GLOB_RECURSE left LIST_DIRECTORIES false ${folder}/*)
    file(GLOB_RECURSE folders LIST_DIRECTORIES true ${folder}/*)
    list(FILTER folders INCLUDE REGEX "/([Vv]elno|development-authority|docs|examples)$")
    set(output "${left} ${folders}")
    expect("nothing is left in ${folder}" NOT left AND NOT folders)
    set(failures ${failures} PARENT_SCOPE)
    set(checks ${checks} PARENT_SCOPE)
endfunction()

# A build that trusts a development authority leaves the build folder for a simulator's folder alone.
set(outside ${BUILD}/../velno-stage-outside)
if(DEVELOPMENT)
    run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${WORK}/refused)
    expect_refused("an install")
    run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${WORK}/refused --component Unspecified)
    expect_refused("an install of a component")
    run(${CMAKE_COMMAND} -E env DESTDIR=${WORK}/refused ${CMAKE_COMMAND} -P ${BUILD}/cmake_install.cmake)
    expect_refused("staging without saying that it is for tests")
    install_to("" ${outside})
    expect_refused("a prefix outside the build folder")
    install_to(${outside} /usr)
    expect_refused("a stage outside the build folder")
    expect("nothing was written by what was refused" NOT EXISTS ${WORK}/refused AND NOT EXISTS ${outside})
    run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${WORK}/velno-simulator)
    expect("a simulator is installed in a folder of its own" result EQUAL 0)
endif()

# Two prefixes, one of which goes again, and a stage.
foreach(prefix first second)
    install_to("" ${WORK}/${prefix})
    expect("it is installed to the ${prefix} prefix" result EQUAL 0 AND EXISTS ${WORK}/${prefix}/bin/velnoctl)
endforeach()
uninstall("")
expect("the last one is uninstalled" result EQUAL 0 AND EXISTS ${WORK}/first/bin/velnoctl)
expect_nothing_left(${WORK}/second)
install_to(${WORK}/gone ${PREFIX})
uninstall(${WORK}/gone)
expect("what was staged is uninstalled" result EQUAL 0)
expect_nothing_left(${WORK}/gone)
install_to(${stage} ${PREFIX})
expect("a stage inside the build folder is made" result EQUAL 0)
set(root ${stage}${PREFIX})
set(lib ${root}/${LIBDIR})
file(GLOB_RECURSE first RELATIVE ${WORK}/first ${WORK}/first/*)
file(GLOB_RECURSE staged RELATIVE ${root} ${root}/*)
expect("prefix and stage get the same files" first STREQUAL staged)
file(REMOVE_RECURSE ${WORK}/first ${WORK}/second ${WORK}/gone)

# What a stranger gets.
set(output "")
file(GLOB_RECURSE headers RELATIVE ${root}/include ${root}/include/*)
list(JOIN headers " " output)
expect("the two headers are installed" output STREQUAL "velnoext.h velnotill.h")
file(GLOB_RECURSE archives ${root}/*.a)
expect("no static library is installed: ${archives}" NOT archives)
foreach(file libvelnoext.so libvelnoext.so.0 libvelnotill.so libvelnotill.so.0 cmake/Velno/VelnoConfig.cmake
             cmake/Velno/VelnoConfigVersion.cmake pkgconfig/velnoext.pc pkgconfig/velnotill.pc velno/velno-pictures.so)
    expect("${file} is installed" EXISTS ${lib}/${file})
endforeach()

foreach(file receipt.schema.json slip.schema.json velno.lua)
    expect("${file} is installed" EXISTS ${root}/share/velno/${file})
endforeach()
foreach(file applications/velno-pairing.desktop icons/hicolor/scalable/apps/velno-pairing.svg doc/velno/LICENSE
             doc/velno/NOTICE doc/velno/README.md doc/velno/CHANGELOG.md doc/velno/docs/receipts.md
             doc/velno/docs/images/device-test.png doc/velno/examples/market.velno doc/velno/examples/c/pos.c)
    expect("${file} is installed" EXISTS ${root}/share/${file})
endforeach()

foreach(file man/man1/velnoctl.1 man/man1/velno-pairing.1 man/man1/velno-register.1 man/man1/velno-relay.1
             man/man3/velnoext.3 man/man3/velnoext_initialize.3 man/man3/velnotill.3 man/man3/velnotill_sell.3
             bash-completion/completions/velnoctl zsh/site-functions/_velnoctl fish/vendor_completions.d/velnoctl.fish)
    expect("${file} is installed" EXISTS ${root}/share/${file})
endforeach()

file(GLOB programs RELATIVE ${root}/bin ${root}/bin/*)
list(JOIN programs " " output)
set(expected "velno-pairing velno-register velno-relay velnoctl")
if(DEVELOPMENT)
    set(expected "velno-pairing velno-register velno-relay velno-simulator velnoctl")
endif()
expect("every program is installed" output STREQUAL expected)

# Nothing tells where it was built, but what sanitizers and counters add.
foreach(file ${programs} ../${LIBDIR}/libvelnoext.so ../${LIBDIR}/libvelnotill.so)
    file(STRINGS ${root}/bin/${file} output REGEX "${SOURCE}")
    expect("${file} names no folder of the build" NOT SHIPS OR NOT output)
    run(${READELF} --sections --wide ${root}/bin/${file})
    expect("${file} has no symbols for debuggers" NOT output MATCHES "\\.(symtab|debug_info)")
endforeach()
run(${READELF} -d ${root}/bin/velnoctl)
string(FIND "${output}" "[$ORIGIN/../${LIBDIR}]" found)
expect("velnoctl looks for the library beside itself alone" found GREATER 0)
run(${READELF} -d ${lib}/libvelnoext.so)
expect("the library names no folder to load from" result EQUAL 0 AND NOT output MATCHES "R(UN)?PATH")
expect("the library's SONAME has its major version" output MATCHES "SONAME[^\n]*\\[libvelnoext\\.so\\.0\\]")
run(${READELF} -d ${lib}/libvelnotill.so)
expect("the till's library has its major version" output MATCHES "SONAME[^\n]*\\[libvelnotill\\.so\\.0\\]")
expect("the till looks for the device library beside itself alone" output MATCHES "R(UN)?PATH[^\n]*\\[.ORIGIN\\]")
file(GLOB_RECURSE texts ${lib}/cmake/*.cmake ${lib}/pkgconfig/*.pc)
foreach(file ${texts})
    file(READ ${file} output)
    string(FIND "${output}" "${SOURCE}/" found)
    expect("${file} names no folder of the build" found LESS 0 AND NOT output MATCHES "extdevice|till_inside|velnotill_inside")
endforeach()

# What is installed starts from where it lies, also when that is another place than the configured one, and whatever
# lies in the current folder.
set(moved ${WORK}/moved)
file(RENAME ${root} ${moved})
file(MAKE_DIRECTORY ${WORK}/current)
file(WRITE ${WORK}/current/libvelnoext.so.0 "no library")
foreach(program ${programs})
    execute_process(COMMAND ${CMAKE_COMMAND} -E env --unset=LD_LIBRARY_PATH
                    timeout 60 ${moved}/bin/${program} --help
                    WORKING_DIRECTORY ${WORK}/current RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
    expect("${program} starts" result EQUAL 0 AND output MATCHES "Usage: ${program}")
endforeach()
run(${CMAKE_COMMAND} -E env --unset=PKG_CONFIG_SYSROOT_DIR PKG_CONFIG_PATH=${moved}/${LIBDIR}/pkgconfig
    ${PKG_CONFIG} --cflags --libs velnoext)
separate_arguments(flags UNIX_COMMAND "${output} ${LINK_FLAGS}")
run(${C_COMPILER} -std=c99 ${SOURCE}/tests/consumer/main.c -o ${WORK}/moved_main ${flags})
expect("pkg-config finds a library that was moved" result EQUAL 0)
run(${CMAKE_COMMAND} -E env --unset=PKG_CONFIG_SYSROOT_DIR PKG_CONFIG_PATH=${moved}/${LIBDIR}/pkgconfig
    ${PKG_CONFIG} --cflags --libs velnotill)
separate_arguments(flags UNIX_COMMAND "${output} ${LINK_FLAGS}")
run(${C_COMPILER} -std=c99 ${SOURCE}/tests/consumer/till.c -o ${WORK}/moved_till ${flags})
expect("pkg-config finds a till that was moved" result EQUAL 0)
configure(moved_consumer ${moved})
expect("find_package finds what was moved" result EQUAL 0)
file(RENAME ${moved} ${root})

# Each header alone, as C99 and as C++.
set(strict -Wall -Wextra -Wpedantic -pedantic-errors -Werror -fsyntax-only -I${root}/include)
foreach(header ${headers})
    file(WRITE ${WORK}/header.c "#include <${header}>\n")
    run(${C_COMPILER} -std=c99 ${strict} ${WORK}/header.c)
    expect("${header} is C99" result EQUAL 0)
    run(${CXX_COMPILER} -std=c++11 ${strict} -x c++ ${WORK}/header.c)
    expect("${header} is C++" result EQUAL 0)
    file(STRINGS ${root}/include/${header} includes REGEX "# *include")
    list(FILTER includes EXCLUDE REGEX "<(stddef|stdint|stdbool)\\.h>|\"velnoext\\.h\"")
    expect("${header} includes the C standard's and velnoext.h alone: ${includes}" NOT includes)
endforeach()

set(said "interface 0, without a register: 1")
# find_package, likewise.
configure(consumer ${root})
expect("find_package(Velno) finds it" result EQUAL 0)
run(${CMAKE_COMMAND} --build ${WORK}/consumer)
expect("a consumer builds with Velno::velnoext" result EQUAL 0)
run(${WORK}/consumer/consumer)
expect("a consumer built with find_package runs" output STREQUAL said)
set(till_said "without settings: 100, null-argument")
run(${WORK}/consumer/consumer_till)
expect("a till built with find_package runs" output STREQUAL till_said)
configure(later ${root} -DCONSUMER_VELNO_VERSION=1.0)
expect("another major version is not accepted" NOT result EQUAL 0)

# pkg-config, likewise.
set(ENV{PKG_CONFIG_PATH} ${lib}/pkgconfig)
set(ENV{PKG_CONFIG_SYSROOT_DIR} ${stage})
run(${PKG_CONFIG} --cflags --libs velnotill)
expect("pkg-config finds both" result EQUAL 0)
separate_arguments(flags UNIX_COMMAND "${output} ${LINK_FLAGS}")
foreach(program tests/consumer/main.c tests/consumer/till.c examples/c/every_call.c examples/c/every_till_call.c
                examples/c/pos.c examples/c/register_state.c)
    get_filename_component(name ${program} NAME_WE)
    run(${C_COMPILER} -std=c99 -Wall -Wextra -Wpedantic -Werror ${SOURCE}/${program} -o ${WORK}/${name} ${flags})
    expect("${program} builds with pkg-config" result EQUAL 0)
endforeach()
set(ENV{LD_LIBRARY_PATH} ${lib})
run(${WORK}/main)
expect("a consumer built with pkg-config runs" output STREQUAL said)
run(${WORK}/till)
expect("a till built with pkg-config runs" output STREQUAL till_said)

report_checks()
