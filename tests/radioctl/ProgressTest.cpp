#include "Progress.h"

#include <gtest/gtest.h>

namespace Radioctl {
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

} // namespace
} // namespace Radioctl
