#ifndef TESTS_RADIO_SUPPORT_MADEUPCALIBRATION_H
#define TESTS_RADIO_SUPPORT_MADEUPCALIBRATION_H

#include "radio/calibration/Calibration.h"
#include "radio/model/LeakageModel.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Radio::Calibration {

/**
 * A transmitter of which 0.1 of the amplitude leaks, -20 dBc. A unit of I adds 0.001 to it, a unit of Q
 * 0.001j: I = -100 and Q = 0 leave nothing, I = -90 leaves 0.01, which is -40 dBc. With a delay of 1 ns the
 * leakage turns around once in a GHz from 18 GHz on.
 */
inline LeakageDescription madeUpLeakage(double delay = 0.0) {
    LeakageDescription leakage;
    leakage.channel = 1;
    leakage.reference = 18000000;
    LeakagePath path;
    path.level = -20.0;
    path.delay = delay;
    leakage.paths = {path};
    leakage.i = {"channel.1.tx.rf.mixer.i", 0.001, 1, -1000, 1000};
    leakage.q = {"channel.1.tx.rf.mixer.q", 0.001, 1, -1000, 1000};
    leakage.detector.driver = "channel.1.tx.rf.detector.v";
    return leakage;
}

/** A point that was found, with I = `i` and Q = 0, after one iteration whose last probe had the result. */
inline Point madeUpPoint(std::uint32_t frequency, std::int32_t temperature, std::int32_t i, double after) {
    Point point;
    point.frequency = frequency;
    point.temperature = temperature;
    point.state = PointState::good;
    point.i = i;
    point.iterations = 1;
    point.before = -20.0;
    point.after = after;
    point.probes = {{-200, -200, 90}, {200, -200, 80}, {-200, 200, 70}, {i, 0, 10}};
    return point;
}

inline void makeFail(Point& point) {
    point.state = PointState::failed;
    point.i = 0;
    point.after = point.before;
    point.remark = "the detector could not be read";
}

/** Each carrier at each temperature, with corrections that leave -40 dBc. */
inline Result madeUpResult(const std::vector<std::uint32_t>& frequencies,
                           const std::vector<std::int32_t>& temperatures) {
    Result result;
    result.serial = "SN-0042";
    result.date = "2026-03-01T09:30:00Z";
    result.version = "1.2.3";
    Settings& settings = result.settings;
    settings.channel = 1;
    settings.frequencies = frequencies;
    settings.temperatures = temperatures;
    settings.i = {-200, 300};
    settings.q = {-250, 350};
    settings.shrinkFactor = 0.75;
    settings.minDelta = 2;
    settings.maxIterations = 40;
    settings.settleTime = 7;
    for (const std::int32_t temperature : temperatures) {
        for (const std::uint32_t frequency : frequencies) {
            result.points.push_back(madeUpPoint(frequency, temperature, -90, -40.0));
        }
    }
    return result;
}

/**
 * A fit of two points, each with a ring of probes and one at what it told, whose table has three carriers at
 * two temperatures. It was tried at two places, of which one read more than was foretold.
 */
inline Result madeUpFit() {
    Result result = madeUpResult({18000000u, 18100000u, 18200000u}, {-10, 30});
    result.nodes = result.points;
    for (Point& node : result.nodes) {
        node.probes.clear();
        node.iterations = 0;
    }
    Settings& settings = result.settings;
    settings.method = CalibrationMethod::fit;
    settings.budget = 400;
    settings.limit = -39.0;
    settings.frequencies = {18000000u, 18200000u};
    result.points = {madeUpPoint(18000000u, -10, -90, -40.0), madeUpPoint(18200000u, 30, -91, -41.0)};
    Fit::Outcome& fit = result.fit.emplace();
    for (Point& point : result.points) {
        point.iterations = 0;
        point.probes = {{-290, 0, 75}, {-90, 200, 75}, {110, 0, 75}, {-90, -200, 75}, {point.i, 0, 10}};
        Fit::Point fitted;
        fitted.place = {point.frequency, point.temperature};
        fitted.state = Fit::PointState::good;
        fitted.corrections = {point.i, point.q};
        fitted.reading = 10;
        fitted.level = -39.75;
        fitted.probes = 5;
        fit.points.push_back(fitted);
    }
    fit.verdict = Fit::Verdict::held;
    fit.verifications = {{{18050000u, 10}, {-90, 1}, 11, -39.5, true},
                         {{18150000u, 11}, {-92, 2}, 14, -36.25, false}};
    fit.table.carriers = {18000000, 18100000, 18200000};
    fit.table.temperatures = {-10, 30};
    fit.claim = Fit::LevelAt{-39.25, {18150000u, 30}};
    fit.slope = 25.0;
    fit.probes = 12;
    fit.temperatureChanges = 3;
    return result;
}

} // namespace Radio::Calibration

#endif
