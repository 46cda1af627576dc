#ifndef RADIOCTL_STORE_STOREREPORT_H
#define RADIOCTL_STORE_STOREREPORT_H

#include "radio/files/Json.h"
#include "radio/store/Run.h"

#include <ostream>
#include <string>
#include <vector>

namespace Radio::Store {

/** The event `event` about a run. */
Json runEvent(const RunHead& head);

/** One line about each run, for people. */
void writeHeads(std::ostream& out, const std::vector<RunHead>& heads);

/** What a run is, and what it measured, for people. */
void writeRun(std::ostream& out, const Run& run);

/** "-71.24 dBc at channel 2, 17823750 kHz, 25 degrees", as far as it is known. */
std::string placeText(const Measurement& measurement);
/** A value as it is shown: whole numbers as such, others with two decimals; "-" when it is not known. */
std::string valueText(const std::optional<double>& value);

/** Two measurements of the same thing; one of them is missing where only the other run has it. */
struct MeasuredPair {
    const Measurement* before;
    const Measurement* after;
};

/** What two runs measured, by what it is and where; in the order of the first, then what only the second has.
 */
std::vector<MeasuredPair> pairsOf(const Run& before, const Run& after);

void writePairs(std::ostream& out, const std::vector<MeasuredPair>& pairs);
Json pairEvent(const MeasuredPair& pair);

} // namespace Radio::Store

#endif
