#include "radio/text/Median.h"

#include <gtest/gtest.h>

namespace Radio {
namespace {

TEST(Median, IsTheNumberInTheMiddle) {
    EXPECT_EQ(median(std::vector<double>{5.0, 1.0, 2.0}), 2.0);
}

TEST(Median, IsTheLowerOfTwo) {
    EXPECT_EQ(median(std::vector<int>{4, 1, 3, 2}), 2);
}

TEST(Median, OfNothingIs0) {
    EXPECT_EQ(median(std::vector<int>{}), 0);
}

} // namespace
} // namespace Radio
