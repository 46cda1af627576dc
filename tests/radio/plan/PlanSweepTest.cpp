#include "radio/plan/Audit.h"
#include "tests/radio/support/PlanBoards.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>

namespace Radio::Plan {
namespace {

using ::FrequencyHandler;

/** The 300 MHz from 18 GHz on: every kHz of it, or one in many where each costs much more. */
constexpr std::uint32_t first = 18'000'000;
constexpr std::uint32_t width = 300'000;
constexpr std::uint32_t step = PLAN_SWEEP_STEP_KHZ;

/** A board, and by how much its carriers may be off, in Hz: what whole MHz and the factor cut off. */
struct Sweep {
    std::string name;
    FrequencyHandler::FrequencyHandlerType type;
    std::int32_t factor;
    bool loIsAbove;
    std::int64_t bound;
};

void PrintTo(const Sweep& sweep, std::ostream* out) {
    *out << sweep.name;
}

/** Goes through a band with the library, there and back between neighbours, and looks at every carrier. */
class PlanSweepTest : public testing::TestWithParam<Sweep>, private AuditListener {
protected:
    PlanSweepTest() {
        m_board.limits.carrierError = GetParam().bound;
        for (const std::string prefix : {"channel.1.tx.", "channel.1.rx."}) {
            PlanBoards::set(m_board, prefix + "mixer.multiplicationfactor", {GetParam().factor});
            PlanBoards::set(m_board, prefix + "rf.spectruminverted", {GetParam().loIsAbove ? 1 : 0});
        }
        const std::uint32_t count = (width - 1) / step + 1;
        m_board.rasters.push_back(
            {"band", {1}, {{true, first, step, count}, {false, first, step, count}}, {50, 100}, {}});
    }

    void sweep() {
        BootedRadio booted(m_board);
        ASSERT_TRUE(booted.isUp());
        auditBoard(booted, m_board, {this}, [](std::uint64_t) { return true; });
    }

    Board m_board = PlanBoards::microwave(GetParam().type);
    std::uint64_t m_carriers = 0;
    std::uint64_t m_outside = 0;
    std::int64_t m_worstError = 0;

private:
    void carrierAudited(const AuditRow& /*row*/, const CarrierResult& /*result*/) override {}
    void rowAudited(const RowResult& result) override {
        m_carriers += result.carriers;
        m_outside += result.outside;
        m_worstError = std::max(m_worstError, std::abs(result.worstError.value_or(0)));
    }
};

TEST_P(PlanSweepTest, EveryCarrierOfABandIsProducedWithinTheBound) {
    sweep();
    EXPECT_GE(m_carriers, 2U * (width / step));
    EXPECT_EQ(m_outside, 0U);
    EXPECT_LE(m_worstError, GetParam().bound);
}

INSTANTIATE_TEST_SUITE_P(
    Types, PlanSweepTest,
    testing::Values(
        // Exact as long as the factor divides whole MHz; otherwise up to factor - 1 kHz are missing.
        Sweep{"If", FrequencyHandler::MicrowaveBoardIf, 2, false, 0},
        Sweep{"IfLoAbove", FrequencyHandler::MicrowaveBoardIf, 4, true, 0},
        Sweep{"IfFactor3", FrequencyHandler::MicrowaveBoardIf, 3, false, 2'000},
        // What is left of whole MHz is lost.
        Sweep{"DspOffset", FrequencyHandler::MicrowaveBoardDspOffset, 2, false, 500'000},
        Sweep{"DspOffsetLoAbove", FrequencyHandler::MicrowaveBoardDspOffset, 1, true, 500'000},
        // Up to factor - 1 Hz are missing.
        Sweep{"HzCsOffset", FrequencyHandler::MicrowaveBoardHzCsOffset, 2, false, 0},
        Sweep{"HzCsOffsetFactor3", FrequencyHandler::MicrowaveBoardHzCsOffset, 3, true, 2},
        Sweep{"Hz", FrequencyHandler::MicrowaveBoardHz, 2, false, 0},
        Sweep{"HzFactor7", FrequencyHandler::MicrowaveBoardHz, 7, true, 6}),
    [](const testing::TestParamInfo<Sweep>& sweep) { return sweep.param.name; });

} // namespace
} // namespace Radio::Plan
