#include "Difference.h"

namespace Carriers {

namespace {

std::string withSign(std::int32_t number) {
    return (number < 0 ? "" : "+") + std::to_string(number);
}

} // namespace

std::string describe(const Parameters& parameters) {
    return "IF sideband " + withSign(parameters.ifSideband) + ", RF sideband " +
           withSign(parameters.rfSideband) + ", IF " + std::to_string(parameters.ifFrequency) +
           " kHz, factor " + std::to_string(parameters.mixerMultiplicationFactor) + ", baseband offset " +
           std::to_string(parameters.ifBb) + " MHz";
}

std::string describe(const Difference& difference) {
    return std::string(difference.quantity) + " for " + std::to_string(difference.carrier) + " kHz with " +
           describe(difference.parameters) + ": the library says " + std::to_string(difference.library) +
           ", the model " + std::to_string(difference.model);
}

std::string grouped(std::uint64_t number) {
    std::string digits = std::to_string(number);
    for (std::size_t place = digits.size(); place > 3;) {
        place -= 3;
        digits.insert(place, ",");
    }
    return digits;
}

} // namespace Carriers
