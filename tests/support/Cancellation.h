#ifndef TESTS_SUPPORT_CANCELLATION_H
#define TESTS_SUPPORT_CANCELLATION_H

#include <gtest/gtest.h>
#include <pthread.h>

#include <functional>

#if defined(__SANITIZE_ADDRESS__)
#define IS_ADDRESS_SANITIZED
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define IS_ADDRESS_SANITIZED
#endif
#endif
#ifdef IS_ADDRESS_SANITIZED
// The name is the sanitizer's. NOLINTNEXTLINE(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
extern "C" void __asan_handle_no_return();
#endif

/** As a system call at which the thread can be cancelled, and is. */
inline void cancelHere() {
#ifdef IS_ADDRESS_SANITIZED
    __asan_handle_no_return(); // the sanitizer does not see by itself that the stack is unwound now
#endif
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
