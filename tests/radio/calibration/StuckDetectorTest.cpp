#include "radio/calibration/StuckDetector.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <random>
#include <string>

namespace Radio::Calibration {
namespace {

using testing::EndsWith;

/** Searches as the library does, with readings that a test makes up. */
class StuckDetector : public testing::Test {
protected:
    StuckDetector() {
        settings.i = {-1000, 1000};
        settings.q = {-1000, 1000};
        settings.shrinkFactor = 0.75;
        settings.minDelta = 3;
        settings.maxIterations = 40;
    }

    using Reading = std::function<double(double i, double q)>;

    /** What is said about a search whose detector reads that. */
    std::string remark(const Reading& reading, const DetectorDescription* detector = nullptr) {
        Point point;
        Side i{static_cast<double>(settings.i.low), static_cast<double>(settings.i.high)};
        Side q{static_cast<double>(settings.q.low), static_cast<double>(settings.q.high)};
        double inner = 0;
        double width = 0;
        do {
            std::size_t best = 0;
            const std::size_t begin = point.probes.size();
            for (std::size_t n = 0; n < 4; ++n) {
                const double atI = i.probe(n % 2 == 0, inner);
                const double atQ = q.probe(n / 2 == 0, inner);
                point.probes.push_back({static_cast<std::int32_t>(atI), static_cast<std::int32_t>(atQ),
                                        static_cast<std::int32_t>(std::lround(reading(atI, atQ)))});
                best = point.probes.back().reading <= point.probes[begin + best].reading ? n : best;
            }
            i.keep(best % 2 == 0, settings.shrinkFactor);
            q.keep(best / 2 == 0, settings.shrinkFactor);
            inner = 1 - settings.shrinkFactor;
            width = std::max(i.high - i.low, q.high - q.low);
        } while (width > settings.minDelta && ++point.iterations < settings.maxIterations);
        point.maxDelta = static_cast<std::int32_t>(width);
        return whyStuck(point, settings, detector);
    }

    /** A whole number from -most to most, each as likely. */
    double noise(unsigned most) { return static_cast<double>(m_random() % (2 * most + 1)) - most; }

    /** A logarithmic detector of 25 units for each dB that sees -95 dBc as 0 and nothing below -85 dBc. Of a
     * correction a unit is 1e-4; `away` units of I take the leakage away. */
    static double logarithmic(double i, double q, double away) {
        const double floor = std::pow(10.0, -8.5);
        const double power = 1e-8 * ((i - away) * (i - away) + q * q) + floor;
        return 25.0 * (10.0 * std::log10(power) + 95.0);
    }

    Settings settings;

private:
    struct Side {
        double low;
        double high;
        double probe(bool isLow, double inner) const {
            return isLow ? low + inner * (high - low) : high - inner * (high - low);
        }
        void keep(bool isLow, double part) {
            const double kept = (high - low) * part;
            (isLow ? high : low) = isLow ? low + kept : high - kept;
        }
    };

    std::minstd_rand m_random{1};
};

TEST_F(StuckDetector, ReadsTheSameWhateverTheCorrectionsAre) {
    for (int search = 0; search < 100; ++search) {
        EXPECT_EQ(remark([&](double, double) { return 500 + noise(1); }),
                  "readings stay within 1 of 500 whatever the corrections are: the detector is stuck");
    }
}

TEST_F(StuckDetector, MayBeAsNoisyAsItLikes) {
    EXPECT_THAT(remark([&](double, double) { return noise(20); }), EndsWith(": the detector is stuck"));
    EXPECT_THAT(remark([&](double, double) { return 30000 + noise(400); }),
                EndsWith(": the detector is stuck"));
}

TEST_F(StuckDetector, MayJumpOnceInAWhile) {
    int probes = 0;
    EXPECT_EQ(remark([&](double, double) { return ++probes == 3 ? 516 : 500; }),
              "readings stay within 16 of 500 whatever the corrections are: the detector is stuck");
}

TEST_F(StuckDetector, IsNoneThatFollowsTheLeakage) {
    for (const unsigned most : {0U, 1U, 25U, 100U}) {
        EXPECT_EQ(remark([&](double i, double q) { return logarithmic(i, q, -500) + noise(most); }), "")
            << most;
    }
}

TEST_F(StuckDetector, IsNoneThatSeesAWeakLeakNearItsFloor) {
    // 0.6 units: -84.4 dBc. The corrections themselves leak more.
    EXPECT_EQ(remark([&](double i, double q) { return logarithmic(i, q, 0.6) + noise(3); }), "");
    settings.i = {-24, 24};
    settings.q = {-24, 24};
    EXPECT_EQ(remark([&](double i, double q) { return logarithmic(i, q, 0.6) + noise(3); }), "");
}

TEST_F(StuckDetector, IsNoneWhereTheBestCorrectionsLieFarBeyondTheRange) {
    // Readings differ by 1.7 dB, 43 units, at most.
    for (const unsigned most : {0U, 1U, 8U}) {
        EXPECT_EQ(remark([&](double i, double q) { return logarithmic(i, q, 10000) + noise(most); }), "")
            << most;
    }
}

TEST_F(StuckDetector, IsNotToldFromFewUnits) {
    settings.i = {-10, 10};
    settings.q = {-10, 10};
    EXPECT_EQ(remark([&](double, double) { return 500 + noise(1); }), "");
}

TEST_F(StuckDetector, IsNotToldFromFewIterations) {
    settings.shrinkFactor = 0.2;
    EXPECT_EQ(remark([&](double, double) { return 500 + noise(1); }), "");
}

TEST_F(StuckDetector, IsNoModelThatIsOnlyNoisy) {
    DetectorDescription detector;
    detector.slope = 25.0;
    const Reading wild = [&](double, double) { return 1000 + noise(300); };
    EXPECT_EQ(remark(wild, &detector), "");
    detector.slope = 0.0;
    EXPECT_THAT(remark(wild, &detector), EndsWith(": the detector is stuck"));
}

} // namespace
} // namespace Radio::Calibration
