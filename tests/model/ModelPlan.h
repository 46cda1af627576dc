#ifndef TESTS_MODEL_MODELPLAN_H
#define TESTS_MODEL_MODELPLAN_H

#include "Arithmetic.h"

/** The microwave board's frequency plan, told by its rules alone. */
namespace Told {

/** What the plan depends on beside the carrier; as it is before the database is read. */
struct Plan {
    Wide ifSideband = -1;
    Wide rfSideband = -1;
    Wide ifFrequency = 0;
    Wide factor = 1;
    Wide ifBb = 0;
};

constexpr Wide loOf(const Plan& plan, Wide carrier) {
    return magnitude(wrapped(carrier + plan.ifFrequency * plan.rfSideband));
}

constexpr Wide stepOf(Wide frequency) {
    return modulo32(frequency + 500) / 1000;
}

constexpr Wide ifPllOf(const Plan& plan, Wide carrier) {
    const Wide lo = loOf(plan, carrier);
    const Wide residue = lo - 1000 * stepOf(lo);
    return magnitude(
        wrapped(plan.ifFrequency + 1000 * plan.ifBb * plan.ifSideband - plan.rfSideband * residue));
}

/** The factor is not 0. When `exact`, the frequency is that of the LO. */
constexpr Wide rfPllOf(const Plan& plan, Wide frequency, bool exact) {
    constexpr Wide all64 = Wide{1} << 64;
    const Wide divisor = plan.factor < 0 ? plan.factor + all64 : plan.factor;
    return (exact ? frequency * 1000 : stepOf(loOf(plan, frequency)) * 1000) / divisor;
}

constexpr Wide basebandOf(const Plan& plan) {
    return modulo32(1000 * plan.ifBb);
}

} // namespace Told

#endif
