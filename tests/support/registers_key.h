// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ExtDevice/gmp3/trust_anchors.h"

#include <QTest>

/** Stands first in a test that proves to be a register: only the development authority's key is at hand. */
#define NEEDS_A_REGISTERS_KEY()                                                                              \
    if (!Velno::GMP::trustsDevelopmentAuthority())                                                           \
    QSKIP("NOT TESTED: no register's key is at hand under these trust anchors")
