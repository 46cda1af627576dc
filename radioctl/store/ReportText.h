#ifndef RADIOCTL_STORE_REPORTTEXT_H
#define RADIOCTL_STORE_REPORTTEXT_H

#include "radio/store/Statistics.h"

#include <ostream>
#include <string>
#include <vector>

/** What runs say together, for people and for programs. */
namespace Radio::Store {

/** Its measurements with values, those first that have the least room within their limits; then those without
 * limits. Valid as long as the report. */
std::vector<const MeasurandReport*> byRoom(const StatisticsReport& report);

/** "leakage_after at channel 1, 18000000 kHz, 25 degrees", as far as it is at one place. */
std::string nameOf(const Measurand& measurand);
/** "99.2 %", or "-" when nothing was judged. */
std::string yieldText(const Yield& yield);
/** With three decimals, or "-". */
std::string figureText(const std::optional<double>& figure);

/** `all`: every measurement, and not only those with the least room. */
void writeText(std::ostream& out, const StatisticsReport& report, bool all);
/** An event for each day and station, and for each measurement. */
void writeEvents(std::ostream& out, const StatisticsReport& report);

} // namespace Radio::Store

#endif
