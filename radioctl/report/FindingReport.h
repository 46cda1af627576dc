#ifndef RADIOCTL_REPORT_FINDINGREPORT_H
#define RADIOCTL_REPORT_FINDINGREPORT_H

#include "radio/board/Finding.h"

#include <string>
#include <vector>

namespace Radio {

/**
 * Shows what was found in `file` on standard output, one line or JSON event each, and at the end how many
 * there are. Gives the exit code: warnings are good, errors are not.
 */
int showFindings(const std::string& file, const std::vector<Finding>& findings, bool json);

} // namespace Radio

#endif
