#pragma once

#if defined(__SANITIZE_THREAD__)
#define VELNO_THREAD_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define VELNO_THREAD_SANITIZER 1
#endif
#endif

#ifdef VELNO_THREAD_SANITIZER
#include <sanitizer/tsan_interface.h>
#define VELNO_NOT_WATCHED __attribute__((no_sanitize("thread"), noinline))
#else
#define VELNO_NOT_WATCHED
#endif

/**
 * What one thread did before a blocking call to another, that one sees, and the other way round after it.
 * Qt's event queue and semaphore see to that; but Qt is not compiled for ThreadSanitizer, which has to be
 * told. In any other build nothing is left of this.
 */
namespace Velno::Ext {

/** This thread gives what it has done to whoever takes from the same place later. */
inline void giveTo([[maybe_unused]] void *place)
{
#ifdef VELNO_THREAD_SANITIZER
    __tsan_release(place);
#endif
}

/** This thread takes what was given to the place. */
inline void takeFrom([[maybe_unused]] void *place)
{
#ifdef VELNO_THREAD_SANITIZER
    __tsan_acquire(place);
#endif
}

/** Calls what it points to. Qt copies it to the other thread, which ThreadSanitizer does not see. */
template <typename Function>
struct HandedOver
{
    const Function *function;
    VELNO_NOT_WATCHED void operator()() const { (*function)(); }
};

} // namespace Velno::Ext
