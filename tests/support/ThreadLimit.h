#pragma once

#include <dlfcn.h>
#include <pthread.h>

#include <cerrno>

namespace ordovan::test {

/// False while this user has as many threads as he may have. Included by one source file of a test program, this takes
/// the place of a function of the C library.
inline bool canMakeThreads = true;

}  // namespace ordovan::test

extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*start)(void*),
                              void* argument) noexcept {
    static auto* const real = reinterpret_cast<decltype(&::pthread_create)>(::dlsym(RTLD_NEXT, "pthread_create"));
    return ordovan::test::canMakeThreads ? real(thread, attributes, start, argument) : EAGAIN;
}
