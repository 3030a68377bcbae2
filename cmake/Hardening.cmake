# SPDX-License-Identifier: Apache-2.0
include_guard()

include(CheckCXXCompilerFlag)
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX) # from here on programs are linked as what they are compiled as

# What makes a mistake in our code harder to use, for everything that ships. tests/hardening_test.cmake reads it from
# the binaries.
add_library(velno_hardening INTERFACE)
target_compile_options(velno_hardening INTERFACE -fstack-protector-strong)
foreach(option -fstack-clash-protection -fcf-protection=full) # not every architecture has them
    string(MAKE_C_IDENTIFIER "VELNO_HAS${option}" known)
    check_cxx_compiler_flag(${option} ${known})
    if(${known})
        target_compile_options(velno_hardening INTERFACE ${option})
    endif()
endforeach()
target_link_options(velno_hardening INTERFACE "LINKER:-z,relro,-z,now,-z,noexecstack")

# The checked functions of the C library need an optimising compiler, and would hide from a sanitizer what it looks for.
if(NOT CMAKE_CXX_FLAGS MATCHES "-fsanitize")
    target_compile_options(velno_hardening INTERFACE
        $<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-U_FORTIFY_SOURCE$<SEMICOLON>-D_FORTIFY_SOURCE=2>)
endif()
