#ifndef TESTS_SUPPORT_CANCELLATION_H
#define TESTS_SUPPORT_CANCELLATION_H

#include <gtest/gtest.h>
#include <pthread.h>

#include <functional>

/** As a system call at which the thread can be cancelled, and is. */
inline void cancelHere() {
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
