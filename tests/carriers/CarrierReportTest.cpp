// What is said of a check: whose parameters, how many carriers, and the first difference.

#include "PlanCheck.h"
#include "Report.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <sstream>
#include <string>

namespace Carriers {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

/** Is mistaken about one factor, from one carrier on. */
struct MistakenPlan : LibraryPlan {
    std::uint64_t rfPllFrequency(std::uint32_t carrier, const Parameters& parameters) const {
        const std::uint64_t right = LibraryPlan::rfPllFrequency(carrier, parameters);
        return parameters.mixerMultiplicationFactor == 3 && carrier >= 3'000'000'000U ? right + 1 : right;
    }
};

class CarrierReportTest : public testing::Test {
protected:
    CarrierReportTest() {
        sets.add({1, -1, 140'000, 2, 0}, "first.toml", "channel 1 tx");
        sets.add({1, -1, 140'000, 2, 0}, "first.toml", "channel 2 tx");
        sets.add({1, -1, 140'000, 2, 0}, "second.toml", "channel 1 rx");
        sets.add({-1, 1, 0, 3, 0}, "second.toml", "channel 1 tx");
    }
    /** Has 65,536 carriers checked. */
    template <typename PlanType>
    std::optional<Difference> check(const PlanType& plan) {
        return checkSets(
            sets, {0, std::uint64_t{1} << 32U, 65'537},
            [&plan](const Parameters& parameters, const CarrierRange& part) {
                return firstDifference(plan, parameters, part);
            },
            out);
    }

    ParameterSets sets;
    std::ostringstream out;
};

} // namespace

TEST_F(CarrierReportTest, RightPlanHasNoDifferences) {
    EXPECT_FALSE(check(LibraryPlan{}));
    EXPECT_THAT(out.str(), StartsWith("set 1 of 2: IF sideband +1, RF sideband -1, IF 140000 kHz, factor 2, "
                                      "baseband offset 0 MHz\n"
                                      "  first.toml: channel 1 tx, channel 2 tx\n"
                                      "  second.toml: channel 1 rx\n"
                                      "  65,536 carriers, no difference, "));
    EXPECT_THAT(out.str(), HasSubstr("set 2 of 2: IF sideband -1, RF sideband +1, IF 0 kHz, factor 3, "
                                     "baseband offset 0 MHz\n"
                                     "  second.toml: channel 1 tx\n"
                                     "  65,536 carriers, no difference, "));
    EXPECT_THAT(out.str(), HasSubstr("\nsets of parameters: 2, carriers with each: 65,536, in all: 131,072, "
                                     "differences: 0\n"));
}

TEST_F(CarrierReportTest, MistakenPlanIsFoundAndNothingIsSaidOfAllCarriers) {
    // 45776 x 65537 kHz is the first of these carriers from 3 000 000 000 kHz on; as a signed number it is
    // -1 294 945 584, whose magnitude is nearest to 1 294 946 MHz, a third of which is 431 648 666 kHz.
    const std::optional<Difference> difference = check(MistakenPlan{});
    ASSERT_TRUE(difference);
    EXPECT_EQ(difference->carrier, 3'000'021'712U);
    EXPECT_THAT(out.str(), HasSubstr("\n  DIFFERENT: RF PLL for 3000021712 kHz with IF sideband -1, RF "
                                     "sideband +1, IF 0 kHz, factor 3, baseband offset 0 MHz: the library "
                                     "says 431648667, the model 431648666\n"));
    EXPECT_THAT(out.str(), Not(HasSubstr("differences: 0")));
}

TEST(CarrierNumberTest, DigitsAreGroupedInThrees) {
    EXPECT_EQ(grouped(0), "0");
    EXPECT_EQ(grouped(999), "999");
    EXPECT_EQ(grouped(1000), "1,000");
    EXPECT_EQ(grouped(4'294'967'296), "4,294,967,296");
}

} // namespace Carriers
