#include "plan/Progress.h"

#include <gtest/gtest.h>

namespace Radioctl::Plan {
namespace {

TEST(PlanProgress, LineAtTheBeginning) {
    EXPECT_EQ(progressLine(0, 4000), "[....................]   0 %  0 of 4000 carriers");
}

TEST(PlanProgress, LineInBetween) {
    EXPECT_EQ(progressLine(1000, 4000), "[#####...............]  25 %  1000 of 4000 carriers");
}

TEST(PlanProgress, LineAtTheEnd) {
    EXPECT_EQ(progressLine(4000, 4000), "[####################] 100 %  4000 of 4000 carriers");
}

TEST(PlanProgress, NothingToDoIsDone) {
    EXPECT_EQ(progressLine(0, 0), "[####################] 100 %  0 of 0 carriers");
}

} // namespace
} // namespace Radioctl::Plan
