#include "radio/board/Board.h"
#include "radio/board/BoardFile.h"
#include "radio/model/LeakageModel.h"
#include "standalone/Interpolation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <vector>

namespace Radio {
namespace {

/** What the pages say of the demonstration board. */
class LeakageDemonstrationTest : public testing::Test {
protected:
    /** The highest level over the carriers of the raster and the temperatures of the board. */
    template <typename CorrectionsAt>
    double worst(const LeakageDescription& leakage, CorrectionsAt correctionsAt) const {
        const CarrierRow& row = m_board.rasters.at(0).rows.at(0);
        double level = -120.0;
        for (std::uint32_t n = 0; n < row.count; ++n) {
            const std::uint32_t carrier = row.first + n * row.step;
            for (std::int32_t degrees = -33; degrees <= 55; ++degrees) {
                level = std::max(level, leakageLevel(leakage, {carrier, static_cast<double>(degrees)},
                                                     correctionsAt(carrier, degrees)));
            }
        }
        return level;
    }
    static LoCorrections ideal(const LeakageDescription& leakage, std::int32_t carrier,
                               std::int32_t degrees) {
        return idealLoCorrections(leakage,
                                  {static_cast<std::uint32_t>(carrier), static_cast<double>(degrees)});
    }

    const std::vector<std::int32_t> m_carriers = {17'727'500, 17'920'000, 18'112'500,
                                                  18'305'000, 18'497'500, 18'662'500};
    const std::vector<std::int32_t> m_temperatures = {-33, -10, 12, 33, 55};
    const Board m_board = loadBoard(RADIO_BOARDS "/lo-leakage-18ghz.toml");
};

TEST_F(LeakageDemonstrationTest, LeaksStronglyWithoutCorrections) {
    for (const LeakageDescription& leakage : m_board.leakages) {
        const double level = worst(leakage, [](std::uint32_t, std::int32_t) { return LoCorrections{}; });
        EXPECT_NEAR(level, -23.7, 0.1);
    }
}

TEST_F(LeakageDemonstrationTest, IdealCorrectionsLeaveWhatRoundingLeaves) {
    // Half a step of 0.000104 in both branches: 20 log10 0.0000735.
    for (const LeakageDescription& leakage : m_board.leakages) {
        EXPECT_LT(worst(leakage,
                        [&](std::uint32_t carrier, std::int32_t degrees) {
                            return ideal(leakage, static_cast<std::int32_t>(carrier), degrees);
                        }),
                  -82.6);
    }
}

TEST_F(LeakageDemonstrationTest, IdealCorrectionsAtTheNodesServeBetweenThem) {
    for (const LeakageDescription& leakage : m_board.leakages) {
        std::vector<std::int32_t> i;
        std::vector<std::int32_t> q;
        for (const std::int32_t carrier : m_carriers) {
            for (const std::int32_t degrees : m_temperatures) {
                const LoCorrections corrections = ideal(leakage, carrier, degrees);
                i.push_back(corrections.i);
                q.push_back(corrections.q);
            }
        }
        const auto interpolated = [&](std::uint32_t carrier, std::int32_t degrees) {
            const auto x = static_cast<std::int32_t>(carrier);
            using Standalone::Interpolation::bilinear;
            return LoCorrections{bilinear(m_carriers, m_temperatures, i, x, degrees),
                                 bilinear(m_carriers, m_temperatures, q, x, degrees)};
        };
        EXPECT_LT(worst(leakage, interpolated), -55.0);
    }
}

} // namespace
} // namespace Radio
