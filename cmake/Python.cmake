# SPDX-License-Identifier: Apache-2.0
include_guard()

# VELNO_PYTHON is the one in the PATH, or empty. VELNO_SYSTEM_PYTHON has Debian's packages, such as python3-pycparser;
# another one in the PATH need not.
find_program(VELNO_PYTHON python3)
if(NOT VELNO_PYTHON)
    set(VELNO_PYTHON "")
endif()
find_program(VELNO_SYSTEM_PYTHON python3 PATHS /usr/bin NO_DEFAULT_PATH)
if(NOT VELNO_SYSTEM_PYTHON)
    set(VELNO_SYSTEM_PYTHON ${VELNO_PYTHON})
endif()
