#ifndef RADIOCTL_REPORT_FINDINGREPORT_H
#define RADIOCTL_REPORT_FINDINGREPORT_H

#include "radio/board/Finding.h"

#include <string>
#include <vector>

namespace Radio {

/**
 * Shows what was found in `file` on standard output, one line or JSON event each, and at the end how many
 * there are. Gives the exit code: errors are not good, and if it is `strict`, warnings are not either.
 */
int showFindings(const std::string& file, const std::vector<Finding>& findings, bool json,
                 bool strict = false);

} // namespace Radio

#endif
