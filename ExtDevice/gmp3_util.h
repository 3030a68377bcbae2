// SPDX-License-Identifier: Apache-2.0

#pragma once

/** The cryptographic suite outside class GMP3. Everything fails soft: an empty byte string. */
#include "ExtDevice/gmp3/built_in_group.h"
#include "ExtDevice/gmp3/cipher.h"
#include "ExtDevice/gmp3/gmp3.h"
#include "ExtDevice/gmp3/randoms.h"
