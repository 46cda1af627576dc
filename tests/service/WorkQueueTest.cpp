#include "service/radio/WorkQueue.h"

#include <gtest/gtest.h>
#include <poll.h>

#include <memory>
#include <string>
#include <thread>

namespace Radio::Service {
namespace {

bool canBeRead(const WorkQueue& queue) {
    pollfd wanted{queue.descriptor(), POLLIN, 0};
    return poll(&wanted, 1, 0) == 1;
}

TEST(WorkQueue, WorkOfOtherThreadsIsDoneInItsOrderByWhoAsksForIt) {
    WorkQueue queue(10);
    std::string done;
    std::thread other([&] {
        queue.add([&done] { done += "a"; });
        queue.add([&done] { done += "b"; });
    });
    other.join();
    EXPECT_EQ(done, "");
    queue.work();
    EXPECT_EQ(done, "ab");
}

TEST(WorkQueue, DescriptorCanBeReadWhileThereIsWork) {
    WorkQueue queue(10);
    EXPECT_FALSE(canBeRead(queue));
    queue.add([] {});
    EXPECT_TRUE(canBeRead(queue));
    queue.work();
    EXPECT_FALSE(canBeRead(queue));
}

TEST(WorkQueue, FullOneTakesNoMoreUntilSomethingIsDone) {
    WorkQueue queue(1);
    EXPECT_TRUE(queue.add([] {}));
    EXPECT_FALSE(queue.add([] {}));
    queue.work();
    EXPECT_TRUE(queue.add([] {}));
}

TEST(WorkQueue, ClosedOneTakesNothingAndDoesWhatItHas) {
    WorkQueue queue(10);
    int done = 0;
    queue.add([&done] { ++done; });
    queue.close();
    EXPECT_FALSE(queue.add([&done] { ++done; }));
    queue.work();
    EXPECT_EQ(done, 1);
}

TEST(WorkQueue, WhatIsForgottenIsNotDoneAndHoldsNothing) {
    WorkQueue queue(10);
    auto held = std::make_shared<int>(0);
    const std::weak_ptr<int> seen = held;
    queue.add([held = std::move(held)] { ++*held; });
    EXPECT_FALSE(seen.expired());
    queue.forget();
    EXPECT_TRUE(seen.expired());
    queue.work();
}

} // namespace
} // namespace Radio::Service
