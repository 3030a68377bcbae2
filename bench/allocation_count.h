// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>

/** How often this process has asked for memory so far (malloc, calloc, realloc, operator new). */
size_t allocationCount();
