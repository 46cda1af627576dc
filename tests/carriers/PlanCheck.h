#ifndef TESTS_CARRIERS_PLANCHECK_H
#define TESTS_CARRIERS_PLANCHECK_H

#include "Difference.h"
#include "FrequencyPlan.h"
#include "ModelPlan.h"
#include "Sweep.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace Carriers {

/** The plan that is checked: each of its operations called where it is compiled with the check. */
struct LibraryPlan {
    std::uint32_t rfLoFrequency(std::uint32_t carrier, const Parameters& parameters) const {
        return RL::FrequencyHandler::FrequencyPlan::rfLoFrequency(carrier, parameters);
    }
    std::uint32_t frequencyStep(std::uint32_t frequency) const {
        return RL::FrequencyHandler::FrequencyPlan::frequencyStep(frequency);
    }
    std::uint32_t ifPllFrequency(std::uint32_t carrier, const Parameters& parameters) const {
        return RL::FrequencyHandler::FrequencyPlan::ifPllFrequency(carrier, parameters);
    }
    std::uint64_t rfPllFrequency(std::uint32_t carrier, const Parameters& parameters) const {
        return RL::FrequencyHandler::FrequencyPlan::rfPllFrequency(carrier, parameters);
    }
    std::uint64_t exactRfPllFrequency(std::uint32_t lo, const Parameters& parameters) const {
        return RL::FrequencyHandler::FrequencyPlan::exactRfPllFrequency(lo, parameters);
    }
    std::uint32_t bbFrequency(const Parameters& parameters) const {
        return RL::FrequencyHandler::FrequencyPlan::bbFrequency(parameters);
    }
};

/** The parameters as the model has them: the same numbers, in 128 bits. */
inline Told::Plan modelPlan(const Parameters& parameters) {
    return {parameters.ifSideband, parameters.rfSideband, parameters.ifFrequency,
            parameters.mixerMultiplicationFactor, parameters.ifBb};
}

/**
 * Gives `agrees` the name of each quantity, what the plan says of it and what the model says, until it
 * answers false; answers what `agrees` answered last.
 */
template <typename PlanType, typename Agrees>
bool compareAt(const PlanType& plan, const Parameters& parameters, const Told::Plan& told,
               std::uint32_t carrier, const Agrees& agrees) {
    return agrees("RF LO", plan.rfLoFrequency(carrier, parameters), Told::loOf(told, carrier)) &&
           agrees("step", plan.frequencyStep(carrier), Told::stepOf(carrier)) &&
           agrees("IF PLL", plan.ifPllFrequency(carrier, parameters), Told::ifPllOf(told, carrier)) &&
           agrees("RF PLL", plan.rfPllFrequency(carrier, parameters), Told::rfPllOf(told, carrier, false)) &&
           agrees("exact RF PLL", plan.exactRfPllFrequency(carrier, parameters),
                  Told::rfPllOf(told, carrier, true)) &&
           agrees("baseband", plan.bbFrequency(parameters), Told::basebandOf(told));
}

/** The first of `carriers` at which a plan and the model differ. The multiplication factor is not 0. */
template <typename PlanType>
std::optional<Difference> firstDifference(const PlanType& plan, const Parameters& parameters,
                                          const CarrierRange& carriers) {
    const Told::Plan told = modelPlan(parameters);
    const auto areEqual = [](std::string_view /*quantity*/, std::uint64_t library, Told::Wide model) {
        return library == model;
    };
    for (std::uint64_t number = carriers.first; number < carriers.end; number += carriers.stride) {
        const auto carrier = static_cast<std::uint32_t>(number);
        if (compareAt(plan, parameters, told, carrier, areEqual)) {
            continue;
        }
        Difference difference{{}, carrier, parameters, 0, 0};
        compareAt(plan, parameters, told, carrier,
                  [&](std::string_view quantity, std::uint64_t library, Told::Wide model) {
                      difference.quantity = quantity;
                      difference.library = library;
                      difference.model = static_cast<std::uint64_t>(model);
                      return areEqual(quantity, library, model);
                  });
        return difference;
    }
    return std::nullopt;
}

} // namespace Carriers

#endif
