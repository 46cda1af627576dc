#ifndef RADIOCTL_STORE_REPORTPAGE_H
#define RADIOCTL_STORE_REPORTPAGE_H

#include "radio/store/Statistics.h"

#include <ostream>
#include <string>

namespace Radio::Store {

/** Writes one HTML page with everything that runs say together; `store` is where they are from. Throws
 * InputError when a plot cannot be drawn. */
void writePage(std::ostream& out, const StatisticsReport& report, const std::string& store);

} // namespace Radio::Store

#endif
