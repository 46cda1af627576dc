// The check agrees with the library's plan, and finds a plan with one mistake.

#include "PlanCheck.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>

namespace Carriers {
namespace {

/** IF 140 MHz, LO below the carrier, baseband not turned round, factor 2. */
constexpr Parameters receiver{1, -1, 140'000, 2, 0};
constexpr std::uint64_t all = std::uint64_t{1} << 32U;

/** What is said of the first difference; empty: there is none. */
template <typename PlanType>
std::string said(const PlanType& plan, const Parameters& parameters, const CarrierRange& carriers) {
    const std::optional<Difference> difference = firstDifference(plan, parameters, carriers);
    return difference ? describe(*difference) : "";
}

struct LoWithoutFold : LibraryPlan {
    std::uint32_t rfLoFrequency(std::uint32_t carrier, const Parameters& parameters) const {
        return carrier + static_cast<std::uint32_t>(parameters.ifFrequency * parameters.rfSideband);
    }
};

struct StepRoundedDownAtHalves : LibraryPlan {
    std::uint32_t frequencyStep(std::uint32_t frequency) const { return (frequency + 499U) / 1000U; }
};

/** Takes the residue for what is left above the whole MHz. */
struct ResidueCutOff : LibraryPlan {
    std::uint32_t ifPllFrequency(std::uint32_t carrier, const Parameters& parameters) const {
        return static_cast<std::uint32_t>(parameters.ifFrequency) +
               rfLoFrequency(carrier, parameters) % 1000U;
    }
};

/** Divides by a negative factor as if it had 32 bits. */
struct NarrowFactor : LibraryPlan {
    std::uint64_t rfPllFrequency(std::uint32_t carrier, const Parameters& parameters) const {
        return 1000U * frequencyStep(rfLoFrequency(carrier, parameters)) /
               static_cast<std::uint32_t>(parameters.mixerMultiplicationFactor);
    }
};

/** Counts the Hz in 32 bits. */
struct NarrowHz : LibraryPlan {
    std::uint64_t exactRfPllFrequency(std::uint32_t lo, const Parameters& parameters) const {
        return lo * 1000U / static_cast<std::uint32_t>(parameters.mixerMultiplicationFactor);
    }
};

struct BasebandInMHz : LibraryPlan {
    std::uint32_t bbFrequency(const Parameters& parameters) const {
        return static_cast<std::uint32_t>(parameters.ifBb);
    }
};

/** Is right but for the last carrier of all. */
struct WrongAtTheEnd : LibraryPlan {
    std::uint32_t rfLoFrequency(std::uint32_t carrier, const Parameters& parameters) const {
        return carrier == 4'294'967'295U ? 0 : LibraryPlan::rfLoFrequency(carrier, parameters);
    }
};

} // namespace

TEST(PlanCheckTest, LibraryAndModelAgree) {
    EXPECT_EQ(said(LibraryPlan{}, receiver, {0, 200'000, 1}), "");
    EXPECT_EQ(said(LibraryPlan{}, receiver, {all - 200'000, all, 1}), "");
}

TEST(PlanCheckTest, LoWithoutItsFoldIsFound) {
    EXPECT_EQ(said(LoWithoutFold{}, receiver, {}),
              "RF LO for 0 kHz with IF sideband +1, RF sideband -1, IF 140000 kHz, factor 2, baseband offset "
              "0 MHz: the library says 4294827296, the model 140000");
}

TEST(PlanCheckTest, StepWithoutItsRoundingIsFound) {
    EXPECT_EQ(said(StepRoundedDownAtHalves{}, receiver, {}),
              "step for 500 kHz with IF sideband +1, RF sideband -1, IF 140000 kHz, factor 2, baseband "
              "offset 0 MHz: the library says 0, the model 1");
}

TEST(PlanCheckTest, ResidueOfAnotherRoundingIsFound) {
    // From an LO of 140 000 kHz downwards: at 139 999, 1 kHz is wanting, and not 999 left.
    EXPECT_EQ(said(ResidueCutOff{}, receiver, {}),
              "IF PLL for 1 kHz with IF sideband +1, RF sideband -1, IF 140000 kHz, factor 2, baseband "
              "offset 0 MHz: the library says 140999, the model 139999");
}

TEST(PlanCheckTest, FactorOf32BitsIsFound) {
    // From an LO of 2 147 483 500 kHz on, the whole MHz are more than 2^31 kHz.
    EXPECT_EQ(said(NarrowFactor{}, {1, -1, 140'000, -2'147'483'648, 0}, {2'147'600'000, all, 1}),
              "RF PLL for 2147623500 kHz with IF sideband +1, RF sideband -1, IF 140000 kHz, factor "
              "-2147483648, baseband offset 0 MHz: the library says 1, the model 0");
}

TEST(PlanCheckTest, HzOf32BitsAreFound) {
    // 4 294 967 kHz are the last that fit.
    EXPECT_EQ(said(NarrowHz{}, receiver, {4'290'000, all, 1}),
              "exact RF PLL for 4294968 kHz with IF sideband +1, RF sideband -1, IF 140000 kHz, factor 2, "
              "baseband offset 0 MHz: the library says 352, the model 2147484000");
}

TEST(PlanCheckTest, BasebandInAnotherUnitIsFound) {
    EXPECT_EQ(said(BasebandInMHz{}, {1, -1, 140'000, 2, 20}, {}),
              "baseband for 0 kHz with IF sideband +1, RF sideband -1, IF 140000 kHz, factor 2, baseband "
              "offset 20 MHz: the library says 20, the model 20000");
}

TEST(PlanCheckTest, MistakeAtTheLastCarrierAloneIsFound) {
    EXPECT_EQ(said(WrongAtTheEnd{}, receiver, {all - 1000, all - 1, 1}), "");
    EXPECT_EQ(said(WrongAtTheEnd{}, receiver, {all - 1000, all, 1}),
              "RF LO for 4294967295 kHz with IF sideband +1, RF sideband -1, IF 140000 kHz, factor 2, "
              "baseband offset 0 MHz: the library says 0, the model 140001");
}

} // namespace Carriers
