#include "standalone/Interpolation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <numeric>
#include <random>
#include <set>

namespace {

using Standalone::Interpolation::bilinear;
using Standalone::Interpolation::linear;
using Standalone::Interpolation::locate;

using Numbers = std::vector<std::int32_t>;

constexpr std::int32_t lowest = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t highest = std::numeric_limits<std::int32_t>::max();

TEST(LocateTest, FindsTheNodeBelowTheCoordinate) {
    const auto position = locate({0, 10, 25}, 12);
    EXPECT_EQ(position.index, 1U);
    EXPECT_EQ(position.offset, 2U);
    EXPECT_EQ(position.width, 15U);
}

TEST(LocateTest, InnerNodeHasNoOffset) {
    const auto position = locate({0, 10, 25}, 10);
    EXPECT_EQ(position.index, 1U);
    EXPECT_EQ(position.offset, 0U);
}

TEST(LocateTest, CoordinateOutsideIsClamped) {
    EXPECT_EQ(locate({0, 10, 25}, -1).index, 0U);
    EXPECT_EQ(locate({0, 10, 25}, -1).offset, 0U);
    EXPECT_EQ(locate({0, 10, 25}, 26).index, 2U);
    EXPECT_EQ(locate({0, 10, 25}, 26).offset, 0U);
    EXPECT_EQ(locate({0, 10, 25}, 26).width, 1U);
}

TEST(LocateTest, WidestSegmentFits32Bits) {
    const auto position = locate({lowest, highest}, highest - 1);
    EXPECT_EQ(position.offset, 0xFFFFFFFEU);
    EXPECT_EQ(position.width, 0xFFFFFFFFU);
}

TEST(LocateTest, FarEndOfALongAxisIsNotWalkedTo) {
    Numbers axis(1'000'000);
    std::iota(axis.begin(), axis.end(), 0);
    // Twenty comparisons each; a walk along the axis would outlast the time limit of a test many times over.
    for (int i = 0; i < 2'000'000; ++i) {
        ASSERT_EQ(locate(axis, 999'998).index, 999'998U);
    }
}

TEST(LinearTest, NodesGiveTheirOwnValues) {
    EXPECT_EQ(linear({-10, 0, 20}, {7, -3, 100}, -10), 7);
    EXPECT_EQ(linear({-10, 0, 20}, {7, -3, 100}, 0), -3);
    EXPECT_EQ(linear({-10, 0, 20}, {7, -3, 100}, 20), 100);
}

TEST(LinearTest, BetweenNodesLiesOnTheStraightLine) {
    EXPECT_EQ(linear({0, 10, 20}, {0, 100, 400}, 3), 30);
    EXPECT_EQ(linear({0, 10, 20}, {0, 100, 400}, 13), 190);
    EXPECT_EQ(linear({0, 10}, {100, -100}, 9), -80);
}

TEST(LinearTest, OutsideTheAxisIsClamped) {
    EXPECT_EQ(linear({0, 10}, {5, 6}, -1), 5);
    EXPECT_EQ(linear({0, 10}, {5, 6}, 11), 6);
    EXPECT_EQ(linear({0, 10}, {5, 6}, lowest), 5);
    EXPECT_EQ(linear({0, 10}, {5, 6}, highest), 6);
}

TEST(LinearTest, SingleNodeGivesItsValueEverywhere) {
    EXPECT_EQ(linear({40}, {-9}, 39), -9);
    EXPECT_EQ(linear({40}, {-9}, 40), -9);
    EXPECT_EQ(linear({40}, {-9}, 41), -9);
}

TEST(LinearTest, HalvesAreRoundedAwayFromZero) {
    EXPECT_EQ(linear({0, 2}, {0, 1}, 1), 1);   // 0.5
    EXPECT_EQ(linear({0, 2}, {0, -1}, 1), -1); // -0.5
    EXPECT_EQ(linear({0, 2}, {2, 3}, 1), 3);   // 2.5
    EXPECT_EQ(linear({0, 2}, {-2, -3}, 1), -3);
    EXPECT_EQ(linear({0, 2}, {1, -2}, 1), -1); // -0.5
    EXPECT_EQ(linear({0, 2}, {-1, 2}, 1), 1);  // 0.5
}

TEST(LinearTest, OtherFractionsAreRoundedToTheNearest) {
    EXPECT_EQ(linear({0, 3}, {0, 1}, 1), 0);   // 1/3
    EXPECT_EQ(linear({0, 3}, {0, 1}, 2), 1);   // 2/3
    EXPECT_EQ(linear({0, 3}, {0, -1}, 1), 0);  // -1/3
    EXPECT_EQ(linear({0, 3}, {0, -1}, 2), -1); // -2/3
    EXPECT_EQ(linear({0, 3}, {-5, -4}, 2), -4);
}

TEST(LinearTest, WholeIntRangeDoesNotOverflow) {
    EXPECT_EQ(linear({lowest, highest}, {lowest, highest}, 0), 0);
    EXPECT_EQ(linear({lowest, highest}, {lowest, highest}, 123456789), 123456789);
    EXPECT_EQ(linear({lowest, highest}, {highest, lowest}, 0), -1);
    EXPECT_EQ(linear({lowest, highest}, {highest, highest}, 17), highest);
    EXPECT_EQ(linear({lowest, highest}, {lowest, lowest}, 17), lowest);
}

// Values 0, 100 along axis 2 at node 0 of axis 1, and 10, 110 at node 10.
const Numbers axis1{0, 10};
const Numbers axis2{0, 100};
const Numbers cell{0, 100, 10, 110};

TEST(BilinearTest, NodesGiveTheirOwnValuesWithAxis2RunningFastest) {
    EXPECT_EQ(bilinear(axis1, axis2, cell, 0, 0), 0);
    EXPECT_EQ(bilinear(axis1, axis2, cell, 0, 100), 100);
    EXPECT_EQ(bilinear(axis1, axis2, cell, 10, 0), 10);
    EXPECT_EQ(bilinear(axis1, axis2, cell, 10, 100), 110);
}

TEST(BilinearTest, BetweenNodesBothAxesCount) {
    EXPECT_EQ(bilinear(axis1, axis2, cell, 4, 0), 4);
    EXPECT_EQ(bilinear(axis1, axis2, cell, 0, 40), 40);
    EXPECT_EQ(bilinear(axis1, axis2, cell, 3, 70), 73);
}

TEST(BilinearTest, ProductTermCounts) {
    // x1 * x2 on the unit square scaled by 100: 30 % of 50 % of 1000 is 150.
    EXPECT_EQ(bilinear({0, 100}, {0, 100}, {0, 0, 0, 1000}, 30, 50), 150);
}

TEST(BilinearTest, InnerCellUsesItsOwnFourNodes) {
    // The cell between nodes 1 and 2 of both axes holds 5, 6, 8, 9; its middle is 7.
    EXPECT_EQ(bilinear({0, 10, 20}, {0, 10, 20}, {1, 2, 3, 4, 5, 6, 7, 8, 9}, 15, 15), 7);
    EXPECT_EQ(bilinear({0, 10, 20}, {0, 10, 20}, {0, 0, 0, 0, 100, 200, 0, 300, 400}, 15, 15), 250);
}

TEST(BilinearTest, EachAxisIsClampedByItself) {
    EXPECT_EQ(bilinear(axis1, axis2, cell, -5, 40), 40);
    EXPECT_EQ(bilinear(axis1, axis2, cell, 99, 40), 50);
    EXPECT_EQ(bilinear(axis1, axis2, cell, 4, -1), 4);
    EXPECT_EQ(bilinear(axis1, axis2, cell, 4, 101), 104);
    EXPECT_EQ(bilinear(axis1, axis2, cell, highest, lowest), 10);
}

TEST(BilinearTest, SingleNodeAxesAreAllowed) {
    EXPECT_EQ(bilinear({5}, {0, 10}, {20, 40}, -7, 5), 30);
    EXPECT_EQ(bilinear({0, 10}, {5}, {20, 40}, 5, -7), 30);
    EXPECT_EQ(bilinear({5}, {5}, {-3}, 0, 9), -3);
}

TEST(BilinearTest, HalvesAreRoundedAwayFromZero) {
    EXPECT_EQ(bilinear({0, 2}, {0, 2}, {0, 0, 1, 1}, 1, 1), 1);    // 0.5
    EXPECT_EQ(bilinear({0, 2}, {0, 2}, {0, 0, -1, -1}, 1, 1), -1); // -0.5
    EXPECT_EQ(bilinear({0, 2}, {0, 2}, {0, 0, -5, -5}, 1, 1), -3); // -2.5
    EXPECT_EQ(bilinear({0, 2}, {0, 2}, {1, -2, 1, -2}, 1, 1), -1); // -0.5
}

TEST(BilinearTest, OtherFractionsAreRoundedToTheNearest) {
    EXPECT_EQ(bilinear({0, 2}, {0, 2}, {0, 0, 0, 1}, 1, 1), 0);  // 0.25
    EXPECT_EQ(bilinear({0, 2}, {0, 2}, {0, 1, 1, 1}, 1, 1), 1);  // 0.75
    EXPECT_EQ(bilinear({0, 2}, {0, 2}, {0, 0, 0, -1}, 1, 1), 0); // -0.25
    EXPECT_EQ(bilinear({0, 2}, {0, 2}, {0, -1, -1, -1}, 1, 1), -1);
}

TEST(BilinearTest, IsRoundedOnceOnly) {
    // Rows of 0.5 and 0.0 give 0.25; rounding each row first would give half of 1, and so 1.
    EXPECT_EQ(bilinear({0, 2}, {0, 2}, {0, 1, 0, 0}, 1, 1), 0);
    EXPECT_EQ(bilinear({0, 2}, {0, 2}, {0, -1, 0, 0}, 1, 1), 0);
}

TEST(BilinearTest, WholeIntRangeDoesNotOverflow) {
    const Numbers whole{lowest, highest};
    EXPECT_EQ(bilinear(whole, whole, {lowest, lowest, highest, highest}, 123456789, 5), 123456789);
    EXPECT_EQ(bilinear(whole, whole, {lowest, highest, lowest, highest}, 5, -123456789), -123456789);
    EXPECT_EQ(bilinear(whole, whole, {highest, highest, highest, highest}, 1, 1), highest);
    EXPECT_EQ(bilinear(whole, whole, {lowest, lowest, lowest, lowest}, 1, 1), lowest);
}

TEST(BilinearTest, LargestCellThatIsWeighedInOneGoAndTheNextLargerOneAgree) {
    // 65535 * 65537 is the last product of widths below 2^32; in the middle of rows of h, l, l, h lies -0.5.
    const Numbers corners{highest, lowest, lowest, highest};
    EXPECT_EQ(bilinear({0, 65535}, {0, 65537}, corners, 65535, 65537), highest);
    EXPECT_EQ(bilinear({0, 65536}, {0, 65536}, corners, 65536, 65536), highest);
    EXPECT_EQ(bilinear({0, 65534}, {0, 65536}, corners, 32767, 32768), -1);
    EXPECT_EQ(bilinear({0, 65536}, {0, 65538}, corners, 32768, 32769), -1);
}

TEST(BilinearTest, HalvesNextToTheEndsOfTheRangeAreRoundedAwayFromZero) {
    EXPECT_EQ(bilinear({0, 2}, {0, 2}, {highest, highest, highest - 1, highest - 1}, 1, 1), highest);
    EXPECT_EQ(bilinear({0, 2}, {0, 2}, {lowest, lowest, lowest + 1, lowest + 1}, 1, 1), lowest);
}

#ifdef __SIZEOF_INT128__

__extension__ using Wide = __int128;

/** The quotient, rounded to the nearest with halves away from zero. */
std::int32_t rounded(Wide dividend, Wide divisor) {
    const Wide magnitude = dividend < 0 ? -dividend : dividend;
    const Wide quotient = (2 * magnitude + divisor) / (2 * divisor);
    return static_cast<std::int32_t>(dividend < 0 ? -quotient : quotient);
}

/** A second way to the same values: a scan for the segment, and one fraction in 128 bits. */
struct Segment {
    Segment(const Numbers& axis, std::int32_t wanted) {
        const Wide x = std::clamp(wanted, axis.front(), axis.back());
        while (high + 1 < axis.size() && axis[high] < x) {
            low = high++;
        }
        width = high == low ? 1 : Wide{axis[high]} - axis[low];
        weight = x - axis[low];
    }

    std::size_t low = 0;
    std::size_t high = 0;
    Wide width;
    Wide weight;
};

std::int32_t exactLinear(const Numbers& axis, const Numbers& values, std::int32_t x) {
    const Segment s(axis, x);
    return rounded(values[s.low] * (s.width - s.weight) + values[s.high] * s.weight, s.width);
}

std::int32_t exactBilinear(const Numbers& first, const Numbers& second, const Numbers& values,
                           std::int32_t x1, std::int32_t x2) {
    const Segment s1(first, x1);
    const Segment s2(second, x2);
    const auto value = [&](std::size_t i, std::size_t j) { return Wide{values[i * second.size() + j]}; };
    const Wide low = value(s1.low, s2.low) * (s2.width - s2.weight) + value(s1.low, s2.high) * s2.weight;
    const Wide high = value(s1.high, s2.low) * (s2.width - s2.weight) + value(s1.high, s2.high) * s2.weight;
    // At most 2^31 * 2^32 * 2^32, which leaves room for the doubling.
    return rounded(low * (s1.width - s1.weight) + high * s1.weight, s1.width * s2.width);
}

/** Numbers of the whole range, small ones and those at its ends, from a fixed seed. */
class RandomNumbers {
public:
    std::int32_t number() {
        switch (m_engine() % 4) {
        case 0:
            return static_cast<std::int32_t>(m_engine());
        case 1:
            return lowest + small();
        case 2:
            return highest - small();
        default:
            return small() - 4;
        }
    }
    Numbers numbers(std::size_t count) {
        Numbers result(count);
        std::generate(result.begin(), result.end(), [this] { return number(); });
        return result;
    }
    Numbers axis() {
        const std::size_t nodes = 1 + m_engine() % 4;
        std::set<std::int32_t> ascending;
        while (ascending.size() < nodes) {
            ascending.insert(number());
        }
        return {ascending.begin(), ascending.end()};
    }

    std::int32_t small() { return static_cast<std::int32_t>(m_engine() % 9); }

private:
    // The same numbers in every run. NOLINTNEXTLINE(cert-msc32-c,cert-msc51-cpp)
    std::mt19937 m_engine{20231117};
};

TEST(LinearTest, AgreesWithTheExactFraction) {
    RandomNumbers random;
    for (int i = 0; i < 100000; ++i) {
        const Numbers axis = random.axis();
        const Numbers values = random.numbers(axis.size());
        const std::int32_t x = random.number();
        ASSERT_EQ(linear(axis, values, x), exactLinear(axis, values, x)) << "round " << i;
    }
}

TEST(BilinearTest, AgreesWithTheExactFraction) {
    RandomNumbers random;
    for (int i = 0; i < 100000; ++i) {
        const Numbers first = random.axis();
        const Numbers second = random.axis();
        const Numbers values = random.numbers(first.size() * second.size());
        const std::int32_t x1 = random.number();
        const std::int32_t x2 = random.number();
        ASSERT_EQ(bilinear(first, second, values, x1, x2), exactBilinear(first, second, values, x1, x2))
            << "round " << i;
    }
}

TEST(BilinearTest, CellsAroundTheLargestThatIsWeighedInOneGoAgreeWithTheExactFraction) {
    RandomNumbers random;
    for (int i = 0; i < 100000; ++i) {
        const std::int32_t width1 = 65536 + random.small();
        const std::int32_t width2 = 65532 + random.small();
        const Numbers values = random.numbers(4);
        const std::int32_t x1 =
            static_cast<std::int32_t>(static_cast<std::uint32_t>(random.number()) % 65536);
        const std::int32_t x2 =
            static_cast<std::int32_t>(static_cast<std::uint32_t>(random.number()) % 65532);
        ASSERT_EQ(bilinear({0, width1}, {0, width2}, values, x1, x2),
                  exactBilinear({0, width1}, {0, width2}, values, x1, x2))
            << "round " << i;
    }
}

TEST(BilinearTest, SmallGridsAgreeWithTheExactFractionEverywhere) {
    RandomNumbers random;
    const Numbers nodes{-3, 1, 2, 6};
    for (int i = 0; i < 100; ++i) {
        const Numbers values = random.numbers(16);
        for (std::int32_t x = 0; x < 144; ++x) {
            const std::int32_t x1 = x / 12 - 4;
            const std::int32_t x2 = x % 12 - 4;
            ASSERT_EQ(bilinear(nodes, nodes, values, x1, x2), exactBilinear(nodes, nodes, values, x1, x2));
        }
    }
}

#endif

} // namespace
