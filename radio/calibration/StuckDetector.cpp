#include "radio/calibration/StuckDetector.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>
#include <vector>

namespace Radio::Calibration {

namespace {

constexpr std::size_t probesOfIteration = 4;
/** So many tell what noise is like. */
constexpr std::size_t leastIterations = 6;
/** By how much a search has to narrow its ranges for its readings to have shown it. */
constexpr std::int64_t leastNarrowing = 16;
/** Noise alone hardly ever makes a difference of more than so many standard errors. */
constexpr double standardErrors = 4.0;
/** In dB. A modelled detector that is known to answer, and varies by more, is noisy. */
constexpr double mostOfAModel = 6.0;

using Values = std::vector<double>;

double meanOf(const Values& values) {
    return std::accumulate(values.begin(), values.end(), 0.0) / static_cast<double>(values.size());
}

/** Of the products of what two kinds of values are off their means. */
double sumOfProducts(const Values& some, const Values& others) {
    const double mean = meanOf(some);
    const double otherMean = meanOf(others);
    double sum = 0;
    for (std::size_t n = 0; n < some.size(); ++n) {
        sum += (some[n] - mean) * (others[n] - otherMean);
    }
    return sum;
}

/** The smallest difference of two readings, which is what the converter can tell apart. */
double stepOf(const Values& sorted) {
    double step = sorted.back() - sorted.front();
    for (std::size_t n = 1; n < sorted.size(); ++n) {
        if (sorted[n] != sorted[n - 1]) {
            step = std::min(step, sorted[n] - sorted[n - 1]);
        }
    }
    return step;
}

/** The probes of a search that have a reading: corrections and readings. */
struct ReadProbes {
    Values i;
    Values q;
    Values values;
};

ReadProbes readProbesOf(const std::vector<Probe>& probes) {
    ReadProbes readings;
    for (const Probe& probe : probes) {
        if (probe.reading) {
            readings.i.push_back(probe.i);
            readings.q.push_back(probe.q);
            readings.values.push_back(*probe.reading);
        }
    }
    return readings;
}

/** The mean of the first third of the readings is that of the last third, but for noise. `least` is the least
 * variance that is believed. */
bool staysWhereItBegan(const Values& values, double least) {
    const auto third = static_cast<std::ptrdiff_t>(values.size() / 3);
    const Values begun(values.begin(), values.begin() + third);
    const Values ended(values.end() - third, values.end());
    const auto count = static_cast<double>(third);
    const auto variance = [&](const Values& some) {
        return std::max(sumOfProducts(some, some) / (count - 1), least);
    };
    const double error = std::sqrt((variance(begun) + variance(ended)) / count);
    return std::abs(meanOf(begun) - meanOf(ended)) <= standardErrors * error;
}

/** The line through readings over a correction is level, but for noise. */
bool isLevel(const Values& corrections, const Values& values, double least) {
    const double width = sumOfProducts(corrections, corrections);
    if (width == 0) {
        return true;
    }
    const double rise = sumOfProducts(corrections, values) / width;
    const double unexplained = sumOfProducts(values, values) - rise * rise * width;
    const double variance = std::max(unexplained / static_cast<double>(values.size() - 2), least);
    return std::abs(rise) <= standardErrors * std::sqrt(variance / width);
}

bool isNarrowedEnough(const Point& point, const Settings& settings) {
    const std::int64_t widest = std::max(settings.i.high - settings.i.low, settings.q.high - settings.q.low);
    return widest >= leastNarrowing * std::max<std::int64_t>(point.maxDelta, 1);
}

bool isNoisyModel(const DetectorDescription* detector, double span) {
    return detector != nullptr && detector->slope != 0 && span > mostOfAModel * std::abs(detector->slope);
}

} // namespace

std::string whyStuck(const Point& point, const Settings& settings, const DetectorDescription* detector) {
    const ReadProbes readings = readProbesOf(point.probes);
    const Values& values = readings.values;
    if (values.size() < leastIterations * probesOfIteration || !isNarrowedEnough(point, settings)) {
        return {};
    }
    Values sorted = values;
    std::sort(sorted.begin(), sorted.end());
    // A reading that jumps once in a while does so by a whole step: fewer jumps are no smaller noise.
    const double halfStep = stepOf(sorted) / 2;
    const double least = halfStep * halfStep;
    if (isNoisyModel(detector, sorted.back() - sorted.front()) || !staysWhereItBegan(values, least) ||
        !isLevel(readings.i, values, least) || !isLevel(readings.q, values, least)) {
        return {};
    }
    const double median = sorted[sorted.size() / 2];
    const double most = std::max(sorted.back() - median, median - sorted.front());
    return "readings stay within " + std::to_string(std::llround(most)) + " of " +
           std::to_string(std::llround(median)) + " whatever the corrections are: the detector is stuck";
}

} // namespace Radio::Calibration
