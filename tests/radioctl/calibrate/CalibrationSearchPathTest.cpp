#include "radioctl/calibrate/page/SearchPath.h"
#include "tests/radio/support/MadeUpCalibration.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>

namespace Radio::Calibration {
namespace {

using testing::DoubleNear;
using testing::ElementsAre;
using testing::IsEmpty;

class CalibrationSearchPath : public testing::Test {
protected:
    /** Adds an iteration whose probes have I = 0, 1, 2 and 3. */
    void probe(const std::vector<std::optional<std::int32_t>>& readings) {
        for (std::size_t k = 0; k < readings.size(); ++k) {
            m_point.probes.push_back({static_cast<std::int32_t>(k), 0, readings[k]});
        }
    }
    std::vector<std::int32_t> best() const {
        std::vector<std::int32_t> all;
        for (const Probe& probe : bestProbes(m_point)) {
            all.push_back(probe.i);
        }
        return all;
    }

    Point m_point;
};

TEST_F(CalibrationSearchPath, TheLowestReadingIsBest) {
    probe({40, 10, 20, 30});
    probe({-5, 10, 20, 30});
    EXPECT_THAT(best(), ElementsAre(1, 0));
}

TEST_F(CalibrationSearchPath, OfEqualReadingsTheLastIsBest) {
    probe({10, 30, 10, 20});
    EXPECT_THAT(best(), ElementsAre(2));
}

TEST_F(CalibrationSearchPath, WithoutAnyReadingTheLastProbeIsBest) {
    probe({std::nullopt, std::nullopt, std::nullopt, std::nullopt});
    EXPECT_THAT(best(), ElementsAre(3));
}

TEST_F(CalibrationSearchPath, AProbeWithoutReadingHasThatOfTheIterationBefore) {
    probe({40, 10, 20, 30});
    probe({40, std::nullopt, 20, 30});
    EXPECT_THAT(best(), ElementsAre(1, 1));
}

TEST_F(CalibrationSearchPath, AnIterationThatWasCutShortHasNoBestProbe) {
    probe({40, 10, 20});
    EXPECT_THAT(best(), IsEmpty());
}

/** 0.1, 0.01 and nothing: see madeUpLeakage(). */
TEST_F(CalibrationSearchPath, ConvergenceIsTheModelledLeakageOfTheBestProbes) {
    m_point.frequency = 18000000;
    for (const std::int32_t i : {0, -90, -100}) {
        m_point.probes.insert(m_point.probes.end(), {{5, 5, 9}, {5, 5, 9}, {5, 5, 9}, {i, 0, 1}});
    }
    EXPECT_THAT(convergenceOf(m_point, madeUpLeakage()),
                ElementsAre(DoubleNear(-20.0, 0.005), DoubleNear(-40.0, 0.005), DoubleNear(-120.0, 0.005)));
}

TEST_F(CalibrationSearchPath, ASearchThatHasEndedStaysAtItsLastValue) {
    EXPECT_THAT(medianOf({{-1.0, -9.0}, {-2.0, -3.0, -4.0}, {-3.0}}), ElementsAre(-2.0, -3.0, -4.0));
}

TEST_F(CalibrationSearchPath, SearchesWithoutAnIterationDoNotCount) {
    EXPECT_THAT(medianOf({{}, {-2.0}, {}}), ElementsAre(-2.0));
    EXPECT_THAT(medianOf({{}, {}}), IsEmpty());
}

} // namespace
} // namespace Radio::Calibration
