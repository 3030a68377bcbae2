// SPDX-License-Identifier: Apache-2.0

#include "bench/allocation_count.h"

#include <atomic>

namespace {
std::atomic<size_t> count = 0;
}

size_t allocationCount()
{
    return count;
}

// The allocator's own entry points, which glibc keeps under these names, with a counter in front.
extern "C" {
void *__libc_malloc(size_t size);
void *__libc_calloc(size_t number, size_t size);
void *__libc_realloc(void *block, size_t size);

void *malloc(size_t size)
{
    ++count;
    return __libc_malloc(size);
}

void *calloc(size_t number, size_t size)
{
    ++count;
    return __libc_calloc(number, size);
}

void *realloc(void *block, size_t size)
{
    ++count;
    return __libc_realloc(block, size);
}
}
