#ifndef TESTS_CARRIERS_REPORT_H
#define TESTS_CARRIERS_REPORT_H

#include "ParameterSets.h"
#include "Sweep.h"

#include <functional>
#include <iosfwd>
#include <optional>

namespace Carriers {

/** Looks at carriers with parameters, on any thread, and gives the first difference that it finds. */
using PlanCheck = std::function<std::optional<Difference>(const Parameters&, const CarrierRange&)>;

/**
 * Checks the carriers with each of the sets, on all processors, and says to `out` what is checked and what
 * came of it; how far it is, to standard error where that is a terminal. Ends at the first difference: gives
 * it.
 */
std::optional<Difference> checkSets(const ParameterSets& sets, const CarrierRange& carriers,
                                    const PlanCheck& check, std::ostream& out);

} // namespace Carriers

#endif
