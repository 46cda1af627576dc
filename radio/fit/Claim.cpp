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

/** What a table leaves, with all that is the same at each place worked out once. */
class Remainder {
public:
    Remainder(const Order& order, const Knowledge& knowledge, const Table& table)
        : m_order(order),
          m_table(table),
          m_curvature(knowledge.curvature),
          m_off(claimedDeviations * knowledge.excess() * knowledge.curvature.amplitude()),
          m_doubt(powerOf(knowledge.doubt())) {}

    /** The highest power there may be. */
    double at(const Place& place, const Forecast& forecast) const {
        const Corrections set = settledAt(m_order, m_table, place);
        const double left = std::sqrt(residualPower(m_curvature, set, forecast.bottom));
        return squareOf(left + m_off * forecast.deviation) * m_doubt;
    }

private:
    const Order& m_order;
    const Table& m_table;
    const Curvature m_curvature;
    const double m_off;
    const double m_doubt;
};

/** What falls so slowly from degree to degree is not smooth: it may bend between two points where nobody
 * looked. Coefficients of smooth transmitters fall at least by 0.38. */
double roughness(const Surface& surface) {
    constexpr double slow = 0.4;
    return surface.decay().carrier > slow ? 2.0 : 1.0;
}

} // namespace

double claimedPower(const Order& order, const Knowledge& knowledge, const Surface& surface,
                    const Table& table, const Place& place) {
    return Remainder(order, knowledge, table).at(place, surface.at(place));
}

LevelAt claimAnywhere(const Order& order, const Knowledge& knowledge, const Surface& surface,
                      const Table& table) {
    // Between nodes it is rounding that matters, which changes from kHz to kHz: many places in each cell,
    // others than those for which roundings are turned. Deviations change slowly.
    constexpr std::size_t partsOfCell = 13;
    const std::vector<std::uint32_t> carriers =
        evenCarriers(order, (table.carriers.size() - 1) * partsOfCell + 1);
    const Remainder remainder(order, knowledge, table);
    double worst = 0.0;
    Place where{carriers.front(), order.lowTemperature};
    for (std::int32_t temperature = order.lowTemperature; temperature <= order.highTemperature;
         ++temperature) {
        const std::vector<Pair> bottoms = surface.bottomsAt(temperature, carriers);
        const double rough = roughness(surface);
        double deviation = 0.0;
        double next = rough * surface.at({carriers.front(), temperature}).deviation;
        for (std::size_t n = 0; n < carriers.size(); ++n) {
            const Place place{carriers[n], temperature};
            if (n % partsOfCell == 0) {
                const std::size_t end = std::min(n + partsOfCell, carriers.size() - 1);
                const double before = next;
                next = rough * surface.at({carriers[end], temperature}).deviation;
                deviation = std::max(before, next);
            }
            const double power = remainder.at(place, {bottoms[n], deviation});
            if (power > worst) {
                worst = power;
                where = place;
            }
        }
    }
    return {levelOf(worst + knowledge.uncancelled()), where};
}

bool isWithinLimit(const Order& order, double level) {
    return !order.limit || (order.detector.zero && level <= *order.limit);
}

} // namespace Radio::Fit
