#ifndef TESTS_CARRIERS_DIFFERENCE_H
#define TESTS_CARRIERS_DIFFERENCE_H

#include "FrequencyPlan.h"

#include <cstdint>
#include <string>
#include <string_view>

/** The library's frequency plan held against the model's, carrier by carrier. */
namespace Carriers {

using RL::FrequencyHandler::FrequencyPlan::Parameters;

/** Where library and model are of different opinions. */
struct Difference {
    /** What was computed, for example "IF PLL". */
    std::string_view quantity;
    /** In kHz. */
    std::uint32_t carrier;
    Parameters parameters;
    std::uint64_t library;
    std::uint64_t model;
};

/** For example "IF sideband -1, RF sideband +1, IF 350000 kHz, factor 2, baseband offset 20 MHz". */
std::string describe(const Parameters& parameters);
/** In one sentence: carrier, parameters, both numbers. */
std::string describe(const Difference& difference);

/** With a comma before every three digits: "4,294,967,296". */
std::string grouped(std::uint64_t number);

} // namespace Carriers

#endif
