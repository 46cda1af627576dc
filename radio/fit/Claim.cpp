#include "radio/fit/Claim.h"

#include "radio/fit/Plan.h"
#include "radio/fit/PointFit.h"

#include <algorithm>
#include <cmath>

namespace Radio::Fit {

namespace {

double squareOf(double value) {
    return value * value;
}

double claimed(const Order& order, const Knowledge& knowledge, const Table& table, const Place& place,
               const Forecast& forecast) {
    const Corrections set = settledAt(order, table, place);
    const double left = std::sqrt(residualPower(knowledge.curvature, set, forecast.bottom));
    const double off =
        claimedDeviations * knowledge.excess * forecast.deviation * knowledge.curvature.amplitude();
    return squareOf(left + off) * powerOf(knowledge.doubt());
}

/** What falls so slowly from degree to degree is not smooth: it may bend between two points where nobody
 * looked. Coefficients of smooth transmitters fall at least by 0.38. */
double roughness(const Surface& surface) {
    constexpr double slow = 0.4;
    return surface.decay().carrier > slow ? 2.0 : 1.0;
}

} // namespace

double claimedPower(const Order& order, const Knowledge& knowledge, const Surface& surface,
                    const Table& table, const Place& place) {
    return claimed(order, knowledge, table, place, surface.at(place));
}

LevelAt claimAnywhere(const Order& order, const Knowledge& knowledge, const Surface& surface,
                      const Table& table) {
    // Between nodes it is rounding that matters, which changes from kHz to kHz: many places in each cell,
    // others than those for which roundings are turned. Deviations change slowly.
    constexpr std::size_t partsOfCell = 13;
    const std::vector<std::uint32_t> carriers =
        evenCarriers(order, (table.carriers.size() - 1) * partsOfCell + 1);
    LevelAt worst{-200.0, {}};
    for (std::int32_t temperature = order.lowTemperature; temperature <= order.highTemperature;
         ++temperature) {
        double deviation = 0.0;
        for (std::size_t n = 0; n < carriers.size(); ++n) {
            const Place place{carriers[n], temperature};
            if (n % partsOfCell == 0) {
                const std::size_t next = std::min(n + partsOfCell, carriers.size() - 1);
                deviation =
                    roughness(surface) * std::max(surface.at(place).deviation,
                                                  surface.at({carriers[next], temperature}).deviation);
            }
            const double level =
                levelOf(claimed(order, knowledge, table, place, {surface.bottomAt(place), deviation}));
            if (level > worst.level) {
                worst = {level, place};
            }
        }
    }
    return worst;
}

} // namespace Radio::Fit
