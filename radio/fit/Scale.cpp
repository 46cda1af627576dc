#include "radio/fit/Scale.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Radio::Fit {

namespace {

const double neperPerDecibel = std::log(10.0) / 10.0;

double misfitOrMuch(double slope, const std::vector<Reading>& readings) {
    return misfitWith(slope, readings).value_or(std::numeric_limits<double>::max());
}

} // namespace

double Scale::power(double reading) const {
    return powerOf(level(reading));
}

double Scale::relativeError() const {
    return neperPerDecibel / slope;
}

double levelOf(double power) {
    return 10.0 * std::log10(std::max(power, 1e-20));
}

double powerOf(double level) {
    return std::pow(10.0, level / 10.0);
}

bool isInside(const Detector& detector, std::int32_t reading) {
    return (!detector.lowest || reading > *detector.lowest) &&
           (!detector.highest || reading < *detector.highest);
}

std::optional<double> misfitWith(double slope, const std::vector<Reading>& readings) {
    if (readings.empty()) {
        return std::nullopt;
    }
    // Powers relative to the highest: with a slope that is far too low they are beyond all numbers else.
    std::int32_t highest = readings.front().reading;
    for (const Reading& reading : readings) {
        highest = std::max(highest, reading.reading);
    }
    const Scale scale{slope, -highest / slope};
    std::vector<PowerProbe> probes;
    probes.reserve(readings.size());
    for (const Reading& reading : readings) {
        probes.push_back({reading.at, scale.power(reading.reading)});
    }
    const std::optional<Bowl> bowl = fitBowl(probes);
    if (!bowl) {
        return std::nullopt;
    }
    double squares = 0.0;
    for (const PowerProbe& probe : probes) {
        const double fitted =
            bowl->floor + bowl->curvature.power({probe.at.i - bowl->bottom.i, probe.at.q - bowl->bottom.q});
        const double miss = std::clamp(levelOf(fitted) - levelOf(probe.power), -30.0, 30.0) * slope;
        squares += miss * miss;
    }
    return std::sqrt(squares / std::max(1, bowl->freedom));
}

std::optional<SlopeEstimate> estimateSlope(const std::vector<Reading>& readings) {
    // What is read of one transmitter differs by that much and that little, in dB.
    constexpr double mostRange = 90.0;
    constexpr double leastRange = 6.0;
    if (readings.empty()) {
        return std::nullopt;
    }
    const auto [low, high] =
        std::minmax_element(readings.begin(), readings.end(),
                            [](const Reading& a, const Reading& b) { return a.reading < b.reading; });
    const double spread = static_cast<double>(high->reading) - low->reading;
    SlopeEstimate best{0.0, std::numeric_limits<double>::max(), 0.0};
    double tried = spread / mostRange;
    while (spread > 0.0 && tried <= spread / leastRange) {
        const double misfit = misfitOrMuch(tried, readings);
        if (misfit < best.misfit) {
            best = {tried, misfit, 0.0};
        }
        tried *= 1.04;
    }
    if (best.slope == 0.0) {
        return std::nullopt;
    }
    double step = 1.02;
    while (step > 1.0002) {
        for (const double slope : {best.slope * step, best.slope / step}) {
            const double misfit = misfitOrMuch(slope, readings);
            if (misfit < best.misfit) {
                best = {slope, misfit, 0.0};
            }
        }
        step = std::sqrt(step);
    }
    // The sum of squares rises by one variance where the slope is one deviation off.
    constexpr double beside = 1.02;
    const double up = misfitOrMuch(best.slope * beside, readings);
    const double down = misfitOrMuch(best.slope / beside, readings);
    const double freedom = std::max(1.0, static_cast<double>(readings.size()) - 7.0);
    const double rise = ((up * up + down * down) / 2.0 - best.misfit * best.misfit) * freedom;
    const double variance = std::max(best.misfit * best.misfit, 0.1);
    best.deviation = rise > 0.0 ? (beside - 1.0) * std::sqrt(variance / rise) : 1.0;
    return best;
}

} // namespace Radio::Fit
