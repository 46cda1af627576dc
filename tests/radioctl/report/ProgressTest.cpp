#include "radioctl/report/Progress.h"

#include <gtest/gtest.h>

#include <chrono>

namespace Radio {
namespace {

TEST(Progress, LineAtTheBeginning) {
    EXPECT_EQ(progressLine(0, 4000), "[....................]   0 %  0 of 4000 carriers");
}

TEST(Progress, LineInBetween) {
    EXPECT_EQ(progressLine(1000, 4000), "[#####...............]  25 %  1000 of 4000 carriers");
}

TEST(Progress, LineAtTheEnd) {
    EXPECT_EQ(progressLine(4000, 4000), "[####################] 100 %  4000 of 4000 carriers");
}

TEST(Progress, NothingToDoIsDone) {
    EXPECT_EQ(progressLine(0, 0), "[####################] 100 %  0 of 0 carriers");
}

TEST(TimeLeft, IsNotKnownAtTheBeginning) {
    EXPECT_EQ(timeLeft(std::chrono::seconds(5), 0, 10), "");
}

TEST(TimeLeft, GoesOnAsBefore) {
    EXPECT_EQ(timeLeft(std::chrono::seconds(10), 1, 4), "30 s left");
    EXPECT_EQ(timeLeft(std::chrono::seconds(10), 4, 4), "0 s left");
}

TEST(TimeLeft, IsRoundedUp) {
    EXPECT_EQ(timeLeft(std::chrono::milliseconds(100), 1, 2), "1 s left");
}

TEST(TimeLeft, HasMinutes) {
    EXPECT_EQ(timeLeft(std::chrono::seconds(25), 1, 6), "2 min 5 s left");
}

} // namespace
} // namespace Radio
