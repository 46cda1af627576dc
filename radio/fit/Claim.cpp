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
    const double off = claimedDeviations * forecast.deviation * knowledge.curvature.amplitude();
    return squareOf(left + off);
}

} // namespace

double claimedPower(const Order& order, const Knowledge& knowledge, const Surface& surface,
                    const Table& table, const Place& place) {
    return claimed(order, knowledge, table, place, surface.at(place));
}

LevelAt claimAnywhere(const Order& order, const Knowledge& knowledge, const Surface& surface,
                      const Table& table) {
    // Between nodes it is rounding that matters, which changes from kHz to kHz: many places in each cell.
    constexpr std::size_t carriersInCell = 5;
    LevelAt worst{-200.0, {}};
    for (const std::uint32_t carrier :
         evenCarriers(order, (table.carriers.size() - 1) * carriersInCell + 1)) {
        for (std::int32_t temperature = order.lowTemperature; temperature <= order.highTemperature;
             ++temperature) {
            const Place place{carrier, temperature};
            const double level =
                levelOf(claimed(order, knowledge, table, place, surface.at(place)));
            if (level > worst.level) {
                worst = {level, place};
            }
        }
    }
    return worst;
}

} // namespace Radio::Fit
