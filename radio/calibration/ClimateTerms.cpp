#include "radio/calibration/ClimateTerms.h"

#include "radio/calibration/HardwareUnderTest.h"

#include <algorithm>
#include <iterator>

namespace Radio::Calibration {

ClimateTerms climateTermsFor(const Board& board, const CalibrationDescription& wishes, bool isAttended) {
    constexpr std::uint32_t secondsInAChamber = 60;
    CalibrationDescription described;
    for (const CalibrationDescription& calibration : board.calibrations) {
        if (calibration.channel == wishes.channel) {
            described = calibration;
        }
    }
    const auto choose = [&](std::optional<std::uint32_t> CalibrationDescription::*key,
                            std::uint32_t otherwise) {
        return (wishes.*key) ? *(wishes.*key) : (described.*key).value_or(otherwise);
    };
    ClimateTerms terms;
    terms.tolerance = static_cast<int>(
        choose(&CalibrationDescription::tolerance, static_cast<std::uint32_t>(terms.tolerance)));
    terms.dwell = std::chrono::seconds(
        choose(&CalibrationDescription::dwell, described.chamber.empty() ? 0 : secondsInAChamber));
    terms.isAttended = isAttended;
    return terms;
}

std::vector<std::int32_t> routeThrough(const std::vector<std::int32_t>& temperatures,
                                       std::optional<int> now) {
    if (!now || temperatures.empty()) {
        return temperatures;
    }
    const bool isUpFirst = temperatures.back() - *now < *now - temperatures.front();
    std::vector<std::int32_t> route;
    // What lies on the way to the nearer end, and then everything else, from that end on.
    const auto split = isUpFirst ? std::lower_bound(temperatures.begin(), temperatures.end(), *now)
                                 : std::upper_bound(temperatures.begin(), temperatures.end(), *now);
    if (isUpFirst) {
        route.assign(split, temperatures.end());
        std::reverse_copy(temperatures.begin(), split, std::back_inserter(route));
    } else {
        std::reverse_copy(temperatures.begin(), split, std::back_inserter(route));
        route.insert(route.end(), split, temperatures.end());
    }
    return route;
}

} // namespace Radio::Calibration
