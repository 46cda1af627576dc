#ifndef TESTS_SUPPORT_CANCELLATION_H
#define TESTS_SUPPORT_CANCELLATION_H

#include <gtest/gtest.h>
#include <pthread.h>

#include <functional>

// There where AddressSanitizer is, also when it looks at the library alone.
// The name is the sanitizer's. NOLINTNEXTLINE(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
extern "C" void __asan_handle_no_return() __attribute__((weak));

/**
 * False with AddressSanitizer on 32-bit ARM: it does not see what std::rethrow_exception and a cancellation
 * unwind where destructors call others, and takes what they leave on the stack for errors.
 */
inline bool isUnwindingSeen() {
#ifdef __arm__
    return __asan_handle_no_return == nullptr;
#else
    return true;
#endif
}

/** As a system call at which the thread can be cancelled, and is. */
inline void cancelHere() {
    if (__asan_handle_no_return != nullptr) {
        __asan_handle_no_return(); // it does not see by itself that the stack is unwound now
    }
    pthread_cancel(pthread_self());
    pthread_testcancel();
}

/** Carries out `work` on a thread of its own; true when that was cancelled meanwhile. */
inline bool isCancelledIn(std::function<void()> work) {
    const auto run = [](void* argument) -> void* {
        (*static_cast<std::function<void()>*>(argument))();
        return nullptr;
    };
    pthread_t thread{};
    void* result = nullptr;
    EXPECT_EQ(pthread_create(&thread, nullptr, run, &work), 0);
    EXPECT_EQ(pthread_join(thread, &result), 0);
    return result == PTHREAD_CANCELED; // NOLINT: the system's own number
}

#endif
