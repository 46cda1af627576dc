#include "radio/calibration/Diagnosis.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Radio::Calibration {
namespace {

/** A search over -1000 to 1000 whose detector reads 0 to 4095. */
class CalibrationDiagnosis : public testing::Test {
protected:
    CalibrationDiagnosis() {
        settings.i = {-1000, 1000};
        settings.q = {-1000, 1000};
        settings.minDelta = 1;
        leakage.detector.low = 0;
        leakage.detector.high = 4095;
        point.state = PointState::failed;
        point.maxDelta = 1;
        point.iterations = 30;
        point.before = -26.0;
        point.after = -70.0;
        point.probes = {{-1000, -1000, 1900}, {1000, -1000, 2000}, {-1000, 1000, 1900}, {1000, 1000, 2000}};
    }
    PointState state() {
        diagnose(point, settings, leakage);
        return point.state;
    }
    std::string remark() {
        diagnose(point, settings, leakage);
        return point.remark;
    }
    void readEverywhere(std::optional<std::int32_t> reading) {
        for (Probe& probe : point.probes) {
            probe.reading = reading;
        }
    }

    Settings settings;
    LeakageDescription leakage;
    Point point;
};

TEST_F(CalibrationDiagnosis, NothingToSayAboutAGoodPoint) {
    EXPECT_EQ(state(), PointState::good);
    EXPECT_EQ(remark(), "");
}

TEST_F(CalibrationDiagnosis, DetectorThatIsNotThereFails) {
    readEverywhere(std::nullopt);
    EXPECT_EQ(state(), PointState::failed);
    EXPECT_EQ(remark(), "the detector was never read: the radio has none");
    settings.useHighDetector = true;
    EXPECT_EQ(remark(), "the high-range detector was never read: the radio has none");
}

TEST_F(CalibrationDiagnosis, StuckDetectorFails) {
    readEverywhere(500);
    EXPECT_EQ(state(), PointState::failed);
    EXPECT_EQ(remark(), "every reading is 500: the detector is stuck");
}

TEST_F(CalibrationDiagnosis, DetectorThatIsAlwaysSaturatedFails) {
    readEverywhere(4095);
    EXPECT_EQ(state(), PointState::failed);
    EXPECT_EQ(remark(), "every reading is 4095, the highest there is: the detector is saturated");
}

TEST_F(CalibrationDiagnosis, DetectorThatSeesNothingFails) {
    readEverywhere(0);
    EXPECT_EQ(state(), PointState::failed);
    EXPECT_EQ(remark(), "every reading is 0, the lowest there is: the detector sees nothing");
}

TEST_F(CalibrationDiagnosis, HighDetectorHasLimitsOfItsOwn) {
    leakage.highDetector = leakage.detector;
    leakage.highDetector->high = 1000;
    settings.useHighDetector = true;
    readEverywhere(1000);
    EXPECT_EQ(remark(), "every reading is 1000, the highest there is: the detector is saturated");
}

TEST_F(CalibrationDiagnosis, ResultAtTheEndOfARangeIsAtTheEdge) {
    point.i = -999;
    EXPECT_EQ(state(), PointState::edge);
    EXPECT_EQ(remark(), "I ended at the low edge of its range, -1000");
    point.i = 998;
    EXPECT_EQ(state(), PointState::good);
    point.i = 999;
    point.q = 1000;
    EXPECT_EQ(state(), PointState::edge);
    EXPECT_EQ(remark(),
              "I ended at the high edge of its range, 1000; Q ended at the high edge of its range, 1000");
}

TEST_F(CalibrationDiagnosis, EachBranchHasARangeOfItsOwn) {
    settings.q = {-50, 50};
    point.q = 50;
    EXPECT_EQ(remark(), "Q ended at the high edge of its range, 50");
    point.q = 0;
    point.i = 50;
    EXPECT_EQ(state(), PointState::good);
}

TEST_F(CalibrationDiagnosis, AsMuchLeakageAsWithoutCorrectionsIsNotMore) {
    point.after = point.before;
    EXPECT_EQ(state(), PointState::good);
}

TEST_F(CalibrationDiagnosis, LargestDifferenceCounts) {
    point.probes.push_back({-1000, -1000, 1920});
    point.probes.push_back({1000, -1000, 1999});
    EXPECT_THAT(remark(), testing::HasSubstr("differ by up to 20:"));
}

TEST_F(CalibrationDiagnosis, EdgeIsAsWideAsTheLastRange) {
    point.maxDelta = 20;
    settings.minDelta = 20;
    point.q = -980;
    EXPECT_EQ(state(), PointState::edge);
    point.q = -979;
    EXPECT_EQ(state(), PointState::good);
}

TEST_F(CalibrationDiagnosis, CorrectionsThatMakeItWorseFail) {
    point.after = -20.0;
    EXPECT_EQ(state(), PointState::failed);
    EXPECT_EQ(remark(), "the corrections found leave -20.00 dBc, more than the -26.00 dBc without any");
}

TEST_F(CalibrationDiagnosis, OneSaturatedProbeIsNoHarm) {
    point.probes[1].reading = 4095;
    EXPECT_EQ(remark(), "");
}

TEST_F(CalibrationDiagnosis, SeveralSaturatedProbesAreTold) {
    point.probes[1].reading = 4095;
    point.probes[3].reading = 4095;
    EXPECT_EQ(state(), PointState::good);
    EXPECT_EQ(remark(), "the detector was saturated at 2 of 4 probes");
}

TEST_F(CalibrationDiagnosis, NoiseShowsInReadingsOfTheSameCorrections) {
    // The readings span 100.
    point.probes.push_back({-1000, -1000, 1910});
    EXPECT_EQ(remark(), "");
    point.probes.back().reading = 1911;
    EXPECT_EQ(remark(),
              "readings with the same corrections differ by up to 11: the detector is noisy, or the "
              "settle time too short");
}

TEST_F(CalibrationDiagnosis, RangesThatAreStillWideAreTold) {
    point.maxDelta = 12;
    EXPECT_EQ(state(), PointState::good);
    EXPECT_EQ(remark(), "the ranges are still 12 wide after 30 iterations");
}

// On hardware

TEST_F(CalibrationDiagnosis, NobodyKnowsTheLimitsOfARealDetector) {
    readEverywhere(4095);
    diagnose(point, settings);
    EXPECT_EQ(point.state, PointState::failed);
    EXPECT_EQ(point.remark, "every reading is 4095: the detector is stuck");
}

TEST_F(CalibrationDiagnosis, GoodSearchOnHardwareHasNoRemark) {
    point.probes.insert(point.probes.end(), {{1, 1, 40}, {2, 1, 30}, {1, 2, 35}, {2, 2, 25}});
    diagnose(point, settings);
    EXPECT_EQ(point.state, PointState::good);
    EXPECT_EQ(point.remark, "");
}

TEST_F(CalibrationDiagnosis, SearchThatEndsHigherThanItBeganFails) {
    // It began at 1900; the readings span 1000, of which a tenth may be noise.
    point.probes.insert(point.probes.end(), {{1, 1, 2900}, {2, 1, 2400}, {1, 2, 2000}, {2, 2, 2100}});
    diagnose(point, settings);
    EXPECT_EQ(point.state, PointState::good);
    point.probes[6].reading = 2001;
    diagnose(point, settings);
    EXPECT_EQ(point.state, PointState::failed);
    EXPECT_EQ(point.remark, "the search ended at a reading of 2001, more than the 1900 with which it began");
}

TEST_F(CalibrationDiagnosis, EdgesAreToldOnHardwareToo) {
    point.q = 1000;
    diagnose(point, settings);
    EXPECT_EQ(point.state, PointState::edge);
    EXPECT_EQ(point.remark, "Q ended at the high edge of its range, 1000");
}

TEST(PointStateText, IsTheWordOfTheTables) {
    EXPECT_EQ(toString(PointState::good), "good");
    EXPECT_EQ(toString(PointState::edge), "edge");
    EXPECT_EQ(toString(PointState::failed), "failed");
}

} // namespace
} // namespace Radio::Calibration
